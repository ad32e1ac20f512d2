// Judges the outcome of an exchange. Whatever is not the service's own answer, such as a gateway's error page or a
// truncated body, makes it a failed exchange, so that nobody takes it for an acceptance.
#include "answer.h"
#include "transfer.h"

#include <core/jsontext.h>
#include <core/singleton.h>
#include <net/httpaddress.h>
#include <net/linkstate.h>
#include <net/restclient.h>

#include <log4qt/logmanager.h>

#include <QtCore/QDeadlineTimer>
#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonObject>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr std::chrono::milliseconds defaultTimeout{10'000};

QByteArray methodOf(QNetworkAccessManager::Operation op)
{
    switch (op) {
    case QNetworkAccessManager::GetOperation:
        return "GET";
    case QNetworkAccessManager::PostOperation:
        return "POST";
    case QNetworkAccessManager::PutOperation:
        return "PUT";
    case QNetworkAccessManager::DeleteOperation:
        return "DELETE";
    default:
        return {};
    }
}

bool isSafeHeader(const QString &name, const QString &value)
{
    const auto breaksLine = [](QChar c) { return c == u'\r' || c == u'\n' || c.isNull(); };
    return !name.isEmpty() && std::none_of(name.cbegin(), name.cend(), breaksLine) &&
           std::none_of(value.cbegin(), value.cend(), breaksLine);
}

// Why the request cannot be sent at all; no error if it can.
TransferResult faultOf(const TransferRequest &request, const QUrl &url)
{
    if (request.method.isEmpty())
        return {.error = QNetworkReply::ProtocolInvalidOperationError, .reason = u"нет такой операции HTTP"_s};
    if (!isHttpAddress(url))
        return {.error = QNetworkReply::ProtocolUnknownError,
                .reason = u"неверный адрес, настройки Kvo:host, Kvo:path и Kvo:verificationPath"_s};
    for (auto header = request.headers.cbegin(); header != request.headers.cend(); ++header) {
        if (!isSafeHeader(header.key(), *header))
            return {.error = QNetworkReply::ProtocolInvalidOperationError, .reason = u"недопустимый заголовок"_s};
    }
    return {};
}

bool isSuccess(int status)
{
    return status >= 200 && status < 300;
}

// Statuses that come from something in front of the service, or that blame credentials or load instead of the request.
// The errors are those that Qt's own HTTP reports.
struct Gateway
{
    int status;
    QNetworkReply::NetworkError error;
    QStringView text;
};

constexpr Gateway gateways[] = {
    {401, QNetworkReply::AuthenticationRequiredError, u"Сервис не принял имя или пароль, проверьте настройки"},
    {403, QNetworkReply::ContentAccessDenied, u"Сервис отказал кассе в доступе, проверьте настройки"},
    {407, QNetworkReply::ProxyAuthenticationRequiredError, u"Прокси не пропускает к сервису, проверьте сеть"},
    {408, QNetworkReply::UnknownContentError, u"Сервис не дождался запроса, повторите"},
    {429, QNetworkReply::UnknownContentError, u"Сервис перегружен, повторите позже"},
    {502, QNetworkReply::UnknownServerError, u"Сервис временно недоступен, повторите позже"},
    {503, QNetworkReply::ServiceUnavailableError, u"Сервис временно недоступен, повторите позже"},
    {504, QNetworkReply::UnknownServerError, u"Сервис временно недоступен, повторите позже"},
};

// Null for all other statuses.
const Gateway *gatewayOf(int status)
{
    const auto *found = std::ranges::find(gateways, status, &Gateway::status);
    return found == std::end(gateways) ? nullptr : found;
}

bool isRedirect(int status)
{
    return status >= 300 && status < 400;
}

// Whether a JSON answer has a member of the service's answers in its form. One with none, such as a gateway's
// {"message": "no route"} or {"error": {"code": 404}}, must not pass for an acceptance; with a status of 2xx or without
// any members it does.
bool isServices(const QJsonDocument &json)
{
    const QJsonObject answer = json.object();
    return json.isObject() &&
           (answer.isEmpty() || answer.contains("success"_L1) || answer.value("result"_L1).isObject() ||
            answer.value("data"_L1).isObject() || answer.value("error"_L1).toObject().contains("errorCode"_L1));
}

// Whether the service itself says that it has accepted the request, or what is wrong.
bool namesOutcome(const QJsonDocument &json)
{
    const QJsonObject answer = json.object();
    return answer.value("success"_L1).toBool() || answer.value("error"_L1).toObject().value("errorCode"_L1).toInt() > 0;
}

// Fails the exchange if the answer is not the service's own.
void judge(TransferResult &result, const Answer &answer)
{
    const auto fail = [&result](QNetworkReply::NetworkError error, const QString &reason) {
        result.error = error;
        result.reason = reason;
    };
    const bool isOutcome = namesOutcome(answer.json);
    if (const Gateway *gateway = gatewayOf(result.status); gateway && !isOutcome)
        fail(gateway->error, u"ответ не от сервиса или не о запросе"_s);
    else if (isRedirect(result.status) && !isOutcome)
        fail(QNetworkReply::ProtocolFailure, u"перенаправление"_s);
    else if (answer.kind == Answer::Unreadable)
        fail(QNetworkReply::UnknownContentError, u"ответ не читается: "_s + answer.fault);
    else if (answer.kind == Answer::Text && (result.html || !isSuccess(result.status)))
        fail(QNetworkReply::UnknownContentError, u"тело ответа не JSON"_s);
    else if (answer.kind == Answer::Json && !isSuccess(result.status) && !isServices(answer.json))
        fail(QNetworkReply::UnknownContentError, u"JSON не от сервиса"_s);
    else if (answer.kind == Answer::Empty && !isSuccess(result.status))
        fail(QNetworkReply::ProtocolFailure, u"ответ без тела"_s);
}

QString textOf(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::NoError:
        return u"Сервис отклонил запрос"_s;
    case QNetworkReply::TimeoutError:
        return u"Сервис не ответил за отведённое время"_s;
    case QNetworkReply::HostNotFoundError:
    case QNetworkReply::ConnectionRefusedError:
        return u"Нет связи с сервисом"_s;
    case QNetworkReply::RemoteHostClosedError:
        return u"Связь с сервисом прервалась"_s;
    case QNetworkReply::SslHandshakeFailedError:
        return u"Не удалось установить защищённое соединение с сервисом"_s;
    case QNetworkReply::UnknownContentError:
    case QNetworkReply::ProtocolFailure:
        return u"Сервис прислал непонятный ответ"_s;
    case QNetworkReply::ProtocolUnknownError:
        return u"Неверно задан адрес сервиса, проверьте настройки Kvo:host, Kvo:path и Kvo:verificationPath"_s;
    case QNetworkReply::ProtocolInvalidOperationError:
        return u"Запрос к сервису составлен неверно"_s;
    default:
        return u"Ошибка обмена с сервисом"_s;
    }
}

// For the case that the service gives no text of its own.
tr::Tr errorText(const TransferResult &result)
{
    const Gateway *gateway = gatewayOf(result.status);
    const QString text = gateway ? gateway->text.toString() : textOf(result.error);
    if (result.status == 0 || isSuccess(result.status))
        return tr::Tr(text);
    return tr::Tr(u"%1 (код ответа %2)"_s.arg(text, QString::number(result.status)));
}

// Host and path: the query may hold a telephone number or a card number.
QString nameOf(const QUrl &url)
{
    const QString port = url.port() == -1 ? QString() : u':' + QString::number(url.port());
    return url.host() + port + url.path(QUrl::FullyEncoded);
}

Log4Qt::Level levelOf(const TransferResult &result)
{
    if (result.status != 0 && !isSuccess(result.status))
        return Log4Qt::Level::WARN_INT;
    return result.error == QNetworkReply::NoError ? Log4Qt::Level::DEBUG_INT : Log4Qt::Level::ERROR_INT;
}

// Sends the request and reads the answer, both within the time-out.
TransferResult exchange(const TransferRequest &request, QJsonDocument &json)
{
    const QDeadlineTimer deadline(request.timeout);
    TransferResult result = transfer(request, RestClient::maxBodySize);
    if (result.error != QNetworkReply::NoError)
        return result;
    const Answer answer = readAnswer(result.body);
    json = answer.json;
    judge(result, answer);
    if (deadline.hasExpired()) {
        result.error = QNetworkReply::TimeoutError;
        result.reason = u"ответ не прочитан за отведённое время"_s;
    }
    return result;
}

} // namespace

RestClient::RestClient() = default;

RestClient::~RestClient() = default;

void RestClient::request(QNetworkAccessManager::Operation op, const QUrl &url, const QJsonDocument &payload,
                         const QHash<QString, QString> &headers)
{
    const TransferRequest request{
        .method = methodOf(op),
        .url = url.toEncoded(QUrl::FullyEncoded),
        .body = jsontext::compact(payload),
        .headers = headers,
        .timeout = m_timeout > 0 ? std::chrono::milliseconds(m_timeout) : defaultTimeout,
    };
    QElapsedTimer timer;
    timer.start();
    QJsonDocument json;
    TransferResult result = faultOf(request, url);
    if (result.error == QNetworkReply::NoError)
        result = exchange(request, json);
    const bool failed = result.error != QNetworkReply::NoError;
    Singleton<LinkState>::instance()->report(!failed);
    const int status = !failed || gatewayOf(result.status) ? result.status : 0;
    m_response = http::Response(status, result.error, errorText(result), json);

    const Log4Qt::Level level = levelOf(result);
    if (!m_logger || !m_logger->isEnabledFor(level))
        return;
    const QString line = u"%1 %2: HTTP %3, %4 байт, %5 мс"_s.arg(
        QString::fromLatin1(request.method), nameOf(url), QString::number(result.status),
        QString::number(result.body.size()), QString::number(timer.elapsed()));
    m_logger->log(level, failed ? line + ", "_L1 + result.reason : line);
}
