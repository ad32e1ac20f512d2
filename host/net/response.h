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

    /// The HTTP status code; 0 when the exchange failed, except with a status that networkError() lists.
    int status() const { return m_status; }

    /// Other than NoError if the exchange failed and it is unknown what the service did: no connection, time-out, an
    /// answer that is cut off, too long, damaged JSON, HTML or binary, or one with a status other than 2xx that is
    /// neither `{}` nor JSON with a member of the service's answers. Redirects and the statuses 401, 403, 407, 408,
    /// 429, 502, 503 and 504 are failures too, unless the body says "success": true or has an `errorCode` above 0: they
    /// come from something in front of the service, or mean that the service has not looked at the request. Everything
    /// else is the service's own answer.
    QNetworkReply::NetworkError networkError() const { return m_networkError; }

    /// What to tell the cashier if the body has no message; never empty after an exchange.
    const tr::Tr &errorText() const { return m_errorText; }

    /// The body, also of an exchange that failed because of its status or content; a null document when the body is
    /// empty, not JSON, or did not arrive whole.
    const QJsonDocument &json() const { return m_json; }

private:
    int m_status = 0;
    QNetworkReply::NetworkError m_networkError = QNetworkReply::NoError;
    tr::Tr m_errorText;
    QJsonDocument m_json;
};

} // namespace http
