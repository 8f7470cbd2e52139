#include "peer_bench_message_stream.hpp"

#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include "peer_source.hpp"

namespace {

/// A key and a certificate that it signs.
struct Signer {
    Signer() : key(EVP_RSA_gen(2048)), cert(X509_new()) {
        X509_set_version(cert, X509_VERSION_3);
        ASN1_INTEGER_set(X509_get_serialNumber(cert), 1);
        X509_gmtime_adj(X509_getm_notBefore(cert), 0);
        X509_gmtime_adj(X509_getm_notAfter(cert), 86400);
        X509_set_pubkey(cert, key);
        X509_sign(cert, key, EVP_sha256());
    }
    EVP_PKEY *key;
    X509 *cert;
};

}  // namespace

bool digest_with_libcrypto(const std::uint8_t *octets, std::uint32_t size, std::uint32_t times) {
    EVP_MD_CTX *context = EVP_MD_CTX_new();
    unsigned char digest[EVP_MAX_MD_SIZE];
    bool good = EVP_DigestInit_ex(context, EVP_sha256(), nullptr) == 1;
    for (std::uint32_t i = 0; i < times && good; ++i)
        good = EVP_DigestUpdate(context, octets, size) == 1;
    good = good && EVP_DigestFinal_ex(context, digest, nullptr) == 1;
    EVP_MD_CTX_free(context);
    return good;
}

bool sign_with_libcrypto(const std::uint8_t *octets, std::uint32_t size, std::uint32_t times) {
    static const Signer signer;
    constexpr unsigned kFlags = CMS_BINARY | CMS_STREAM | CMS_NOSMIMECAP;
    Source source = {octets, size, times};
    BIO *content = new_source(source);
    BIO *out = BIO_new(BIO_s_null());
    CMS_ContentInfo *message = CMS_sign(signer.cert, signer.key, nullptr, nullptr, kFlags);
    const bool good = message != nullptr && i2d_CMS_bio_stream(out, message, content, kFlags) == 1;
    CMS_ContentInfo_free(message);
    BIO_free(content);
    BIO_free(out);
    return good && source.times == 0;
}

bool verify_with_libcrypto(const std::uint8_t *message, std::size_t size) {
    BIO *in = BIO_new_mem_buf(message, static_cast<int>(size));
    BIO *out = BIO_new(BIO_s_null());
    CMS_ContentInfo *read = d2i_CMS_bio(in, nullptr);
    const bool good =
        CMS_verify(read, nullptr, nullptr, nullptr, out, CMS_BINARY | CMS_NO_SIGNER_CERT_VERIFY) == 1;
    CMS_ContentInfo_free(read);
    BIO_free(in);
    BIO_free(out);
    return good;
}
