// Uses libcurl: one handle per thread, whose connections stay open between exchanges. A till talks only to the
// configured host: the environment's proxies are ignored and redirects are not followed.
#include "transfer.h"

#include "curlerrors.h"
#include "curlhandle.h"

#include <core/plaintext.h>

#include <sys/socket.h>

#include <QtCore/QScopeGuard>

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qsizetype maxHeaderSize = 65'536;
constexpr qsizetype longestReason = 200;

struct Exchange
{
    TransferResult result{};
    qsizetype maxBodySize = 0;
    qsizetype headerSize = 0;
    bool headersEnded = false;
    bool mayRepeat = false;
    int requests = 0;
};

std::size_t receive(char *data, std::size_t, std::size_t count, void *user)
{
    auto *exchange = static_cast<Exchange *>(user);
    const auto length = static_cast<qsizetype>(count);
    if (exchange->result.body.size() + length > exchange->maxBodySize)
        return CURL_WRITEFUNC_ERROR;
    exchange->result.body.append(data, length);
    return count;
}

// Also called for interim answers (1xx) and for trailers. libcurl accepts a connection that ends amid the headers.
std::size_t receiveHeader(char *data, std::size_t, std::size_t count, void *user)
{
    auto *exchange = static_cast<Exchange *>(user);
    const QByteArrayView line(data, static_cast<qsizetype>(count));
    exchange->headersEnded = !line.startsWith("HTTP/") && (exchange->headersEnded || line.trimmed().isEmpty());
    exchange->headerSize += line.size();
    return exchange->headerSize <= maxHeaderSize ? count : CURL_WRITEFUNC_ERROR;
}

// libcurl repeats a request if a kept connection dies before the first byte of the answer. The service may have
// received the first one, so the second must not be sent unless it only asks.
int beforeRequest(void *user, char *, char *, int, int)
{
    auto *exchange = static_cast<Exchange *>(user);
    return exchange->requests++ == 0 || exchange->mayRepeat ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

// A thread's handle, and its last headers in libcurl's form: most exchanges have the same ones.
class ThreadHandle
{
public:
    // Null if libcurl refuses.
    CURL *get()
    {
        if (!m_handle || hasUnexpectedInput())
            renew();
        return m_handle.get();
    }

    // Null if memory runs out.
    curl_slist *list(const QHash<QString, QString> &headers)
    {
        if (!m_list || headers != m_headers) {
            m_headers = headers;
            m_list = curlHeaders(headers);
        }
        return m_list.get();
    }

private:
    // libcurl would read bytes already waiting on a kept connection as the next answer.
    bool hasUnexpectedInput() const
    {
        curl_socket_t socket = CURL_SOCKET_BAD;
        char byte = 0;
        return curl_easy_getinfo(m_handle.get(), CURLINFO_ACTIVESOCKET, &socket) == CURLE_OK &&
               socket != CURL_SOCKET_BAD && ::recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
    }

    void renew()
    {
        m_handle = makeCurlHandle();
        CurlSettings settings(m_handle.get());
        settings.set(CURLOPT_WRITEFUNCTION, &receive);
        settings.set(CURLOPT_HEADERFUNCTION, &receiveHeader);
        settings.set(CURLOPT_PREREQFUNCTION, &beforeRequest);
        if (settings.code() != CURLE_OK)
            m_handle.reset();
    }

    CurlHandle m_handle;
    QHash<QString, QString> m_headers;
    CurlHeaders m_list;
};

void setRequest(CurlSettings &settings, const TransferRequest &request)
{
    settings.set(CURLOPT_URL, request.url.constData());
    settings.set(CURLOPT_TIMEOUT_MS, static_cast<long>(request.timeout.count()));
    if (request.method == "GET") {
        settings.set(CURLOPT_HTTPGET, 1L);
        settings.set<const char *>(CURLOPT_CUSTOMREQUEST, nullptr);
        return;
    }
    settings.set(CURLOPT_POST, 1L);
    settings.set(CURLOPT_CUSTOMREQUEST, request.method.constData());
    settings.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    settings.set(CURLOPT_POSTFIELDS, request.body.constData());
}

void setExchange(CurlSettings &settings, Exchange &exchange, char *errorText)
{
    settings.set(CURLOPT_WRITEDATA, &exchange);
    settings.set(CURLOPT_HEADERDATA, &exchange);
    settings.set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(exchange.maxBodySize));
    settings.set(CURLOPT_PREREQDATA, &exchange);
    settings.set(CURLOPT_ERRORBUFFER, errorText);
}

// Resets the options that point to data of the exchange.
void forgetExchange(CURL *handle)
{
    void *const nothing = nullptr;
    for (const CURLoption option : {CURLOPT_HTTPHEADER, CURLOPT_POSTFIELDS, CURLOPT_WRITEDATA, CURLOPT_HEADERDATA,
                                    CURLOPT_PREREQDATA, CURLOPT_ERRORBUFFER})
        curl_easy_setopt(handle, option, nothing);
}

// Whether an empty answer announces a body and not its length: it was cut off.
bool lacksBody(CURL *handle, long status)
{
    curl_header *header = nullptr;
    const auto has = [&](const char *name) {
        return curl_easy_header(handle, name, 0, CURLH_HEADER, -1, &header) == CURLHE_OK;
    };
    constexpr long noContent = 204;
    return status != noContent && has("Content-Type") && !has("Content-Length") && !has("Transfer-Encoding");
}

QString reasonOf(CURLcode code, const char *errorText)
{
    switch (code) {
    case CURLE_OK:
        return {};
    case CURLE_WRITE_ERROR:
    case CURLE_FILESIZE_EXCEEDED:
        return u"ответ длиннее допустимого"_s;
    case CURLE_ABORTED_BY_CALLBACK:
        return u"соединение оборвалось до ответа, запрос не повторён"_s;
    default:
        return plainText(QString::fromUtf8(*errorText ? errorText : curl_easy_strerror(code)), longestReason);
    }
}

} // namespace

TransferResult transfer(const TransferRequest &request, qsizetype maxBodySize)
{
    thread_local ThreadHandle thread;
    CURL *const handle = thread.get();
    curl_slist *const headers = handle ? thread.list(request.headers) : nullptr;
    if (!headers)
        return {.error = QNetworkReply::UnknownNetworkError, .reason = u"libcurl не запускается"_s};

    Exchange exchange{.maxBodySize = maxBodySize, .mayRepeat = request.method == "GET"};
    std::array<char, CURL_ERROR_SIZE> errorText{};
    const auto forget = qScopeGuard([handle] { forgetExchange(handle); });
    CurlSettings settings(handle);
    settings.set(CURLOPT_HTTPHEADER, headers);
    setRequest(settings, request);
    setExchange(settings, exchange, errorText.data());
    CURLcode code = settings.code();
    if (code == CURLE_OK)
        code = curl_easy_perform(handle);

    long status = 0;
    const char *type = nullptr;
    for (const CURLcode known : {curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status),
                                 curl_easy_getinfo(handle, CURLINFO_CONTENT_TYPE, &type)}) {
        if (code == CURLE_OK)
            code = known;
    }
    if (code == CURLE_OK && (!exchange.headersEnded || (exchange.result.body.isEmpty() && lacksBody(handle, status))))
        code = CURLE_PARTIAL_FILE;
    exchange.result.status = static_cast<int>(status);
    exchange.result.html = QByteArray(type).toLower().contains("html");
    exchange.result.error = networkErrorOf(code);
    exchange.result.reason = reasonOf(code, errorText.data());
    return exchange.result;
}
