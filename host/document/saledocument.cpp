// A sales check: lines and cards, and whether all its parts agree.
#include "saledocument.h"

#include <core/basicexception.h>
#include <core/currenttime.h>
#include <core/mockfactory.h>

#include <QtCore/QUuid>

#include <algorithm>
#include <numeric>

using namespace Qt::Literals::StringLiterals;

namespace {

void requireSaleable(double quantity, Money price)
{
    if (!GoodsItem::isSaleable(quantity, price))
        throw BasicException(u"Товар нельзя продать: количество должно быть больше нуля и не больше миллиона, цена — "
                             u"не меньше нуля, сумма — не больше триллиона"_s);
}

} // namespace

SaleDocument::SaleDocument(EDocumentType type)
    : m_type(type),
      m_identifier(QUuid::createUuid().toString(QUuid::WithoutBraces)),
      m_dateTime(MockFactory<CurrentTime>::create()->currentDateTime())
{}

SaleDocument::~SaleDocument() = default;

int SaleDocument::addGoodsItem(const QSharedPointer<GoodsItem> &item)
{
    requireSaleable(item->getQuantity(), item->getPrice());
    item->setPosnum(lastPosnum() + 1);
    item->setDiscountSum({});
    m_goods.append(item);
    return item->getPosnum();
}

int SaleDocument::lastPosnum() const
{
    return m_goods.isEmpty() ? m_lastRemovedPosnum : std::max(m_lastRemovedPosnum, m_goods.last()->getPosnum());
}

QSharedPointer<GoodsItem> SaleDocument::findGoodsItem(int posnum) const
{
    const auto found = std::lower_bound(m_goods.cbegin(), m_goods.cend(), posnum,
                                        [](const auto &item, int number) { return item->getPosnum() < number; });
    return found == m_goods.cend() || (*found)->getPosnum() != posnum ? nullptr : *found;
}

QSharedPointer<GoodsItem> SaleDocument::requireGoodsItem(int posnum) const
{
    const auto item = findGoodsItem(posnum);
    if (!item)
        throw BasicException(u"В чеке нет строки %1"_s.arg(posnum));
    return item;
}

void SaleDocument::changeGoodsItem(int posnum, double quantity, Money price)
{
    const auto item = requireGoodsItem(posnum);
    requireSaleable(quantity, price);
    GoodsItem changed;
    changed.setQuantity(quantity);
    changed.setPrice(price);
    if (item->getDiscountSum() > changed.getSum())
        throw BasicException(u"Скидки на строку %1 (%2) больше её новой суммы (%3)"_s.arg(
            QString::number(posnum), item->getDiscountSum().toText(), changed.getSum().toText()));
    item->setQuantity(quantity);
    item->setPrice(price);
}

void SaleDocument::removeGoodsItem(int posnum)
{
    const auto item = requireGoodsItem(posnum);
    removeSharesOf(posnum);
    m_goods.removeOne(item);
    m_lastRemovedPosnum = std::max(m_lastRemovedPosnum, posnum);
}

void SaleDocument::putBackGoodsItem(const QSharedPointer<GoodsItem> &item)
{
    requireSaleable(item->getQuantity(), item->getPrice());
    if (findGoodsItem(item->getPosnum()) || item->getPosnum() < 1 || item->getPosnum() > lastPosnum())
        throw BasicException(u"Строку %1 нельзя вернуть в чек"_s.arg(item->getPosnum()));
    const auto place = std::find_if(m_goods.cbegin(), m_goods.cend(),
                                    [&item](const auto &other) { return other->getPosnum() > item->getPosnum(); });
    item->setDiscountSum({});
    m_goods.insert(place, item);
}

void SaleDocument::addCard(const QSharedPointer<DocumentCardRecord> &card)
{
    if (!card || m_cards.contains(card))
        return;
    card->setCodeInternal(++m_lastCardCode);
    m_cards.append(card);
}

void SaleDocument::removeCard(const QSharedPointer<DocumentCardRecord> &card)
{
    if (!m_cards.contains(card))
        return;
    removeImpactsOf(card);
    m_cards.removeOne(card);
}

Money SaleDocument::getSum() const
{
    return std::accumulate(m_goods.cbegin(), m_goods.cend(), Money(),
                           [](Money sum, const auto &item) { return sum + item->getSum(); });
}

void SaleDocument::assemble(const QList<QSharedPointer<GoodsItem>> &goods,
                            const QList<QSharedPointer<DocumentCardRecord>> &cards,
                            const QList<QSharedPointer<DocumentImpact>> &impacts)
{
    m_goods = goods;
    m_cards = cards;
    m_impacts = impacts;
    for (const auto &impact : impacts) {
        const auto card = std::find_if(cards.cbegin(), cards.cend(), [&](const auto &record) {
            return record->getCodeInternal() == impact->getTotals()->getCardIndex();
        });
        if (card != cards.cend())
            impact->setCardRecord(*card);
    }
    updateDiscounts();
    requireConsistent();
}

void SaleDocument::requireConsistent() const
{
    Money ofLines;
    int before = 0;
    for (const auto &item : m_goods) {
        ofLines += item->getDiscountSum();
        const int posnum = item->getPosnum();
        if (posnum <= std::exchange(before, posnum) || item->getTotal() < Money())
            throw BasicException(u"строка чека %1 не сходится с чеком"_s.arg(posnum));
    }
    if (ofLines != getDiscountSum())
        throw BasicException(
            u"скидки строк (%1) не сходятся со скидкой чека (%2)"_s.arg(ofLines.toText(), getDiscountSum().toText()));
}
