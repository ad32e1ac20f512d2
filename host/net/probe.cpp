// Reads from libcurl how far a connection got and what it found.
#include "curlhandle.h"

#include <core/basicexception.h>
#include <net/probe.h>

#include <QtCore/QLocale>

#include <algorithm>
#include <array>
#include <new>

using namespace Qt::Literals::StringLiterals;

namespace http {

namespace {

using std::chrono::microseconds;
using Stage = ProbeResult::Stage;

constexpr qsizetype keptBody = 64 * 1024;

void check(CURLcode code)
{
    if (code != CURLE_OK)
        throw BasicException(QString::fromUtf8(curl_easy_strerror(code)));
}

std::size_t receive(char *bytes, std::size_t, std::size_t count, void *context)
{
    auto &body = *static_cast<QByteArray *>(context);
    body.append(bytes, std::min(static_cast<qsizetype>(count), keptBody - body.size()));
    return count;
}

/// libcurl reports the TLS version only in its verbose output.
int readRemark(CURL *, curl_infotype type, char *text, std::size_t length, void *context)
{
    constexpr QByteArrayView beginning = "SSL connection using ";
    const QByteArrayView remark(text, static_cast<qsizetype>(length));
    if (type == CURLINFO_TEXT && remark.startsWith(beginning)) {
        const QByteArray rest = remark.sliced(beginning.size()).toByteArray();
        *static_cast<QString *>(context) = QString::fromLatin1(rest.split(' ').first());
    }
    return 0;
}

microseconds timeOf(CURL *handle, CURLINFO what)
{
    curl_off_t time = 0;
    check(curl_easy_getinfo(handle, what, &time));
    return microseconds(time);
}

QString textOf(CURL *handle, CURLINFO what)
{
    const char *text = nullptr;
    check(curl_easy_getinfo(handle, what, &text));
    return QString::fromUtf8(text);
}

Stage stageOf(CURL *handle, CURLcode code, int status)
{
    if (status != 0)
        return Stage::Answered;
    if (code == CURLE_COULDNT_RESOLVE_HOST || timeOf(handle, CURLINFO_NAMELOOKUP_TIME_T) == microseconds::zero())
        return Stage::Nothing;
    if (code == CURLE_COULDNT_CONNECT || textOf(handle, CURLINFO_PRIMARY_IP).isEmpty())
        return Stage::Resolved;
    const bool secured = timeOf(handle, CURLINFO_APPCONNECT_TIME_T) > microseconds::zero();
    return secured && code != CURLE_PEER_FAILED_VERIFICATION ? Stage::Secured : Stage::Connected;
}

/// libcurl's message, with the system's if there is one.
QString reasonOf(CURL *handle, CURLcode code, const char *text)
{
    long number = 0;
    check(curl_easy_getinfo(handle, CURLINFO_OS_ERRNO, &number));
    const QString reason = QString::fromUtf8(*text ? text : curl_easy_strerror(code)).simplified();
    return number == 0 ? reason : u"%1 (%2)"_s.arg(reason, qt_error_string(static_cast<int>(number)));
}

void readCertificate(CURL *handle, ProbeResult &result)
{
    curl_certinfo *chain = nullptr;
    check(curl_easy_getinfo(handle, CURLINFO_CERTINFO, &chain));
    if (!chain || chain->num_of_certs < 1)
        return;
    for (const curl_slist *line = chain->certinfo[0]; line; line = line->next) {
        const QString text = QString::fromUtf8(line->data);
        if (text.startsWith("Subject:"_L1))
            result.subject = text.mid(8).trimmed();
        if (!text.startsWith("Expire date:"_L1))
            continue;
        result.validUntil = QLocale::c().toDateTime(text.mid(12).simplified(), u"MMM d hh:mm:ss yyyy 'GMT'"_s);
        result.validUntil.setTimeSpec(Qt::UTC);
    }
}

QDateTime dateOf(CURL *handle)
{
    curl_header *header = nullptr;
    if (curl_easy_header(handle, "Date", 0, CURLH_HEADER, -1, &header) != CURLHE_OK)
        return {};
    const time_t time = curl_getdate(header->value, nullptr);
    return time == -1 ? QDateTime() : QDateTime::fromSecsSinceEpoch(time, Qt::UTC);
}

} // namespace

struct Probe::Handle
{
    Handle() : owner(makeCurlHandle())
    {
        if (!owner)
            throw std::bad_alloc();
    }
    Q_DISABLE_COPY_MOVE(Handle)

    template <class Value>
    void set(CURLoption option, Value value)
    {
        check(curl_easy_setopt(curl, option, value));
    }

    ProbeResult perform(const QUrl &url);

    CurlHandle owner;
    CURL *curl = owner.get();
    std::array<char, CURL_ERROR_SIZE> errorText{};
    QString tlsVersion;
    QByteArray body;
};

ProbeResult Probe::Handle::perform(const QUrl &url)
{
    errorText.fill('\0');
    body.clear();
    const QByteArray address = url.toEncoded();
    set(CURLOPT_URL, address.constData());
    const CURLcode code = curl_easy_perform(curl);

    ProbeResult result;
    long status = 0;
    long connections = 0;
    check(curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status));
    check(curl_easy_getinfo(curl, CURLINFO_NUM_CONNECTS, &connections));
    result.failed = code != CURLE_OK;
    if (result.failed)
        result.reason = reasonOf(curl, code, errorText.data());
    result.status = static_cast<int>(status);
    result.stage = stageOf(curl, code, result.status);
    result.peer = textOf(curl, CURLINFO_PRIMARY_IP);
    result.contentType = textOf(curl, CURLINFO_CONTENT_TYPE);
    result.tlsVersion = tlsVersion;
    result.date = dateOf(curl);
    result.body = body;
    result.time = timeOf(curl, CURLINFO_TOTAL_TIME_T);
    result.newConnection = connections > 0;
    readCertificate(curl, result);
    return result;
}

Probe::Probe(std::chrono::milliseconds timeout) : m_timeout(timeout), m_kept(makeHandle())
{}

Probe::~Probe() = default;

std::unique_ptr<Probe::Handle> Probe::makeHandle() const
{
    auto handle = std::make_unique<Handle>();
    handle->set(CURLOPT_TIMEOUT_MS, static_cast<long>(m_timeout.count()));
    handle->set(CURLOPT_CERTINFO, 1L);
    handle->set(CURLOPT_VERBOSE, 1L);
    handle->set(CURLOPT_DEBUGFUNCTION, &readRemark);
    handle->set(CURLOPT_DEBUGDATA, &handle->tlsVersion);
    handle->set(CURLOPT_ERRORBUFFER, handle->errorText.data());
    handle->set(CURLOPT_WRITEFUNCTION, &receive);
    handle->set(CURLOPT_WRITEDATA, &handle->body);
    return handle;
}

ProbeResult Probe::connect(const QUrl &url, Trust trust) const
{
    const auto handle = makeHandle();
    handle->set(CURLOPT_CONNECT_ONLY, 1L);
    if (trust == Trust::Unverified) {
        handle->set(CURLOPT_SSL_VERIFYPEER, 0L);
        handle->set(CURLOPT_SSL_VERIFYHOST, 0L);
    }
    return handle->perform(url);
}

ProbeResult Probe::get(const QUrl &url, const QHash<QString, QString> &headers)
{
    const CurlHeaders list = curlHeaders(headers);
    m_kept->set(CURLOPT_HTTPHEADER, list.get());
    ProbeResult result = m_kept->perform(url);
    m_kept->set<curl_slist *>(CURLOPT_HTTPHEADER, nullptr);
    return result;
}

} // namespace http
