// Looks at an HTTP service from outside: how far a connection gets, what certificate is shown, what comes back.
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
    QString reason{};       ///< Why it failed, as libcurl says it.
    QString peer{};         ///< The address that was connected to.
    QString tlsVersion{};   ///< "TLSv1.3"; empty without TLS.
    QString subject{};      ///< Of the server's certificate.
    QDateTime validUntil{}; ///< Of the server's certificate.
    int status = 0;         ///< 0 when no answer came.
    QString contentType{};
    QDateTime date{};  ///< The service's clock; invalid when it does not tell.
    QByteArray body{}; ///< The beginning.
    std::chrono::microseconds time{};
    bool newConnection = false; ///< False when a kept one served.
};

/// Keeps its connection between calls, like a till. It goes the way of RestClient: no proxies, no redirects, http and
/// https only. Used on one thread.
class POSHOST_EXPORT Probe
{
public:
    enum class Trust { Verified, Anybody };

    /// `timeout` holds for each call. `trustFile` replaces the system's certificate authorities (PEM).
    explicit Probe(std::chrono::milliseconds timeout, const QString &trustFile = {});
    ~Probe();
    Q_DISABLE_COPY_MOVE(Probe)

    /// Connects, makes the TLS handshake, and sends nothing. With Trust::Anybody a certificate can be looked at that
    /// is refused otherwise.
    ProbeResult connect(const QUrl &url, Trust trust) const;

    /// Sends a GET and reads the answer.
    ProbeResult get(const QUrl &url, const QHash<QString, QString> &headers);

private:
    struct Handle;

    std::unique_ptr<Handle> makeHandle() const;

    std::chrono::milliseconds m_timeout;
    QByteArray m_trustFile;
    std::unique_ptr<Handle> m_kept;
};

} // namespace http
