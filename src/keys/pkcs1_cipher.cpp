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
/// What is digested has its place on the stack, unless the password is longer than any that people type.
constexpr std::size_t kStackRoom = 1024;

/// D1 = MD5 (password || salt), Di = MD5 (D(i-1) || password || salt); the key is the front of D1 || D2 ||
/// ... `input` has room for one message.
bool derive(u8 *input, Bytes password, const u8 *salt, u8 *key, std::size_t len) noexcept {
    const std::size_t size = kMd5Length + password.size() + kPemIvLength;
    std::memcpy(input + kMd5Length, password.data(), password.size());
    std::memcpy(input + kMd5Length + password.size(), salt, kPemIvLength);

    u8 digest[TLX_DIGEST_MAX_LENGTH];
    Bytes message = Bytes(input, size).subspan(kMd5Length);
    bool derived = true;
    for (std::size_t done = 0; done < len; done += kMd5Length) {
        u32 digest_len = 0;
        derived = Digest(TLX_DIGEST_MD5, message.data(), static_cast<u32>(message.size()), digest,
                         &digest_len) == 0;
        if (!derived) break;
        std::memcpy(key + done, digest, std::min(kMd5Length, len - done));
        std::memcpy(input, digest, kMd5Length);
        message = Bytes(input, size);
    }
    tlx_wipe(digest, sizeof digest);
    return derived;
}

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

bool derive_pem_key(Bytes password, const u8 *salt, u8 *key, std::size_t len) noexcept {
    const std::size_t size = kMd5Length + password.size() + kPemIvLength;
    u8 room[kStackRoom];
    bool derived = false;
    if (size <= sizeof room) {
        derived = derive(room, password, salt, key, len);
        tlx_wipe(room, size);
    } else if (SecretBytes long_room(size); long_room) {
        derived = derive(long_room.data(), password, salt, key, len);
    }
    if (!derived) tlx_wipe(key, len);
    return derived;
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
    return derive_pem_key(octets, salt, key, static_cast<std::size_t>(key_len)) ? 0 : 0x4903003C;
}
