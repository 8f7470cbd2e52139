#include "support/openssl_peer.hpp"

#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/objects.h>
#include <openssl/params.h>
#include <openssl/pkcs12.h>
#include <openssl/provider.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

namespace tlx_test::openssl {
namespace {

struct Free {
    void operator()(EVP_MD *p) const { EVP_MD_free(p); }
    void operator()(EVP_CIPHER *p) const { EVP_CIPHER_free(p); }
    void operator()(EVP_CIPHER_CTX *p) const { EVP_CIPHER_CTX_free(p); }
    void operator()(EVP_KDF *p) const { EVP_KDF_free(p); }
    void operator()(EVP_KDF_CTX *p) const { EVP_KDF_CTX_free(p); }
    void operator()(EVP_PKEY *p) const { EVP_PKEY_free(p); }
    void operator()(EVP_PKEY_CTX *p) const { EVP_PKEY_CTX_free(p); }
    void operator()(EVP_MD_CTX *p) const { EVP_MD_CTX_free(p); }
    void operator()(X509 *p) const { X509_free(p); }
    void operator()(BIGNUM *p) const { BN_free(p); }
    void operator()(BN_CTX *p) const { BN_CTX_free(p); }
    void operator()(char *p) const { OPENSSL_free(p); }
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

EVP_PKEY *handle_of(const RsaKey &key) {
    return static_cast<EVP_PKEY *>(key.handle.get());
}

/// What signs or verifies by a scheme.
Owned<EVP_MD_CTX> digest_context(EVP_PKEY *key, const RsaScheme &scheme,
                                 decltype(&EVP_DigestSignInit_ex) init) {
    Owned<EVP_MD_CTX> digest(EVP_MD_CTX_new());
    EVP_PKEY_CTX *context = nullptr;
    const char *name = scheme.digest.empty() ? nullptr : scheme.digest.c_str();
    init(digest.get(), &context, name, library(), nullptr, key, nullptr);
    if (scheme.mgf_digest.empty()) return digest;
    EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_PSS_PADDING);
    EVP_PKEY_CTX_set_rsa_mgf1_md_name(context, scheme.mgf_digest.c_str(), nullptr);
    EVP_PKEY_CTX_set_rsa_pss_saltlen(context, scheme.salt_length);
    return digest;
}

Octets sign_with(EVP_PKEY *key, const RsaScheme &scheme, const Octets &data) {
    const auto digest = digest_context(key, scheme, EVP_DigestSignInit_ex);
    Octets signature(static_cast<std::size_t>(EVP_PKEY_get_size(key)));
    std::size_t length = signature.size();
    if (EVP_DigestSign(digest.get(), signature.data(), &length, data.data(), data.size()) != 1) return {};
    signature.resize(length);
    return signature;
}

bool verify_with(EVP_PKEY *key, const RsaScheme &scheme, const Octets &data, const Octets &signature) {
    const auto digest = digest_context(key, scheme, EVP_DigestVerifyInit_ex);
    return EVP_DigestVerify(digest.get(), signature.data(), signature.size(), data.data(), data.size()) == 1;
}

/// The result of a key operation on the octets; empty on failure.
Octets run(const RsaKey &key, const RsaScheme &scheme, int (*init)(EVP_PKEY_CTX *),
           int (*operation)(EVP_PKEY_CTX *, unsigned char *, std::size_t *, const unsigned char *,
                            std::size_t),
           const Octets &in) {
    const Owned<EVP_PKEY_CTX> context(EVP_PKEY_CTX_new_from_pkey(library(), handle_of(key), nullptr));
    init(context.get());
    if (!scheme.mgf_digest.empty()) {
        EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING);
        EVP_PKEY_CTX_set_rsa_oaep_md_name(context.get(), scheme.digest.c_str(), nullptr);
        EVP_PKEY_CTX_set_rsa_mgf1_md_name(context.get(), scheme.mgf_digest.c_str(), nullptr);
    }
    Octets out(key.numbers[0].size());
    std::size_t length = out.size();
    if (operation(context.get(), out.data(), &length, in.data(), in.size()) != 1) return {};
    out.resize(length);
    return out;
}

}  // namespace

Octets digest(const std::string &name, const Octets &data) {
    const Owned<EVP_MD> algorithm(EVP_MD_fetch(library(), name.c_str(), nullptr));
    const Owned<EVP_MD_CTX> context(EVP_MD_CTX_new());
    if (algorithm == nullptr) {
        ERR_clear_error();
        return {};
    }
    const bool is_shake256 = EVP_MD_is_a(algorithm.get(), "SHAKE256") == 1;
    Octets out(is_shake256 ? 64 : static_cast<std::size_t>(EVP_MD_get_size(algorithm.get())));
    EVP_DigestInit_ex2(context.get(), algorithm.get(), nullptr);
    EVP_DigestUpdate(context.get(), data.data(), data.size());
    if (is_shake256) {
        EVP_DigestFinalXOF(context.get(), out.data(), out.size());
    } else {
        EVP_DigestFinal_ex(context.get(), out.data(), nullptr);
    }
    return out;
}

Octets pkcs12_key(const std::string &digest, const Octets &password, const Octets &salt, int id,
                  int iterations, std::size_t length) {
    const Owned<EVP_MD> algorithm(EVP_MD_fetch(library(), digest.c_str(), nullptr));
    Octets secret = password;
    Octets random = salt;
    Octets out(length);
    const int done = PKCS12_key_gen_uni_ex(
        secret.data(), static_cast<int>(secret.size()), random.data(), static_cast<int>(random.size()), id,
        iterations, static_cast<int>(length), out.data(), algorithm.get(), library(), nullptr);
    return done == 1 ? out : Octets();
}

std::string calculate(const std::string &operation, const std::string &a, const std::string &b,
                      const std::string &modulus) {
    const auto number = [](const std::string &hex) {
        BIGNUM *value = nullptr;
        if (!hex.empty()) BN_hex2bn(&value, hex.c_str());
        return Owned<BIGNUM>(value);
    };
    const Owned<BN_CTX> context(BN_CTX_new());
    const Owned<BIGNUM> x = number(a);
    const Owned<BIGNUM> y = number(b);
    const Owned<BIGNUM> m = number(modulus);
    const Owned<BIGNUM> r(BN_new());
    int done = 0;
    if (operation == "+") done = BN_add(r.get(), x.get(), y.get());
    if (operation == "-") done = BN_sub(r.get(), x.get(), y.get());
    if (operation == "*") done = BN_mul(r.get(), x.get(), y.get(), context.get());
    if (operation == "/") done = BN_div(r.get(), nullptr, x.get(), y.get(), context.get());
    if (operation == "%") done = BN_nnmod(r.get(), x.get(), y.get(), context.get());
    if (operation == "<<") done = BN_lshift(r.get(), x.get(), static_cast<int>(BN_get_word(y.get())));
    if (operation == ">>") done = BN_rshift(r.get(), x.get(), static_cast<int>(BN_get_word(y.get())));
    if (operation == "+%") done = BN_mod_add(r.get(), x.get(), y.get(), m.get(), context.get());
    if (operation == "-%") done = BN_mod_sub(r.get(), x.get(), y.get(), m.get(), context.get());
    if (operation == "*%") done = BN_mod_mul(r.get(), x.get(), y.get(), m.get(), context.get());
    if (operation == "^%") done = BN_mod_exp_simple(r.get(), x.get(), y.get(), m.get(), context.get());
    if (done != 1) {
        ERR_clear_error();
        return "failed";
    }
    if (BN_is_zero(r.get()) != 0) return "00";
    return Owned<char>(BN_bn2hex(r.get())).get();
}

Octets hmac(const std::string &digest, const Octets &key, const Octets &data) {
    Octets out(EVP_MAX_MD_SIZE);
    std::size_t length = 0;
    const bool made = EVP_Q_mac(library(), "HMAC", nullptr, digest.c_str(), nullptr, key.data(), key.size(),
                                data.data(), data.size(), out.data(), out.size(), &length) != nullptr;
    out.resize(made ? length : 0);
    return out;
}

Octets cipher(const std::string &name, bool encrypt, const Octets &key, const Octets &iv,
              const Octets &data) {
    const Owned<EVP_CIPHER> algorithm(EVP_CIPHER_fetch(library(), name.c_str(), nullptr));
    const Owned<EVP_CIPHER_CTX> context(EVP_CIPHER_CTX_new());
    EVP_CipherInit_ex(context.get(), algorithm.get(), nullptr, nullptr, nullptr, encrypt ? 1 : 0);
    EVP_CIPHER_CTX_set_flags(context.get(), EVP_CIPHER_CTX_FLAG_WRAP_ALLOW);
    EVP_CIPHER_CTX_set_key_length(context.get(), static_cast<int>(key.size()));
    EVP_CipherInit_ex(context.get(), nullptr, nullptr, key.data(), iv.data(), -1);
    Octets out(data.size() + EVP_MAX_BLOCK_LENGTH);
    int length = 0;
    int last = 0;
    EVP_CipherUpdate(context.get(), out.data(), &length, data.data(), static_cast<int>(data.size()));
    if (EVP_CipherFinal_ex(context.get(), out.data() + length, &last) != 1) return {};
    out.resize(static_cast<std::size_t>(length + last));
    return out;
}

Octets agree(const std::string &curve, const Octets &private_key, const Octets &public_key) {
    const Owned<EVP_PKEY> own(EVP_PKEY_new_raw_private_key_ex(library(), curve.c_str(), nullptr,
                                                              private_key.data(), private_key.size()));
    const Owned<EVP_PKEY> peer(EVP_PKEY_new_raw_public_key_ex(library(), curve.c_str(), nullptr,
                                                              public_key.data(), public_key.size()));
    const Owned<EVP_PKEY_CTX> context(EVP_PKEY_CTX_new_from_pkey(library(), own.get(), nullptr));
    Octets secret(private_key.size());
    std::size_t length = secret.size();
    EVP_PKEY_derive_init(context.get());
    EVP_PKEY_derive_set_peer(context.get(), peer.get());
    return EVP_PKEY_derive(context.get(), secret.data(), &length) == 1 ? secret : Octets();
}

Octets public_key_of(const std::string &curve, const Octets &private_key) {
    const Owned<EVP_PKEY> own(EVP_PKEY_new_raw_private_key_ex(library(), curve.c_str(), nullptr,
                                                              private_key.data(), private_key.size()));
    Octets key(private_key.size());
    std::size_t length = key.size();
    return EVP_PKEY_get_raw_public_key(own.get(), key.data(), &length) == 1 ? key : Octets();
}

Octets derive(const std::string &function, const std::string &digest, const Octets &secret,
              const Octets &info, std::size_t length) {
    const Owned<EVP_KDF> algorithm(EVP_KDF_fetch(library(), function.c_str(), nullptr));
    const Owned<EVP_KDF_CTX> context(EVP_KDF_CTX_new(algorithm.get()));
    Octets key = secret;
    Octets known = info;
    std::string name = digest;
    const OSSL_PARAM params[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, name.data(), 0),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_KEY, key.data(), key.size()),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_INFO, known.data(), known.size()),
        OSSL_PARAM_construct_end(),
    };
    Octets out(length);
    return EVP_KDF_derive(context.get(), out.data(), out.size(), params) == 1 ? out : Octets();
}

RsaKey generate_rsa(unsigned bits) {
    constexpr const char *kNames[8] = {
        OSSL_PKEY_PARAM_RSA_N,         OSSL_PKEY_PARAM_RSA_E,
        OSSL_PKEY_PARAM_RSA_D,         OSSL_PKEY_PARAM_RSA_FACTOR1,
        OSSL_PKEY_PARAM_RSA_FACTOR2,   OSSL_PKEY_PARAM_RSA_EXPONENT1,
        OSSL_PKEY_PARAM_RSA_EXPONENT2, OSSL_PKEY_PARAM_RSA_COEFFICIENT1,
    };
    EVP_PKEY *made = EVP_PKEY_Q_keygen(library(), nullptr, "RSA", static_cast<std::size_t>(bits));
    RsaKey key;
    key.handle = {made, EVP_PKEY_free};
    for (std::size_t i = 0; i < 8; ++i) {
        BIGNUM *value = nullptr;
        EVP_PKEY_get_bn_param(made, kNames[i], &value);
        const Owned<BIGNUM> owned(value);
        key.numbers[i].resize(static_cast<std::size_t>(BN_num_bytes(value)));
        BN_bn2bin(value, key.numbers[i].data());
    }
    return key;
}

Octets rsa_sign(const RsaKey &key, const RsaScheme &scheme, const Octets &data) {
    return sign_with(handle_of(key), scheme, data);
}

bool rsa_verify(const RsaKey &key, const RsaScheme &scheme, const Octets &data, const Octets &signature) {
    return verify_with(handle_of(key), scheme, data, signature);
}

Octets sign(const Octets &private_key, const RsaScheme &scheme, const Octets &data) {
    const unsigned char *octets = private_key.data();
    const Owned<EVP_PKEY> key(
        d2i_AutoPrivateKey_ex(nullptr, &octets, static_cast<long>(private_key.size()), library(), nullptr));
    return key == nullptr ? Octets() : sign_with(key.get(), scheme, data);
}

bool verify(const Octets &certificate, const RsaScheme &scheme, const Octets &data, const Octets &signature) {
    const unsigned char *octets = certificate.data();
    X509 *made = X509_new_ex(library(), nullptr);
    const Owned<X509> cert(d2i_X509(&made, &octets, static_cast<long>(certificate.size())));
    EVP_PKEY *key = X509_get0_pubkey(cert.get());
    return key != nullptr && verify_with(key, scheme, data, signature);
}

Octets rsa_encrypt(const RsaKey &key, const RsaScheme &scheme, const Octets &data) {
    return run(key, scheme, EVP_PKEY_encrypt_init, EVP_PKEY_encrypt, data);
}

Octets rsa_decrypt(const RsaKey &key, const RsaScheme &scheme, const Octets &data) {
    return run(key, scheme, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt, data);
}

bool error_queue_is_empty() {
    return ERR_peek_error() == 0;
}

ObjectRow object_row(int nid) {
    ObjectRow row;
    const ASN1_OBJECT *object = OBJ_nid2obj(nid);
    if (object == nullptr) return row;
    if (const char *text = OBJ_nid2sn(nid)) row.short_name = text;
    if (const char *text = OBJ_nid2ln(nid)) row.long_name = text;
    char dotted[256] = "";
    if (OBJ_obj2txt(dotted, sizeof dotted, object, 1) > 0) row.dotted = dotted;
    return row;
}

}  // namespace tlx_test::openssl
