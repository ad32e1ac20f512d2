// Claim, send, record: the order of these three is what keeps an event from being lost.
#include "queuedelivery.h"

#include "eventmask.h"

#include <core/plaintext.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QScopeGuard>

#include <algorithm>
#include <span>

using namespace Qt::Literals::StringLiterals;

namespace {

// After a power failure at most so many accepted events, and one batch, are sent again.
constexpr int eventsBetweenCheckpoints = 500;

constexpr int largestBatch = 32;

// How long a batch keeps its events from other drains. If the process is killed meanwhile, accepted ones may be sent
// again.
constexpr std::chrono::milliseconds batchTime{10};

// As stored and logged: a service may explain a refusal with a page of any length, and not every database takes a NUL
// in a text.
QString errorText(const QString &error)
{
    constexpr qsizetype longest = 1000;
    const QString text = plainText(eventmask::maskText(error), longest);
    return text.isEmpty() ? u"причина не названа"_s : text;
}

} // namespace

QueueDelivery::QueueDelivery(const QueueSettings &settings, const QHash<QString, QueueHandler> &handlers,
                             const Environment &environment)
    : m_environment(environment), m_backOff(environment.random), m_access(settings, DatabaseConnection::Commits::Lazy)
{
    if (!m_environment.now)
        m_environment.now = currentQueueTime;
    if (!m_environment.isStopping)
        m_environment.isStopping = [] { return false; };
    for (auto entry = handlers.cbegin(); entry != handlers.cend(); ++entry)
        m_receivers.push_back({entry.key(), entry.value(), CircuitBreaker(m_backOff)});
}

QueueDelivery::~QueueDelivery() = default;

bool QueueDelivery::step()
{
    return m_access.use([this](QueueStore &store) {
        if (!m_lease)
            m_lease = store.newLease();
        holdLease(store);
        record(store);
        for (std::size_t i = 0; i < m_receivers.size(); ++i) {
            // One event each in turn, so that no receiver waits for another's queue.
            m_turn = (m_turn + 1) % m_receivers.size();
            if (stepOf(store, m_turn))
                return true;
        }
        return false;
    });
}

// Also needed on a new connection, or another drain could take over the claims whose outcome is still to be recorded.
// If there are none and the lock cannot be acquired, the next step uses a new lease: a hung server process may keep the
// old lock.
void QueueDelivery::holdLease(QueueStore &store)
{
    auto givenUp = qScopeGuard([this] {
        if (!m_unrecorded)
            m_lease.reset();
    });
    m_lease->hold(store.connection());
    givenUp.dismiss();
}

bool QueueDelivery::stepOf(QueueStore &store, std::size_t receiver)
{
    const Receiver &to = m_receivers[receiver];
    const QueueTime now = m_environment.now();
    std::vector<QueueClaim> claims = store.claim(to.name, *m_lease, now, to.breaker.heldBack(now), to.batchSize);
    if (claims.empty())
        return false;
    m_sinceCheckpoint += static_cast<int>(claims.size());
    m_unrecorded = Batch{receiver, std::move(claims)};
    send(*m_unrecorded);
    record(store);
    if (m_sinceCheckpoint >= eventsBetweenCheckpoints)
        checkpoint(store);
    return true;
}

// The first event that is not accepted ends the batch: the next one may have to be a probe. So does the time, so that
// with a slow service one event is claimed at a time, and other drains are not kept from work.
void QueueDelivery::send(Batch &batch)
{
    Receiver &receiver = m_receivers[batch.receiver];
    const QueueTime start = m_environment.now();
    bool goesOn = true;
    while (goesOn && batch.sent < batch.claims.size()) {
        const QueueClaim &claim = batch.claims[batch.sent];
        batch.last = send(receiver, claim);
        ++batch.sent;
        log(receiver.name, claim, batch.last);
        const auto elapsed = m_environment.now() - start; // below 0: the clock was set back
        goesOn = batch.last.result == Result::Accepted && elapsed >= elapsed.zero() && elapsed < batchTime &&
                 !m_environment.isStopping();
    }
    receiver.batchSize = goesOn ? std::min(2 * static_cast<int>(batch.claims.size()), largestBatch) : 1;
}

QueueDelivery::Outcome QueueDelivery::send(const Receiver &receiver, const QueueClaim &claim) const
{
    const QJsonDocument event = QJsonDocument::fromJson(claim.event);
    if (!event.isObject())
        return {Result::Refused, u"запись очереди повреждена: это не объект JSON"_s};
    try {
        receiver.handler(event.object());
        return {Result::Accepted, {}};
    } catch (const QueueRefusal &error) {
        return {Result::Refused, errorText(error.text().ru())};
    } catch (const std::exception &error) { // the text of a BasicException is its what()
        return {Result::Failed, errorText(QString::fromUtf8(error.what()))};
    } catch (...) {
        return {Result::Failed, u"неизвестная ошибка"_s};
    }
}

void QueueDelivery::log(const QString &receiver, const QueueClaim &claim, const Outcome &outcome)
{
    Log4Qt::Logger *logger = queueLogger();
    if (outcome.result == Result::Accepted && !logger->isEnabledFor(Log4Qt::Level::DEBUG_INT))
        return; // the common case: avoids building a message nobody reads
    const QString what = u"запись %1 для «%2», заказ «%3», попытка %4"_s.arg(
        QString::number(claim.id), receiver, claim.basket, QString::number(claim.attempts));
    if (outcome.result == Result::Accepted)
        logger->debug(u"Доставлена "_s + what);
    else if (outcome.result == Result::Failed)
        logger->warn(u"Не доставлена %1, будет повтор: %2"_s.arg(what, outcome.error));
    else
        logger->error(u"Отклонена и больше не отправляется %1: %2"_s.arg(what, outcome.error));
}

void QueueDelivery::record(QueueStore &store)
{
    if (!m_unrecorded)
        return;
    const Batch &batch = *m_unrecorded;
    const bool hasFailed = batch.last.result == Result::Failed;
    const qint64 newest = hasFailed ? store.newest() : 0;
    store.record([&] { write(store, batch); });
    CircuitBreaker &breaker = m_receivers[batch.receiver].breaker;
    if (hasFailed)
        breaker.failed(m_environment.now(), newest);
    else
        breaker.answered();
    m_unrecorded.reset();
}

// What was not accepted comes first: accepted() releases all other claims.
void QueueDelivery::write(QueueStore &store, const Batch &batch) const
{
    const std::span claims(batch.claims);
    const QueueClaim &last = claims[batch.sent - 1];
    const QueueTime now = m_environment.now();
    store.release(claims.subspan(batch.sent), *m_lease);
    store.lockOrders(*m_lease);
    if (batch.last.result == Result::Failed)
        store.failed(last, *m_lease, batch.last.error, now, now + m_backOff.delay(last.attempts));
    if (batch.last.result == Result::Refused)
        store.refused(last, *m_lease, batch.last.error, now);
    store.accepted(claims.first(batch.last.result == Result::Accepted ? batch.sent : batch.sent - 1), *m_lease, now);
}

void QueueDelivery::endBackOffs()
{
    m_access.use([this](QueueStore &store) {
        for (Receiver &receiver : m_receivers) {
            store.endBackOffs(receiver.name);
            receiver.breaker.endPause();
        }
    });
}

bool QueueDelivery::hasDeliverable()
{
    return m_access.use([this](QueueStore &store) {
        return std::any_of(m_receivers.cbegin(), m_receivers.cend(),
                           [&store](const Receiver &receiver) { return store.hasDeliverable(receiver.name); });
    });
}

void QueueDelivery::checkpointWhenIdle()
{
    if (m_sinceCheckpoint > 0)
        m_access.use([this](QueueStore &store) { checkpoint(store); });
}

void QueueDelivery::checkpoint(QueueStore &store)
{
    store.connection().checkpoint();
    m_sinceCheckpoint = 0;
}
