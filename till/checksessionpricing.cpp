// Pricing and paying with points. The events are raised where a till raises them; see core/eventcode.h.
#include "checksession.h"
#include "loyalty.h"

#include <cashier/cardaddlogic.h>
#include <cashier/cashierui.h>
#include <cashier/dialog.h>
#include <core/basicexception.h>
#include <core/mockfactory.h>
#include <loyalty/basicloyaltysystem.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

using Order = TillState::Order;

void CheckSession::price()
{
    requireCard();
    if (isPriced()) {
        const bool hadPoints = isPaidWithPoints();
        dropLoyaltyResult();
        if (hadPoints)
            reportPointsReturned();
        return;
    }
    if (!m_system.request(m_document))
        throw BasicException(refusalText(m_system.getLastErrorString()));
    m_state.order = Order::InStep;
    save();
}

void CheckSession::subtotal()
{
    requireOpen();
    settleOrder();
    const bool inStep = m_state.order == Order::InStep;
    notifyCreating(EventCode::SubtotalEntered);
    m_state.order = inStep || !card() ? Order::InStep : Order::Behind;
    save();
}

void CheckSession::spend()
{
    requireCard();
    if (isPaidWithPoints())
        throw BasicException(u"Баллы уже списаны"_s);
    settleOrder();
    if (!isPriced() || m_state.order != Order::InStep)
        price(); // The points that may be spent are those of the check as it is now.
    if (!card())
        return;
    if (!m_system.hasPointsForSpend())
        throw BasicException(u"Нет баллов, которые можно списать"_s);
    spendOffered();
}

void CheckSession::spendOffered()
{
    const Money offered = Money::fromRubles(m_system.getPointsForSpend(m_document));
    m_state.order = Order::Uncertain;
    save();
    m_system.spendPoints();
    try {
        if (card()) {
            for (const auto impacts = m_system.getBonusImpactsForSpend(); const auto &impact : impacts)
                m_document->addImpact(impact);
        }
    } catch (const BasicException &) {
        m_document->removeImpactsOf(card());
        throw;
    }
    // An answer without points does not prove that the service has taken none.
    m_state.order = card() && !isPaidWithPoints() ? Order::Uncertain : Order::InStep;
    save();
    if (const Money spent = m_document->getDiscountSum(); card() && spent != offered)
        Singleton<CashierUi>::instance()->show(tr::Tr(
            u"Сервис списал %1 баллов вместо %2. Предупредите покупателя"_s.arg(spent.toText(), offered.toText())));
}

void CheckSession::settleOrder()
{
    if (m_state.order != Order::Uncertain)
        return;
    const bool hadPoints = m_system.hasBonusImpacts();
    dropLoyaltyResult();
    if (hadPoints)
        reportPointsReturned();
}

void CheckSession::reportPointsReturned() const
{
    if (card())
        Singleton<CashierUi>::instance()->show(
            tr::Tr(u"Баллы возвращены на карту. Чтобы оплатить ими, спишите их ещё раз"_s));
}

void CheckSession::dropLoyaltyResult()
{
    m_state.order = Order::Uncertain;
    if (card())
        m_document->removeImpactsOf(card());
    save();
    priceOrRemoveCard([this] { notify(EventCode::LoyaltyResultDropped); });
    m_state.order = Order::InStep;
    save();
}

void CheckSession::priceOrRemoveCard(const std::function<void()> &attempt)
{
    static const tr::Tr retry(u"tillErrorRetry"_s, u"Повторить"_s);
    static const tr::Tr remove(u"tillErrorRemove"_s, u"Удалить"_s);
    while (card()) {
        tr::Tr reason;
        try {
            attempt();
            if (!card() || isPriced())
                return;
            reason = refusalText(m_system.getLastErrorString());
        } catch (const BasicException &error) {
            reason = refusalText(error.text());
        }
        const tr::Tr question(u"tillPriceError"_s,
                              u"Чек не рассчитан: %1\nПовторить или удалить карту из чека?"_s.arg(reason.ru()));
        if (!MockFactory<Dialog>::create()->question(question, 1, retry, remove, 0))
            MockFactory<CardAddLogic>::create()->removeCard(m_document, card());
    }
}

void CheckSession::notifyCreating(EventCode code)
{
    if (isPriced() && m_state.order != Order::InStep) {
        m_state.order = Order::Uncertain;
        save();
    }
    notify(code);
}

} // namespace till
