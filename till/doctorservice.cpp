// Asks the service harmless things only: no order, no message, unless a telephone number was given for that.
#include "doctorservice.h"

#include "doctorconnection.h"

#include <core/basicexception.h>
#include <core/config.h>
#include <core/singleton.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace till::doctor {

namespace {

using http::ProbeResult;

constexpr int roundTrips = 10;
constexpr qint64 skewSeconds = 120;
constexpr std::chrono::milliseconds slowMedian{1000};

QJsonObject jsonOf(const ProbeResult &answer)
{
    return QJsonDocument::fromJson(answer.body).object();
}

QString messageOf(const ProbeResult &answer)
{
    return cut(jsonOf(answer).value("message"_L1).toString());
}

bool isPage(const ProbeResult &answer)
{
    return answer.contentType.contains("html"_L1, Qt::CaseInsensitive) || answer.body.trimmed().startsWith('<');
}

/// What the service checks share: the questions, one connection, and what has come back so far.
class Service
{
public:
    explicit Service(const std::shared_ptr<ServiceAccess> &access) : m_access(access) {}

    Finding answer();
    Finding login() const;
    Finding loyaltyApi() const;
    Finding messageApi() const;
    Finding clock() const;
    Finding times();
    Finding keptConnection() const;

private:
    const LoyaltyQueries &queries() const { return m_access->queries; }
    ProbeResult get(const QUrl &url) const { return m_access->probe->get(url, queries().headers); }
    bool isUnknownAddress(const QUrl &url, const ProbeResult &answer) const;

    std::shared_ptr<ServiceAccess> m_access;
    ProbeResult m_answer;
    int m_newConnections = 0;
};

Finding Service::answer()
{
    m_answer = get(queries().customer);
    const int status = m_answer.status;
    const QString answered = u"status %1"_s.arg(status);
    const bool late = m_answer.reason.contains("timed out"_L1) || m_answer.reason.contains("timeout"_L1);
    if (m_answer.failed && late)
        return {Verdict::Failure, cut(m_answer.reason), u"Check Kvo:timeout and whether the service is overloaded"_s};
    if (m_answer.failed)
        return {Verdict::Failure, cut(m_answer.reason),
                u"What listens there does not answer in HTTP: check scheme and port in Kvo:host"_s};
    if (status >= 300 && status < 400)
        return {Verdict::Failure, answered + u", a redirect, which is not followed"_s,
                u"Write the final scheme and host into Kvo:host"_s};
    if (status == 407)
        return {Verdict::Failure, answered + u" from a proxy"_s, u"Let this machine reach the service directly"_s};
    if (status == 502 || status == 503 || status == 504)
        return {Verdict::Failure, answered + u" from a gateway: the service behind it does not answer"_s,
                u"Ask those who run the service"_s};
    if (status == 408 || status == 429)
        return {Verdict::Failure, answered + u": the service is overloaded"_s, u"Ask those who run the service"_s};
    if (isPage(m_answer))
        return {Verdict::Failure, answered + u" with a web page in place of the service's JSON"_s,
                u"A portal or a proxy answers, or Kvo:host and Kvo:path are wrong"_s};
    if (status != 401 && status != 403 && jsonOf(m_answer).isEmpty())
        return {Verdict::Failure, answered + u" without the service's JSON"_s, u"Check Kvo:host and Kvo:path"_s};
    return {Verdict::Ok, u"%1 in %2"_s.arg(answered, milliseconds(m_answer.time))};
}

Finding Service::login() const
{
    const QString user = Singleton<Config>::instance()->getString(u"Kvo:user"_s, {});
    if (m_answer.status == 401 || m_answer.status == 403)
        return {Verdict::Failure,
                u"the service refuses user \"%1\" (status %2)"_s.arg(user, QString::number(m_answer.status)),
                u"Check Kvo:user and Kvo:password"_s};
    return {Verdict::Ok, u"user \"%1\" is accepted"_s.arg(user)};
}

/// Asks for a method that no service has: the same answer to both means that this address is unknown as well.
bool Service::isUnknownAddress(const QUrl &url, const ProbeResult &answer) const
{
    const QString method = url.fileName();
    QUrl unknown = url;
    unknown.setPath(url.path().chopped(method.size()) + u"doctor"_s);
    const ProbeResult other = get(unknown);
    const auto withoutName = [](const QByteArray &body, const QString &name) {
        return QByteArray(body).replace(name.toUtf8(), "*");
    };
    return answer.status == 404 && other.status == 404 &&
           withoutName(answer.body, method) == withoutName(other.body, u"doctor"_s);
}

Finding Service::loyaltyApi() const
{
    const QString said = u"status %1, \"%2\""_s.arg(QString::number(m_answer.status), messageOf(m_answer));
    if (isUnknownAddress(queries().customer, m_answer))
        return {Verdict::Failure, u"the service does not know the address (%1)"_s.arg(said), u"Check Kvo:path"_s};
    if (m_answer.status == 400)
        return {Verdict::Failure, u"the service refuses a query for a card (%1)"_s.arg(said), u"Check Kvo:brand"_s};
    if (m_answer.status >= 500)
        return {Verdict::Failure, u"the service fails (%1)"_s.arg(said), u"Ask those who run the service"_s};
    // With 404 the service says that there is no such card; any other refusal may meet real cards as well.
    const bool isRefused = m_answer.status >= 400 || !jsonOf(m_answer).value("success"_L1).toBool(true);
    if (isRefused && m_answer.status != 404)
        return {Verdict::Warning, u"a query for a card that does not exist is refused (%1)"_s.arg(said),
                u"Check Kvo:brand and Kvo:path, unless the refusal is about the card"_s};
    if (Singleton<Config>::instance()->getString(u"Kvo:brand"_s, {}).isEmpty())
        return {Verdict::Warning, u"a query is answered, but no brand is configured"_s,
                u"Set Kvo:brand unless the service has none"_s};
    return {Verdict::Ok, u"the service has looked for a card under this brand (%1)"_s.arg(said)};
}

Finding Service::messageApi() const
{
    const ProbeResult answer = get(queries().message);
    if (answer.failed)
        return {Verdict::Failure, cut(answer.reason), u"Check Kvo:verificationPath"_s};
    const QString status = u"status %1"_s.arg(answer.status);
    if (isPage(answer) || answer.status >= 500)
        return {Verdict::Failure, status + u" in place of the message API"_s, u"Check Kvo:verificationPath"_s};
    if (answer.status == 401 || answer.status == 403)
        return {Verdict::Failure, u"the message API refuses the user (%1)"_s.arg(status),
                u"Have the user of Kvo:user admitted to it"_s};
    if (isUnknownAddress(queries().message, answer))
        return {Verdict::Warning, u"there may be no message API at this address (%1)"_s.arg(status),
                u"Check Kvo:verificationPath; --sms PHONE sends a message to try it"_s};
    return {Verdict::Ok, u"it answers (%1)"_s.arg(status)};
}

Finding Service::clock() const
{
    if (!m_answer.date.isValid())
        return {Verdict::Ok, u"the service does not tell its time"_s};
    const qint64 skew = m_answer.date.secsTo(QDateTime::currentDateTimeUtc());
    const QString found = u"this machine is %1 s %2 the service"_s.arg(QString::number(std::abs(skew)),
                                                                       skew < 0 ? u"behind"_s : u"ahead of"_s);
    if (std::abs(skew) > skewSeconds)
        return {Verdict::Warning, found, u"Set the clock; checks and queued requests carry its time"_s};
    return {Verdict::Ok, found};
}

Finding Service::times()
{
    QList<std::chrono::microseconds> times;
    for (int i = 0; i < roundTrips; ++i) {
        const ProbeResult answer = get(queries().customer);
        if (answer.failed)
            return {Verdict::Failure,
                    u"exchange %1 of %2 failed: %3"_s.arg(QString::number(i + 1), QString::number(roundTrips),
                                                          cut(answer.reason)),
                    u"Look for a bad line or an overloaded service"_s};
        times.append(answer.time);
        m_newConnections += answer.newConnection ? 1 : 0;
    }
    std::sort(times.begin(), times.end());
    const auto median = times[roundTrips / 2];
    const QString found = u"%1 exchanges: median %2, worst %3"_s.arg(QString::number(roundTrips), milliseconds(median),
                                                                     milliseconds(times.last()));
    if (median > slowMedian || times.last() > queries().timeout / 2)
        return {Verdict::Warning, found, u"The cashier waits; look at the line and at Kvo:timeout"_s};
    return {Verdict::Ok, found};
}

Finding Service::keptConnection() const
{
    if (m_newConnections > 1)
        return {Verdict::Warning,
                u"%1 of %2 exchanges needed a new connection"_s.arg(QString::number(m_newConnections),
                                                                    QString::number(roundTrips)),
                u"Have service and gateways keep connections; each new one costs time"_s};
    return {Verdict::Ok, u"connections are kept"_s};
}

Finding sendSample(const QString &phone)
{
    try {
        sendTextMessage(u"kvo-till doctor"_s, phone);
        return {Verdict::Ok, u"the service has accepted a message"_s};
    } catch (const BasicException &error) {
        return {Verdict::Failure, u"the service has not taken the message"_s,
                u"Check the number, Kvo:verificationPath and Kvo:brand; the service's own words follow"_s,
                error.text().ru()};
    }
}

} // namespace

QList<Check> serviceChecks(const QString &phone)
{
    const auto access = std::make_shared<ServiceAccess>();
    const auto service = std::make_shared<Service>(access);
    const auto check = [&service](const QString &name, const QString &needs, auto operation) {
        return Check{name, needs, [service, operation] { return (service.get()->*operation)(); }};
    };
    QList<Check> checks = connectionChecks(access);
    checks += {
        check(u"answer"_s, secureConnectionCheck, &Service::answer),
        check(u"login"_s, u"answer"_s, &Service::login),
        check(u"loyalty API"_s, u"login"_s, &Service::loyaltyApi),
        check(u"message API"_s, u"login"_s, &Service::messageApi),
        check(u"clock"_s, u"answer"_s, &Service::clock),
        check(u"round trips"_s, u"answer"_s, &Service::times),
        check(u"kept connections"_s, u"round trips"_s, &Service::keptConnection),
    };
    if (!phone.isEmpty())
        checks.append({u"text message"_s, u"login"_s, [phone] { return sendSample(phone); }});
    return checks;
}

} // namespace till::doctor
