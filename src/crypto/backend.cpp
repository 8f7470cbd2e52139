#include "crypto/backend.hpp"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/provider.h>
#include <tlxcrypto/digest.h>

namespace tlx {
namespace {

struct Algorithm {
    u32 id;
    const char *name;
};

constexpr Algorithm kDigests[] = {
    {TLX_DIGEST_SHA1, "SHA1"},       {TLX_DIGEST_SHA224, "SHA2-224"}, {TLX_DIGEST_SHA256, "SHA2-256"},
    {TLX_DIGEST_SHA384, "SHA2-384"}, {TLX_DIGEST_SHA512, "SHA2-512"}, {TLX_DIGEST_MD5, "MD5"},
    {TLX_DIGEST_MDC2, "MDC2"},
};

struct Backend {
    OSSL_LIB_CTX *context;
    OSSL_PROVIDER *providers[2];
    EVP_MD *digests[std::size(kDigests)];
    EVP_CIPHER *rc4;
};

// Made on first use. Lives until the process ends, where libcrypto is a library of its own: a destructor
// could run after libcrypto's.
constinit Backend g_backend = {};
constinit CRYPTO_ONCE g_once = CRYPTO_ONCE_STATIC_INIT;

// The legacy provider may be missing: what it alone offers is then not available.
void make_backend() noexcept {
    const ErrorScope errors;
    Backend made = {};
    made.context = OSSL_LIB_CTX_new();
    if (made.context == nullptr) return;
    made.providers[0] = OSSL_PROVIDER_load(made.context, "default");
    if (made.providers[0] == nullptr) {
        OSSL_LIB_CTX_free(made.context);
        return;
    }
    made.providers[1] = OSSL_PROVIDER_load(made.context, "legacy");
    for (std::size_t i = 0; i < std::size(kDigests); ++i) {
        made.digests[i] = EVP_MD_fetch(made.context, kDigests[i].name, nullptr);
    }
    made.rc4 = EVP_CIPHER_fetch(made.context, "RC4", nullptr);
    g_backend = made;
}

const Backend &the_backend() noexcept {
    static_cast<void>(CRYPTO_THREAD_run_once(&g_once, make_backend));
    return g_backend;
}

}  // namespace

OSSL_LIB_CTX *backend() noexcept {
    return the_backend().context;
}

const EVP_MD *backend_digest(u32 digest_id) noexcept {
    for (std::size_t i = 0; i < std::size(kDigests); ++i) {
        if (kDigests[i].id == digest_id) return the_backend().digests[i];
    }
    return nullptr;
}

const EVP_CIPHER *backend_rc4() noexcept {
    return the_backend().rc4;
}

#ifdef _WIN32
void release_backend() noexcept {
    for (EVP_MD *digest : g_backend.digests)
        EVP_MD_free(digest);
    EVP_CIPHER_free(g_backend.rc4);
    for (OSSL_PROVIDER *provider : g_backend.providers) {
        if (provider != nullptr) OSSL_PROVIDER_unload(provider);
    }
    OSSL_LIB_CTX_free(g_backend.context);
}
#endif

}  // namespace tlx
