#include "peer_bench_path.hpp"

#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

namespace {

X509 *decode(const Octets &der) {
    const std::uint8_t *next = der.data();
    return d2i_X509(nullptr, &next, static_cast<long>(der.size()));
}

}  // namespace

PeerStore::PeerStore(const Octets &root) {
    X509_STORE *store = X509_STORE_new();
    X509 *cert = decode(root);
    X509_STORE_add_cert(store, cert);
    X509_free(cert);
    store_ = store;
}

PeerStore::~PeerStore() {
    X509_STORE_free(static_cast<X509_STORE *>(store_));
}

bool PeerStore::verify(const Octets *chain, unsigned count) const {
    STACK_OF(X509) *others = sk_X509_new_null();
    X509 *target = decode(chain[0]);
    for (unsigned i = 1; i < count; ++i)
        sk_X509_push(others, decode(chain[i]));
    X509_STORE_CTX *context = X509_STORE_CTX_new();
    const bool good = X509_STORE_CTX_init(context, static_cast<X509_STORE *>(store_), target, others) == 1 &&
                      X509_verify_cert(context) == 1;
    X509_STORE_CTX_free(context);
    sk_X509_pop_free(others, X509_free);
    X509_free(target);
    return good;
}

PeerSignature::PeerSignature(const Octets &cert, const Octets &issuer) {
    X509 *signed_cert = decode(cert);
    X509 *issuer_cert = decode(issuer);
    const ASN1_BIT_STRING *value = nullptr;
    X509_get0_signature(&value, nullptr, signed_cert);
    const std::uint8_t *octets = ASN1_STRING_get0_data(value);
    signature_.assign(octets, octets + ASN1_STRING_length(value));
    std::uint8_t *tbs = nullptr;
    const int length = i2d_re_X509_tbs(signed_cert, &tbs);
    message_.assign(tbs, tbs + length);
    digest_.resize(32);
    EVP_Digest(tbs, message_.size(), digest_.data(), nullptr, EVP_sha256(), nullptr);
    OPENSSL_free(tbs);
    EVP_PKEY *key = X509_get_pubkey(issuer_cert);
    EVP_PKEY_CTX *context = EVP_PKEY_CTX_new_from_pkey(nullptr, key, nullptr);
    EVP_PKEY_verify_init(context);
    EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_PADDING);
    EVP_PKEY_CTX_set_signature_md(context, EVP_sha256());
    key_ = key;
    context_ = context;
    X509_free(signed_cert);
    X509_free(issuer_cert);
}

PeerSignature::~PeerSignature() {
    EVP_PKEY_CTX_free(static_cast<EVP_PKEY_CTX *>(context_));
    EVP_PKEY_free(static_cast<EVP_PKEY *>(key_));
}

bool PeerSignature::verify() const {
    return EVP_PKEY_verify(static_cast<EVP_PKEY_CTX *>(context_), signature_.data(), signature_.size(),
                           digest_.data(), digest_.size()) == 1;
}

bool PeerSignature::verify_message() const {
    EVP_MD_CTX *context = EVP_MD_CTX_new();
    const bool good =
        EVP_DigestVerifyInit(context, nullptr, EVP_sha256(), nullptr, static_cast<EVP_PKEY *>(key_)) == 1 &&
        EVP_DigestVerify(context, signature_.data(), signature_.size(), message_.data(), message_.size()) ==
            1;
    EVP_MD_CTX_free(context);
    return good;
}
