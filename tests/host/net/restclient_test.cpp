// The HTTP client against servers that misbehave: what counts as an answer, and that nothing is ever sent twice.
#include "rawserver.h"

#include <core/config.h>
#include <core/logsetup.h>
#include <net/restclient.h>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <log4qt/logmanager.h>
#include <netdb.h>

#include <QtCore/QJsonObject>
#include <QtCore/QScopeGuard>
#include <QtCore/QTemporaryDir>

#include <semaphore>
#include <string_view>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto get = QNetworkAccessManager::GetOperation;
constexpr auto post = QNetworkAccessManager::PostOperation;

const QJsonDocument order(QJsonObject{{u"basket"_s, u"b-1"_s}});

std::binary_semaphore slowNameServer{0};
std::atomic<bool> slowNameServerHasAnswered = false;

http::Response exchange(QNetworkAccessManager::Operation op, const QUrl &url, const QJsonDocument &payload = order,
                        const QHash<QString, QString> &headers = {}, int timeout = 10'000)
{
    RestClient client;
    client.setTimeout(timeout);
    client.request(op, url, payload, headers);
    return client.response();
}

RawServer::Handler always(const QByteArray &answer, bool keep = true)
{
    return [=](QTcpSocket &client, int) { return RawServer::send(client, answer) && keep; };
}

struct OutcomeCase
{
    const char *label;
    QByteArray answer;
    int status;
    QNetworkReply::NetworkError error;
};

void PrintTo(const OutcomeCase &example, std::ostream *stream)
{
    *stream << example.label;
}

} // namespace

// Replaces the system's: "unknown.test" does not exist, and the answer for "slow.test" is held back by the test.
extern "C" Q_DECL_EXPORT int getaddrinfo(const char *name, const char *service, const addrinfo *hints,
                                         addrinfo **result)
{
    const std::string_view host = name ? name : "";
    if (host == "slow.test") {
        static_cast<void>(slowNameServer.try_acquire_for(std::chrono::seconds(30)));
        slowNameServerHasAnswered = true;
    }
    if (host.ends_with(".test"))
        return EAI_NONAME;
    static const auto next = reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
    return next(name, service, hints, result);
}

class Outcome : public testing::TestWithParam<OutcomeCase>
{
};

TEST_P(Outcome, TellsTheServicesWordFromEverythingElse)
{
    RawServer server(always(GetParam().answer, false));
    const http::Response response = exchange(post, server.url(u"/order"_s));
    EXPECT_EQ(response.networkError(), GetParam().error);
    EXPECT_EQ(response.status(), GetParam().status);
    EXPECT_FALSE(response.errorText().isEmpty());
    EXPECT_EQ(server.requests().size(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    RestClient, Outcome,
    testing::Values(
        OutcomeCase{"json", RawServer::answer("200 OK", R"({"success":true})"), 200, QNetworkReply::NoError},
        OutcomeCase{"json error", RawServer::answer("500 Oops", R"({"success":false})"), 500, QNetworkReply::NoError},
        OutcomeCase{"no content", "HTTP/1.1 204 No Content\r\n\r\n", 204, QNetworkReply::NoError},
        OutcomeCase{"error page", RawServer::answer("502 Bad Gateway", "<html/>"), 0,
                    QNetworkReply::UnknownContentError},
        OutcomeCase{"error without body", RawServer::answer("500 Oops", ""), 0, QNetworkReply::ProtocolFailure},
        OutcomeCase{"redirect", RawServer::answer("302 Found", "", "Location: /elsewhere\r\n"), 0,
                    QNetworkReply::ProtocolFailure},
        OutcomeCase{"page with success", RawServer::answer("200 OK", "Welcome to the guest network"), 0,
                    QNetworkReply::UnknownContentError},
        OutcomeCase{"half of the json", RawServer::answer("200 OK", R"({"success":)"), 0,
                    QNetworkReply::UnknownContentError},
        OutcomeCase{"cut body", "HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n{}", 0,
                    QNetworkReply::RemoteHostClosedError},
        OutcomeCase{"cut chunks", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\n{}\r\n", 0,
                    QNetworkReply::RemoteHostClosedError},
        OutcomeCase{"no answer", "", 0, QNetworkReply::RemoteHostClosedError},
        OutcomeCase{"not http", "220 mail.example.com ESMTP\r\n", 0, QNetworkReply::ProtocolFailure},
        OutcomeCase{"at the cap", RawServer::answer("200 OK", "{}" + QByteArray(RestClient::maxBodySize - 2, ' ')), 200,
                    QNetworkReply::NoError},
        OutcomeCase{"over the cap", RawServer::answer("200 OK", "{}" + QByteArray(RestClient::maxBodySize - 1, ' ')), 0,
                    QNetworkReply::UnknownContentError}));

TEST(RestClient, FailsWhereNobodyAnswers)
{
    const QUrl gone = RawServer(always({})).url(u"/"_s);
    RawServer silent([](QTcpSocket &, int) { return true; });
    RawServer trickling([](QTcpSocket &client, int) {
        RawServer::send(client, "HTTP/1.1 200 OK\r\nContent-Length: 99999\r\n\r\n");
        while (RawServer::send(client, " "))
            client.waitForReadyRead(20);
        return false;
    });
    const struct
    {
        QUrl url;
        QNetworkReply::NetworkError error;
    } cases[] = {
        {gone, QNetworkReply::ConnectionRefusedError},
        {silent.url(u"/"_s), QNetworkReply::TimeoutError},
        {trickling.url(u"/"_s), QNetworkReply::TimeoutError},
        {QUrl(u"https://unknown.test/"_s), QNetworkReply::HostNotFoundError},
        {QUrl(u"https://slow.test/"_s), QNetworkReply::TimeoutError},
        {QUrl(u"ftp://127.0.0.1/"_s), QNetworkReply::ProtocolUnknownError},
        {QUrl(u"/api"_s), QNetworkReply::ProtocolUnknownError},
        {QUrl(), QNetworkReply::ProtocolUnknownError},
    };
    for (const auto &example : cases) {
        const http::Response response = exchange(get, example.url, {}, {}, 300);
        EXPECT_EQ(response.networkError(), example.error) << qUtf8Printable(example.url.toString());
        EXPECT_EQ(response.status(), 0);
        EXPECT_FALSE(response.errorText().isEmpty());
    }
    EXPECT_FALSE(slowNameServerHasAnswered) << "the client has waited for the name server";
    slowNameServer.release();
}

TEST(RestClient, SendsTheRequestAsItWasGiven)
{
    qputenv("http_proxy", "http://127.0.0.1:9");
    const auto cleanUp = qScopeGuard([] { qunsetenv("http_proxy"); });
    RawServer server(always(RawServer::answer("200 OK", "{}")));
    const QString path = u"/api/../a%20b?phone=%2B79001234567&x=%D0%B9"_s;
    exchange(get, server.url(path), order, {{u"Authorization"_s, u"Basic Og=="_s}, {u"X-Empty"_s, {}}});
    const QJsonDocument big(QJsonObject{{u"x"_s, QString(2'000'000, u'й')}});
    exchange(post, server.url(u"/big"_s), big, {{u"Content-Type"_s, u"application/json"_s}});

    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 2);
    EXPECT_TRUE(requests[0].startsWith("GET " + path.toLatin1() + " HTTP/1.1\r\n"));
    EXPECT_TRUE(requests[0].contains("\r\nAuthorization: Basic Og==\r\n"));
    EXPECT_TRUE(requests[0].contains("\r\nX-Empty:\r\n"));
    EXPECT_TRUE(requests[0].endsWith("\r\n\r\n"));
    EXPECT_TRUE(requests[1].contains("\r\nContent-Type: application/json\r\n"));
    EXPECT_FALSE(requests[1].contains("Expect"));
    EXPECT_TRUE(requests[1].endsWith("\r\n\r\n" + big.toJson(QJsonDocument::Compact)));
    EXPECT_EQ(server.connections(), 1) << "one connection serves several clients";
}

TEST(RestClient, RefusesWhatItCannotSendSafely)
{
    RawServer server(always(RawServer::answer("200 OK", "{}")));
    const QUrl url = server.url(u"/"_s);
    EXPECT_EQ(exchange(get, url, {}, {{u"A"_s, u"b\r\nHost: c"_s}}).networkError(),
              QNetworkReply::ProtocolInvalidOperationError);
    EXPECT_EQ(exchange(QNetworkAccessManager::UnknownOperation, url).networkError(),
              QNetworkReply::ProtocolInvalidOperationError);
    EXPECT_TRUE(server.requests().isEmpty());
}

class OnlyOnce : public testing::TestWithParam<QNetworkAccessManager::Operation>
{
};

// The server answers, keeps the connection, reads the second request and hangs up: it may have done the work.
TEST_P(OnlyOnce, IsARequestSentOnAConnectionThatDies)
{
    RawServer server([](QTcpSocket &client, int number) {
        return number != 2 && RawServer::send(client, RawServer::answer("200 OK", "{}"));
    });
    EXPECT_EQ(exchange(GetParam(), server.url(u"/first"_s)).networkError(), QNetworkReply::NoError);
    EXPECT_EQ(exchange(GetParam(), server.url(u"/second"_s)).networkError(), QNetworkReply::RemoteHostClosedError);
    EXPECT_EQ(server.requests().size(), 2);
    EXPECT_EQ(exchange(GetParam(), server.url(u"/third"_s)).networkError(), QNetworkReply::NoError);
    EXPECT_EQ(server.requests().size(), 3);
}

INSTANTIATE_TEST_SUITE_P(RestClient, OnlyOnce, testing::Values(get, post));

TEST(RestClient, LogsNoSecretsAndWarnsOnceOfPlainHttp)
{
    QTemporaryDir folder;
    const QString log = folder.filePath(u"log"_s), settings = folder.filePath(u"ini"_s);
    QFile file(settings);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("[Log]\nlevel=DEBUG\nfile=" + log.toUtf8()) > 0);
    file.close();
    setUpLogging(Config(settings));

    RawServer server(always(RawServer::answer("200 OK", R"({"secret-body":1})")));
    RestClient client;
    client.setLogger(Log4Qt::LogManager::logger(u"kvo"_s));
    const QHash<QString, QString> headers{{u"Authorization"_s, u"secret-header"_s}};
    for (const QUrl &url : {server.url(u"/card?phone=secret-query"_s), QUrl(u"http://unknown.test/?q=secret-query"_s),
                            QUrl(u"http://unknown.test/again"_s)})
        client.request(post, url, order, headers);
    setUpLogging(Config());

    QFile written(log);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    const QByteArray lines = written.readAll();
    EXPECT_EQ(lines.count(" WARN poshost - "), 1) << lines.constData();
    EXPECT_EQ(lines.count(" DEBUG kvo - POST 127.0.0.1:"), 1);
    EXPECT_EQ(lines.count(" ERROR kvo - POST unknown.test/"), 2);
    EXPECT_FALSE(lines.contains("secret"));
}
