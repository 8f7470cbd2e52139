// libcrypto, in a library context of its own.
#pragma once

#include <openssl/err.h>
#include <openssl/types.h>

#include "crypto/types.hpp"

namespace tlx {

/// The library context with the default and legacy providers, made on first use; null when it cannot be made.
OSSL_LIB_CTX *backend() noexcept;

/// The digest of an identifier, fetched once; null when it is unknown, ours (HAS-160) or not available.
const EVP_MD *backend_digest(u32 digest_id) noexcept;

/// The cipher RC4; null when it is not available.
const EVP_CIPHER *backend_rc4() noexcept;

#ifdef _WIN32
/// Frees what was made on first use, when the DLL that libcrypto is linked into is unloaded. Nothing may be
/// called afterwards.
void release_backend() noexcept;
void release_ciphers() noexcept;
#endif

/// Takes back what libcrypto adds to the thread's error queue in this scope: the queue belongs to the host
/// program.
class ErrorScope {
  public:
    ErrorScope() noexcept { ERR_set_mark(); }
    ~ErrorScope() { ERR_pop_to_mark(); }
    ErrorScope(const ErrorScope &) = delete;
    ErrorScope &operator=(const ErrorScope &) = delete;
};

}  // namespace tlx
