#include <tlxcrypto/aead.h>
#include <tlxcrypto/cipher.h>

#include <cstring>
#include <new>

#include "crypto/backend.hpp"
#include "crypto/ghash.hpp"
#include "crypto/memory.hpp"

using namespace tlx;

namespace {

constinit FetchedCipher g_ciphers[] = {
    {TLX_AEAD_AES128_GCM, "AES-128-GCM"},   {TLX_AEAD_AES192_GCM, "AES-192-GCM"},
    {TLX_AEAD_AES256_GCM, "AES-256-GCM"},   {TLX_AEAD_ARIA128_GCM, "ARIA-128-GCM"},
    {TLX_AEAD_ARIA192_GCM, "ARIA-192-GCM"}, {TLX_AEAD_ARIA256_GCM, "ARIA-256-GCM"},
};

// Above this, an output length exceeds libcrypto's int.
constexpr u32 kMostInput = 0x7FFFFF00;
// SP 800-38D, section 5.2.1.1 allows 2^61 - 1 octets.
constexpr u64 kMostData = (1ULL << 61) - 1;

enum class Stage : u8 {
    none,       ///< takes nothing
    data,       ///< no octet of the message was there yet
    message,    ///< associated data may follow, unless they came before
    late_data,  ///< associated data come after the message
};

}  // namespace

#ifdef _WIN32
void tlx::release_aead() noexcept {
    for (FetchedCipher &cipher : g_ciphers)
        cipher.release();
}
#endif

struct AEAD_UNIT {
    AEAD_UNIT() = default;
    AEAD_UNIT(const AEAD_UNIT &) = delete;
    AEAD_UNIT &operator=(const AEAD_UNIT &) = delete;
    ~AEAD_UNIT() { tlx_wipe(&late, sizeof late); }

    CipherContext context;
    Stage stage = Stage::none;
    u32 direction = 0;
    u64 data_length = 0;  ///< octets of associated data before the message
    u64 length = 0;       ///< octets of the message
    Ghash late;           ///< of associated data after the message
};

namespace {

/// The encryption of a block of zeros, the hash key. CBC without an IV begins with it.
bool make_hash_key(u32 cipher_id, const u8 *key, FieldElement &hash_key) noexcept {
    const u8 zeros[kGhashBlock] = {};
    u8 octets[2 * kGhashBlock];
    u32 length = 0;
    const u32 block_cipher = (cipher_id & 0xFFFFFF00U) | TLX_CIPHER_MODE_CBC;
    const bool made = BlockCipher(block_cipher, 1, key, nullptr, octets, &length, zeros, kGhashBlock) == 0;
    if (made) hash_key = load_element(octets);
    tlx_wipe(octets, sizeof octets);
    return made;
}

bool set_up(AEAD_UNIT &unit, u32 cipher_id, const u8 *key, Bytes nonce) noexcept {
    const EVP_CIPHER *cipher = find_fetched(g_ciphers, cipher_id);
    FieldElement hash_key;
    if (cipher == nullptr || key == nullptr || !make_hash_key(cipher_id, key, hash_key)) return false;
    unit.late.start(hash_key);
    if (unit.context == nullptr) unit.context.reset(EVP_CIPHER_CTX_new());
    EVP_CIPHER_CTX *context = unit.context.get();
    const auto direction = static_cast<int>(unit.direction);
    return context != nullptr &&
           EVP_CipherInit_ex2(context, cipher, nullptr, nullptr, direction, nullptr) == 1 &&
           EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_AEAD_SET_IVLEN, static_cast<int>(nonce.size()), nullptr) ==
               1 &&
           EVP_CipherInit_ex2(context, nullptr, key, nonce.data(), direction, nullptr) == 1;
}

/// What associated data after the message change in the tag. They lie before it: their hash is multiplied by
/// H once for each block that follows, and the last block of all has their length.
void get_change(AEAD_UNIT &unit, u8 (&change)[TLX_AEAD_TAG_LENGTH]) noexcept {
    const FieldElement &key = unit.late.key();
    const u64 bits = 8 * unit.late.length();
    const u64 blocks_after = (unit.length + kGhashBlock - 1) / kGhashBlock + 1;
    FieldElement sum = multiply(unit.late.finish(), raise(key, blocks_after));
    sum ^= multiply({bits, 0}, key);
    store_element(sum, change);
}

void apply_late_data(AEAD_UNIT &unit, u8 *tag, u32 tag_len) noexcept {
    if (unit.stage != Stage::late_data) return;
    u8 change[TLX_AEAD_TAG_LENGTH];
    get_change(unit, change);
    for (u32 i = 0; i < tag_len; ++i)
        tag[i] ^= change[i];
    tlx_wipe(change, sizeof change);
}

bool add_before(AEAD_UNIT &unit, Bytes data) noexcept {
    const ErrorScope errors;
    int written = 0;
    unit.data_length += data.size();
    return EVP_CipherUpdate(unit.context.get(), nullptr, &written, data.data(),
                            static_cast<int>(data.size())) == 1;
}

/// Ends the unit; its context forgets the key.
u32 end(AEAD_UNIT &unit, u32 status) noexcept {
    unit.stage = Stage::none;
    EVP_CIPHER_CTX_reset(unit.context.get());
    return status;
}

bool has_ended_message(AEAD_UNIT &unit) noexcept {
    u8 none[TLX_CIPHER_MAX_BLOCK_LENGTH];
    int written = 0;
    return EVP_CipherFinal_ex(unit.context.get(), none, &written) == 1;
}

}  // namespace

extern "C" {

uint32_t get_AEAD_key_length(uint32_t cipher_id) {
    const EVP_CIPHER *cipher = find_fetched(g_ciphers, cipher_id);
    return cipher == nullptr ? 0 : static_cast<u32>(EVP_CIPHER_get_key_length(cipher));
}

AEAD_UNIT *new_AEAD_UNIT(void) {
    void *memory = TLX_ALLOCATE(sizeof(AEAD_UNIT));
    return memory == nullptr ? nullptr : new (memory) AEAD_UNIT;
}

void free_AEAD_UNIT(AEAD_UNIT *unit) {
    if (unit == nullptr) return;
    unit->~AEAD_UNIT();
    tlx_free(unit);
}

uint32_t init_AEAD(AEAD_UNIT *unit, uint32_t cipher_id, const uint8_t *key, const uint8_t *nonce,
                   uint32_t nonce_len, uint32_t direction) {
    if (unit == nullptr) return 1;
    unit->stage = Stage::none;
    // Drops the old key, also when what follows fails.
    if (unit->context != nullptr && EVP_CIPHER_CTX_reset(unit->context.get()) != 1) return 1;
    if (nonce == nullptr || nonce_len == 0 || nonce_len > TLX_AEAD_MAX_NONCE_LENGTH || direction > 1) {
        return 1;
    }
    const ErrorScope errors;
    unit->direction = direction;
    unit->data_length = 0;
    unit->length = 0;
    if (!set_up(*unit, cipher_id, key, {nonce, nonce_len})) return 1;
    unit->stage = Stage::data;
    return 0;
}

uint32_t add_AEAD_data(AEAD_UNIT *unit, const uint8_t *data, uint32_t len) {
    if (unit == nullptr || unit->stage == Stage::none) return 1;
    if (len == 0) return 0;
    const bool is_before = unit->stage == Stage::data;
    const u64 before = is_before ? unit->data_length : unit->late.length();
    const bool fits = data != nullptr && len <= kMostInput && len <= kMostData - before &&
                      (is_before || unit->data_length == 0);
    if (!fits || (is_before && !add_before(*unit, {data, len}))) return end(*unit, 1);
    if (is_before) return 0;
    unit->stage = Stage::late_data;
    unit->late.add({data, len});
    return 0;
}

uint32_t update_AEAD(AEAD_UNIT *unit, uint8_t *out, const uint8_t *in, uint32_t len) {
    if (unit == nullptr || unit->stage == Stage::none) return 1;
    if (len == 0) return 0;
    const bool fits = unit->stage != Stage::late_data && out != nullptr && in != nullptr &&
                      len <= kMostInput && len <= TLX_AEAD_MAX_MESSAGE_LENGTH - unit->length;
    const ErrorScope errors;
    int written = 0;
    if (!fits || EVP_CipherUpdate(unit->context.get(), out, &written, in, static_cast<int>(len)) != 1) {
        return end(*unit, 1);
    }
    unit->stage = Stage::message;
    unit->length += len;
    return 0;
}

uint32_t finish_AEAD_encryption(AEAD_UNIT *unit, uint8_t *tag) {
    if (unit == nullptr || unit->stage == Stage::none) return 1;
    const ErrorScope errors;
    const bool made =
        tag != nullptr && unit->direction == 1 && has_ended_message(*unit) &&
        EVP_CIPHER_CTX_ctrl(unit->context.get(), EVP_CTRL_AEAD_GET_TAG, TLX_AEAD_TAG_LENGTH, tag) == 1;
    if (!made) return end(*unit, 1);
    apply_late_data(*unit, tag, TLX_AEAD_TAG_LENGTH);
    return end(*unit, 0);
}

uint32_t finish_AEAD_decryption(AEAD_UNIT *unit, const uint8_t *tag, uint32_t tag_len) {
    if (unit == nullptr || unit->stage == Stage::none) return 1;
    if (tag == nullptr || unit->direction != 0 || tag_len < TLX_AEAD_LEAST_TAG_LENGTH ||
        tag_len > TLX_AEAD_TAG_LENGTH) {
        return end(*unit, 1);
    }
    const ErrorScope errors;
    u8 expected[TLX_AEAD_TAG_LENGTH];
    std::memcpy(expected, tag, tag_len);
    apply_late_data(*unit, expected, tag_len);
    if (EVP_CIPHER_CTX_ctrl(unit->context.get(), EVP_CTRL_AEAD_SET_TAG, static_cast<int>(tag_len),
                            expected) != 1) {
        return end(*unit, 1);
    }
    return end(*unit, has_ended_message(*unit) ? 0 : TLX_AEAD_BAD_TAG);
}

}  // extern "C"
