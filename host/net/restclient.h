// One synchronous HTTP exchange with a JSON service.
#pragma once

#include <net/response.h>
#include <poshost_export.h>

#include <QtCore/QHash>
#include <QtCore/QUrl>
#include <QtNetwork/QNetworkAccessManager>

namespace Log4Qt {
class Logger;
}

/// Blocks its thread for the exchange; there is no event loop. Connections are kept alive between exchanges of one
/// thread, also of different RestClient objects. A request goes out on the wire at most once per call, also when a kept
/// connection turns out to be dead.
class POSHOST_EXPORT RestClient
{
public:
    /// An answer over this many bytes is a transport failure. Whatever an answer holds, it takes less than 32 MiB.
    static constexpr qsizetype maxBodySize = qsizetype{2} * 1024 * 1024;

    RestClient();
    virtual ~RestClient();

    /// Where exchanges are logged: one line each, at warning level for statuses other than 2xx, at error level for
    /// other failures, else at debug level, without headers, bodies, query values and credentials. Null: nowhere.
    virtual void setLogger(Log4Qt::Logger *logger) { m_logger = logger; }

    /// The longest time for the whole exchange with the reading of the answer, in milliseconds; 0 and below mean the
    /// default of 10 000.
    virtual void setTimeout(int ms) { m_timeout = ms; }

    /// Sends one request and waits for the answer; response() then tells the outcome, whatever it was. GET sends no
    /// body; POST, PUT and DELETE send `payload`; other operations fail. The URL goes out in its fully encoded form;
    /// one that is invalid fails with a text that names Kvo:host. `User-Agent` and `Accept` are added to `headers`. TLS
    /// certificates are verified, redirects are not followed, only http and https are spoken, and proxies of the
    /// environment are not used.
    virtual void request(QNetworkAccessManager::Operation op, const QUrl &url, const QJsonDocument &payload,
                         const QHash<QString, QString> &headers);

    /// The outcome of the last request().
    virtual http::Response response() const { return m_response; }

private:
    Log4Qt::Logger *m_logger = nullptr;
    int m_timeout = 0;
    http::Response m_response;
};
