// Only a server that the system trusts gets a request.
#include <net/restclient.h>

#include <gtest/gtest.h>
#include <httplib.h>
#include <openssl/x509.h>

#include <atomic>
#include <thread>

using namespace Qt::Literals::StringLiterals;

TEST(RestClient, RefusesACertificateThatNobodyVouchesFor)
{
    EVP_PKEY *key = EVP_RSA_gen(2048);
    X509 *certificate = X509_new();
    X509_gmtime_adj(X509_getm_notBefore(certificate), -3600);
    X509_gmtime_adj(X509_getm_notAfter(certificate), 3600);
    X509_set_pubkey(certificate, key);
    // In good order but for its issuer: libcurl refuses one without names whatever it is told about trust.
    X509_NAME *name = X509_get_subject_name(certificate);
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char *>("127.0.0.1"), -1, -1,
                               0);
    X509_set_issuer_name(certificate, name);
    ASSERT_NE(X509_sign(certificate, key, EVP_sha256()), 0);

    httplib::SSLServer server(certificate, key);
    std::atomic<int> requests = 0;
    server.Get("/", [&](const httplib::Request &, httplib::Response &) { ++requests; });
    const int port = server.bind_to_any_port("127.0.0.1");
    std::thread serving([&] { server.listen_after_bind(); });

    RestClient client;
    client.request(QNetworkAccessManager::GetOperation, QUrl(u"https://127.0.0.1:%1/"_s.arg(port)), {}, {});
    EXPECT_EQ(client.response().networkError(), QNetworkReply::SslHandshakeFailedError);
    EXPECT_EQ(requests, 0);

    server.stop();
    serving.join();
    X509_free(certificate);
    EVP_PKEY_free(key);
}
