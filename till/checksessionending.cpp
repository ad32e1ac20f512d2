// The end of a check, its continuation after a kill, and what the operations of a session share.
#include "checksession.h"
#include "endingqueue.h"
#include "journal.h"

#include <cashier/cardaddlogic.h>
#include <cashier/dialog.h>
#include <cashier/savetofilelogic.h>
#include <core/activitynotifier.h>
#include <core/basicexception.h>
#include <core/mockfactory.h>
#include <core/singleton.h>
#include <loyalty/basicloyaltysystem.h>

#include <QtCore/QScopeGuard>

using namespace Qt::Literals::StringLiterals;

namespace till {

std::optional<CheckResult> CheckSession::resume()
{
    m_document = m_store.restore();
    if (!m_document)
        return std::nullopt;
    m_state = TillState::readFrom(*m_document);
    m_system.setDocument(m_document);
    m_system.restoreLoyaltySystem();
    if (m_state.ending != TillState::Ending::None)
        return completeEnding();
    settleOrder();
    // The loyalty system does not keep that a change was reported to it.
    if (m_state.changeReported)
        notify(EventCode::PositionChanged);
    return std::nullopt;
}

CheckResult CheckSession::close()
{
    requireOpen();
    if (m_document->getGoodsItems().isEmpty())
        throw BasicException(u"В чеке нет товаров"_s);
    settleOrder();
    if (card() && !isPriced()) {
        priceOrRemoveCard([this] { m_system.request(m_document); });
        markPriced();
    }
    notifyCreating(EventCode::PaymentStarted);
    beginEnding(TillState::Ending::Closing);
    return completeEnding();
}

CheckResult CheckSession::voidCheck()
{
    requireOpen();
    if (card())
        m_document->removeImpactsOf(card());
    beginEnding(TillState::Ending::Voiding);
    return completeEnding();
}

void CheckSession::beginEnding(TillState::Ending ending)
{
    m_state.ending = ending;
    m_state.orderUncertain = false;
    save();
}

CheckResult CheckSession::completeEnding()
{
    if (m_document->getState() == SaleDocument::State::Open)
        endWithLoyaltySystem();
    m_queue.store(m_state.requests);
    const CheckResult ended = result();
    m_journal.enter(ended.toJournal());
    m_store.remove();
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

void CheckSession::settleOrder()
{
    if (m_state.orderUncertain)
        dropLoyaltyResult();
}

void CheckSession::dropLoyaltyResult()
{
    m_state.orderUncertain = true;
    if (card())
        m_document->removeImpactsOf(card());
    save();
    priceOrRemoveCard([this] { notify(EventCode::LoyaltyResultDropped); });
    markPriced();
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
            reason = m_system.getLastErrorString();
        } catch (const BasicException &error) {
            reason = error.text();
        }
        const tr::Tr question(u"tillPriceError"_s,
                              u"Чек не рассчитан: %1\nПовторить или удалить карту из чека?"_s.arg(reason.ru()));
        if (!MockFactory<Dialog>::create()->question(question, 1, retry, remove, 0))
            MockFactory<CardAddLogic>::create()->removeCard(m_document, card());
    }
}

void CheckSession::markPriced()
{
    m_state.orderUncertain = false;
    m_state.changeReported = false;
    m_state.pricesStale = false;
}

void CheckSession::notifyCreating(EventCode code)
{
    if (isPriced() && m_state.pricesStale) {
        m_state.orderUncertain = true;
        save();
    }
    notify(code);
}

void CheckSession::notify(EventCode code) const
{
    const auto document = m_document.staticCast<AbstractDocument>();
    Singleton<ActivityNotifier>::instance()->notify(Event(code, {{u"document"_s, QVariant::fromValue(document)}}));
}

void CheckSession::save() const
{
    m_state.writeTo(*m_document);
    MockFactory<SaveToFileLogic>::create()->save(m_document, QString(), 0.0);
}

QSharedPointer<DocumentCardRecord> CheckSession::card() const
{
    return m_system.getCard();
}

bool CheckSession::isPriced() const
{
    return card() && !card()->getOperationId().isEmpty();
}

void CheckSession::requireOpen() const
{
    if (!isOpen())
        throw BasicException(u"Нет открытого чека"_s);
    if (m_state.ending != TillState::Ending::None)
        throw BasicException(u"Чек уже закрывается, изменить его нельзя"_s);
}

void CheckSession::requireCard() const
{
    requireOpen();
    if (!card())
        throw BasicException(u"На чеке нет карты"_s);
}

QSharedPointer<GoodsItem> CheckSession::requireLine(int line) const
{
    requireOpen();
    if (const auto item = m_document->findGoodsItem(line))
        return item;
    throw BasicException(u"В чеке нет строки %1"_s.arg(line));
}

} // namespace till
