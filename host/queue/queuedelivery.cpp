// Claim, send, record: the order of these three is what keeps an event from being lost.
#include "queuedelivery.h"

#include "queueerror.h"

#include <QtCore/QJsonDocument>

using namespace Qt::Literals::StringLiterals;

QueueDelivery::QueueDelivery(const QString &fileName, const QHash<QString, QueueDrain::Handler> &handlers,
                             const Environment &environment)
    : m_fileName(fileName), m_environment(environment), m_backOff(environment.random)
{
    if (!m_environment.now)
        m_environment.now = [] {
            return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
        };
    for (auto entry = handlers.cbegin(); entry != handlers.cend(); ++entry)
        m_receivers.push_back({entry.key(), entry.value(), ServicePace(m_backOff)});
}

QueueDelivery::~QueueDelivery() = default;

// Runs an operation on an open database. A database that has failed is closed, so that the next operation opens the
// file that is there then: it may have been repaired, or put in place of the old one.
template <class Operation>
auto QueueDelivery::guarded(Operation operation)
{
    try {
        if (m_store && m_store->isReplaced())
            m_store.reset();
        if (!m_store)
            m_store.emplace(m_fileName, QueueConnection::Commits::Lazy);
        if (!m_lease)
            m_lease.emplace(m_fileName);
        return operation();
    } catch (...) {
        m_store.reset();
        throw;
    }
}

bool QueueDelivery::step()
{
    return guarded([this] {
        record();
        for (std::size_t i = 0; i < m_receivers.size(); ++i) {
            m_turn =
                (m_turn + 1) % m_receivers.size(); // one event each in turn, so that none waits for another's queue
            if (stepOf(m_turn))
                return true;
        }
        return false;
    });
}

bool QueueDelivery::stepOf(std::size_t receiver)
{
    const Receiver &to = m_receivers[receiver];
    const QueueTime now = m_environment.now();
    const auto claim = m_store->claim(to.name, *m_lease, now, to.pace.heldBack(now));
    if (!claim)
        return false;
    m_checkpointDue = true;
    m_unrecorded = send(receiver, *claim);
    log(*m_unrecorded);
    record();
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
        return {receiver, claim, Result::Refused, error.text().ru()};
    } catch (const BasicException &error) {
        return {receiver, claim, Result::Failed, error.text().ru()};
    } catch (const std::exception &error) {
        return {receiver, claim, Result::Failed, QString::fromUtf8(error.what())};
    } catch (...) {
        return {receiver, claim, Result::Failed, u"неизвестная ошибка"_s};
    }
}

void QueueDelivery::record()
{
    if (!m_unrecorded)
        return;
    const Outcome &outcome = *m_unrecorded;
    store(outcome);
    ServicePace &pace = m_receivers[outcome.receiver].pace;
    if (outcome.result == Result::Failed)
        pace.failed(m_environment.now(), m_store->newest());
    else
        pace.answered();
    m_unrecorded.reset();
}

void QueueDelivery::store(const Outcome &outcome)
{
    const QueueTime now = m_environment.now();
    switch (outcome.result) {
    case Result::Accepted:
        return m_store->accepted(outcome.claim, *m_lease);
    case Result::Failed:
        return m_store->failed(outcome.claim, *m_lease, outcome.error, now + m_backOff.delay(outcome.claim.attempts));
    case Result::Refused:
        return m_store->refused(outcome.claim, *m_lease, outcome.error, now);
    }
}

void QueueDelivery::log(const Outcome &outcome) const
{
    const QStringList values = {QString::number(outcome.claim.id), m_receivers[outcome.receiver].name,
                                outcome.claim.basket, QString::number(outcome.claim.attempts)};
    const QString what =
        u"запись %1 для «%2», заказ «%3», попытка %4"_s.arg(values[0], values[1], values[2], values[3]);
    if (outcome.result == Result::Accepted)
        queueerror::logger()->debug(u"Доставлена "_s + what);
    else if (outcome.result == Result::Failed)
        queueerror::logger()->warn(u"Не доставлена %1, будет повтор: %2"_s.arg(what, outcome.error));
    else
        queueerror::logger()->error(u"Отклонена и отложена %1: %2"_s.arg(what, outcome.error));
}

void QueueDelivery::endBackOffs()
{
    guarded([this] {
        for (Receiver &receiver : m_receivers) {
            m_store->endBackOffs(receiver.name);
            receiver.pace.endPause();
        }
    });
}

bool QueueDelivery::hasDeliverable()
{
    return guarded([this] {
        return std::any_of(m_receivers.cbegin(), m_receivers.cend(),
                           [this](const Receiver &receiver) { return m_store->hasDeliverable(receiver.name); });
    });
}

void QueueDelivery::rest()
{
    if (!m_checkpointDue)
        return;
    guarded([this] { m_store->checkpoint(); });
    m_checkpointDue = false;
}
