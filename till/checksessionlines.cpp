// The check's lines. A change is saved before the loyalty system hears of it.
#include "checksession.h"

#include <core/basicexception.h>
#include <loyalty/basicloyaltysystem.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

int CheckSession::addGoods(const QSharedPointer<GoodsItem> &item)
{
    int line = 0;
    changeLines(EventCode::PositionChanged, [&] {
        line = m_document->addGoodsItem(item);
        m_state.undo = {{u"line"_s, line}};
    });
    return line;
}

void CheckSession::changeGoods(int line, std::optional<double> quantity, std::optional<Money> price)
{
    const auto item = requireLine(line);
    changeLines(EventCode::PositionChanged, [&] {
        m_state.undo = {{u"line"_s, line}, {u"item"_s, item->toMap()}};
        m_document->changeGoodsItem(line, quantity.value_or(item->getQuantity()), price.value_or(item->getPrice()));
    });
}

void CheckSession::removeGoods(int line)
{
    const auto item = requireLine(line);
    changeLines(EventCode::PositionChanged, [&] {
        m_state.undo = {{u"line"_s, line}, {u"item"_s, item->toMap()}};
        m_document->removeGoodsItem(line);
    });
}

void CheckSession::restoreGoods()
{
    requireOpen();
    if (m_state.undo.isEmpty())
        throw BasicException(u"Нет изменения, которое можно отменить"_s);
    changeLines(EventCode::PositionRestored, [this] {
        const QVariantMap undo = std::exchange(m_state.undo, {});
        const int line = undo.value(u"line"_s).toInt();
        if (!undo.contains(u"item"_s)) {
            m_document->removeGoodsItem(line);
            return;
        }
        const auto before = GoodsItem::fromMap(undo.value(u"item"_s).toMap());
        if (m_document->findGoodsItem(line))
            m_document->changeGoodsItem(line, before->getQuantity(), before->getPrice());
        else
            m_document->putBackGoodsItem(before);
    });
}

void CheckSession::changeLines(EventCode code, const std::function<void()> &change)
{
    using Order = TillState::Order;
    requireOpen();
    // Points that were spent pay for the check as it was: the service prices an update without them. So they come off,
    // and the cashier spends points again on the new prices.
    const bool hadPoints = isPaidWithPoints();
    const bool restored = code == EventCode::PositionRestored;
    const bool drop = hadPoints || m_state.order == Order::Uncertain;
    try {
        if (hadPoints)
            m_document->removeImpactsOf(card());
        change();
    } catch (const BasicException &) {
        revert();
        throw;
    }
    if (isPriced())
        m_state.order = drop || restored ? Order::Uncertain : Order::Changed;
    save();
    if (drop)
        dropLoyaltyResult();
    else if (isPriced() && restored)
        reportRestored();
    else if (isPriced())
        notify(code);
    if (hadPoints)
        reportPointsReturned();
}

/// The loyalty system either withdraws an update that it has not sent yet, or drops the order and prices anew.
void CheckSession::reportRestored()
{
    const QString basket = card()->getOperationId();
    priceOrRemoveCard([this] { notify(EventCode::PositionRestored); });
    const bool pricedAnew = !card() || card()->getOperationId() != basket;
    m_state.order = pricedAnew ? TillState::Order::InStep : TillState::Order::Behind;
    save();
}

} // namespace till
