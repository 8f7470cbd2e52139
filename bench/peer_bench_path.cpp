#include "peer_bench_path.hpp"

#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>

#include <string>

namespace {

X509 *decode(const Octets &der) {
    const std::uint8_t *next = der.data();
    return d2i_X509(nullptr, &next, static_cast<long>(der.size()));
}

Octets octets_of(const BIGNUM *number) {
    Octets octets(static_cast<std::size_t>(BN_num_bytes(number)));
    BN_bn2bin(number, octets.data());
    return octets;
}

void set_name(X509_NAME *name, unsigned depth) {
    const std::string text = "Certificate " + std::to_string(depth);
    for (const auto &[type, value] : {std::pair("C", "KR"), {"O", "Example"}, {"CN", text.c_str()}})
        X509_NAME_add_entry_by_txt(name, type, MBSTRING_UTF8, reinterpret_cast<const unsigned char *>(value),
                                   -1, -1, 0);
}

void add_extensions(X509 *cert, X509 *issuer, bool is_ca) {
    const std::string site = "URI:http://www.example.com/" + std::string(60, 'a');
    const std::pair<int, std::string> extensions[] = {
        {NID_basic_constraints, "critical,CA:TRUE"},
        {NID_key_usage, is_ca ? "critical,keyCertSign,cRLSign" : "critical,digitalSignature"},
        {NID_subject_key_identifier, "hash"},
        {NID_authority_key_identifier, "keyid"},
        {NID_certificate_policies, "1.2.3.1"},
        {NID_subject_alt_name, "DNS:www.example.com,DNS:example.com"},
        {NID_crl_distribution_points, site},
        {NID_info_access, "OCSP;" + site}};
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, cert, nullptr, nullptr, 0);
    for (const auto &[nid, value] : extensions) {
        if (!is_ca && nid == NID_basic_constraints) continue;
        X509_EXTENSION *extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str());
        X509_add_ext(cert, extension, -1);
        X509_EXTENSION_free(extension);
    }
}

/// The anchor when there is no issuer.
X509 *make_cert(EVP_PKEY *key, X509 *issuer, EVP_PKEY *issuer_key, unsigned depth, bool is_ca) {
    X509 *cert = X509_new();
    X509_set_version(cert, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(cert), 1000000L + static_cast<long>(depth));
    X509_gmtime_adj(X509_getm_notBefore(cert), -86400);
    X509_gmtime_adj(X509_getm_notAfter(cert), 86400);
    set_name(X509_get_subject_name(cert), depth);
    set_name(X509_get_issuer_name(cert), depth == 0 ? 0 : depth - 1);
    X509_set_pubkey(cert, key);
    add_extensions(cert, issuer == nullptr ? cert : issuer, is_ca);
    X509_sign(cert, issuer_key == nullptr ? key : issuer_key, EVP_sha256());
    return cert;
}

}  // namespace

std::vector<Octets> peer_chain(const char *kind, unsigned length) {
    std::vector<Octets> chain(length);
    X509 *issuer = nullptr;
    EVP_PKEY *issuer_key = nullptr;
    for (unsigned depth = 0; depth < length; ++depth) {
        const bool is_rsa = std::string(kind) == "RSA";
        EVP_PKEY *key = is_rsa ? EVP_RSA_gen(2048) : EVP_EC_gen("P-256");
        X509 *cert = make_cert(key, issuer, issuer_key, depth, depth + 1 < length);
        std::uint8_t *der = nullptr;
        const int size = i2d_X509(cert, &der);
        chain[length - 1 - depth].assign(der, der + size);
        OPENSSL_free(der);
        X509_free(issuer);
        EVP_PKEY_free(issuer_key);
        issuer = cert;
        issuer_key = key;
    }
    X509_free(issuer);
    EVP_PKEY_free(issuer_key);
    return chain;
}

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
    OSSL_PARAM *params = nullptr;
    EVP_PKEY_todata(key, EVP_PKEY_PUBLIC_KEY, &params);
    params_ = params;
    X509_free(signed_cert);
    X509_free(issuer_cert);
}

PeerSignature::~PeerSignature() {
    EVP_PKEY_CTX_free(static_cast<EVP_PKEY_CTX *>(context_));
    EVP_PKEY_free(static_cast<EVP_PKEY *>(key_));
    OSSL_PARAM_free(static_cast<OSSL_PARAM *>(params_));
}

bool PeerSignature::verify() const {
    return EVP_PKEY_verify(static_cast<EVP_PKEY_CTX *>(context_), signature_.data(), signature_.size(),
                           digest_.data(), digest_.size()) == 1;
}

bool PeerSignature::verify_message(void *key) const {
    EVP_MD_CTX *context = EVP_MD_CTX_new();
    const bool good =
        EVP_DigestVerifyInit(context, nullptr, EVP_sha256(), nullptr, static_cast<EVP_PKEY *>(key)) == 1 &&
        EVP_DigestVerify(context, signature_.data(), signature_.size(), message_.data(), message_.size()) ==
            1;
    EVP_MD_CTX_free(context);
    return good;
}

bool PeerSignature::verify_message() const {
    return verify_message(key_);
}

bool PeerSignature::verify_with_new_key() const {
    EVP_PKEY_CTX *maker = EVP_PKEY_CTX_new_from_pkey(nullptr, static_cast<EVP_PKEY *>(key_), nullptr);
    EVP_PKEY *key = nullptr;
    EVP_PKEY_fromdata_init(maker);
    EVP_PKEY_fromdata(maker, &key, EVP_PKEY_PUBLIC_KEY, static_cast<OSSL_PARAM *>(params_));
    const bool good = verify_message(key);
    EVP_PKEY_free(key);
    EVP_PKEY_CTX_free(maker);
    return good;
}

std::vector<Octets> PeerSignature::signature() const {
    if (EVP_PKEY_is_a(static_cast<EVP_PKEY *>(key_), "RSA") == 1) return {signature_};
    const std::uint8_t *next = signature_.data();
    ECDSA_SIG *signature = d2i_ECDSA_SIG(nullptr, &next, static_cast<long>(signature_.size()));
    std::vector<Octets> numbers = {octets_of(ECDSA_SIG_get0_r(signature)),
                                   octets_of(ECDSA_SIG_get0_s(signature))};
    ECDSA_SIG_free(signature);
    return numbers;
}

std::vector<Octets> PeerSignature::key() const {
    const auto *key = static_cast<EVP_PKEY *>(key_);
    std::vector<Octets> numbers;
    if (EVP_PKEY_is_a(key, "RSA") != 1) {
        numbers.emplace_back(65);
        EVP_PKEY_get_octet_string_param(key, OSSL_PKEY_PARAM_PUB_KEY, numbers[0].data(), 65, nullptr);
        return numbers;
    }
    for (const char *name : {OSSL_PKEY_PARAM_RSA_N, OSSL_PKEY_PARAM_RSA_E}) {
        BIGNUM *number = nullptr;
        EVP_PKEY_get_bn_param(key, name, &number);
        numbers.push_back(octets_of(number));
        BN_free(number);
    }
    return numbers;
}
