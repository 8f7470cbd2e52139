#include "crypto/digest.hpp"

#include <openssl/evp.h>

#include "crypto/backend.hpp"
#include "crypto/memory.hpp"

using namespace tlx;

namespace tlx {

bool copy_digest(DIGEST_UNIT &to, const DIGEST_UNIT &from) noexcept {
    to.running = false;
    if (!from.running) return false;
    if (from.id == TLX_DIGEST_HAS160) {
        to.has160 = from.has160;
    } else {
        if (to.context == nullptr) to.context = EVP_MD_CTX_new();
        if (to.context == nullptr || EVP_MD_CTX_copy_ex(to.context, from.context) != 1) return false;
    }
    to.id = from.id;
    to.running = true;
    return true;
}

void clean_digest(DIGEST_UNIT &unit) noexcept {
    EVP_MD_CTX_free(unit.context);
    tlx_wipe(&unit, sizeof unit);
}

}  // namespace tlx

namespace {

constexpr u32 kShake256Length = 64;

bool start(DIGEST_UNIT &unit, u32 digest_id) noexcept {
    if (digest_id == TLX_DIGEST_HAS160) {
        unit.has160.start();
        return true;
    }
    const EVP_MD *algorithm = backend_digest_or_xof(digest_id);
    if (algorithm == nullptr) return false;
    if (unit.context == nullptr) unit.context = EVP_MD_CTX_new();
    return unit.context != nullptr && EVP_DigestInit_ex2(unit.context, algorithm, nullptr) == 1;
}

bool finish(DIGEST_UNIT &unit, u8 *digest, u32 &digest_len) noexcept {
    if (unit.id != TLX_DIGEST_SHAKE256) return EVP_DigestFinal_ex(unit.context, digest, &digest_len) == 1;
    digest_len = kShake256Length;
    return EVP_DigestFinalXOF(unit.context, digest, kShake256Length) == 1;
}

u32 digest_whole(u32 digest_id, Bytes data, u8 *digest, u32 *digest_len) noexcept {
    DIGEST_UNIT unit{};
    u32 status = init_Digest(&unit, digest_id);
    if (status == 0) status = update_Digest(&unit, data.data(), static_cast<u32>(data.size()));
    if (status == 0) status = final_Digest(&unit, digest, digest_len);
    clean_digest(unit);
    return status;
}

}  // namespace

extern "C" {

uint32_t get_DigestLength(uint32_t digest_id) {
    if (digest_id == TLX_DIGEST_HAS160) return Has160::kLength;
    if (digest_id == TLX_DIGEST_SHAKE256) return kShake256Length;
    const EVP_MD *algorithm = backend_digest(digest_id);
    return algorithm == nullptr ? 0 : static_cast<u32>(EVP_MD_get_size(algorithm));
}

uint32_t get_DigestBlockLength(uint32_t digest_id) {
    if (digest_id == TLX_DIGEST_HAS160) return Has160::kBlockLength;
    const EVP_MD *algorithm = backend_digest_or_xof(digest_id);
    return algorithm == nullptr ? 0 : static_cast<u32>(EVP_MD_get_block_size(algorithm));
}

uint32_t Digest(uint32_t digest_id, const uint8_t *data, uint32_t len, uint8_t *digest,
                uint32_t *digest_len) {
    if (digest_len == nullptr) return 1;
    *digest_len = 0;
    if (digest == nullptr || (data == nullptr && len != 0)) return 1;
    if (digest_id == TLX_DIGEST_HAS160 || digest_id == TLX_DIGEST_SHAKE256) {
        return digest_whole(digest_id, {data, len}, digest, digest_len);
    }
    const EVP_MD *algorithm = backend_digest(digest_id);
    if (algorithm == nullptr || EVP_Digest(data, len, digest, digest_len, algorithm, nullptr) != 1) {
        *digest_len = 0;
        return 1;
    }
    return 0;
}

DIGEST_UNIT *new_DIGEST_UNIT(void) {
    return TLX_NEW(DIGEST_UNIT);
}

void free_DIGEST_UNIT(DIGEST_UNIT *unit) {
    if (unit == nullptr) return;
    clean_digest(*unit);
    tlx_free(unit);
}

uint32_t init_Digest(DIGEST_UNIT *unit, uint32_t digest_id) {
    if (unit == nullptr) return 1;
    unit->running = start(*unit, digest_id);
    unit->id = unit->running ? digest_id : 0;
    return unit->running ? 0 : 1;
}

uint32_t update_Digest(DIGEST_UNIT *unit, const uint8_t *data, uint32_t len) {
    if (unit == nullptr || !unit->running || (data == nullptr && len != 0)) return 1;
    if (unit->id == TLX_DIGEST_HAS160) {
        unit->has160.add({data, len});
        return 0;
    }
    return EVP_DigestUpdate(unit->context, data, len) == 1 ? 0 : 1;
}

uint32_t final_Digest(DIGEST_UNIT *unit, uint8_t *digest, uint32_t *digest_len) {
    if (digest_len == nullptr) return 1;
    *digest_len = 0;
    if (unit == nullptr || digest == nullptr || !unit->running) return 1;
    unit->running = false;
    if (unit->id == TLX_DIGEST_HAS160) {
        unit->has160.finish(digest);
        *digest_len = Has160::kLength;
        return 0;
    }
    if (finish(*unit, digest, *digest_len)) return 0;
    *digest_len = 0;
    return 1;
}

uint32_t get_DIGEST_UNIT_id(const DIGEST_UNIT *unit) {
    return unit == nullptr ? 0 : unit->id;
}

}  // extern "C"
