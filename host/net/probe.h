// Examines an HTTP service from outside: how far a connection gets, which certificate it shows, what it answers.
#pragma once

#include <poshost_export.h>

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QUrl>

#include <chrono>
#include <memory>

namespace http {

struct ProbeResult
{
    /// The furthest point that was reached.
    enum class Stage { Nothing, Resolved, Connected, Secured, Answered };

    Stage stage = Stage::Nothing;
    bool failed = false;
    QString reason{};       ///< Why it failed, in libcurl's words.
    QString peer{};         ///< The address that was connected to.
    QString tlsVersion{};   ///< "TLSv1.3"; empty without TLS.
    QString subject{};      ///< Of the server's certificate.
    QDateTime validUntil{}; ///< Of the server's certificate.
    int status = 0;         ///< 0 when no answer came.
    QString contentType{};
    QDateTime date{};  ///< The service's clock; invalid if it sends none.
    QByteArray body{}; ///< At most the first 64 KiB.
    std::chrono::microseconds time{};
    bool newConnection = false; ///< False when a kept one served.
};

/// Keeps its connection between calls, like a till, and connects like RestClient: no proxies, no redirects, only http
/// and https. For one thread. A failed exchange is a result; operations throw BasicException when libcurl refuses an
/// option, and std::bad_alloc when it gives no handle.
class POSHOST_EXPORT Probe
{
public:
    enum class Trust { Verified, Unverified };

    /// `timeout` limits each call.
    explicit Probe(std::chrono::milliseconds timeout);
    ~Probe();
    Q_DISABLE_COPY_MOVE(Probe)

    /// Connects, performs the TLS handshake, and sends nothing. Trust::Unverified accepts every certificate, to show
    /// one that would otherwise be refused.
    ProbeResult connect(const QUrl &url, Trust trust) const;

    /// Sends a GET and reads the answer.
    ProbeResult get(const QUrl &url, const QHash<QString, QString> &headers);

private:
    struct Handle;

    std::unique_ptr<Handle> makeHandle() const;

    std::chrono::milliseconds m_timeout;
    std::unique_ptr<Handle> m_kept;
};

} // namespace http
