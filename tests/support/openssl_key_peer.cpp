#include "support/openssl_key_peer.hpp"

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>
#include <openssl/provider.h>
#include <openssl/rsa.h>

#include <memory>

namespace tlx_test::openssl {
namespace {

struct Free {
    void operator()(EVP_CIPHER *p) const { EVP_CIPHER_free(p); }
    void operator()(EVP_CIPHER_CTX *p) const { EVP_CIPHER_CTX_free(p); }
    void operator()(EVP_PKEY *p) const { EVP_PKEY_free(p); }
    void operator()(EVP_PKEY_CTX *p) const { EVP_PKEY_CTX_free(p); }
    void operator()(EVP_MD_CTX *p) const { EVP_MD_CTX_free(p); }
    void operator()(BIGNUM *p) const { BN_free(p); }
    void operator()(OSSL_PARAM_BLD *p) const { OSSL_PARAM_BLD_free(p); }
    void operator()(OSSL_PARAM *p) const { OSSL_PARAM_free(p); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

OSSL_LIB_CTX *library() {
    static OSSL_LIB_CTX *const context = [] {
        OSSL_LIB_CTX *made = OSSL_LIB_CTX_new();
        OSSL_PROVIDER_load(made, "default");
        OSSL_PROVIDER_load(made, "legacy");
        return made;
    }();
    return context;
}

constexpr const char *kNames[8] = {
    OSSL_PKEY_PARAM_RSA_N,         OSSL_PKEY_PARAM_RSA_E,
    OSSL_PKEY_PARAM_RSA_D,         OSSL_PKEY_PARAM_RSA_FACTOR1,
    OSSL_PKEY_PARAM_RSA_FACTOR2,   OSSL_PKEY_PARAM_RSA_EXPONENT1,
    OSSL_PKEY_PARAM_RSA_EXPONENT2, OSSL_PKEY_PARAM_RSA_COEFFICIENT1,
};

Owned<EVP_PKEY> to_key(const RsaNumbers &key) {
    const Owned<OSSL_PARAM_BLD> builder(OSSL_PARAM_BLD_new());
    Owned<BIGNUM> numbers[8];
    for (std::size_t i = 0; i < 8; ++i) {
        numbers[i].reset(BN_bin2bn(key.values[i].data(), static_cast<int>(key.values[i].size()), nullptr));
        OSSL_PARAM_BLD_push_BN(builder.get(), kNames[i], numbers[i].get());
    }
    const Owned<OSSL_PARAM> parameters(OSSL_PARAM_BLD_to_param(builder.get()));
    const Owned<EVP_PKEY_CTX> context(EVP_PKEY_CTX_new_from_name(library(), "RSA", nullptr));
    EVP_PKEY *made = nullptr;
    EVP_PKEY_fromdata_init(context.get());
    EVP_PKEY_fromdata(context.get(), &made, EVP_PKEY_KEYPAIR, parameters.get());
    return Owned<EVP_PKEY>(made);
}

using Run = int (*)(EVP_PKEY_CTX *, unsigned char *, std::size_t *, const unsigned char *, std::size_t);

Octets run(const RsaNumbers &key, const RsaScheme &scheme, int (*init)(EVP_PKEY_CTX *), Run operation,
           const Octets &data) {
    const Owned<EVP_PKEY> pkey = to_key(key);
    const Owned<EVP_PKEY_CTX> context(EVP_PKEY_CTX_new_from_pkey(library(), pkey.get(), nullptr));
    init(context.get());
    if (scheme.mgf_digest.empty()) {
        EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING);
    } else {
        EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING);
        EVP_PKEY_CTX_set_rsa_oaep_md_name(context.get(), scheme.digest.c_str(), nullptr);
        EVP_PKEY_CTX_set_rsa_mgf1_md_name(context.get(), scheme.mgf_digest.c_str(), nullptr);
    }
    Octets out(key.values[0].size());
    std::size_t length = out.size();
    if (operation(context.get(), out.data(), &length, data.data(), data.size()) != 1) return {};
    out.resize(length);
    return out;
}

void set_scheme(EVP_PKEY_CTX *context, const RsaScheme &scheme) {
    if (scheme.mgf_digest.empty()) return;
    EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_PSS_PADDING);
    EVP_PKEY_CTX_set_rsa_mgf1_md_name(context, scheme.mgf_digest.c_str(), nullptr);
    EVP_PKEY_CTX_set_rsa_pss_saltlen(context, scheme.salt_length);
}

}  // namespace

Octets cipher(const std::string &name, bool encrypt, const Octets &key, const Octets &iv,
              const Octets &data) {
    const Owned<EVP_CIPHER> algorithm(EVP_CIPHER_fetch(library(), name.c_str(), nullptr));
    const Owned<EVP_CIPHER_CTX> context(EVP_CIPHER_CTX_new());
    if (EVP_CipherInit_ex(context.get(), algorithm.get(), nullptr, nullptr, nullptr, encrypt ? 1 : 0) != 1 ||
        EVP_CIPHER_CTX_set_key_length(context.get(), static_cast<int>(key.size())) != 1 ||
        EVP_CipherInit_ex(context.get(), nullptr, nullptr, key.data(), iv.empty() ? nullptr : iv.data(),
                          -1) != 1) {
        return {};
    }
    Octets out(data.size() + EVP_MAX_BLOCK_LENGTH);
    int length = 0;
    int last = 0;
    if (EVP_CipherUpdate(context.get(), out.data(), &length, data.data(), static_cast<int>(data.size())) !=
            1 ||
        EVP_CipherFinal_ex(context.get(), out.data() + length, &last) != 1) {
        return {};
    }
    out.resize(static_cast<std::size_t>(length + last));
    return out;
}

RsaNumbers generate_rsa(unsigned bits) {
    const Owned<EVP_PKEY> key(EVP_PKEY_Q_keygen(library(), nullptr, "RSA", static_cast<std::size_t>(bits)));
    RsaNumbers numbers;
    for (std::size_t i = 0; i < 8; ++i) {
        BIGNUM *value = nullptr;
        EVP_PKEY_get_bn_param(key.get(), kNames[i], &value);
        const Owned<BIGNUM> owned(value);
        numbers.values[i].resize(static_cast<std::size_t>(BN_num_bytes(value)));
        BN_bn2bin(value, numbers.values[i].data());
    }
    return numbers;
}

Octets rsa_sign(const RsaNumbers &key, const RsaScheme &scheme, const Octets &data) {
    const Owned<EVP_PKEY> pkey = to_key(key);
    const Owned<EVP_MD_CTX> digest(EVP_MD_CTX_new());
    EVP_PKEY_CTX *context = nullptr;
    EVP_DigestSignInit_ex(digest.get(), &context, scheme.digest.c_str(), library(), nullptr, pkey.get(),
                          nullptr);
    set_scheme(context, scheme);
    Octets signature(key.values[0].size());
    std::size_t length = signature.size();
    if (EVP_DigestSign(digest.get(), signature.data(), &length, data.data(), data.size()) != 1) return {};
    return signature;
}

bool rsa_verify(const RsaNumbers &key, const RsaScheme &scheme, const Octets &data, const Octets &signature) {
    const Owned<EVP_PKEY> pkey = to_key(key);
    const Owned<EVP_MD_CTX> digest(EVP_MD_CTX_new());
    EVP_PKEY_CTX *context = nullptr;
    EVP_DigestVerifyInit_ex(digest.get(), &context, scheme.digest.c_str(), library(), nullptr, pkey.get(),
                            nullptr);
    set_scheme(context, scheme);
    return EVP_DigestVerify(digest.get(), signature.data(), signature.size(), data.data(), data.size()) == 1;
}

Octets rsa_recover(const RsaNumbers &key, const Octets &signature) {
    return run(key, {}, EVP_PKEY_verify_recover_init, EVP_PKEY_verify_recover, signature);
}

Octets rsa_encrypt(const RsaNumbers &key, const RsaScheme &scheme, const Octets &data) {
    return run(key, scheme, EVP_PKEY_encrypt_init, EVP_PKEY_encrypt, data);
}

Octets rsa_decrypt(const RsaNumbers &key, const RsaScheme &scheme, const Octets &data) {
    return run(key, scheme, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt, data);
}

}  // namespace tlx_test::openssl
