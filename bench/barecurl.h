// The peer of all exchanges: libcurl as one would use it with nothing around it.
#pragma once

#include <curl/curl.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>

#include <functional>
#include <string>

namespace bench {

/// What goes over the wire.
struct Exchange
{
    QByteArray url;
    QByteArray body; ///< Empty with GET.
    QList<QByteArray> headers;
};

/// What our own client sends while `work` runs.
QList<Exchange> record(const std::function<void()> &work);

/// One easy handle that is kept, with its connection and its headers.
class BareCurl
{
public:
    /// The headers are those of `sample` in every exchange.
    explicit BareCurl(const Exchange &sample);
    ~BareCurl();
    Q_DISABLE_COPY_MOVE(BareCurl)

    /// Sends and returns the answer's body, unparsed. Throws std::runtime_error when there is none.
    const std::string &send(const Exchange &exchange);

private:
    CURL *m_handle;
    curl_slist *m_headers = nullptr;
    std::string m_answer;
};

} // namespace bench
