// Judges the outcome of an exchange: what is not the service's own word, such as a gateway's error page or a cut
// answer, is a failed exchange, so that nobody takes it for an acceptance.
#include "transfer.h"

#include <core/jsontext.h>
#include <net/restclient.h>

#include <log4qt/logmanager.h>

#include <QtCore/QElapsedTimer>

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

// Why the request cannot be sent at all, or nothing.
TransferResult faultOf(const TransferRequest &request, const QUrl &url)
{
    if (request.method.isEmpty())
        return {.error = QNetworkReply::ProtocolInvalidOperationError, .reason = u"нет такой операции HTTP"_s};
    const bool knownScheme = url.scheme() == "http"_L1 || url.scheme() == "https"_L1;
    if (!url.isValid() || !knownScheme || url.host().isEmpty())
        return {.error = QNetworkReply::ProtocolUnknownError, .reason = u"адрес не http и не https"_s};
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

// Fails exchanges whose body is not the service's word, and reads the body of the others.
QJsonDocument readBody(TransferResult &result)
{
    if (result.error != QNetworkReply::NoError)
        return {};
    if (result.body.isEmpty()) {
        if (!isSuccess(result.status)) {
            result.error = QNetworkReply::ProtocolFailure;
            result.reason = u"ответ без тела"_s;
        }
        return {};
    }
    QJsonParseError fault{};
    const QJsonDocument json = QJsonDocument::fromJson(result.body, &fault);
    if (fault.error != QJsonParseError::NoError) {
        result.error = QNetworkReply::UnknownContentError;
        result.reason = u"тело ответа не JSON: "_s + fault.errorString();
    }
    return json;
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
        return u"Неверно задан адрес сервиса"_s;
    case QNetworkReply::ProtocolInvalidOperationError:
        return u"Запрос к сервису составлен неверно"_s;
    default:
        return u"Ошибка обмена с сервисом"_s;
    }
}

// For the case that the service gives no text of its own.
tr::Tr errorText(const TransferResult &result)
{
    const QString text = textOf(result.error);
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
    TransferResult result = faultOf(request, url);
    if (result.error == QNetworkReply::NoError)
        result = transfer(request, maxBodySize);
    const QJsonDocument json = readBody(result);
    const bool failed = result.error != QNetworkReply::NoError;
    m_response = http::Response(failed ? 0 : result.status, result.error, errorText(result), json);

    const auto level = failed ? Log4Qt::Level::ERROR_INT : Log4Qt::Level::DEBUG_INT;
    if (!m_logger || !m_logger->isEnabledFor(level))
        return;
    const QString line = u"%1 %2: HTTP %3, %4 байт, %5 мс"_s.arg(
        QString::fromLatin1(request.method), nameOf(url), QString::number(result.status),
        QString::number(result.body.size()), QString::number(timer.elapsed()));
    m_logger->log(level, failed ? line + ", "_L1 + result.reason : line);
}
