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

/// Blocks its thread during the exchange; no event loop runs. All RestClient objects of a thread share its kept-alive
/// connections. Each call sends its request at most once, even if a kept connection turns out to be dead; only a GET
/// may be repeated then.
class POSHOST_EXPORT RestClient
{
public:
    /// A longer answer is a transport failure. Whatever an answer contains, it takes less than 32 MiB of memory.
    static constexpr qsizetype maxBodySize = qsizetype{2} * 1024 * 1024;

    RestClient();
    virtual ~RestClient();

    /// Logs each exchange as one line: statuses other than 2xx as warnings, other failures as errors, the rest at debug
    /// level; without headers, bodies, query values or credentials. Null: no log.
    virtual void setLogger(Log4Qt::Logger *logger) { m_logger = logger; }

    /// Limits the whole exchange, reading the answer included, in milliseconds; 0 and below mean the default of 10,000.
    virtual void setTimeout(int ms) { m_timeout = ms; }

    /// Sends one request and waits for the answer; response() has the outcome, whatever it was. GET sends no body;
    /// POST, PUT and DELETE send `payload`; other operations fail. The URL is sent fully encoded; an invalid one fails
    /// with a text that names Kvo:host. Adds `User-Agent` and `Accept` to `headers`. Verifies TLS certificates, follows
    /// no redirects, speaks only http and https, and ignores the environment's proxies.
    virtual void request(QNetworkAccessManager::Operation op, const QUrl &url, const QJsonDocument &payload,
                         const QHash<QString, QString> &headers);

    /// The outcome of the last request().
    virtual http::Response response() const { return m_response; }

private:
    Log4Qt::Logger *m_logger = nullptr;
    int m_timeout = 0;
    http::Response m_response;
};
