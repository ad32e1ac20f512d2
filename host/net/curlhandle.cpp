// What all exchanges have in common. By itself libcurl follows no redirects and sends without delay.
#include "curlhandle.h"

using namespace Qt::Literals::StringLiterals;

namespace {

// Servers close idle connections. Reusing an old one risks losing it under a request.
constexpr long maxIdleSeconds = 20;

bool initialized()
{
    static const bool done = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return done;
}

void append(CurlHeaders &headers, const QByteArray &line)
{
    curl_slist *const longer = headers ? curl_slist_append(headers.get(), line.constData()) : nullptr;
    if (longer)
        static_cast<void>(headers.release());
    headers.reset(longer);
}

} // namespace

CurlHandle makeCurlHandle()
{
    CurlHandle handle(initialized() ? curl_easy_init() : nullptr);
    if (!handle)
        return nullptr;
    CurlSettings settings(handle.get());
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
    return settings.code() == CURLE_OK ? std::move(handle) : nullptr;
}

CurlHeaders curlHeaders(const QHash<QString, QString> &headers)
{
    CurlHeaders list(curl_slist_append(nullptr, "Expect:"));
    append(list, "Content-Type:"); // or libcurl would declare a form where `headers` gives no type
    append(list, "Accept: application/json");
    for (auto header = headers.cbegin(); header != headers.cend(); ++header) {
        // To libcurl "name:" means not to send the header, and "name;" to send it empty.
        const QString line = header->isEmpty() ? header.key() + u';' : header.key() + ": "_L1 + *header;
        append(list, line.toUtf8());
    }
    return list;
}
