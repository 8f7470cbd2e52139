// libcrypto, in a library context of its own.
#pragma once

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/types.h>

#include <atomic>
#include <memory>

#include "crypto/types.hpp"

namespace tlx {

/// The library context, which the first use makes. Null when that fails (the next call tries again), and
/// after libcrypto has cleaned up: a host's own destructors may still call this library then.
OSSL_LIB_CTX *backend() noexcept;

/// Loads the legacy provider, if there is one. Its algorithms are not available without it.
void load_legacy(OSSL_LIB_CTX *context) noexcept;

/// The digest of an identifier; null when it is unknown, ours (HAS-160), of variable length (SHAKE256) or not
/// available.
const EVP_MD *backend_digest(u32 digest_id) noexcept;
/// The same with SHAKE256, whose length libcrypto takes at the end.
const EVP_MD *backend_digest_or_xof(u32 digest_id) noexcept;

/// The block cipher of an identifier; null when it is unknown or not available.
const EVP_CIPHER *backend_cipher(u32 cipher_id) noexcept;

#ifdef _WIN32
/// Frees what the first use made, when the DLL that contains libcrypto is unloaded. Nothing may be called
/// afterwards.
void release_backend() noexcept;
void release_ciphers() noexcept;
void release_aead() noexcept;
void release_rc4() noexcept;
void release_curves() noexcept;
#endif

/// Removes what libcrypto adds to the thread's error queue in this scope: the queue belongs to the host
/// program.
class ErrorScope {
  public:
    ErrorScope() noexcept { ERR_set_mark(); }
    ~ErrorScope() { ERR_pop_to_mark(); }
    ErrorScope(const ErrorScope &) = delete;
    ErrorScope &operator=(const ErrorScope &) = delete;
};

/// An algorithm of libcrypto, fetched on first use. It lives until the process ends, where libcrypto is a
/// library of its own: a destructor could run after libcrypto's.
template <typename Method, Method *(*fetch)(OSSL_LIB_CTX *, const char *, const char *),
          void (*free)(Method *)>
struct Fetched {
    u32 id;  ///< ours
    const char *name;
    std::atomic<Method *> method{};

    /// Null when it is not available.
    Method *get() noexcept {
        OSSL_LIB_CTX *const context = backend();
        if (context == nullptr) return nullptr;
        Method *ready = method.load(std::memory_order_acquire);
        if (ready != nullptr) return ready;
        const ErrorScope errors;
        Method *made = fetch(context, name, nullptr);
        if (made == nullptr) {
            load_legacy(context);
            made = fetch(context, name, nullptr);
        }
        // Another thread may have been faster; then we keep its work.
        if (method.compare_exchange_strong(ready, made, std::memory_order_acq_rel)) return made;
        free(made);
        return ready;
    }
    void release() noexcept { free(method.exchange(nullptr)); }
};
using FetchedDigest = Fetched<EVP_MD, EVP_MD_fetch, EVP_MD_free>;
using FetchedCipher = Fetched<EVP_CIPHER, EVP_CIPHER_fetch, EVP_CIPHER_free>;

/// The algorithm of an identifier; null when it is unknown or not available.
template <typename Entry, std::size_t N>
auto find_fetched(Entry (&entries)[N], u32 id) noexcept -> decltype(entries[0].get()) {
    for (Entry &entry : entries) {
        if (entry.id == id) return entry.get();
    }
    return nullptr;
}

struct FreeKey {
    void operator()(EVP_PKEY *key) const noexcept { EVP_PKEY_free(key); }
    void operator()(EVP_PKEY_CTX *context) const noexcept { EVP_PKEY_CTX_free(context); }
};
using Key = std::unique_ptr<EVP_PKEY, FreeKey>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, FreeKey>;

struct FreeCipherContext {
    void operator()(EVP_CIPHER_CTX *context) const noexcept { EVP_CIPHER_CTX_free(context); }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, FreeCipherContext>;

}  // namespace tlx
