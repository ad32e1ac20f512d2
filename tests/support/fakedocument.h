// A check whose parts a test fills by hand.
#pragma once

#include <document/abstractdocument.h>

class FakeDocument : public AbstractDocument
{
public:
    QList<QSharedPointer<DocumentImpact>> getDiscountImpacts() const override { return impacts; }
    QList<QSharedPointer<GoodsItem>> getGoodsItems() const override { return goods; }
    QDateTime getDateTime() const override { return dateTime; }
    QString getIdentifier() const override { return identifier; }
    EDocumentType getType() const override { return type; }
    QList<QSharedPointer<DocumentCardRecord>> getCardRecords() const override { return cards; }
    void removeCard(const QSharedPointer<DocumentCardRecord> &card) override { cards.removeAll(card); }

    QList<QSharedPointer<DocumentImpact>> impacts;
    QList<QSharedPointer<GoodsItem>> goods;
    QList<QSharedPointer<DocumentCardRecord>> cards;
    QDateTime dateTime{QDate(2026, 3, 9), QTime(18, 30)};
    QString identifier = QStringLiteral("check-1");
    EDocumentType type = EDocumentType::Sale;
};

inline QSharedPointer<GoodsItem> makeGoodsItem(int posnum, double rubles, double quantity = 1)
{
    auto item = QSharedPointer<GoodsItem>::create();
    item->setPosnum(posnum);
    item->setPrice(Money::fromRubles(rubles));
    item->setQuantity(quantity);
    return item;
}
