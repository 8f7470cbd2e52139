// libcrypto, in a library context of its own.
#pragma once

#include <openssl/types.h>

#include <cstdint>

namespace tlx {

/// The library context with the default and legacy providers, made on first use; null when it cannot be made.
OSSL_LIB_CTX *backend() noexcept;

/// The digest of an identifier, fetched once; null when it is unknown, ours (HAS-160) or not available.
const EVP_MD *backend_digest(std::uint32_t digest_id) noexcept;

}  // namespace tlx
