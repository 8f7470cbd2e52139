#include <tlxcrypto/cipher.h>

#include <cstring>
#include <new>

#include "crypto/backend.hpp"
#include "crypto/memory.hpp"

using namespace tlx;

namespace {

// libcrypto's CFB is the one with full-block feedback. RC5 is missing from most builds of it.
constinit FetchedCipher g_ciphers[] = {
    {TLX_CIPHER_AES128 | TLX_CIPHER_MODE_ECB, "AES-128-ECB"},
    {TLX_CIPHER_AES128 | TLX_CIPHER_MODE_CBC, "AES-128-CBC"},
    {TLX_CIPHER_AES128 | TLX_CIPHER_MODE_CFB, "AES-128-CFB"},
    {TLX_CIPHER_AES128 | TLX_CIPHER_MODE_OFB, "AES-128-OFB"},
    {TLX_CIPHER_AES192 | TLX_CIPHER_MODE_ECB, "AES-192-ECB"},
    {TLX_CIPHER_AES192 | TLX_CIPHER_MODE_CBC, "AES-192-CBC"},
    {TLX_CIPHER_AES192 | TLX_CIPHER_MODE_CFB, "AES-192-CFB"},
    {TLX_CIPHER_AES192 | TLX_CIPHER_MODE_OFB, "AES-192-OFB"},
    {TLX_CIPHER_AES256 | TLX_CIPHER_MODE_ECB, "AES-256-ECB"},
    {TLX_CIPHER_AES256 | TLX_CIPHER_MODE_CBC, "AES-256-CBC"},
    {TLX_CIPHER_AES256 | TLX_CIPHER_MODE_CFB, "AES-256-CFB"},
    {TLX_CIPHER_AES256 | TLX_CIPHER_MODE_OFB, "AES-256-OFB"},
    {TLX_CIPHER_DES | TLX_CIPHER_MODE_ECB, "DES-ECB"},
    {TLX_CIPHER_DES | TLX_CIPHER_MODE_CBC, "DES-CBC"},
    {TLX_CIPHER_DES | TLX_CIPHER_MODE_CFB, "DES-CFB"},
    {TLX_CIPHER_DES | TLX_CIPHER_MODE_OFB, "DES-OFB"},
    {TLX_CIPHER_DES_EDE | TLX_CIPHER_MODE_ECB, "DES-EDE"},
    {TLX_CIPHER_DES_EDE | TLX_CIPHER_MODE_CBC, "DES-EDE-CBC"},
    {TLX_CIPHER_DES_EDE | TLX_CIPHER_MODE_CFB, "DES-EDE-CFB"},
    {TLX_CIPHER_DES_EDE | TLX_CIPHER_MODE_OFB, "DES-EDE-OFB"},
    {TLX_CIPHER_DES_EDE_PBE | TLX_CIPHER_MODE_CBC, "DES-EDE-CBC"},
    {TLX_CIPHER_DES_EDE3 | TLX_CIPHER_MODE_ECB, "DES-EDE3"},
    {TLX_CIPHER_DES_EDE3 | TLX_CIPHER_MODE_CBC, "DES-EDE3-CBC"},
    {TLX_CIPHER_DES_EDE3 | TLX_CIPHER_MODE_CFB, "DES-EDE3-CFB"},
    {TLX_CIPHER_DES_EDE3 | TLX_CIPHER_MODE_OFB, "DES-EDE3-OFB"},
    {TLX_CIPHER_ARIA | TLX_CIPHER_MODE_ECB, "ARIA-128-ECB"},
    {TLX_CIPHER_ARIA | TLX_CIPHER_MODE_CBC, "ARIA-128-CBC"},
    {TLX_CIPHER_ARIA | TLX_CIPHER_MODE_CFB, "ARIA-128-CFB"},
    {TLX_CIPHER_ARIA | TLX_CIPHER_MODE_OFB, "ARIA-128-OFB"},
    {TLX_CIPHER_ARIA192 | TLX_CIPHER_MODE_CBC, "ARIA-192-CBC"},
    {TLX_CIPHER_ARIA256 | TLX_CIPHER_MODE_CBC, "ARIA-256-CBC"},
    {TLX_CIPHER_SEED | TLX_CIPHER_MODE_ECB, "SEED-ECB"},
    {TLX_CIPHER_SEED | TLX_CIPHER_MODE_CBC, "SEED-CBC"},
    {TLX_CIPHER_SEED | TLX_CIPHER_MODE_CFB, "SEED-CFB"},
    {TLX_CIPHER_SEED | TLX_CIPHER_MODE_OFB, "SEED-OFB"},
    {TLX_CIPHER_RC5 | TLX_CIPHER_MODE_ECB, "RC5-ECB"},
    {TLX_CIPHER_RC5 | TLX_CIPHER_MODE_CBC, "RC5-CBC"},
    {TLX_CIPHER_RC5 | TLX_CIPHER_MODE_CFB, "RC5-CFB"},
    {TLX_CIPHER_RC5 | TLX_CIPHER_MODE_OFB, "RC5-OFB"},
    {TLX_CIPHER_BLOWFISH | TLX_CIPHER_MODE_ECB, "BF-ECB"},
    {TLX_CIPHER_BLOWFISH | TLX_CIPHER_MODE_CBC, "BF-CBC"},
    {TLX_CIPHER_BLOWFISH | TLX_CIPHER_MODE_CFB, "BF-CFB"},
    {TLX_CIPHER_BLOWFISH | TLX_CIPHER_MODE_OFB, "BF-OFB"},
    {TLX_CIPHER_RC2 | TLX_CIPHER_MODE_CBC, "RC2-CBC"},
    {TLX_CIPHER_RC2_40 | TLX_CIPHER_MODE_CBC, "RC2-40-CBC"},
    {TLX_CIPHER_RC2_64 | TLX_CIPHER_MODE_CBC, "RC2-64-CBC"},
    {TLX_CIPHER_CAMELLIA128 | TLX_CIPHER_MODE_CBC, "CAMELLIA-128-CBC"},
    {TLX_CIPHER_CAMELLIA192 | TLX_CIPHER_MODE_CBC, "CAMELLIA-192-CBC"},
    {TLX_CIPHER_CAMELLIA256 | TLX_CIPHER_MODE_CBC, "CAMELLIA-256-CBC"},
    {TLX_CIPHER_CAST5 | TLX_CIPHER_MODE_CBC, "CAST5-CBC"},
};

// Above this, an output length exceeds libcrypto's int.
constexpr u32 kMostInput = 0x7FFFFF00;

bool pads(u32 id) noexcept {
    const u32 mode = id & TLX_CIPHER_MODE_MASK;
    return mode == TLX_CIPHER_MODE_ECB || mode == TLX_CIPHER_MODE_CBC;
}

}  // namespace

const EVP_CIPHER *tlx::backend_cipher(u32 cipher_id) noexcept {
    return find_fetched(g_ciphers, cipher_id);
}

#ifdef _WIN32
void tlx::release_ciphers() noexcept {
    for (FetchedCipher &cipher : g_ciphers)
        cipher.release();
}
#endif

struct BLOCK_CIPHER_UNIT {
    CipherContext context;
    u32 id = 0;
    u32 direction = 0;
    bool running = false;
    u32 held_back = 0;  ///< octets taken in and not given out yet
    u32 iv_length = 0;
    u8 iv[TLX_CIPHER_MAX_BLOCK_LENGTH] = {};
};

extern "C" {

uint32_t get_KeyLength(uint32_t cipher_id) {
    const EVP_CIPHER *cipher = backend_cipher(cipher_id);
    return cipher == nullptr ? 0 : static_cast<u32>(EVP_CIPHER_get_key_length(cipher));
}

uint32_t get_IVLength(uint32_t cipher_id) {
    const EVP_CIPHER *cipher = backend_cipher(cipher_id);
    return cipher == nullptr ? 0 : static_cast<u32>(EVP_CIPHER_get_iv_length(cipher));
}

uint32_t get_BlockLength(uint32_t cipher_id) {
    if (backend_cipher(cipher_id) == nullptr) return 0;
    switch (cipher_id & 0xFF000000U) {
        case TLX_CIPHER_AES128 & 0xFF000000U:
        case TLX_CIPHER_ARIA & 0xFF000000U:
        case TLX_CIPHER_SEED & 0xFF000000U:
        case TLX_CIPHER_CAMELLIA128 & 0xFF000000U:
            return 16;
        default:
            return 8;
    }
}

BLOCK_CIPHER_UNIT *new_BLOCK_CIPHER_UNIT(void) {
    void *memory = TLX_ALLOCATE(sizeof(BLOCK_CIPHER_UNIT));
    return memory == nullptr ? nullptr : new (memory) BLOCK_CIPHER_UNIT;
}

void free_BLOCK_CIPHER_UNIT(BLOCK_CIPHER_UNIT *unit) {
    if (unit == nullptr) return;
    unit->~BLOCK_CIPHER_UNIT();
    tlx_free(unit);
}

uint32_t init_BlockCipher(BLOCK_CIPHER_UNIT *unit, uint32_t cipher_id, const uint8_t *key, const uint8_t *iv,
                          uint32_t direction) {
    if (unit == nullptr) return 1;
    unit->running = false;
    unit->id = 0;
    unit->iv_length = 0;
    // Drops the old key, also when what follows fails.
    if (unit->context != nullptr && EVP_CIPHER_CTX_reset(unit->context.get()) != 1) return 1;
    const EVP_CIPHER *cipher = backend_cipher(cipher_id);
    if (cipher == nullptr || key == nullptr || direction > 1) return 1;

    const ErrorScope errors;
    if (unit->context == nullptr) unit->context.reset(EVP_CIPHER_CTX_new());
    if (unit->context == nullptr) return 1;
    const u32 iv_length = get_IVLength(cipher_id);
    std::memset(unit->iv, 0, sizeof unit->iv);
    if (iv != nullptr) std::memcpy(unit->iv, iv, iv_length);
    if (EVP_CipherInit_ex2(unit->context.get(), cipher, key, unit->iv, static_cast<int>(direction),
                           nullptr) != 1) {
        return 1;
    }
    unit->id = cipher_id;
    unit->direction = direction;
    unit->held_back = 0;
    unit->iv_length = iv_length;
    unit->running = true;
    return 0;
}

uint32_t update_BlockCipher(BLOCK_CIPHER_UNIT *unit, uint8_t *out, uint32_t *out_len, const uint8_t *in,
                            uint32_t in_len) {
    if (out_len == nullptr) return 1;
    *out_len = 0;
    if (unit == nullptr || !unit->running || in_len > kMostInput) return 1;
    if (in_len == 0) return 0;
    if (out == nullptr || in == nullptr) return 1;
    const ErrorScope errors;
    int written = 0;
    if (EVP_CipherUpdate(unit->context.get(), out, &written, in, static_cast<int>(in_len)) != 1) return 1;
    *out_len = static_cast<u32>(written);
    unit->held_back += in_len - *out_len;
    return 0;
}

uint32_t final_BlockCipher(BLOCK_CIPHER_UNIT *unit, uint8_t *out, uint32_t *out_len) {
    if (out_len == nullptr) return 1;
    *out_len = 0;
    if (unit == nullptr || !unit->running || out == nullptr) return 1;
    const ErrorScope errors;
    unit->running = false;
    u8 block[EVP_MAX_BLOCK_LENGTH];
    int written = 0;
    const bool ended = EVP_CipherFinal_ex(unit->context.get(), block, &written) == 1;
    // The key is not needed any more.
    EVP_CIPHER_CTX_reset(unit->context.get());
    if (!ended) return pads(unit->id) && unit->direction == 0 ? TLX_CIPHER_BAD_PADDING : 1;
    std::memcpy(out, block, static_cast<std::size_t>(written));
    tlx_wipe(block, sizeof block);
    *out_len = static_cast<u32>(written);
    return 0;
}

const uint8_t *get_BLOCK_CIPHER_UNIT_iv(const BLOCK_CIPHER_UNIT *unit, uint32_t *len) {
    const u32 length = unit == nullptr ? 0 : unit->iv_length;
    if (len != nullptr) *len = length;
    return length == 0 ? nullptr : unit->iv;
}

uint32_t get_BLOCK_CIPHER_UNIT_id(const BLOCK_CIPHER_UNIT *unit) {
    return unit == nullptr ? 0 : unit->id;
}

uint32_t get_BLOCK_CIPHER_UNIT_output(const BLOCK_CIPHER_UNIT *unit, uint32_t in_len) {
    if (unit == nullptr || !unit->running || in_len == 0 || in_len > kMostInput) return 0;
    if (!pads(unit->id)) return in_len;
    // The last block of a ciphertext waits, because it ends with the padding.
    const u32 ready = unit->held_back + in_len - (unit->direction == 0 ? 1 : 0);
    return ready - ready % get_BlockLength(unit->id);
}

uint32_t get_BLOCK_CIPHER_UNIT_final(const BLOCK_CIPHER_UNIT *unit) {
    return unit != nullptr && unit->running && pads(unit->id) ? get_BlockLength(unit->id) : 0;
}

uint32_t BlockCipher(uint32_t cipher_id, uint32_t direction, const uint8_t *key, const uint8_t *iv,
                     uint8_t *out, uint32_t *out_len, const uint8_t *in, uint32_t in_len) {
    if (out_len == nullptr) return 1;
    *out_len = 0;
    if (out == nullptr) return 1;
    BLOCK_CIPHER_UNIT unit;
    u32 status = init_BlockCipher(&unit, cipher_id, key, iv, direction);
    if (status != 0) return status;
    u32 written = 0;
    status = update_BlockCipher(&unit, out, &written, in, in_len);
    if (status != 0) return status;
    u32 last = 0;
    status = final_BlockCipher(&unit, out + written, &last);
    if (status != 0) {
        tlx_wipe(out, written);
        return status;
    }
    *out_len = written + last;
    return 0;
}

}  // extern "C"
