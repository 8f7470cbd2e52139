#include "support/openssl_peer.hpp"

#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/objects.h>
#include <openssl/provider.h>

#include <memory>

namespace tlx_test::openssl {

namespace {

std::vector<std::uint8_t> digest_within(OSSL_LIB_CTX *context, const std::string &name,
                                        const std::vector<std::uint8_t> &data) {
    std::vector<std::uint8_t> out(EVP_MAX_MD_SIZE);
    std::size_t len = 0;
    if (EVP_Q_digest(context, name.c_str(), nullptr, data.data(), data.size(), out.data(), &len) != 1)
        return {};
    out.resize(len);
    return out;
}

}  // namespace

std::vector<std::uint8_t> digest(const std::string &name, const std::vector<std::uint8_t> &data) {
    return digest_within(nullptr, name, data);
}

std::vector<std::uint8_t> legacy_digest(const std::string &name, const std::vector<std::uint8_t> &data) {
    OSSL_LIB_CTX *context = OSSL_LIB_CTX_new();
    OSSL_PROVIDER *provider = OSSL_PROVIDER_load(context, "legacy");
    const std::vector<std::uint8_t> out = digest_within(context, name, data);
    if (provider != nullptr) OSSL_PROVIDER_unload(provider);
    OSSL_LIB_CTX_free(context);
    return out;
}

std::vector<std::uint8_t> hmac(const std::string &name, const std::vector<std::uint8_t> &key,
                               const std::vector<std::uint8_t> &data) {
    std::vector<std::uint8_t> out(EVP_MAX_MD_SIZE);
    std::size_t len = 0;
    if (EVP_Q_mac(nullptr, "HMAC", nullptr, name.c_str(), nullptr, key.data(), key.size(), data.data(),
                  data.size(), out.data(), out.size(), &len) == nullptr) {
        return {};
    }
    out.resize(len);
    return out;
}

std::string calculate(const std::string &operation, const std::string &a, const std::string &b,
                      const std::string &modulus) {
    using Number = std::unique_ptr<BIGNUM, decltype(&BN_free)>;
    const auto number = [](const std::string &hex) {
        BIGNUM *value = nullptr;
        if (!hex.empty()) BN_hex2bn(&value, hex.c_str());
        return Number(value, BN_free);
    };
    const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> context(BN_CTX_new(), BN_CTX_free);
    const Number x = number(a);
    const Number y = number(b);
    const Number m = number(modulus);
    const Number r(BN_new(), BN_free);
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
    const std::unique_ptr<char, void (*)(char *)> text(BN_bn2hex(r.get()), [](char *p) { OPENSSL_free(p); });
    return text.get();
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
