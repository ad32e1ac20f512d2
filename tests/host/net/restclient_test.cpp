// The HTTP client against servers that misbehave: what counts as an answer, and that nothing is ever sent twice.
#include "rawserver.h"
#include "tests/support/logfile.h"

#include <net/restclient.h>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <log4qt/logmanager.h>
#include <netdb.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonObject>
#include <QtCore/QScopeGuard>

#include <semaphore>
#include <string_view>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto get = QNetworkAccessManager::GetOperation;
constexpr auto post = QNetworkAccessManager::PostOperation;

/// Qt's data about the main thread ends with it, as in every host.
class Application : public testing::Environment
{
    int argc = 1;
    char name[5] = "test";
    char *argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
};

const testing::Environment *const application = testing::AddGlobalTestEnvironment(new Application);

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

TEST(RestClient, TellsTheServicesWordFromEverythingElse)
{
    const auto json = [](qsizetype size) { return RawServer::answer("200 OK", "{}" + QByteArray(size - 2, ' ')); };
    const struct
    {
        const char *label;
        QByteArray answer;
        int status;
        QNetworkReply::NetworkError error;
    } cases[] = {
        {"json", json(2), 200, QNetworkReply::NoError},
        {"json error", RawServer::answer("500 Oops", R"({"success":false})"), 500, QNetworkReply::NoError},
        {"no content", "HTTP/1.1 204 No Content\r\n\r\n", 204, QNetworkReply::NoError},
        {"error page", RawServer::answer("502 Bad Gateway", "<html/>"), 0, QNetworkReply::UnknownContentError},
        {"error without body", RawServer::answer("500 Oops", ""), 0, QNetworkReply::ProtocolFailure},
        {"redirect", RawServer::answer("302 Found", "", "Location: /x\r\n"), 0, QNetworkReply::ProtocolFailure},
        {"guest network's page", RawServer::answer("200 OK", "Welcome"), 0, QNetworkReply::UnknownContentError},
        {"cut body", json(99).chopped(9), 0, QNetworkReply::RemoteHostClosedError},
        {"no answer", "", 0, QNetworkReply::RemoteHostClosedError},
        {"not http", "220 mail.example.com ESMTP\r\n", 0, QNetworkReply::ProtocolFailure},
        {"at the cap", json(RestClient::maxBodySize), 200, QNetworkReply::NoError},
        {"over the cap", json(RestClient::maxBodySize + 1), 0, QNetworkReply::UnknownContentError},
    };
    for (const auto &[label, answer, status, error] : cases) {
        SCOPED_TRACE(label);
        RawServer server(always(answer, false));
        const http::Response response = exchange(post, server.url(u"/order"_s));
        EXPECT_EQ(response.networkError(), error);
        EXPECT_EQ(response.status(), status);
        EXPECT_FALSE(response.errorText().isEmpty());
        EXPECT_EQ(server.requests().size(), 1);
    }
}

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
    const std::pair<QUrl, QNetworkReply::NetworkError> cases[] = {
        {gone, QNetworkReply::ConnectionRefusedError},
        {silent.url(u"/"_s), QNetworkReply::TimeoutError},
        {trickling.url(u"/"_s), QNetworkReply::TimeoutError},
        {QUrl(u"https://unknown.test/"_s), QNetworkReply::HostNotFoundError},
        {QUrl(u"https://slow.test/"_s), QNetworkReply::TimeoutError},
        {QUrl(u"ftp://127.0.0.1/"_s), QNetworkReply::ProtocolUnknownError},
        {QUrl(), QNetworkReply::ProtocolUnknownError},
    };
    for (const auto &[url, error] : cases) {
        const http::Response response = exchange(get, url, {}, {}, 300);
        EXPECT_EQ(response.networkError(), error) << url.toString().toStdString();
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
    EXPECT_EQ(exchange(get, server.url(u"/"_s), {}, {{u"A"_s, u"b\r\nHost: c"_s}}).networkError(),
              QNetworkReply::ProtocolInvalidOperationError);
    EXPECT_TRUE(server.requests().isEmpty());
}

// The server answers, keeps the connection, reads the second request and hangs up: it may have done the work.
TEST(RestClient, SendsARequestOnlyOnceOnAConnectionThatDies)
{
    for (const auto op : {get, post}) {
        RawServer server([](QTcpSocket &client, int number) {
            return number != 2 && RawServer::send(client, RawServer::answer("200 OK", "{}"));
        });
        EXPECT_EQ(exchange(op, server.url(u"/first"_s)).networkError(), QNetworkReply::NoError);
        EXPECT_EQ(exchange(op, server.url(u"/second"_s)).networkError(), QNetworkReply::RemoteHostClosedError);
        EXPECT_EQ(server.requests().size(), 2);
        EXPECT_EQ(exchange(op, server.url(u"/third"_s)).networkError(), QNetworkReply::NoError);
        EXPECT_EQ(server.requests().size(), 3);
    }
}

TEST(RestClient, LogsNoSecrets)
{
    LogFile log;
    RawServer server(always(RawServer::answer("200 OK", R"({"secret-body":1})")));
    RestClient client;
    client.setLogger(Log4Qt::LogManager::logger(u"kvo"_s));
    for (const QUrl &url : {server.url(u"/card?phone=secret-query"_s), QUrl(u"http://unknown.test/?q=secret-query"_s)})
        client.request(post, url, order, {{u"Authorization"_s, u"secret-header"_s}});
    const QString lines = log.take();
    EXPECT_EQ(lines.count(u" DEBUG kvo - POST 127.0.0.1:"_s), 1);
    EXPECT_EQ(lines.count(u" ERROR kvo - POST unknown.test/"_s), 1);
    EXPECT_FALSE(lines.contains(u"secret"_s));
}
