// Only a server whose certificate is good, current and made out to its name gets a request.
#include "tests/support/service.h"
#include "tests/support/test.h"

#include <net/restclient.h>

#include <atomic>

TEST(RestClient, SpeaksOnlyToWhomTheSystemTrusts)
{
    const Certificate stranger("CA:TRUE", -1, 1, nullptr, "Stranger");
    // The address that is asked, and the certificate: its names, its first and last day from now, and its issuer.
    using Issuer = const Certificate *;
    const Issuer shop = &trustedAuthority();
    const std::tuple<const char *, const char *, const char *, int, int, Issuer, bool> cases[] = {
        {"own authority", "127.0.0.1", "IP:127.0.0.1", -1, 1, shop, true},
        {"wrong address", "127.0.0.1", "IP:127.0.0.2", -1, 1, shop, false},
        {"host name", "localhost", "DNS:localhost", -1, 1, shop, true},
        {"wrong host name", "localhost", "DNS:localhost.example,IP:127.0.0.1", -1, 1, shop, false},
        {"expired", "127.0.0.1", "IP:127.0.0.1", -2, -1, shop, false},
        {"unknown authority", "127.0.0.1", "IP:127.0.0.1", -1, 1, &stranger, false},
        {"self-signed", "127.0.0.1", "IP:127.0.0.1", -1, 1, nullptr, false},
    };
    for (const auto &[label, host, names, fromDay, toDay, issuer, isTrusted] : cases) {
        const Certificate certificate(names, fromDay, toDay, issuer);
        std::atomic<int> requests = 0;
        const Service service([&](const auto &, auto &) { ++requests; }, &certificate);
        RestClient client;
        client.request(QNetworkAccessManager::GetOperation, QUrl::fromEncoded("https://" + service.address(host)), {},
                       {});
        EXPECT_EQ(client.response().networkError(),
                  isTrusted ? QNetworkReply::NoError : QNetworkReply::SslHandshakeFailedError)
            << label;
        EXPECT_EQ(requests, isTrusted ? 1 : 0) << label;
    }
}
