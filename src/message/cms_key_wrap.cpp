// The wraps of AES (RFC 3565), SEED (RFC 4010), ARIA (RFC 5794) and triple DES (RFC 3217).
#include "message/cms_key_wrap.hpp"

#include <tlxcrypto/digest.h>
#include <tlxcrypto/key_wrap.h>

#include <algorithm>

#include "message/envelope.hpp"

using namespace tlx;

namespace {

constexpr u32 kTripleDes = TLX_CIPHER_DES_EDE3 | TLX_CIPHER_MODE_CBC;
constexpr KeyWrap kWraps[] = {
    {"2.16.840.1.101.3.4.1.5", TLX_CIPHER_AES128},  {"2.16.840.1.101.3.4.1.25", TLX_CIPHER_AES192},
    {"2.16.840.1.101.3.4.1.45", TLX_CIPHER_AES256}, {"1.2.410.200004.7.1.1.1", TLX_CIPHER_SEED},
    {"1.2.410.200046.1.1.40", TLX_CIPHER_ARIA},     {"1.2.840.113549.1.9.16.3.6", kTripleDes},
};

constexpr std::size_t kLeastKey = 16;
constexpr std::size_t kHalfBlock = 8;
constexpr std::size_t kDesBlock = 8;
constexpr std::size_t kDesOverhead = 2 * kDesBlock;  ///< IV and checksum
constexpr std::size_t kMostWrapped = TLX_CMS_KEY_MAX_LENGTH + kDesOverhead;

bool is_wrapped_length(std::size_t size, std::size_t overhead) noexcept {
    return size >= kLeastKey + overhead && size <= TLX_CMS_KEY_MAX_LENGTH + overhead &&
           size % kHalfBlock == 0;
}

/// RFC 3217, section 3.2: decrypt, reverse, decrypt with the IV in front; a checksum follows the key. Keys of
/// AES are wrapped so as well, and have no parity.
u32 unwrap_triple_des(Bytes kek, Bytes wrapped, OpenedKey &key) noexcept {
    constexpr u8 kIv[kDesBlock] = {0x4A, 0xDD, 0xA2, 0x2C, 0x79, 0xE8, 0x21, 0x05};
    if (!is_wrapped_length(wrapped.size(), kDesOverhead)) return 0x52B10012;
    SecretBytes reversed(kMostWrapped);
    SecretBytes plain(kMostWrapped);
    if (!reversed || !plain) return 0x52B1003C;
    u8 *octets = reversed.data();
    if (!run_cbc(Direction::decrypt, kTripleDes, kek.data(), kIv, wrapped, octets)) return 0x52B1003C;
    std::reverse(octets, octets + wrapped.size());
    const Bytes inner(octets + kDesBlock, wrapped.size() - kDesBlock);
    if (!run_cbc(Direction::decrypt, kTripleDes, kek.data(), octets, inner, plain.data())) return 0x52B1003C;
    key.len = size_of(wrapped.first(wrapped.size() - kDesOverhead));
    u8 digest[TLX_DIGEST_MAX_LENGTH];
    u32 digest_len = 0;
    if (Digest(TLX_DIGEST_SHA1, plain.data(), key.len, digest, &digest_len) != 0) return 0x52B1003C;
    if (std::memcmp(digest, plain.data() + key.len, kDesBlock) != 0) return 0x52B10012;
    std::memcpy(key.octets, plain.data(), key.len);
    return 0;
}

}  // namespace

const KeyWrap *tlx::find_key_wrap(u32 cipher_id) noexcept {
    const auto *const found = std::ranges::find(kWraps, cipher_id, &KeyWrap::cipher_id);
    return found == std::end(kWraps) || cipher_id == kTripleDes ? nullptr : found;
}

const KeyWrap *tlx::read_key_wrap(const X509_ALGO_IDENTIFIER *algorithm) noexcept {
    if (algorithm == nullptr || !lacks_parameters(*algorithm)) return nullptr;
    const auto *const found = std::ranges::find(kWraps, text_of(algorithm->algorithm), &KeyWrap::dotted);
    return found == std::end(kWraps) ? nullptr : found;
}

bool tlx::can_be_wrapped(Bytes key) noexcept {
    return is_wrapped_length(key.size(), 0);
}

OCTET_STRING *tlx::wrap_key(const KeyWrap &wrap, Bytes kek, Bytes key) noexcept {
    u8 wrapped[TLX_CMS_KEY_MAX_LENGTH + TLX_KEY_WRAP_OVERHEAD];
    u32 len = 0;
    if (wrap_KEY(wrap.cipher_id, kek.data(), wrapped, &len, key.data(), size_of(key)) != 0) return nullptr;
    return make_octets({wrapped, len});
}

u32 tlx::unwrap_key(const KeyWrap &wrap, Bytes kek, Bytes wrapped, OpenedKey &key) noexcept {
    if (wrap.cipher_id == kTripleDes) return unwrap_triple_des(kek, wrapped, key);
    if (!is_wrapped_length(wrapped.size(), TLX_KEY_WRAP_OVERHEAD)) return 0x52B10012;
    const u32 status =
        unwrap_KEY(wrap.cipher_id, kek.data(), key.octets, &key.len, wrapped.data(), size_of(wrapped));
    if (status == TLX_KEY_WRAP_BAD_KEY) return 0x52B10012;
    return status == 0 ? 0 : 0x52B1003C;
}

bool tlx::run_cbc(Direction direction, u32 cipher_id, const u8 *key, const u8 *iv, Bytes in,
                  u8 *out) noexcept {
    const Owned<BLOCK_CIPHER_UNIT> unit(new_BLOCK_CIPHER_UNIT());
    u32 len = 0;
    u32 last = 0;
    if (init_BlockCipher(unit.get(), cipher_id, key, iv, static_cast<u32>(direction)) != 0 ||
        update_BlockCipher(unit.get(), out, &len, in.data(), size_of(in)) != 0) {
        return false;
    }
    // Decryption holds the last block back, which might be padding, until another one follows.
    constexpr u8 kAnother[TLX_CIPHER_MAX_BLOCK_LENGTH] = {};
    if (direction == Direction::encrypt) return len == in.size();
    return update_BlockCipher(unit.get(), out + len, &last, kAnother, get_BlockLength(cipher_id)) == 0 &&
           len + last == in.size();
}
