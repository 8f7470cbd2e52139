#include <tlxcrypto/hmac.h>

#include <cstring>

#include "crypto/digest.hpp"
#include "crypto/memory.hpp"

using namespace tlx;

/// HMAC (RFC 2104): the digest's state after the key's inner and outer pad, and the message so far.
struct HMAC_UNIT {
    DIGEST_UNIT inner;
    DIGEST_UNIT outer;
    DIGEST_UNIT message;
};

namespace {

constexpr u32 kMostBlockLength = 144;  // SHA3-224

/// SHAKE256 makes codes in another way (FIPS 202, section 7): there is no HMAC with it.
u32 digest_of(u32 id) noexcept {
    if (id == TLX_DIGEST_SHAKE256) return 0;
    return id == TLX_HMAC_SHA1 ? TLX_DIGEST_SHA1 : id;
}

bool start_pad(DIGEST_UNIT &unit, u32 digest_id, const u8 *key, u32 block_len, u8 pad) noexcept {
    u8 block[kMostBlockLength];
    for (u32 i = 0; i < block_len; ++i) {
        block[i] = key[i] ^ pad;
    }
    const bool done = init_Digest(&unit, digest_id) == 0 && update_Digest(&unit, block, block_len) == 0;
    tlx_wipe(block, sizeof block);
    return done;
}

bool set_key(HMAC_UNIT &unit, u32 digest_id, const u8 *key, u32 key_len) noexcept {
    const u32 block_len = get_DigestBlockLength(digest_id);
    if (block_len == 0 || block_len > kMostBlockLength) return false;
    u8 block[kMostBlockLength] = {};
    bool done = true;
    if (key_len > block_len) {
        u32 digest_len = 0;
        done = Digest(digest_id, key, key_len, block, &digest_len) == 0;
    } else if (key_len != 0) {
        std::memcpy(block, key, key_len);
    }
    done = done && start_pad(unit.inner, digest_id, block, block_len, 0x36) &&
           start_pad(unit.outer, digest_id, block, block_len, 0x5C);
    tlx_wipe(block, sizeof block);
    return done;
}

void clean(HMAC_UNIT &unit) noexcept {
    clean_digest(unit.inner);
    clean_digest(unit.outer);
    clean_digest(unit.message);
}

}  // namespace

extern "C" {

HMAC_UNIT *new_HMAC_UNIT(void) {
    return TLX_NEW(HMAC_UNIT);
}

void free_HMAC_UNIT(HMAC_UNIT *unit) {
    if (unit == nullptr) return;
    clean(*unit);
    tlx_free(unit);
}

uint32_t init_HMAC(HMAC_UNIT *unit, uint32_t digest_id, const uint8_t *key, uint32_t key_len) {
    if (unit == nullptr) return 1;
    const bool keyed = (key != nullptr || key_len == 0) && set_key(*unit, digest_of(digest_id), key, key_len);
    if (!keyed) {
        unit->inner.running = false;
        unit->message.running = false;
        return 1;
    }
    return reset_HMAC(unit);
}

uint32_t reset_HMAC(HMAC_UNIT *unit) {
    return unit != nullptr && copy_digest(unit->message, unit->inner) ? 0 : 1;
}

uint32_t update_HMAC(HMAC_UNIT *unit, const uint8_t *data, uint32_t len) {
    return unit == nullptr ? 1 : update_Digest(&unit->message, data, len);
}

uint32_t final_HMAC(HMAC_UNIT *unit, uint8_t *mac, uint32_t *mac_len) {
    if (mac_len == nullptr) return 1;
    *mac_len = 0;
    if (unit == nullptr || mac == nullptr) return 1;
    u8 inner[TLX_DIGEST_MAX_LENGTH];
    u32 inner_len = 0;
    const bool done = final_Digest(&unit->message, inner, &inner_len) == 0 &&
                      copy_digest(unit->message, unit->outer) &&
                      update_Digest(&unit->message, inner, inner_len) == 0 &&
                      final_Digest(&unit->message, mac, mac_len) == 0;
    tlx_wipe(inner, sizeof inner);
    return done ? 0 : 1;
}

uint32_t get_HMAC_length(uint32_t digest_id) {
    return get_DigestLength(digest_of(digest_id));
}

uint32_t compute_HMAC(uint32_t digest_id, const uint8_t *key, uint32_t key_len, const uint8_t *data,
                      uint32_t len, uint8_t *mac, uint32_t *mac_len) {
    HMAC_UNIT unit = {};
    if (mac_len != nullptr) *mac_len = 0;
    const bool done = init_HMAC(&unit, digest_id, key, key_len) == 0 && update_HMAC(&unit, data, len) == 0 &&
                      final_HMAC(&unit, mac, mac_len) == 0;
    clean(unit);
    return done ? 0 : 1;
}

}  // extern "C"
