// Follows the way to the service step by step: name, connection, certificate.
#include "doctorconnection.h"

#include "doctorhost.h"

#include <core/config.h>
#include <core/plaintext.h>
#include <core/singleton.h>
#include <net/httpaddress.h>

#include <QtNetwork/QHostAddress>

using namespace Qt::Literals::StringLiterals;

namespace till::doctor {

const QString secureConnectionCheck = u"TLS"_s;

namespace {

using http::Probe;
using http::ProbeResult;
using Stage = ProbeResult::Stage;

constexpr qint64 fewDays = 30;

Finding address(ServiceAccess &service)
{
    service.queries = loyaltyQueries();
    const QString configured = Singleton<Config>::instance()->getString(u"Kvo:host"_s, u"http://localhost"_s);
    if (!isHttpAddress(QUrl(configured, QUrl::TolerantMode)))
        return {Verdict::Failure, u"Kvo:host is not an address"_s,
                u"Write it like https://loyalty.example.com or http://10.0.0.5:8080"_s};
    if (!service.queries.customer.isValid())
        return {Verdict::Failure, u"no address with this Kvo:path"_s, u"Let Kvo:path begin with /"_s};
    service.probe = std::make_unique<Probe>(service.queries.timeout);
    return {Verdict::Ok, service.queries.customer.toString(QUrl::RemoveUserInfo | QUrl::RemoveQuery)};
}

Finding encryption(const ServiceAccess &service)
{
    const QString host = service.queries.customer.host();
    if (service.queries.customer.scheme() == "https"_L1)
        return {Verdict::Ok, u"https"_s};
    if (host == "localhost"_L1 || QHostAddress(host).isLoopback())
        return {Verdict::Ok, u"plain http, within this machine"_s};
    return {Verdict::Warning, u"plain http to %1: passwords and customers' data can be read on the way"_s.arg(host),
            u"Use https in Kvo:host"_s};
}

Finding name(ServiceAccess &service)
{
    service.handshake = service.probe->connect(service.queries.customer, Probe::Trust::Verified);
    if (service.handshake.stage == Stage::Nothing)
        return {Verdict::Failure, cut(service.handshake.reason),
                u"Check the name in Kvo:host and this machine's DNS"_s};
    return {Verdict::Ok, service.handshake.peer.isEmpty() ? u"resolved"_s : service.handshake.peer};
}

Finding reachable(const ServiceAccess &service)
{
    if (service.handshake.stage == Stage::Resolved)
        return {Verdict::Failure, cut(service.handshake.reason),
                u"Check the port in Kvo:host, the firewall, and whether the service runs"_s};
    return {Verdict::Ok, u"connected in %1"_s.arg(milliseconds(service.handshake.time))};
}

Finding refusedCertificate(const ServiceAccess &service)
{
    const ProbeResult seen = service.probe->connect(service.queries.customer, Probe::Trust::Unverified);
    if (seen.stage != Stage::Secured)
        return {Verdict::Failure, cut(service.handshake.reason),
                u"What listens there does not speak TLS as it should: check scheme and port in Kvo:host"_s};
    const QString found = u"%1 (certificate of %2, valid until %3)"_s.arg(
        cut(service.handshake.reason), cut(seen.subject), seen.validUntil.toString(Qt::ISODate));
    if (service.handshake.reason.contains("expired"_L1))
        return {Verdict::Failure, found, u"Have the service's certificate renewed; check this machine's clock"_s};
    if (service.handshake.reason.contains("not yet valid"_L1))
        return {Verdict::Failure, found, u"Set this machine's clock"_s};
    if (service.handshake.reason.contains("subject name"_L1) || service.handshake.reason.contains("host name"_L1))
        return {Verdict::Failure, found, u"Use the name in Kvo:host for which the certificate was made"_s};
    return {Verdict::Failure, found,
            u"Install the authority that signed it, with update-ca-certificates, or have the service send its chain"_s};
}

Finding tls(const ServiceAccess &service)
{
    if (service.queries.customer.scheme() != "https"_L1)
        return {Verdict::Ok, u"not used"_s};
    if (service.handshake.stage != Stage::Secured)
        return refusedCertificate(service);
    constexpr qint64 secondsOfDay = 24 * 3600;
    const qint64 days = QDateTime::currentDateTimeUtc().secsTo(service.handshake.validUntil) / secondsOfDay;
    const QString found = u"%1, certificate of %2, %3 days left"_s.arg(
        service.handshake.tlsVersion, cut(service.handshake.subject), QString::number(days));
    if (days < fewDays)
        return {Verdict::Warning, found, u"Have the certificate renewed in time"_s};
    return {Verdict::Ok, found};
}

} // namespace

QList<Check> connectionChecks(const std::shared_ptr<ServiceAccess> &service)
{
    return {
        {u"service address"_s, configurationCheck, [service] { return address(*service); }},
        {u"encryption"_s, u"service address"_s, [service] { return encryption(*service); }},
        {u"service name"_s, u"service address"_s, [service] { return name(*service); }},
        {u"connection"_s, u"service name"_s, [service] { return reachable(*service); }},
        {secureConnectionCheck, u"connection"_s, [service] { return tls(*service); }},
    };
}

QString milliseconds(std::chrono::microseconds time)
{
    return QString::number(static_cast<double>(time.count()) / 1000, 'f', 1) + u" ms"_s;
}

QString cut(const QString &text)
{
    constexpr qsizetype longest = 160;
    return plainText(text, longest);
}

} // namespace till::doctor
