// RSAES-PKCS1-v1_5 and RSAES-OAEP (RFC 8017, section 7).
#include <openssl/rsa.h>

#include <cstring>

#include "crypto/backend.hpp"
#include "crypto/memory.hpp"
#include "crypto/rsa.hpp"

using namespace tlx;

namespace {

bool is_known(u32 mode) noexcept {
    return mode == TLX_RSAES_MODE_NONE_GIVEN || mode == TLX_RSAES_MODE_PKCS1 ||
           mode == TLX_RSAES_MODE_OAEP_SET || mode == TLX_RSAES_MODE_OAEP;
}

bool set_oaep_parameters(EVP_PKEY_CTX *context, u32 digest_id) noexcept {
    return EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_OAEP_PADDING) == 1 &&
           EVP_PKEY_CTX_set_rsa_oaep_md(context, backend_digest(digest_id)) == 1 &&
           EVP_PKEY_CTX_set_rsa_mgf1_md(context, backend_digest(TLX_DIGEST_SHA1)) == 1;
}

// Stores a context for what init_RSAES prepared the unit for. 0, TLX_RSA_BAD_KEY or 1.
u32 make_context(const RSA_UNIT &unit, KeyContext &context) noexcept {
    EVP_PKEY *key = nullptr;
    if (const u32 status = get_backend_key(unit, &key); status != 0) return status;
    context.reset(EVP_PKEY_CTX_new_from_pkey(backend(), key, nullptr));
    if (context == nullptr) return 1;
    const int begun = unit.encryption == RsaTask::encrypt ? EVP_PKEY_encrypt_init(context.get())
                                                          : EVP_PKEY_decrypt_init(context.get());
    if (begun != 1) return 1;
    const bool oaep =
        unit.encryption_mode == TLX_RSAES_MODE_OAEP_SET || unit.encryption_mode == TLX_RSAES_MODE_OAEP;
    const bool set = oaep ? set_oaep_parameters(context.get(), unit.oaep_digest_id)
                          : EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) == 1;
    return set ? 0 : 1;
}

}  // namespace

extern "C" {

uint32_t init_RSAES(RSA_UNIT *unit, uint32_t mode, uint32_t direction, uint32_t digest_id) {
    if (unit == nullptr) return 1;
    unit->encryption = RsaTask::none;
    const u32 oaep_digest_id = digest_id == 0 ? TLX_DIGEST_SHA1 : digest_id;
    if (!is_known(mode) || direction > 1 || backend_digest(oaep_digest_id) == nullptr) return 1;
    if (direction == 1 && unit->kind != TLX_RSA_PRIVATE) return 1;
    unit->encryption = direction == 1 ? RsaTask::decrypt : RsaTask::encrypt;
    unit->encryption_mode = mode;
    unit->oaep_digest_id = oaep_digest_id;
    return 0;
}

uint32_t encrypt_RSAES(const RSA_UNIT *unit, uint8_t *out, uint32_t *out_len, const uint8_t *in,
                       uint32_t in_len) {
    if (out_len == nullptr) return 1;
    *out_len = 0;
    if (unit == nullptr || unit->encryption != RsaTask::encrypt) return 1;
    if (out == nullptr || (in == nullptr && in_len != 0)) return 1;
    const ErrorScope errors;
    KeyContext context;
    if (const u32 status = make_context(*unit, context); status != 0) return status;
    std::size_t length = get_RSA_length(unit);
    if (EVP_PKEY_encrypt(context.get(), out, &length, in, in_len) != 1) return 1;
    *out_len = static_cast<u32>(length);
    return 0;
}

uint32_t decrypt_RSAES(const RSA_UNIT *unit, uint8_t *out, uint32_t *out_len, const uint8_t *in,
                       uint32_t in_len) {
    if (out_len == nullptr) return 1;
    const u32 room = *out_len;
    *out_len = 0;
    if (unit == nullptr || unit->encryption != RsaTask::decrypt || out == nullptr || in == nullptr) return 1;
    const ErrorScope errors;
    KeyContext context;
    if (const u32 status = make_context(*unit, context); status != 0) return status;
    const u32 size = get_RSA_length(unit);
    // libcrypto wants room for a whole modulus.
    auto *message = static_cast<u8 *>(TLX_ALLOCATE(size));
    if (message == nullptr) return 1;
    std::size_t length = size;
    const bool decrypted = in_len == size &&
                           EVP_PKEY_decrypt(context.get(), message, &length, in, in_len) == 1 &&
                           length <= room;
    if (decrypted) {
        std::memcpy(out, message, length);
        *out_len = static_cast<u32>(length);
    }
    tlx_wipe(message, size);
    tlx_free(message);
    return decrypted ? 0 : 1;
}

}  // extern "C"
