#include <openssl/modes.h>
#include <tlxcrypto/cipher.h>
#include <tlxcrypto/key_wrap.h>

#include "crypto/backend.hpp"
#include "crypto/memory.hpp"

using namespace tlx;

namespace {

constexpr u32 kBlockLength = 16;
constexpr u32 kHalfLength = 8;
constexpr u32 kLeastKeyLength = 16;

/// A block cipher under a key, as libcrypto's key wrap calls it.
class Blocks {
  public:
    /// 1 encrypts, 0 decrypts. False when the cipher does not fit or memory runs out.
    bool start(u32 cipher_id, const u8 *key, int direction) noexcept {
        const EVP_CIPHER *cipher = backend_cipher(cipher_id);
        const bool fits = cipher != nullptr && key != nullptr &&
                          (cipher_id & TLX_CIPHER_MODE_MASK) == TLX_CIPHER_MODE_ECB &&
                          get_BlockLength(cipher_id) == kBlockLength;
        if (!fits) return false;
        context_.reset(EVP_CIPHER_CTX_new());
        return context_ != nullptr &&
               EVP_CipherInit_ex2(context_.get(), cipher, key, nullptr, direction, nullptr) == 1 &&
               EVP_CIPHER_CTX_set_padding(context_.get(), 0) == 1;
    }
    static void run(const u8 *in, u8 *out, const void *blocks) noexcept {
        auto &self = *const_cast<Blocks *>(static_cast<const Blocks *>(blocks));
        int written = 0;
        const int done = EVP_CipherUpdate(self.context_.get(), out, &written, in, kBlockLength);
        self.failed_ = self.failed_ || done != 1;
    }
    [[nodiscard]] bool failed() const noexcept { return failed_; }

  private:
    CipherContext context_;
    bool failed_ = false;
};

bool is_key_length(u32 len) noexcept {
    return len >= kLeastKeyLength && len <= TLX_KEY_WRAP_MAX_LENGTH && len % kHalfLength == 0;
}

}  // namespace

extern "C" {

uint32_t wrap_KEY(uint32_t cipher_id, const uint8_t *kek, uint8_t *out, uint32_t *out_len, const uint8_t *in,
                  uint32_t in_len) {
    if (out_len == nullptr) return 1;
    *out_len = 0;
    if (out == nullptr || in == nullptr || !is_key_length(in_len)) return 1;
    const ErrorScope errors;
    Blocks blocks;
    if (!blocks.start(cipher_id, kek, 1)) return 1;
    const std::size_t written = CRYPTO_128_wrap(&blocks, nullptr, out, in, in_len, Blocks::run);
    if (written == 0 || blocks.failed()) return 1;
    *out_len = static_cast<u32>(written);
    return 0;
}

uint32_t unwrap_KEY(uint32_t cipher_id, const uint8_t *kek, uint8_t *out, uint32_t *out_len,
                    const uint8_t *in, uint32_t in_len) {
    if (out_len == nullptr) return 1;
    *out_len = 0;
    if (out == nullptr || in == nullptr || in_len < kHalfLength || !is_key_length(in_len - kHalfLength)) {
        return 1;
    }
    const ErrorScope errors;
    Blocks blocks;
    if (!blocks.start(cipher_id, kek, 0)) return 1;
    const std::size_t written = CRYPTO_128_unwrap(&blocks, nullptr, out, in, in_len, Blocks::run);
    if (written == 0 || blocks.failed()) {
        tlx_wipe(out, in_len - kHalfLength);
        return blocks.failed() ? 1 : TLX_KEY_WRAP_BAD_KEY;
    }
    *out_len = static_cast<u32>(written);
    return 0;
}

}  // extern "C"
