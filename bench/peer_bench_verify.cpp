#include "peer_bench_verify.hpp"

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <memory>

namespace {

template <typename T, void (*FreeFunction)(T *)>
struct Free {
    void operator()(T *object) const { FreeFunction(object); }
};
using Number = std::unique_ptr<BIGNUM, Free<BIGNUM, BN_free>>;
using Builder = std::unique_ptr<OSSL_PARAM_BLD, Free<OSSL_PARAM_BLD, OSSL_PARAM_BLD_free>>;
using Params = std::unique_ptr<OSSL_PARAM, Free<OSSL_PARAM, OSSL_PARAM_free>>;
using Context = std::unique_ptr<EVP_PKEY_CTX, Free<EVP_PKEY_CTX, EVP_PKEY_CTX_free>>;

Number number(const Octets &octets) {
    return Number(BN_bin2bn(octets.data(), static_cast<int>(octets.size()), nullptr));
}

}  // namespace

PeerKey::PeerKey(const Octets &n, const Octets &e) {
    const Builder builder(OSSL_PARAM_BLD_new());
    const Number modulus = number(n);
    const Number exponent = number(e);
    OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_RSA_N, modulus.get());
    OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_RSA_E, exponent.get());
    const Params params(OSSL_PARAM_BLD_to_param(builder.get()));
    const Context maker(EVP_PKEY_CTX_new_from_name(nullptr, "RSA", nullptr));
    EVP_PKEY *key = nullptr;
    EVP_PKEY_fromdata_init(maker.get());
    EVP_PKEY_fromdata(maker.get(), &key, EVP_PKEY_PUBLIC_KEY, params.get());
    EVP_PKEY_CTX *context = EVP_PKEY_CTX_new_from_pkey(nullptr, key, nullptr);
    EVP_PKEY_verify_init(context);
    EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_PADDING);
    EVP_PKEY_CTX_set_signature_md(context, EVP_sha256());
    key_ = key;
    context_ = context;
}

PeerKey::~PeerKey() {
    EVP_PKEY_CTX_free(static_cast<EVP_PKEY_CTX *>(context_));
    EVP_PKEY_free(static_cast<EVP_PKEY *>(key_));
}

bool PeerKey::verify(const Octets &signature, const Octets &digest) const {
    return EVP_PKEY_verify(static_cast<EVP_PKEY_CTX *>(context_), signature.data(), signature.size(),
                           digest.data(), digest.size()) == 1;
}

bool PeerKey::verify(void *cert) const {
    return X509_verify(static_cast<X509 *>(cert), static_cast<EVP_PKEY *>(key_)) == 1;
}

PeerCert::PeerCert(const Octets &der) {
    const std::uint8_t *at = der.data();
    cert_ = d2i_X509(nullptr, &at, static_cast<long>(der.size()));
}

PeerCert::~PeerCert() {
    X509_free(static_cast<X509 *>(cert_));
}
