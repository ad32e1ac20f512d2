// URLs, a single exchange with the service, and the verdict on its outcome.
#include "client/interface.h"
#include "client/refusal.h"

#include <core/mockfactory.h>
#include <net/restclient.h>

#include <log4qt/logger.h>

#include <QtCore/QUuid>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

bool isRefusal(const QJsonObject &body)
{
    const QJsonValue success = body.value("success"_L1);
    return !success.isUndefined() && !success.toBool();
}

/// For these statuses the refusal of a queued request is only logged.
bool isToleratedFromQueue(int status)
{
    return status == 200 || status == 400 || status == 500;
}

/// Whether the same request may succeed later: the credentials, the load or the server itself are at fault, not the
/// request.
bool maySucceedLater(int status)
{
    return status == 401 || status == 403 || status == 407 || status == 408 || status == 429 || status >= 500;
}

template <class Text>
[[noreturn]] void throwRefusal(int status, const Text &text)
{
    if (maySucceedLater(status))
        throw BasicException(text);
    throw Refusal(text);
}

} // namespace

QUrl Interface::getUrl(const QString &method, const QUrlQuery &query) const
{
    return methodUrl(path, method, query);
}

QUrl Interface::getVerificationUrl(const QString &method) const
{
    return methodUrl(verificationPath, method, QUrlQuery());
}

QUrl Interface::methodUrl(const std::filesystem::path &prefix, const QString &method, const QUrlQuery &query) const
{
    QUrl url(host, QUrl::TolerantMode);
    // Setting a path would clear the error, and the request would go to the default port of the part that could be
    // parsed.
    if (!url.errorString().isEmpty())
        return url;
    url.setPath(QString::fromStdString((prefix / method.toStdString()).native()), QUrl::DecodedMode);
    url.setQuery(query);
    return url;
}

http::Response Interface::request(const Request &request, bool logOnly) const
{
    const auto client = MockFactory<RestClient>::create();
    client->setLogger(logger);
    client->setTimeout(timeout);
    client->request(request.op, request.url, request.payload, request.headers);
    http::Response response = client->response();
    checkForError(response, logOnly);
    return response;
}

void Interface::checkForError(const http::Response &response, bool logOnly) const
{
    const QJsonObject body = response.json().object();
    const bool exchangeFailed = response.networkError() != QNetworkReply::NoError;
    const bool refused = isRefusal(body);
    if (!exchangeFailed && !refused) {
        const QJsonObject error = body.value("error"_L1).toObject();
        if (error.value("errorCode"_L1).toInt() > 0)
            throwRefusal(response.status(), error.value("description"_L1).toString());
        return;
    }

    const QString message = body.value("message"_L1).toString();
    const tr::Tr reason = message.isEmpty() ? response.errorText() : tr::Tr(message);
    // A host's HTTP client may also report an error for an answer that came whole, because of its status.
    if (logOnly && refused && isToleratedFromQueue(response.status()))
        logger->error(reason.ru());
    else if (exchangeFailed)
        throw BasicException(reason);
    else
        throwRefusal(response.status(), reason);
}

Response Interface::requestOnline(const Request &order) const
{
    return requestResult(order);
}

Response Interface::requestResult(const Request &order) const
{
    const http::Response response = request(order, false);
    return Response(response.json().object().value("result"_L1).toObject());
}

void Interface::requestFromQueue(const QJsonObject &event) const
{
    logger->info(u"Отправка сообщения из очереди"_s);
    request(Request::fromQueueEvent(event), true);
}

QString Interface::createUuid() const
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

} // namespace kvo
