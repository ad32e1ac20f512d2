// Only a server whose certificate is good, current and made out to its name gets a request.
#include "tests/support/certificate.h"

#include <net/restclient.h>

#include <gtest/gtest.h>
#include <httplib.h>

#include <atomic>
#include <thread>

using namespace Qt::Literals::StringLiterals;

TEST(RestClient, SpeaksOnlyToWhomTheSystemTrusts)
{
    const Certificate stranger("CA:TRUE", -1, 1, nullptr, "Stranger");
    const struct
    {
        const char *label;
        const char *names;
        int fromDay;
        int toDay;
        const Certificate *issuer;
        bool trusted;
        QString host = u"127.0.0.1"_s;
    } cases[] = {
        {"own authority", "IP:127.0.0.1", -1, 1, &trustedAuthority(), true},
        {"wrong address", "IP:127.0.0.2", -1, 1, &trustedAuthority(), false},
        {"host name", "DNS:localhost", -1, 1, &trustedAuthority(), true, u"localhost"_s},
        {"wrong host name", "DNS:localhost.example,IP:127.0.0.1", -1, 1, &trustedAuthority(), false, u"localhost"_s},
        {"expired", "IP:127.0.0.1", -2, -1, &trustedAuthority(), false},
        {"unknown authority", "IP:127.0.0.1", -1, 1, &stranger, false},
        {"self-signed", "IP:127.0.0.1", -1, 1, nullptr, false},
    };
    for (const auto &[label, names, fromDay, toDay, issuer, trusted, host] : cases) {
        SCOPED_TRACE(label);
        const Certificate certificate(names, fromDay, toDay, issuer);
        httplib::SSLServer server(certificate.x509(), certificate.key());
        std::atomic<int> requests = 0;
        server.Get("/", [&](const httplib::Request &, httplib::Response &) { ++requests; });
        const int port = server.bind_to_any_port("127.0.0.1");
        std::jthread serving([&] { server.listen_after_bind(); });

        RestClient client;
        const QUrl url(u"https://%1:%2/"_s.arg(host, QString::number(port)));
        client.request(QNetworkAccessManager::GetOperation, url, {}, {});
        EXPECT_EQ(client.response().networkError(),
                  trusted ? QNetworkReply::NoError : QNetworkReply::SslHandshakeFailedError);
        EXPECT_EQ(requests, trusted ? 1 : 0);
        server.stop();
    }
}
