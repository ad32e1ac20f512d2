// Plain libcurl, and the recording of what our own client sends, so that both send the same bytes.
#include "barecurl.h"

#include <core/mockfactory.h>
#include <net/restclient.h>

#include <QtCore/QScopeGuard>

#include <stdexcept>

namespace bench {

namespace {

/// Notes what is sent, and sends it.
struct Recorder : RestClient
{
    void request(QNetworkAccessManager::Operation op, const QUrl &url, const QJsonDocument &payload,
                 const QHash<QString, QString> &headers) override
    {
        exchanges.append({url.toEncoded(QUrl::FullyEncoded), payload.toJson(QJsonDocument::Compact), {}});
        for (auto header = headers.cbegin(); header != headers.cend(); ++header)
            exchanges.last().headers.append(header.key().toUtf8() + ": " + header.value().toUtf8());
        RestClient::request(op, url, payload, headers);
    }

    QList<Exchange> exchanges;
};

std::size_t keep(char *data, std::size_t size, std::size_t count, void *answer)
{
    static_cast<std::string *>(answer)->append(data, size * count);
    return size * count;
}

} // namespace

QList<Exchange> record(const std::function<void()> &work)
{
    const auto recorder = QSharedPointer<Recorder>::create();
    MockFactory<RestClient>::install(recorder);
    const auto uninstall = qScopeGuard(&MockFactory<RestClient>::clear);
    work();
    return recorder->exchanges;
}

BareCurl::BareCurl(const Exchange &sample) : m_handle(curl_easy_init())
{
    m_headers = curl_slist_append(m_headers, "Expect:");
    for (const QByteArray &line : sample.headers)
        m_headers = curl_slist_append(m_headers, line.constData());
    curl_easy_setopt(m_handle, CURLOPT_HTTPHEADER, m_headers);
    curl_easy_setopt(m_handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(m_handle, CURLOPT_PROXY, "");
    curl_easy_setopt(m_handle, CURLOPT_WRITEFUNCTION, &keep);
    curl_easy_setopt(m_handle, CURLOPT_WRITEDATA, &m_answer);
}

BareCurl::~BareCurl()
{
    curl_easy_cleanup(m_handle);
    curl_slist_free_all(m_headers);
}

const std::string &BareCurl::send(const Exchange &exchange)
{
    curl_easy_setopt(m_handle, CURLOPT_URL, exchange.url.constData());
    if (exchange.body.isEmpty()) {
        curl_easy_setopt(m_handle, CURLOPT_HTTPGET, 1L);
    } else {
        curl_easy_setopt(m_handle, CURLOPT_POST, 1L);
        curl_easy_setopt(m_handle, CURLOPT_POSTFIELDSIZE, static_cast<long>(exchange.body.size()));
        curl_easy_setopt(m_handle, CURLOPT_POSTFIELDS, exchange.body.constData());
    }
    m_answer.clear();
    if (curl_easy_perform(m_handle) != CURLE_OK || m_answer.empty())
        throw std::runtime_error("bare libcurl got no answer");
    return m_answer;
}

} // namespace bench
