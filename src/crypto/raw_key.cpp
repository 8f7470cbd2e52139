#include "crypto/raw_key.hpp"

#include <openssl/rand.h>

namespace tlx {

EVP_PKEY *get_backend_key(const RawKey &unit) noexcept {
    if (EVP_PKEY *ready = unit.key.get()) return ready;
    OSSL_LIB_CTX *const context = backend();
    if (context == nullptr) return nullptr;
    Key made(EVP_PKEY_new_raw_public_key_ex(context, unit.curve->name, nullptr, unit.point,
                                            unit.curve->key_length));
    return made == nullptr ? nullptr : unit.key.keep(std::move(made));
}

bool random_secret(u8 *octets, u32 len) noexcept {
    OSSL_LIB_CTX *const context = backend();
    const ErrorScope errors;
    return context != nullptr && RAND_priv_bytes_ex(context, octets, len, 0) == 1;
}

bool set_private(RawKey &unit, Bytes octets) noexcept {
    OSSL_LIB_CTX *const context = backend();
    if (context == nullptr) return false;
    const ErrorScope errors;
    Key made(
        EVP_PKEY_new_raw_private_key_ex(context, unit.curve->name, nullptr, octets.data(), octets.size()));
    std::size_t length = unit.curve->key_length;
    if (made == nullptr || EVP_PKEY_get_raw_public_key(made.get(), unit.point, &length) != 1) return false;
    std::memcpy(unit.secret, octets.data(), octets.size());
    unit.is_private = true;
    unit.key.keep(std::move(made));
    return true;
}

}  // namespace tlx
