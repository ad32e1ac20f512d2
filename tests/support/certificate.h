// Certificates with keys of their own, and an authority that the program trusts.
#pragma once

#include <dlfcn.h>
#include <openssl/x509v3.h>

#include <QtCore/QtGlobal>

class Certificate
{
public:
    /// For the alternative names "IP:..." or "DNS:...", or for an authority with "CA:TRUE"; valid between these days
    /// from now. Signed by the issuer, or by itself.
    Certificate(const char *names, int fromDay, int toDay, const Certificate *issuer = nullptr,
                const char *commonName = "doctor")
    {
        constexpr long day = 24L * 3600;
        X509_set_version(m_certificate, X509_VERSION_3);
        X509_gmtime_adj(X509_getm_notBefore(m_certificate), fromDay * day);
        X509_gmtime_adj(X509_getm_notAfter(m_certificate), toDay * day);
        X509_set_pubkey(m_certificate, m_key);
        X509_NAME *name = X509_get_subject_name(m_certificate);
        const auto *text = reinterpret_cast<const unsigned char *>(commonName);
        X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, text, -1, -1, 0);
        X509_set_issuer_name(m_certificate, issuer ? X509_get_subject_name(issuer->m_certificate) : name);
        const int kind = names[0] == 'C' ? NID_basic_constraints : NID_subject_alt_name;
        X509_EXTENSION *extension = X509V3_EXT_conf_nid(nullptr, nullptr, kind, names);
        X509_add_ext(m_certificate, extension, -1);
        X509_EXTENSION_free(extension);
        X509_sign(m_certificate, issuer ? issuer->m_key : m_key, EVP_sha256());
    }
    ~Certificate()
    {
        X509_free(m_certificate);
        EVP_PKEY_free(m_key);
    }
    Q_DISABLE_COPY_MOVE(Certificate)

    X509 *x509() const { return m_certificate; }
    EVP_PKEY *key() const { return m_key; }

private:
    X509 *m_certificate = X509_new();
    EVP_PKEY *m_key = EVP_EC_gen("P-256");
};

/// Trusted beside the authorities of the system, as if an administrator had installed it.
inline const Certificate &trustedAuthority()
{
    static const Certificate made("CA:TRUE", -1, 1, nullptr, "Shop");
    return made;
}

extern "C" [[gnu::used]] Q_DECL_EXPORT inline int X509_STORE_load_file(X509_STORE *store, const char *file)
{
    X509_STORE_add_cert(store, trustedAuthority().x509());
    static const auto next =
        reinterpret_cast<decltype(&X509_STORE_load_file)>(::dlsym(RTLD_NEXT, "X509_STORE_load_file"));
    return next(store, file);
}
