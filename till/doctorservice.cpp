// Asks the service harmless things only: no order, no message, unless a telephone number was given for that.
#include "doctorservice.h"

#include "doctorhost.h"
#include "queuesender.h"

#include <core/config.h>
#include <core/singleton.h>
#include <net/probe.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtNetwork/QHostAddress>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace till::doctor {

namespace {

using http::Probe;
using http::ProbeResult;
using Stage = ProbeResult::Stage;

constexpr int roundTrips = 10;
constexpr qint64 fewDays = 30;
constexpr qint64 skewSeconds = 120;
constexpr std::chrono::milliseconds slowMedian{1000};

QString milliseconds(std::chrono::microseconds time)
{
    return QString::number(static_cast<double>(time.count()) / 1000, 'f', 1) + u" ms"_s;
}

QString cut(const QString &text)
{
    return text.simplified().left(160);
}

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
    explicit Service(const QString &trustFile) : m_trustFile(trustFile) {}

    Finding address();
    Finding encryption() const;
    Finding name();
    Finding connection() const;
    Finding tls() const;
    Finding answer();
    Finding login() const;
    Finding loyaltyApi();
    Finding messageApi();
    Finding clock() const;
    Finding times();
    Finding keptConnection() const;

private:
    ProbeResult get(const QUrl &url) { return m_probe->get(url, m_queries.headers); }
    bool isUnknownAddress(const QUrl &url, const ProbeResult &answer);
    Finding refusedCertificate() const;

    QString m_trustFile;
    LoyaltyQueries m_queries;
    std::unique_ptr<Probe> m_probe;
    ProbeResult m_handshake;
    ProbeResult m_answer;
    int m_newConnections = 0;
};

Finding Service::address()
{
    m_queries = loyaltyQueries();
    const QString configured = Singleton<Config>::instance()->getString(u"Kvo:host"_s, u"http://localhost"_s);
    const QUrl url(configured, QUrl::TolerantMode);
    const bool web = url.scheme() == "http"_L1 || url.scheme() == "https"_L1;
    if (!url.isValid() || !web || url.host().isEmpty())
        return {Verdict::Failure, u"Kvo:host is not an address"_s,
                u"Write it like https://loyalty.example.com or http://10.0.0.5:8080"_s};
    m_probe = std::make_unique<Probe>(m_queries.timeout, m_trustFile);
    return {Verdict::Ok, m_queries.customer.toString(QUrl::RemoveUserInfo | QUrl::RemoveQuery)};
}

Finding Service::encryption() const
{
    const QString host = m_queries.customer.host();
    if (m_queries.customer.scheme() == "https"_L1)
        return {Verdict::Ok, u"https"_s};
    if (host == "localhost"_L1 || QHostAddress(host).isLoopback())
        return {Verdict::Ok, u"plain http, within this machine"_s};
    return {Verdict::Warning, u"plain http to %1: passwords and customers' data can be read on the way"_s.arg(host),
            u"Use https in Kvo:host"_s};
}

Finding Service::name()
{
    m_handshake = m_probe->connect(m_queries.customer, Probe::Trust::Verified);
    if (m_handshake.stage == Stage::Nothing)
        return {Verdict::Failure, cut(m_handshake.reason), u"Check the name in Kvo:host and this machine's DNS"_s};
    return {Verdict::Ok, m_handshake.peer.isEmpty() ? u"resolved"_s : m_handshake.peer};
}

Finding Service::connection() const
{
    if (m_handshake.stage == Stage::Resolved)
        return {Verdict::Failure, cut(m_handshake.reason),
                u"Check the port in Kvo:host, the firewall, and whether the service runs"_s};
    return {Verdict::Ok, u"connected in %1"_s.arg(milliseconds(m_handshake.time))};
}

Finding Service::refusedCertificate() const
{
    const ProbeResult seen = m_probe->connect(m_queries.customer, Probe::Trust::Anybody);
    if (seen.stage != Stage::Secured)
        return {Verdict::Failure, cut(m_handshake.reason),
                u"What listens there does not speak TLS as it should: check scheme and port in Kvo:host"_s};
    const QString found = u"%1 (certificate of %2, valid until %3)"_s.arg(cut(m_handshake.reason), cut(seen.subject),
                                                                          seen.validUntil.toString(Qt::ISODate));
    if (m_handshake.reason.contains("expired"_L1))
        return {Verdict::Failure, found, u"Have the service's certificate renewed; check this machine's clock"_s};
    if (m_handshake.reason.contains("not yet valid"_L1))
        return {Verdict::Failure, found, u"Set this machine's clock"_s};
    if (m_handshake.reason.contains("subject name"_L1) || m_handshake.reason.contains("host name"_L1))
        return {Verdict::Failure, found, u"Use the name in Kvo:host for which the certificate was made"_s};
    return {Verdict::Failure, found,
            u"Install the authority that signed it, with update-ca-certificates, or have the service send its chain"_s};
}

Finding Service::tls() const
{
    if (m_queries.customer.scheme() != "https"_L1)
        return {Verdict::Ok, u"not used"_s};
    if (m_handshake.stage != Stage::Secured)
        return refusedCertificate();
    constexpr qint64 secondsOfDay = 24 * 3600;
    const qint64 days = QDateTime::currentDateTimeUtc().secsTo(m_handshake.validUntil) / secondsOfDay;
    const QString found = u"%1, certificate of %2, %3 days left"_s.arg(m_handshake.tlsVersion, cut(m_handshake.subject),
                                                                       QString::number(days));
    if (days < fewDays)
        return {Verdict::Warning, found, u"Have the certificate renewed in time"_s};
    return {Verdict::Ok, found};
}

Finding Service::answer()
{
    m_answer = get(m_queries.customer);
    const int status = m_answer.status;
    const QString answered = u"status %1"_s.arg(status);
    if (m_answer.failed)
        return {Verdict::Failure, cut(m_answer.reason), u"Check Kvo:timeout and whether the service is overloaded"_s};
    if (status >= 300 && status < 400)
        return {Verdict::Failure, answered + u", a redirect, which is not followed"_s,
                u"Write the final scheme and host into Kvo:host"_s};
    if (status == 407)
        return {Verdict::Failure, answered + u" from a proxy"_s, u"Let this machine reach the service directly"_s};
    if (status == 502 || status == 503 || status == 504)
        return {Verdict::Failure, answered + u" from a gateway: the service behind it does not answer"_s,
                u"Ask those who run the service"_s};
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
bool Service::isUnknownAddress(const QUrl &url, const ProbeResult &answer)
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

Finding Service::loyaltyApi()
{
    const QString said = u"status %1, \"%2\""_s.arg(QString::number(m_answer.status), messageOf(m_answer));
    if (isUnknownAddress(m_queries.customer, m_answer))
        return {Verdict::Failure, u"the service does not know the address (%1)"_s.arg(said), u"Check Kvo:path"_s};
    if (m_answer.status == 400)
        return {Verdict::Failure, u"the service refuses a query for a card (%1)"_s.arg(said), u"Check Kvo:brand"_s};
    if (m_answer.status >= 500)
        return {Verdict::Failure, u"the service fails (%1)"_s.arg(said), u"Ask those who run the service"_s};
    if (Singleton<Config>::instance()->getString(u"Kvo:brand"_s, {}).isEmpty())
        return {Verdict::Warning, u"a query is answered, but no brand is configured"_s,
                u"Set Kvo:brand unless the service has none"_s};
    return {Verdict::Ok, u"the service has looked for a card under this brand (%1)"_s.arg(said)};
}

Finding Service::messageApi()
{
    const ProbeResult answer = get(m_queries.message);
    if (answer.failed)
        return {Verdict::Failure, cut(answer.reason), u"Check Kvo:verificationPath"_s};
    const QString status = u"status %1"_s.arg(answer.status);
    if (isPage(answer) || answer.status >= 500)
        return {Verdict::Failure, status + u" in place of the message API"_s, u"Check Kvo:verificationPath"_s};
    if (answer.status == 401 || answer.status == 403)
        return {Verdict::Failure, u"the message API refuses the user (%1)"_s.arg(status),
                u"Have the user of Kvo:user admitted to it"_s};
    if (isUnknownAddress(m_queries.message, answer))
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
    m_newConnections = 0;
    for (int i = 0; i < roundTrips; ++i) {
        const ProbeResult answer = get(m_queries.customer);
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
    if (median > slowMedian || times.last() > m_queries.timeout / 2)
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
    sendTextMessage(u"kvo-till doctor"_s, phone);
    return {Verdict::Ok, u"the service has accepted a message"_s};
}

} // namespace

QList<Check> serviceChecks(const QString &phone, const QString &trustFile)
{
    const auto service = std::make_shared<Service>(trustFile);
    const auto check = [&service](const QString &name, const QString &needs, auto operation) {
        return Check{name, needs, [service, operation] { return (service.get()->*operation)(); }};
    };
    QList<Check> checks{
        check(u"service address"_s, configurationCheck, &Service::address),
        check(u"encryption"_s, u"service address"_s, &Service::encryption),
        check(u"service name"_s, u"service address"_s, &Service::name),
        check(u"connection"_s, u"service name"_s, &Service::connection),
        check(u"TLS"_s, u"connection"_s, &Service::tls),
        check(u"answer"_s, u"TLS"_s, &Service::answer),
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
