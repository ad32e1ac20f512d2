// Only a server whose certificate is good, current and made out to its name gets a request.
#include <net/restclient.h>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <memory>
#include <thread>

using namespace Qt::Literals::StringLiterals;

namespace {

struct Deleter
{
    void operator()(EVP_PKEY *key) const { EVP_PKEY_free(key); }
    void operator()(X509 *certificate) const { X509_free(certificate); }
};
using Certificate = std::unique_ptr<X509, Deleter>;

constexpr long hour = 3600;

EVP_PKEY *key()
{
    static const std::unique_ptr<EVP_PKEY, Deleter> made(EVP_RSA_gen(2048));
    return made.get();
}

/// Made out to `address` by `issuer`, or by itself; ends in `validity` seconds.
Certificate certificate(const char *name, const char *address, const X509 *issuer, long validity)
{
    Certificate made(X509_new());
    X509_set_version(made.get(), X509_VERSION_3);
    X509_gmtime_adj(X509_getm_notBefore(made.get()), -2 * hour);
    X509_gmtime_adj(X509_getm_notAfter(made.get()), validity);
    X509_set_pubkey(made.get(), key());
    X509_NAME_add_entry_by_txt(X509_get_subject_name(made.get()), "CN", MBSTRING_ASC,
                               reinterpret_cast<const unsigned char *>(name), -1, -1, 0);
    X509_set_issuer_name(made.get(), X509_get_subject_name(issuer ? issuer : made.get()));
    X509_EXTENSION *extension = address ? X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, address)
                                        : X509V3_EXT_conf_nid(nullptr, nullptr, NID_basic_constraints, "CA:TRUE");
    X509_add_ext(made.get(), extension, -1);
    X509_EXTENSION_free(extension);
    X509_sign(made.get(), key(), EVP_sha256());
    return made;
}

/// What the system trusts beside its own authorities.
const Certificate &shopAuthority()
{
    static const Certificate made = certificate("Shop", nullptr, nullptr, hour);
    return made;
}

} // namespace

// Adds the shop's authority to those of the system, as an administrator would.
extern "C" Q_DECL_EXPORT int X509_STORE_load_file(X509_STORE *store, const char *file)
{
    X509_STORE_add_cert(store, shopAuthority().get());
    static const auto next =
        reinterpret_cast<decltype(&X509_STORE_load_file)>(::dlsym(RTLD_NEXT, "X509_STORE_load_file"));
    return next(store, file);
}

TEST(RestClient, SpeaksOnlyToWhomTheSystemTrusts)
{
    const Certificate stranger = certificate("Stranger", nullptr, nullptr, hour);
    const struct
    {
        const char *label;
        Certificate certificate;
        bool trusted;
    } cases[] = {
        {"own authority", certificate("Kvo", "IP:127.0.0.1", shopAuthority().get(), hour), true},
        {"wrong name", certificate("Kvo", "IP:127.0.0.2", shopAuthority().get(), hour), false},
        {"expired", certificate("Kvo", "IP:127.0.0.1", shopAuthority().get(), -hour), false},
        {"unknown authority", certificate("Kvo", "IP:127.0.0.1", stranger.get(), hour), false},
        {"self-signed", certificate("Kvo", "IP:127.0.0.1", nullptr, hour), false},
    };
    for (const auto &[label, certificate, trusted] : cases) {
        SCOPED_TRACE(label);
        httplib::SSLServer server(certificate.get(), key());
        std::atomic<int> requests = 0;
        server.Get("/", [&](const httplib::Request &, httplib::Response &) { ++requests; });
        const int port = server.bind_to_any_port("127.0.0.1");
        std::jthread serving([&] { server.listen_after_bind(); });

        RestClient client;
        client.request(QNetworkAccessManager::GetOperation, QUrl(u"https://127.0.0.1:%1/"_s.arg(port)), {}, {});
        EXPECT_EQ(client.response().networkError(),
                  trusted ? QNetworkReply::NoError : QNetworkReply::SslHandshakeFailedError);
        EXPECT_EQ(requests, trusted ? 1 : 0);
        server.stop();
    }
}
