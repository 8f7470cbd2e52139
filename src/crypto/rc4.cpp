#include <tlxcrypto/rc4.h>

#include <new>

#include "crypto/backend.hpp"
#include "crypto/memory.hpp"

using namespace tlx;

namespace {

constexpr u32 kLongestKey = 256;
constexpr u32 kMostInput = 0x7FFFFFFF;

constinit FetchedCipher g_rc4 = {0, "RC4"};

}  // namespace

#ifdef _WIN32
void tlx::release_rc4() noexcept {
    g_rc4.release();
}
#endif

struct RC4_UNIT {
    CipherContext context;
};

extern "C" {

RC4_UNIT *new_RC4_UNIT(void) {
    void *memory = TLX_ALLOCATE(sizeof(RC4_UNIT));
    return memory == nullptr ? nullptr : new (memory) RC4_UNIT;
}

void free_RC4_UNIT(RC4_UNIT *unit) {
    if (unit == nullptr) return;
    unit->~RC4_UNIT();
    tlx_free(unit);
}

uint32_t init_RC4(RC4_UNIT *unit, const uint8_t *key, uint32_t key_len) {
    if (unit == nullptr) return 1;
    unit->context.reset();
    const EVP_CIPHER *rc4 = g_rc4.get();
    if (rc4 == nullptr || key == nullptr || key_len == 0 || key_len > kLongestKey) return 1;
    const ErrorScope errors;
    CipherContext context(EVP_CIPHER_CTX_new());
    if (context == nullptr || EVP_CipherInit_ex2(context.get(), rc4, nullptr, nullptr, 1, nullptr) != 1 ||
        EVP_CIPHER_CTX_set_key_length(context.get(), static_cast<int>(key_len)) != 1 ||
        EVP_CipherInit_ex2(context.get(), nullptr, key, nullptr, 1, nullptr) != 1) {
        return 1;
    }
    unit->context = std::move(context);
    return 0;
}

uint32_t update_RC4(RC4_UNIT *unit, uint8_t *out, const uint8_t *in, uint32_t len) {
    if (unit == nullptr || unit->context == nullptr || len > kMostInput) return 1;
    if (len == 0) return 0;
    if (out == nullptr || in == nullptr) return 1;
    const ErrorScope errors;
    int written = 0;
    return EVP_CipherUpdate(unit->context.get(), out, &written, in, static_cast<int>(len)) == 1 ? 0 : 1;
}

}  // extern "C"
