// Claim, send, record: the order of these three is what keeps an event from being lost.
#include "queuedelivery.h"

#include "eventmask.h"
#include "queueerror.h"

#include <QtCore/QJsonDocument>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

// At most so many accepted events are sent again after a power failure.
constexpr int eventsBetweenCheckpoints = 100;

// As it is stored and logged; not every database takes a NUL in a text.
QString errorText(const QString &error)
{
    return eventmask::maskPhones(error).remove(QChar::Null);
}

} // namespace

QueueDelivery::QueueDelivery(const QueueSettings &settings, const QHash<QString, QueueDrain::Handler> &handlers,
                             const Environment &environment)
    : m_environment(environment), m_backOff(environment.random), m_access(settings, QueueConnection::Commits::Lazy)
{
    if (!m_environment.now)
        m_environment.now = currentQueueTime;
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
    const auto claim = store.claim(to.name, *m_lease, now, to.pace.heldBack(now));
    if (!claim)
        return false;
    ++m_sinceCheckpoint;
    m_unrecorded = send(receiver, *claim);
    log(*m_unrecorded);
    record(store);
    if (m_sinceCheckpoint >= eventsBetweenCheckpoints)
        checkpoint(store);
    return true;
}

QueueDelivery::Outcome QueueDelivery::send(std::size_t receiver, const QueueClaim &claim) const
{
    const QJsonDocument event = QJsonDocument::fromJson(claim.event);
    if (!event.isObject())
        return {receiver, claim, Result::Refused, u"запись очереди повреждена: это не объект JSON"_s};
    try {
        m_receivers[receiver].handler(event.object());
        return {receiver, claim, Result::Accepted, {}};
    } catch (const RejectionException &error) {
        return {receiver, claim, Result::Refused, errorText(error.text().ru())};
    } catch (const std::exception &error) { // the text of a BasicException is its what()
        return {receiver, claim, Result::Failed, errorText(QString::fromUtf8(error.what()))};
    } catch (...) {
        return {receiver, claim, Result::Failed, u"неизвестная ошибка"_s};
    }
}

void QueueDelivery::record(QueueStore &store)
{
    if (!m_unrecorded)
        return;
    const Outcome &outcome = *m_unrecorded;
    const qint64 newest = outcome.result == Result::Failed ? store.newest() : 0;
    write(store, outcome);
    ServicePace &pace = m_receivers[outcome.receiver].pace;
    if (outcome.result == Result::Failed)
        pace.failed(m_environment.now(), newest);
    else
        pace.answered();
    m_unrecorded.reset();
}

void QueueDelivery::write(QueueStore &store, const Outcome &outcome) const
{
    const QueueTime now = m_environment.now();
    switch (outcome.result) {
    case Result::Accepted:
        return store.accepted(outcome.claim, *m_lease);
    case Result::Failed:
        return store.failed(outcome.claim, *m_lease, outcome.error, now + m_backOff.delay(outcome.claim.attempts));
    case Result::Refused:
        return store.refused(outcome.claim, *m_lease, outcome.error, now);
    }
}

void QueueDelivery::log(const Outcome &outcome) const
{
    const QueueClaim &claim = outcome.claim;
    const QString what = u"запись %1 для «%2», заказ «%3», попытка %4"_s.arg(
        QString::number(claim.id), m_receivers[outcome.receiver].name, claim.basket, QString::number(claim.attempts));
    if (outcome.result == Result::Accepted)
        queueerror::logger()->debug(u"Доставлена "_s + what);
    else if (outcome.result == Result::Failed)
        queueerror::logger()->warn(u"Не доставлена %1, будет повтор: %2"_s.arg(what, outcome.error));
    else
        queueerror::logger()->error(u"Отклонена и отложена %1: %2"_s.arg(what, outcome.error));
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
