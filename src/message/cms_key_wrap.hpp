// Key wraps: how a content key is encrypted under a symmetric key.
#pragma once

#include "message/cms_keys.hpp"

namespace tlx {

struct KeyWrap {
    std::string_view dotted;
    u32 cipher_id;  ///< in ECB for the wrap of RFC 3394, in CBC for that of RFC 3217, which is only read

    [[nodiscard]] u32 key_length() const noexcept { return get_KeyLength(cipher_id); }
};

/// The wrap of RFC 3394 with a cipher; null for any other cipher.
[[nodiscard]] const KeyWrap *find_key_wrap(u32 cipher_id) noexcept;
/// What an algorithm identifier says; null for an unknown wrap, and for parameters other than NULL.
[[nodiscard]] const KeyWrap *read_key_wrap(const X509_ALGO_IDENTIFIER *algorithm) noexcept;

/// Whether a wrap of RFC 3394 takes a key of this length.
[[nodiscard]] bool can_be_wrapped(Bytes key) noexcept;
/// Wraps such a key under one of key_length() octets; null when memory runs out.
[[nodiscard]] OCTET_STRING *wrap_key(const KeyWrap &wrap, Bytes kek, Bytes key) noexcept;
/// A status of open_CMS_RECIPIENT_INFO().
[[nodiscard]] u32 unwrap_key(const KeyWrap &wrap, Bytes kek, Bytes wrapped, OpenedKey &key) noexcept;

/// Whole blocks through a cipher in CBC mode, without padding. `out` has as much room. False when memory runs
/// out.
[[nodiscard]] bool run_cbc(Direction direction, u32 cipher_id, const u8 *key, const u8 *iv, Bytes in,
                           u8 *out) noexcept;

}  // namespace tlx
