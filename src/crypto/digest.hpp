// The inside of DIGEST_UNIT.
#pragma once

#include <openssl/types.h>
#include <tlxcrypto/digest.h>

#include "crypto/has160.hpp"

/// A running digest. All zeros is a unit that was never initialised.
struct DIGEST_UNIT {
    tlx::u32 id;          // of the last successful init
    bool running;         // takes data
    EVP_MD_CTX *context;  // libcrypto's state; made once, then reused
    tlx::Has160 has160;
};

namespace tlx {

/// Copies the state of `from` to `to`. False when `from` is not running or memory runs out.
bool copy_digest(DIGEST_UNIT &to, const DIGEST_UNIT &from) noexcept;
/// Wipes and releases what the unit holds, not the unit.
void clean_digest(DIGEST_UNIT &unit) noexcept;

}  // namespace tlx
