// The end of a check.
#include "checksession.h"
#include "endingqueue.h"
#include "loyalty.h"

#include <cashier/cashierui.h>
#include <core/basicexception.h>
#include <core/singleton.h>
#include <loyalty/basicloyaltysystem.h>

#include <log4qt/logmanager.h>

#include <QtCore/QScopeGuard>

using namespace Qt::Literals::StringLiterals;

namespace till {

CheckResult CheckSession::close()
{
    if (isEnding(TillState::Ending::Closing))
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
    if (isEnding(TillState::Ending::Voiding))
        return completeEnding();
    requireOpen();
    if (card())
        m_document->removeImpactsOf(card());
    beginEnding(TillState::Ending::Voiding);
    return completeEnding();
}

bool CheckSession::isEnding(TillState::Ending ending)
{
    if (m_isStale)
        reread();
    return isOpen() && m_state.ending == ending;
}

void CheckSession::beginEnding(TillState::Ending ending)
{
    m_state.ending = ending;
    // rollback() takes the order off the card; the journal still has to say which one it was.
    m_state.basket = ending == TillState::Ending::Voiding && card() ? card()->getOperationId() : QString();
    m_state.order = TillState::Order::InStep;
    save();
}

CheckResult CheckSession::completeEnding()
{
    if (m_document->getState() == SaleDocument::State::Open)
        endWithLoyaltySystem();
    CheckResult ended = result();
    if (ended.basket.isEmpty())
        ended.basket = m_state.basket;
    QString problem;
    try {
        if (m_queued != ended.identifier)
            m_queue.store(m_state.requests);
        m_queued = ended.identifier;
    } catch (const BasicException &error) {
        problem = error.text().ru();
    }
    if (problem.isEmpty())
        m_store->finish(*m_document, ended.toJournal());
    else
        putAway(u"Чек завершён, его запросы ещё не в очереди: "_s + problem, CheckStore::Standing::Ending);
    ended.loyaltyOff = loyaltyOff();
    releaseDocument();
    reportNotices();
    return ended;
}

void CheckSession::endWithLoyaltySystem()
{
    const bool closing = m_state.ending == TillState::Ending::Closing;
    m_queue.hold();
    const auto release = qScopeGuard([this] { m_queue.release(); });
    if (!(closing ? m_system.commit(m_document) : m_system.rollback(m_document)))
        throw BasicException(refusalText(m_system.getLastErrorString()));
    if (!closing)
        m_system.cancel();
    m_document->setState(closing ? SaleDocument::State::Closed : SaleDocument::State::Voided);
    save();
}

bool CheckSession::endWaiting()
{
    if (isOpen() || m_system.getLoyaltySystemCode() == 0)
        return false; // Without a loyalty system nobody could read the card's part of the check for the journal.
    try {
        for (const CheckStore::KeptCheck &check : keptChecks()) {
            if (check.standing != CheckStore::Standing::Ending)
                continue;
            if (!m_queue.findProblem().isEmpty())
                return true;
            const auto release = qScopeGuard([this] {
                if (isOpen())
                    releaseDocument();
            });
            adopt(m_store->parked(check.identifier));
            completeEnding();
            if (!m_queue.knownProblem().isEmpty())
                return true;
        }
    } catch (const BasicException &error) {
        Log4Qt::LogManager::logger(u"till"_s)->error(error.text().ru());
        return true;
    }
    return false;
}

} // namespace till
