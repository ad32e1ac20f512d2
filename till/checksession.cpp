// The session itself: opening a check, and what all groups of operations share.
#include "checksession.h"

#include "endingqueue.h"

#include <cashier/cashierui.h>
#include <cashier/savetofilelogic.h>
#include <core/activitynotifier.h>
#include <core/basicexception.h>
#include <core/mockfactory.h>
#include <core/singleton.h>
#include <loyalty/basicloyaltysystem.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

CheckSession::CheckSession(BasicLoyaltySystem &system, EndingQueue &queue) : m_system(system), m_queue(queue)
{}

CheckSession::~CheckSession()
{
    m_queue.setHolder(nullptr);
    m_system.setDocument(nullptr);
}

CheckResult CheckSession::result() const
{
    CheckResult result = resultOf(*m_document, m_system.getCard(), m_system.getPointsForEarn());
    result.loyaltyOff = loyaltyOff();
    if (isPriced())
        result.offered = Money::fromRubles(m_system.getPointsForSpend(m_document));
    result.isOffered = isPriced() && m_state.order == TillState::Order::InStep;
    result.isPriced = result.isOffered || (isPriced() && m_state.order == TillState::Order::Behind);
    return result;
}

QString CheckSession::loyaltyOff() const
{
    // A system without a number answers for no card: there is no plugin.
    return m_system.getLoyaltySystemCode() == 0 ? m_system.getLastErrorString().ru() : m_queue.knownProblem();
}

void CheckSession::open()
{
    if (isOpen())
        throw BasicException(u"Предыдущий чек ещё не закрыт"_s);
    endWaiting();
    if (!m_queue.knownProblem().isEmpty())
        m_queue.findProblem();
    m_document = QSharedPointer<SaleDocument>::create();
    try {
        save();
    } catch (const BasicException &) {
        releaseDocument(); // Going back to what is saved may have brought another check here.
        throw;
    }
    m_system.setDocument(m_document);
    m_system.restoreLoyaltySystem(); // forgets what it knows of a check that was parked
    takeRequests();
}

void CheckSession::takeRequests()
{
    m_queue.setHolder([this](const QVariant &request) {
        m_state.requests.append(request);
        m_state.writeTo(*m_document);
    });
}

void CheckSession::releaseDocument()
{
    m_queue.setHolder(nullptr);
    m_system.cancel();
    m_system.clearAfterClose();
    m_system.setDocument(nullptr);
    m_document.reset();
    m_state = {};
    m_isStale = false;
}

void CheckSession::adopt(const QSharedPointer<SaleDocument> &document)
{
    m_state = TillState::readFrom(*document);
    m_document = document;
    takeRequests();
    m_system.setDocument(m_document);
    m_system.restoreLoyaltySystem();
    // The loyalty system does not keep that a change was reported to it.
    if (m_state.order == TillState::Order::Changed)
        notify(EventCode::PositionChanged);
}

void CheckSession::reread()
{
    m_isStale = true;
    if (const auto saved = m_store->restore())
        adopt(saved);
    m_isStale = false;
}

void CheckSession::revert()
{
    try {
        reread();
    } catch (const BasicException &) {
        // The disk that refused the change cannot be read either: the caller reports why.
    }
}

void CheckSession::notify(EventCode code) const
{
    const auto document = m_document.staticCast<AbstractDocument>();
    Singleton<ActivityNotifier>::instance()->notify(Event(code, {{u"document"_s, QVariant::fromValue(document)}}));
}

void CheckSession::save()
{
    try {
        m_state.writeTo(*m_document);
        MockFactory<SaveToFileLogic>::create()->save(m_document, QString(), 0.0);
    } catch (const BasicException &) {
        revert();
        throw;
    }
    showNotices();
}

void CheckSession::reportNotices()
{
    if (showNotices() && isOpen())
        save();
}

bool CheckSession::showNotices() const
{
    const QStringList notices = m_store->takeNotices();
    for (const QString &notice : notices)
        Singleton<CashierUi>::instance()->show(tr::Tr(notice));
    return !notices.isEmpty();
}

QSharedPointer<DocumentCardRecord> CheckSession::card() const
{
    return m_system.getCard();
}

bool CheckSession::isPriced() const
{
    return card() && !card()->getOperationId().isEmpty();
}

bool CheckSession::isPaidWithPoints() const
{
    return card() && !m_document->getDiscountSum().isZero();
}

void CheckSession::requireOpen()
{
    if (!isOpen())
        throw BasicException(u"Нет открытого чека"_s);
    if (m_isStale)
        reread();
    if (m_state.ending != TillState::Ending::None)
        throw BasicException(u"Чек уже закрывается, изменить его нельзя"_s);
}

void CheckSession::requireCard()
{
    requireOpen();
    if (!card())
        throw BasicException(u"На чеке нет карты"_s);
}

QSharedPointer<GoodsItem> CheckSession::requireLine(int line)
{
    requireOpen();
    return m_document->requireGoodsItem(line);
}

} // namespace till
