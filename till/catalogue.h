// The articles that a till sells, and what a cashier or a scanner enters to put one on the check.
#pragma once

#include "goods.h"

#include <QtCore/QHash>
#include <QtCore/QList>

#include <utility>

namespace till {

/// A quantity and a price as a cashier types them, with a point or a comma. Throw BasicException for anything but a
/// number above zero with at most three decimals, and for anything but an amount in rubles and kopecks.
double parseQuantity(const QString &text);
Money parsePrice(const QString &text);

class Catalogue
{
public:
    /// Without articles.
    Catalogue() = default;

    /// Reads `{"goods": [...]}`, the articles in the form of the scenarios, but without "quantity". Throws
    /// BasicException that names the file and the place of what is missing, unknown, malformed or listed twice.
    explicit Catalogue(const QString &fileName);

    const QList<Goods> &goods() const { return m_goods; }

    /// The goods that "barcode", "3*barcode", "1.25*barcode" or "1,25*barcode" stands for, with the quantity entered.
    /// Words may stand for the barcode: all articles with these words in their names, in the order of the file; letter
    /// case does not matter, and "е" stands for "ё". Empty when there is none. Throws BasicException when the quantity
    /// does not parse, or the article is missing.
    QList<Goods> find(const QString &entry) const;

private:
    QList<Goods> search(const QString &words) const;

    QList<Goods> m_goods;
    QHash<QString, qsizetype> m_byBarcode;
};

/// The catalogue of the file, and a text for the cashier that says why there is none: without a usable file the
/// catalogue is empty, and the till still closes and voids what is open.
std::pair<Catalogue, QString> openCatalogue(const QString &fileName);

} // namespace till
