// A certificate with a key of its own.
#pragma once

#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <QtCore/QByteArray>

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

    QByteArray pem() const
    {
        BIO *memory = BIO_new(BIO_s_mem());
        PEM_write_bio_X509(memory, m_certificate);
        char *text = nullptr;
        const long length = BIO_get_mem_data(memory, &text);
        const QByteArray pem(text, length);
        BIO_free(memory);
        return pem;
    }

private:
    X509 *m_certificate = X509_new();
    EVP_PKEY *m_key = EVP_EC_gen("P-256");
};
