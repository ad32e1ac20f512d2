// The end of a check, and going on after a kill.
#include "checksession.h"
#include "endingqueue.h"

#include <cashier/cashierui.h>
#include <core/basicexception.h>
#include <core/singleton.h>
#include <loyalty/basicloyaltysystem.h>

#include <QtCore/QScopeGuard>

using namespace Qt::Literals::StringLiterals;

namespace till {

std::optional<CheckResult> CheckSession::resume()
{
    const auto saved = m_store->restore();
    if (!saved)
        return std::nullopt;
    adopt(saved);
    if (m_state.ending != TillState::Ending::None)
        return completeEnding();
    dropUnidentifiedCard();
    settleOrder();
    return std::nullopt;
}

CheckResult CheckSession::close()
{
    if (isOpen() && m_state.ending == TillState::Ending::Closing)
        return completeEnding();
    requireOpen();
    if (m_document->getGoodsItems().isEmpty()) {
        const CheckResult voided = voidCheck();
        Singleton<CashierUi>::instance()->show(tr::Tr(u"В чеке не было товаров: он аннулирован"_s));
        return voided;
    }
    settleOrder();
    if (card() && !isPriced()) {
        priceOrRemoveCard([this] { m_system.request(m_document); });
        m_state.order = TillState::Order::InStep;
    }
    notifyCreating(EventCode::PaymentStarted);
    beginEnding(TillState::Ending::Closing);
    return completeEnding();
}

CheckResult CheckSession::voidCheck()
{
    if (isOpen() && m_state.ending == TillState::Ending::Voiding)
        return completeEnding();
    requireOpen();
    if (card())
        m_document->removeImpactsOf(card());
    beginEnding(TillState::Ending::Voiding);
    return completeEnding();
}

void CheckSession::beginEnding(TillState::Ending ending)
{
    m_state.ending = ending;
    m_state.order = TillState::Order::InStep;
    save();
}

CheckResult CheckSession::completeEnding()
{
    if (m_document->getState() == SaleDocument::State::Open)
        endWithLoyaltySystem();
    m_queue.store(m_state.requests);
    const CheckResult ended = result();
    m_store->finish(*m_document, ended.toJournal());
    m_system.cancel();
    m_system.clearAfterClose();
    m_system.setDocument(nullptr);
    m_document.reset();
    return ended;
}

void CheckSession::endWithLoyaltySystem()
{
    const bool closing = m_state.ending == TillState::Ending::Closing;
    // A request goes onto the check at once: when the card is removed on the way, the loyalty system saves the check,
    // and the cancellation must be in that write.
    m_queue.hold([this](const QVariant &request) {
        m_state.requests.append(request);
        m_state.writeTo(*m_document);
    });
    const auto release = qScopeGuard([this] { m_queue.release(); });
    if (!(closing ? m_system.commit(m_document) : m_system.rollback(m_document)))
        throw BasicException(m_system.getLastErrorString());
    if (!closing)
        m_system.cancel();
    m_document->setState(closing ? SaleDocument::State::Closed : SaleDocument::State::Voided);
    save();
}

} // namespace till
