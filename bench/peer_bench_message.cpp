#include "peer_bench_message.hpp"

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/pkcs7.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <memory>

namespace {

template <typename T, auto FreeFunction>
struct Free {
    void operator()(T *object) const { (void)FreeFunction(object); }
};
using Bio = std::unique_ptr<BIO, Free<BIO, BIO_free>>;
using Message = std::unique_ptr<CMS_ContentInfo, Free<CMS_ContentInfo, CMS_ContentInfo_free>>;

Message decode(const Octets &message) {
    const std::uint8_t *at = message.data();
    return Message(d2i_CMS_ContentInfo(nullptr, &at, static_cast<long>(message.size())));
}

}  // namespace

PeerSigner::PeerSigner() {
    EVP_PKEY *key = EVP_RSA_gen(2048);
    X509 *cert = X509_new();
    X509_set_version(cert, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(cert), 1);
    X509_gmtime_adj(X509_getm_notBefore(cert), 0);
    X509_gmtime_adj(X509_getm_notAfter(cert), 86400);
    X509_set_pubkey(cert, key);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(cert), "CN", MBSTRING_ASC,
                               reinterpret_cast<const unsigned char *>("peer"), -1, -1, 0);
    X509_set_issuer_name(cert, X509_get_subject_name(cert));
    X509_sign(cert, key, EVP_sha256());
    key_ = key;
    cert_ = cert;
}

PeerSigner::~PeerSigner() {
    X509_free(static_cast<X509 *>(cert_));
    EVP_PKEY_free(static_cast<EVP_PKEY *>(key_));
}

Octets PeerSigner::sign(const Octets &content) const {
    const Bio in(BIO_new_mem_buf(content.data(), static_cast<int>(content.size())));
    const Message message(CMS_sign(static_cast<X509 *>(cert_), static_cast<EVP_PKEY *>(key_), nullptr,
                                   in.get(), CMS_BINARY | CMS_NOSMIMECAP));
    std::uint8_t *der = nullptr;
    const int size = i2d_CMS_ContentInfo(message.get(), &der);
    const Octets octets(der, der + (size > 0 ? size : 0));
    OPENSSL_free(der);
    return octets;
}

bool PeerSigner::verify(const Octets &message) const {
    const Message decoded = decode(message);
    return CMS_verify(decoded.get(), nullptr, nullptr, nullptr, nullptr,
                      CMS_BINARY | CMS_NO_SIGNER_CERT_VERIFY) == 1;
}

bool decode_cms_and_free(const Octets &message) {
    return decode(message) != nullptr;
}

bool decode_pkcs7_and_free(const Octets &message) {
    const std::uint8_t *at = message.data();
    PKCS7 *decoded = d2i_PKCS7(nullptr, &at, static_cast<long>(message.size()));
    PKCS7_free(decoded);
    return decoded != nullptr;
}
