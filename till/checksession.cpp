// The check's lines, card and prices. The events are raised where a till raises them; see core/eventcode.h.
#include "checksession.h"

#include <core/basicexception.h>
#include <loyalty/basicloyaltysystem.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

CheckSession::CheckSession(BasicLoyaltySystem &system, EndingQueue &queue, Journal &journal)
    : m_system(system), m_queue(queue), m_journal(journal)
{}

CheckSession::~CheckSession()
{
    m_system.setDocument(nullptr);
}

CheckResult CheckSession::result() const
{
    return resultOf(*m_document, m_system);
}

void CheckSession::open()
{
    if (isOpen())
        throw BasicException(u"Предыдущий чек ещё не закрыт"_s);
    m_document = QSharedPointer<SaleDocument>::create();
    m_state = {};
    m_system.setDocument(m_document);
    save();
}

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
            m_document->addGoodsItem(before);
    });
}

void CheckSession::changeLines(EventCode code, const std::function<void()> &change)
{
    requireOpen();
    // Points that were spent pay for the check as it was: the service prices an update without them. So they come off,
    // and the cashier spends points again on the new prices.
    const bool hadPoints = card() && !m_document->getDiscountSum().isZero();
    if (hadPoints)
        m_document->removeImpactsOf(card());
    change();
    reportChange(code, hadPoints);
}

void CheckSession::reportChange(EventCode code, bool hadPoints)
{
    const bool restored = code == EventCode::PositionRestored;
    m_state.pricesStale = isPriced();
    m_state.changeReported = isPriced() && !hadPoints && !restored;
    if (isPriced() && (hadPoints || restored))
        m_state.orderUncertain = true;
    save();
    if (!isPriced())
        return;
    if (hadPoints) {
        dropLoyaltyResult();
    } else if (restored) {
        const QString basket = card()->getOperationId();
        priceOrRemoveCard([&] { notify(code); });
        const bool pricedAnew = !card() || card()->getOperationId() != basket;
        m_state.orderUncertain = false;
        m_state.pricesStale = !pricedAnew;
        save();
    } else {
        notify(code);
    }
}

void CheckSession::addCard(ECardNumberType type, const QString &text)
{
    requireOpen();
    if (card())
        throw BasicException(u"На чеке уже есть карта"_s);
    // A customer who was searched for another card must not be taken for the holder of this one.
    m_system.cancel();
    const loyalty::CardNumberResult number = m_system.getCardNumber({static_cast<int>(type), text});
    if (!number.success)
        throw BasicException(number.error);
    auto record = QSharedPointer<DocumentCardRecord>::create();
    record->setNumber(number.cardNumber);
    record->setLoyaltySystemCode(m_system.getLoyaltySystemCode());
    m_document->addCard(record); // Before identification: the loyalty system looks for its card on the check.
    if (!m_system.identifyByCard(record, type)) {
        const tr::Tr reason = m_system.getLastErrorString();
        m_document->removeCard(record);
        m_system.cancel();
        save();
        throw BasicException(reason);
    }
    save();
}

void CheckSession::price()
{
    requireCard();
    if (isPriced()) {
        dropLoyaltyResult();
        return;
    }
    if (!m_system.request(m_document))
        throw BasicException(m_system.getLastErrorString());
    markPriced();
    save();
}

void CheckSession::subtotal()
{
    requireOpen();
    settleOrder();
    notifyCreating(EventCode::SubtotalEntered);
    m_state.orderUncertain = false;
    m_state.changeReported = false;
    save();
}

void CheckSession::spend()
{
    requireCard();
    if (!m_document->getDiscountSum().isZero())
        throw BasicException(u"Баллы уже списаны"_s);
    settleOrder();
    if (!isPriced() || m_state.pricesStale)
        price(); // The points that may be spent are those of the check as it is now.
    if (!card())
        return;
    if (!m_system.hasPointsForSpend())
        throw BasicException(u"Нет баллов, которые можно списать"_s);
    m_state.orderUncertain = true;
    save();
    m_system.spendPoints();
    if (card()) {
        for (const auto impacts = m_system.getBonusImpactsForSpend(); const auto &impact : impacts)
            m_document->addImpact(impact);
    }
    m_state.orderUncertain = false;
    save();
}

} // namespace till
