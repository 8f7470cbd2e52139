// The digests of messages and time stamps.
#pragma once

#include <tlxcrypto/digest.h>

#include "choice.hpp"

namespace tool {

inline constexpr Choice kMessageDigests[] = {
    {"sha256", TLX_DIGEST_SHA256},     {"sha384", TLX_DIGEST_SHA384},     {"sha512", TLX_DIGEST_SHA512},
    {"sha224", TLX_DIGEST_SHA224},     {"sha3-256", TLX_DIGEST_SHA3_256}, {"sha3-384", TLX_DIGEST_SHA3_384},
    {"sha3-512", TLX_DIGEST_SHA3_512}, {"sha1", TLX_DIGEST_SHA1},         {"has160", TLX_DIGEST_HAS160}};

}  // namespace tool
