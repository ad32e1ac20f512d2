// The articles that a till sells, and what a cashier or a scanner enters to put one on the check.
#pragma once

#include "goods.h"

#include <QtCore/QHash>
#include <QtCore/QList>

namespace till {

/// What was entered: `article` is a barcode or words of a name.
struct GoodsEntry
{
    double quantity = 1;
    QString article;
};

/// A quantity and a price as a cashier types them, with a point or a comma. Throw BasicException for anything but a
/// number above zero with at most three decimals, and for anything but an amount in rubles and kopecks.
double parseQuantity(const QString &text);
Money parsePrice(const QString &text);

/// Takes "barcode", "3*barcode", "1.25*barcode" or "1,25*barcode" apart; a name may stand for the barcode. Throws
/// BasicException when the quantity does not parse, or the article is missing.
GoodsEntry parseGoodsEntry(const QString &entry);

class Catalogue
{
public:
    /// Without articles.
    Catalogue() = default;

    /// Reads `{"goods": [...]}`, the articles in the form of the scenarios, but without "quantity". Throws
    /// BasicException that names the file and the place of what is missing, unknown, malformed or listed twice.
    explicit Catalogue(const QString &fileName);

    const QList<Goods> &goods() const { return m_goods; }

    /// Null when there is no article with this barcode. Valid as long as the catalogue.
    const Goods *findByBarcode(const QString &barcode) const;

    /// The articles whose names contain all the words, in the order of the file; letter case does not matter, and "е"
    /// stands for "ё". No words match nothing.
    QList<Goods> search(const QString &words) const;

    /// What an entry means, with the quantity entered: the article with this barcode, else those that search() finds.
    /// Empty when there is none. Throws like parseGoodsEntry().
    QList<Goods> find(const QString &entry) const;

private:
    QList<Goods> m_goods;
    QHash<QString, qsizetype> m_byBarcode;
};

} // namespace till
