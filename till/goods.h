// An article as the till's files describe it, and as a line of a check.
#pragma once

#include <core/money.h>
#include <document/goodsitem.h>

#include <QtCore/QStringList>

namespace till {

class JsonNode;

/// An article that is put on the check.
struct Goods
{
    QString barcode;
    QString name;
    double quantity = 1;
    Money price;
    QStringList labels; ///< Campaign labels such as "NOSPEND" and "NOBONUS".
    bool allowDiscount = true;
    bool allowBonusEarn = true;
    bool onSale = false;
};

/// Reads the object that describes an article in scenarios and in the catalogue. Throws BasicException with the place
/// of anything that is missing, unknown or malformed.
Goods readGoods(const JsonNode &node);

/// A line for the check.
QSharedPointer<GoodsItem> makeItem(const Goods &goods);

} // namespace till
