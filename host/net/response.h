// The outcome of one HTTP exchange.
#pragma once

#include <core/tr.h>
#include <poshost_export.h>

#include <QtCore/QJsonDocument>
#include <QtNetwork/QNetworkReply>

namespace http {

class POSHOST_EXPORT Response
{
public:
    Response() = default;
    Response(int status, QNetworkReply::NetworkError networkError, const tr::Tr &errorText, const QJsonDocument &json)
        : m_status(status), m_networkError(networkError), m_errorText(errorText), m_json(json)
    {}

    /// The HTTP status code; 0 when the exchange failed, unless it failed because of its status.
    int status() const { return m_status; }

    /// Other than NoError when the exchange failed and nothing is known of what the service has done: no connection,
    /// time-out, an answer that was cut, is too long, is damaged JSON, is HTML, is a redirect, or has another status
    /// than 2xx and no JSON. The statuses 401, 403, 407, 408, 429, 502, 503 and 504 are failures too: with them
    /// something before the service speaks, or the service has not looked at the request. All others are the service's
    /// own word.
    QNetworkReply::NetworkError networkError() const { return m_networkError; }

    /// What to tell the cashier where the body brings no text of its own; never empty after an exchange.
    const tr::Tr &errorText() const { return m_errorText; }

    /// The body, also of failed exchanges; a null document when it is empty or not JSON.
    const QJsonDocument &json() const { return m_json; }

private:
    int m_status = 0;
    QNetworkReply::NetworkError m_networkError = QNetworkReply::NoError;
    tr::Tr m_errorText;
    QJsonDocument m_json;
};

} // namespace http
