// RSAES-PKCS1-v1_5 and RSAES-OAEP (RFC 8017, section 7).
#include <openssl/rsa.h>
#include <tlxcrypto/random.h>

#include <cstring>

#include "crypto/backend.hpp"
#include "crypto/memory.hpp"
#include "crypto/rsa.hpp"

using namespace tlx;

namespace {

// Octets of PKCS #1 v1.5 besides the message.
constexpr u32 kLeastPadding = 11;
constexpr u32 kMostLabel = 0x7FFFFFFF;

bool is_known(u32 mode) noexcept {
    return mode == TLX_RSAES_MODE_NONE_GIVEN || mode == TLX_RSAES_MODE_PKCS1 ||
           mode == TLX_RSAES_MODE_OAEP_SET || mode == TLX_RSAES_MODE_OAEP;
}

bool set_oaep_parameters(EVP_PKEY_CTX *context, const OaepSettings &oaep) noexcept {
    if (EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_OAEP_PADDING) != 1 ||
        EVP_PKEY_CTX_set_rsa_oaep_md(context, backend_digest(oaep.digest_id)) != 1 ||
        EVP_PKEY_CTX_set_rsa_mgf1_md(context, backend_digest(oaep.mgf_digest_id)) != 1) {
        return false;
    }
    if (oaep.label_length == 0) return true;
    void *label = OPENSSL_memdup(oaep.label.get(), oaep.label_length);
    // libcrypto takes the copy over when it succeeds.
    if (EVP_PKEY_CTX_set0_rsa_oaep_label(context, label, static_cast<int>(oaep.label_length)) == 1)
        return true;
    OPENSSL_free(label);
    return false;
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
    const bool set = oaep ? set_oaep_parameters(context.get(), unit.oaep)
                          : EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) == 1;
    return set ? 0 : 1;
}

// EM = 00 || 02 || PS || 00 || M (RFC 8017, section 7.2.1), where M has a known length. Every octet is read,
// whatever the others are: 0xFF when they are as they should be, otherwise 0.
u8 key_padding_mask(Bytes encoded, std::size_t key_len) noexcept {
    const std::size_t separator = encoded.size() - key_len - 1;
    u32 wrong = encoded[0] | (encoded[1] ^ 2U) | encoded[separator];
    for (std::size_t i = 2; i < separator; ++i)
        wrong |= (encoded[i] - 1U) >> 8;  // not 0 for 0 alone
    return static_cast<u8>((wrong - 1U) >> 24);
}

// Decrypts without looking at the padding.
u32 decrypt_raw(const RSA_UNIT &unit, Bytes in, u8 *encoded) noexcept {
    EVP_PKEY *key = nullptr;
    if (const u32 status = get_backend_key(unit, &key); status != 0) return status;
    const KeyContext context(EVP_PKEY_CTX_new_from_pkey(backend(), key, nullptr));
    std::size_t length = in.size();
    const bool decrypted = context != nullptr && EVP_PKEY_decrypt_init(context.get()) == 1 &&
                           EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_NO_PADDING) == 1 &&
                           EVP_PKEY_decrypt(context.get(), encoded, &length, in.data(), in.size()) == 1;
    return decrypted && length == in.size() ? 0 : 1;
}

// Decrypts with libcrypto as init_RSAES prepared the unit. A ciphertext is as long as the room.
u32 decrypt_padded(const RSA_UNIT &unit, Bytes in, u8 *message, u32 *length) noexcept {
    const ErrorScope errors;
    KeyContext context;
    if (const u32 status = make_context(unit, context); status != 0) return status;
    std::size_t size = *length;
    if (in.size() != size || EVP_PKEY_decrypt(context.get(), message, &size, in.data(), in.size()) != 1) {
        return 1;
    }
    *length = static_cast<u32>(size);
    return 0;
}

// Puts the key of an encoded message that is as it should be in place of a random one.
void take_key(u8 *key, const u8 *message, u32 key_len, u8 good) noexcept {
    for (u32 i = 0; i < key_len; ++i)
        key[i] = static_cast<u8>((message[i] & good) | (key[i] & ~good));
}

u32 decrypt_key(const RSA_UNIT &unit, Bytes in, u8 *encoded, u8 *key, u32 key_len) noexcept {
    u32 status = decrypt_raw(unit, in, encoded);
    if (status == 0) status = RAND_BYTES(key, key_len);
    if (status == 0)
        take_key(key, encoded + (in.size() - key_len), key_len,
                 key_padding_mask({encoded, in.size()}, key_len));
    return status;
}

// An external key has checked the padding itself, and answers 1 when it is wrong.
u32 decrypt_key_externally(const RSA_UNIT &unit, Bytes in, u8 *message, u8 *key, u32 key_len) noexcept {
    if (RAND_BYTES(key, key_len) != 0) return 1;
    u32 length = 0;
    const u32 status = decrypt_externally(unit, TLX_RSAES_MODE_PKCS1, in, message, &length);
    if (status > 1) {
        tlx_wipe(key, key_len);
        return status;
    }
    take_key(key, message, key_len, status == 0 && length == key_len ? 0xFF : 0);
    return 0;
}

}  // namespace

extern "C" {

uint32_t init_RSAES(RSA_UNIT *unit, uint32_t mode, uint32_t direction, uint32_t digest_id) {
    if (unit == nullptr) return 1;
    const u32 oaep_digest_id = digest_id == 0 ? TLX_DIGEST_SHA1 : digest_id;
    const u32 status = init_RSAES_OAEP(unit, direction, oaep_digest_id, TLX_DIGEST_SHA1, nullptr, 0);
    if (is_known(mode)) {
        unit->encryption_mode = mode;
        return status;
    }
    unit->encryption = RsaTask::none;
    return 1;
}

uint32_t init_RSAES_OAEP(RSA_UNIT *unit, uint32_t direction, uint32_t digest_id, uint32_t mgf_digest_id,
                         const uint8_t *label, uint32_t label_len) {
    if (unit == nullptr) return 1;
    unit->encryption = RsaTask::none;
    if (direction > 1 || label_len > kMostLabel || (label == nullptr && label_len != 0)) return 1;
    if (backend_digest(digest_id) == nullptr || backend_digest(mgf_digest_id) == nullptr) return 1;
    if (direction == 1 && unit->kind == TLX_RSA_PUBLIC) return 1;
    OaepSettings oaep{digest_id, mgf_digest_id, nullptr, label_len};
    if (label_len != 0) {
        oaep.label.reset(static_cast<u8 *>(TLX_ALLOCATE(label_len)));
        if (oaep.label == nullptr) return 1;
        std::memcpy(oaep.label.get(), label, label_len);
    }
    unit->oaep = std::move(oaep);
    unit->encryption = direction == 1 ? RsaTask::decrypt : RsaTask::encrypt;
    unit->encryption_mode = TLX_RSAES_MODE_OAEP;
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
    const u32 size = get_RSA_length(unit);
    // libcrypto wants room for a whole modulus.
    auto *message = static_cast<u8 *>(TLX_ALLOCATE(std::size_t{size} + 1));
    if (message == nullptr) return 1;
    u32 length = size;
    u32 status = unit->external != nullptr
                     ? decrypt_externally(*unit, unit->encryption_mode, {in, in_len}, message, &length)
                     : decrypt_padded(*unit, {in, in_len}, message, &length);
    if (status == 0 && length > room) status = 1;
    if (status == 0) {
        std::memcpy(out, message, length);
        *out_len = length;
    }
    wipe_and_free(message, size);
    return status;
}

uint32_t decrypt_RSAES_key(const RSA_UNIT *unit, uint8_t *key, uint32_t key_len, const uint8_t *in,
                           uint32_t in_len) {
    if (unit == nullptr || unit->kind == TLX_RSA_PUBLIC || key == nullptr || in == nullptr) return 1;
    const u32 size = get_RSA_length(unit);
    if (in_len != size || size < kLeastPadding || key_len > size - kLeastPadding) return 1;
    const ErrorScope errors;
    auto *encoded = static_cast<u8 *>(TLX_ALLOCATE(size));
    if (encoded == nullptr) return 1;
    const auto decrypt = unit->external != nullptr ? decrypt_key_externally : decrypt_key;
    const u32 status = decrypt(*unit, {in, in_len}, encoded, key, key_len);
    wipe_and_free(encoded, size);
    return status;
}

}  // extern "C"
