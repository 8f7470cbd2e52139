#include "keys/pkcs1_cipher.hpp"

#include <tlxcrypto/cipher.h>
#include <tlxcrypto/digest.h>
#include <tlxpki/pkcs1.h>

#include <algorithm>
#include <cstring>

using namespace tlx;

namespace {

constexpr std::size_t kMd5Length = 16;
constexpr std::size_t kKeyLength = 24;
constexpr u32 kCipher = TLX_CIPHER_DES_EDE3 | TLX_CIPHER_MODE_CBC;
constexpr u32 kEncrypt = 1;
constexpr u32 kDecrypt = 0;

PemCipherResult run_cipher(u32 direction, Bytes password, const u8 *iv, Bytes in, u8 *out,
                           u32 &out_len) noexcept {
    SecretBytes key(kKeyLength);
    if (!key || !derive_pem_key(password, iv, key.data(), key.size())) return PemCipherResult::no_memory;
    const u32 status = BlockCipher(kCipher, direction, key.data(), iv, out, &out_len, in.data(),
                                   static_cast<u32>(in.size()));
    if (status == TLX_CIPHER_BAD_PADDING) return PemCipherResult::wrong_key;
    return status == 0 ? PemCipherResult::done : PemCipherResult::no_memory;
}

}  // namespace

namespace tlx {

// D1 = MD5 (password || salt), Di = MD5 (D(i-1) || password || salt); the key is the front of D1 || D2 || ...
bool derive_pem_key(Bytes password, const u8 *salt, u8 *key, std::size_t len) noexcept {
    std::memset(key, 0, len);
    SecretBytes input(kMd5Length + password.size() + kPemIvLength);
    SecretBytes digest(TLX_DIGEST_MAX_LENGTH);
    if (!input || !digest) return false;
    std::memcpy(input.data() + kMd5Length, password.data(), password.size());
    std::memcpy(input.data() + kMd5Length + password.size(), salt, kPemIvLength);

    Bytes message = Bytes(input.data(), input.size()).subspan(kMd5Length);
    for (std::size_t done = 0; done < len; done += kMd5Length) {
        u32 size = 0;
        if (Digest(TLX_DIGEST_MD5, message.data(), static_cast<u32>(message.size()), digest.data(), &size) !=
            0) {
            tlx_wipe(key, len);
            return false;
        }
        std::memcpy(key + done, digest.data(), std::min(kMd5Length, len - done));
        std::memcpy(input.data(), digest.data(), kMd5Length);
        message = Bytes(input.data(), input.size());
    }
    return true;
}

PemCipherResult encrypt_pem_key(Bytes password, const u8 *iv, Bytes in, u8 *out, u32 &out_len) noexcept {
    return run_cipher(kEncrypt, password, iv, in, out, out_len);
}

PemCipherResult decrypt_pem_key(Bytes password, const u8 *iv, Bytes in, u8 *out, u32 &out_len) noexcept {
    return run_cipher(kDecrypt, password, iv, in, out, out_len);
}

}  // namespace tlx

uint32_t PBKDF(const char *password, int32_t password_len, const uint8_t *salt, uint8_t *key,
               int32_t key_len) {
    if (password == nullptr || password_len <= 0 || salt == nullptr || key == nullptr || key_len <= 0) {
        return 0x4903002B;
    }
    const Bytes octets(reinterpret_cast<const u8 *>(password), static_cast<std::size_t>(password_len));
    // Running out of memory is not told: the interface has no code for it, and the key is all zeros then.
    static_cast<void>(derive_pem_key(octets, salt, key, static_cast<std::size_t>(key_len)));
    return 0;
}
