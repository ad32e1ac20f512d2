// Claim, send, record: the order of these three is what keeps an event from being lost.
#include "queuedelivery.h"

#include "eventmask.h"

#include <database/databaseerror.h>

#include <QtCore/QJsonDocument>

#include <algorithm>
#include <span>

using namespace Qt::Literals::StringLiterals;

namespace {

// At most so many accepted events, and those of one run, are sent again after a power failure.
constexpr int eventsBetweenCheckpoints = 500;

constexpr int longestRun = 32;

// For so long events are kept from other drains, and accepted ones may be sent again after a kill.
constexpr std::chrono::milliseconds runTime{10};

// As it is stored and logged; not every database takes a NUL in a text.
QString errorText(const QString &error)
{
    return eventmask::maskPhones(error).remove(QChar::Null);
}

} // namespace

QueueDelivery::QueueDelivery(const QueueSettings &settings, const QHash<QString, QueueDrain::Handler> &handlers,
                             const Environment &environment)
    : m_environment(environment), m_backOff(environment.random), m_access(settings, DatabaseConnection::Commits::Lazy)
{
    if (!m_environment.now)
        m_environment.now = currentQueueTime;
    if (!m_environment.isStopping)
        m_environment.isStopping = [] { return false; };
    for (auto entry = handlers.cbegin(); entry != handlers.cend(); ++entry)
        m_receivers.push_back({entry.key(), entry.value(), ServicePace(m_backOff)});
}

QueueDelivery::~QueueDelivery() = default;

bool QueueDelivery::step()
{
    return m_access.use([this](QueueStore &store) {
        if (!m_lease)
            m_lease = store.newLease();
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

bool QueueDelivery::stepOf(QueueStore &store, std::size_t receiver)
{
    const Receiver &to = m_receivers[receiver];
    const QueueTime now = m_environment.now();
    std::vector<QueueClaim> claims = store.claim(to.name, *m_lease, now, to.pace.heldBack(now), to.runLength);
    if (claims.empty())
        return false;
    m_sinceCheckpoint += static_cast<int>(claims.size());
    m_unrecorded = Run{receiver, std::move(claims)};
    send(*m_unrecorded);
    record(store);
    if (m_sinceCheckpoint >= eventsBetweenCheckpoints)
        checkpoint(store);
    return true;
}

// The first event that is not accepted ends the run: the next one may have to be a probe. So does the time, so that a
// slow service has one event claimed at a time, and other drains are not kept from work.
void QueueDelivery::send(Run &run)
{
    Receiver &receiver = m_receivers[run.receiver];
    const QueueTime start = m_environment.now();
    bool goesOn = true;
    while (goesOn && run.sent < run.claims.size()) {
        const QueueClaim &claim = run.claims[run.sent];
        run.last = send(receiver, claim);
        ++run.sent;
        log(receiver.name, claim, run.last);
        const auto elapsed = m_environment.now() - start; // below 0: somebody has put the clock back
        goesOn = run.last.result == Result::Accepted && elapsed >= elapsed.zero() && elapsed < runTime &&
                 !m_environment.isStopping();
    }
    receiver.runLength = goesOn ? std::min(2 * static_cast<int>(run.claims.size()), longestRun) : 1;
}

QueueDelivery::Outcome QueueDelivery::send(const Receiver &receiver, const QueueClaim &claim) const
{
    const QJsonDocument event = QJsonDocument::fromJson(claim.event);
    if (!event.isObject())
        return {Result::Refused, u"запись очереди повреждена: это не объект JSON"_s};
    try {
        receiver.handler(event.object());
        return {Result::Accepted, {}};
    } catch (const RejectionException &error) {
        return {Result::Refused, errorText(error.text().ru())};
    } catch (const std::exception &error) { // the text of a BasicException is its what()
        return {Result::Failed, errorText(QString::fromUtf8(error.what()))};
    } catch (...) {
        return {Result::Failed, u"неизвестная ошибка"_s};
    }
}

void QueueDelivery::log(const QString &receiver, const QueueClaim &claim, const Outcome &outcome)
{
    Log4Qt::Logger *logger = databaseerror::logger();
    if (outcome.result == Result::Accepted && !logger->isEnabledFor(Log4Qt::Level::DEBUG_INT))
        return; // the common case: no text is put together in vain
    const QString what = u"запись %1 для «%2», заказ «%3», попытка %4"_s.arg(
        QString::number(claim.id), receiver, claim.basket, QString::number(claim.attempts));
    if (outcome.result == Result::Accepted)
        logger->debug(u"Доставлена "_s + what);
    else if (outcome.result == Result::Failed)
        logger->warn(u"Не доставлена %1, будет повтор: %2"_s.arg(what, outcome.error));
    else
        logger->error(u"Отклонена и отложена %1: %2"_s.arg(what, outcome.error));
}

void QueueDelivery::record(QueueStore &store)
{
    if (!m_unrecorded)
        return;
    const Run &run = *m_unrecorded;
    const bool hasFailed = run.last.result == Result::Failed;
    const qint64 newest = hasFailed ? store.newest() : 0;
    store.record([&] { write(store, run); });
    ServicePace &pace = m_receivers[run.receiver].pace;
    if (!hasFailed || run.sent > 1)
        pace.answered();
    if (hasFailed)
        pace.failed(m_environment.now(), newest);
    m_unrecorded.reset();
}

void QueueDelivery::write(QueueStore &store, const Run &run) const
{
    const std::span claims(run.claims);
    const QueueClaim &last = claims[run.sent - 1];
    const QueueTime now = m_environment.now();
    store.accepted(claims.first(run.last.result == Result::Accepted ? run.sent : run.sent - 1), *m_lease);
    if (run.last.result == Result::Failed)
        store.failed(last, *m_lease, run.last.error, now + m_backOff.delay(last.attempts));
    if (run.last.result == Result::Refused)
        store.refused(last, *m_lease, run.last.error, now);
    store.release(*m_lease);
}

void QueueDelivery::endBackOffs()
{
    m_access.use([this](QueueStore &store) {
        for (Receiver &receiver : m_receivers) {
            store.endBackOffs(receiver.name);
            receiver.pace.endPause();
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

void QueueDelivery::rest()
{
    if (m_sinceCheckpoint > 0)
        m_access.use([this](QueueStore &store) { checkpoint(store); });
}

void QueueDelivery::checkpoint(QueueStore &store)
{
    store.checkpoint();
    m_sinceCheckpoint = 0;
}
