// Uses libcurl: one handle per thread, whose connections stay open between exchanges. A till talks only to the
// configured host: the environment's proxies are ignored and redirects are not followed.
#include "transfer.h"

#include "curlerrors.h"

#include <core/plaintext.h>

#include <QtCore/QScopeGuard>

#include <array>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

// Servers close idle connections. Reusing an old one risks losing it under a request.
constexpr long maxIdleSeconds = 20;

constexpr qsizetype maxHeaderSize = 65'536;
constexpr qsizetype longestReason = 200;

struct Exchange
{
    TransferResult result{};
    qsizetype maxBodySize = 0;
    qsizetype headerSize = 0;
    bool headersEnded = false;
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
// received the first one, so the second must not be sent.
int beforeRequest(void *user, char *, char *, int, int)
{
    return ++static_cast<Exchange *>(user)->requests == 1 ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

bool initialized()
{
    static const bool done = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return done;
}

// Sets options of a handle until one fails; code() is that failure.
class Settings
{
public:
    explicit Settings(CURL *handle) : m_handle(handle) {}
    Q_DISABLE_COPY_MOVE(Settings)

    template <class T>
    void set(CURLoption option, T value)
    {
        if (m_code == CURLE_OK)
            m_code = curl_easy_setopt(m_handle, option, value);
    }

    CURLcode code() const { return m_code; }

private:
    CURL *m_handle;
    CURLcode m_code = CURLE_OK;
};

// Sets what all exchanges have in common. By itself libcurl follows no redirects and sends without delay.
CURLcode setPolicy(CURL *handle)
{
    Settings settings(handle);
    settings.set(CURLOPT_PROTOCOLS_STR, "http,https");
    settings.set(CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
    settings.set(CURLOPT_PROXY, "");
    settings.set(CURLOPT_PATH_AS_IS, 1L);
    settings.set(CURLOPT_SSL_VERIFYPEER, 1L);
    settings.set(CURLOPT_SSL_VERIFYHOST, 2L);
    settings.set(CURLOPT_NOSIGNAL, 1L);
    settings.set(CURLOPT_MAXAGE_CONN, maxIdleSeconds);
    // Without it, a name server that does not answer holds the thread beyond the time-out.
    settings.set(CURLOPT_QUICK_EXIT, 1L);
    settings.set(CURLOPT_USERAGENT, "Kvo/" KVO_VERSION);
    settings.set(CURLOPT_WRITEFUNCTION, &receive);
    settings.set(CURLOPT_HEADERFUNCTION, &receiveHeader);
    settings.set(CURLOPT_PREREQFUNCTION, &beforeRequest);
    return settings.code();
}

struct CurlDeleter
{
    void operator()(CURL *handle) const { curl_easy_cleanup(handle); }
    void operator()(curl_slist *list) const { curl_slist_free_all(list); }
};

// A thread's handle, and its last headers in libcurl's form: most exchanges have the same ones.
class ThreadHandle
{
public:
    ThreadHandle() : m_handle(initialized() ? curl_easy_init() : nullptr)
    {
        if (m_handle && setPolicy(m_handle.get()) != CURLE_OK)
            m_handle.reset();
    }

    // Null if libcurl refuses the policy.
    CURL *get() const { return m_handle.get(); }

    // The headers in libcurl's form; null if memory runs out.
    curl_slist *list(const QHash<QString, QString> &headers)
    {
        if (m_list && headers == m_headers)
            return m_list.get();
        m_headers = headers;
        m_list.reset(curl_slist_append(nullptr, "Expect:"));
        append("Content-Type:"); // otherwise that of a form where `headers` has none
        append("Accept: application/json");
        for (auto header = headers.cbegin(); header != headers.cend(); ++header) {
            // To libcurl "name:" means not to send the header, and "name;" to send it empty.
            const QString line = header->isEmpty() ? header.key() + u';' : header.key() + ": "_L1 + *header;
            append(line.toUtf8());
        }
        return m_list.get();
    }

private:
    void append(const QByteArray &line)
    {
        curl_slist *const longer = m_list ? curl_slist_append(m_list.get(), line.constData()) : nullptr;
        if (longer)
            static_cast<void>(m_list.release());
        m_list.reset(longer);
    }

    std::unique_ptr<CURL, CurlDeleter> m_handle;
    QHash<QString, QString> m_headers;
    std::unique_ptr<curl_slist, CurlDeleter> m_list;
};

void setRequest(Settings &settings, const TransferRequest &request)
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

void setExchange(Settings &settings, Exchange &exchange, char *errorText)
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

    Exchange exchange{.maxBodySize = maxBodySize};
    std::array<char, CURL_ERROR_SIZE> errorText{};
    const auto forget = qScopeGuard([handle] { forgetExchange(handle); });
    Settings settings(handle);
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
    if (code == CURLE_OK && !exchange.headersEnded)
        code = CURLE_PARTIAL_FILE;
    exchange.result.status = static_cast<int>(status);
    exchange.result.html = QByteArray(type).toLower().contains("html");
    exchange.result.error = networkErrorOf(code);
    exchange.result.reason = reasonOf(code, errorText.data());
    return exchange.result;
}
