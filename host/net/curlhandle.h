// libcurl handles for talking to the configured host and nobody else. Private to this folder.
#pragma once

#include <curl/curl.h>

#include <QtCore/QHash>
#include <QtCore/QString>

#include <memory>

struct CurlDeleter
{
    void operator()(CURL *handle) const { curl_easy_cleanup(handle); }
    void operator()(curl_slist *list) const { curl_slist_free_all(list); }
};
using CurlHandle = std::unique_ptr<CURL, CurlDeleter>;
using CurlHeaders = std::unique_ptr<curl_slist, CurlDeleter>;

/// Sets options of a handle until one fails; code() is that failure.
class CurlSettings
{
public:
    explicit CurlSettings(CURL *handle) : m_handle(handle) {}
    Q_DISABLE_COPY_MOVE(CurlSettings)

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

/// A handle that speaks http and https, verifies certificates, ignores the environment's proxies and follows no
/// redirects. Null if libcurl refuses.
CurlHandle makeCurlHandle();

/// The headers in libcurl's form, after those that every request has; null if memory runs out.
CurlHeaders curlHeaders(const QHash<QString, QString> &headers);
