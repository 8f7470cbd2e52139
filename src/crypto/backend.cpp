#include "crypto/backend.hpp"

#include <openssl/crypto.h>
#include <openssl/provider.h>
#include <tlxcrypto/digest.h>

namespace tlx {
namespace {

constinit std::atomic<OSSL_LIB_CTX *> g_context{};
constinit std::atomic<OSSL_PROVIDER *> g_default{};
constinit std::atomic<OSSL_PROVIDER *> g_legacy{};
constinit std::atomic<bool> g_ended{};

constinit FetchedDigest g_digests[] = {
    {TLX_DIGEST_SHA1, "SHA1"},
    {TLX_DIGEST_SHA224, "SHA2-224"},
    {TLX_DIGEST_SHA256, "SHA2-256"},
    {TLX_DIGEST_SHA384, "SHA2-384"},
    {TLX_DIGEST_SHA512, "SHA2-512"},
    {TLX_DIGEST_SHA512_224, "SHA2-512/224"},
    {TLX_DIGEST_SHA512_256, "SHA2-512/256"},
    {TLX_DIGEST_SHA3_224, "SHA3-224"},
    {TLX_DIGEST_SHA3_256, "SHA3-256"},
    {TLX_DIGEST_SHA3_384, "SHA3-384"},
    {TLX_DIGEST_SHA3_512, "SHA3-512"},
    {TLX_DIGEST_SHAKE256, "SHAKE-256"},
    {TLX_DIGEST_MD5, "MD5"},
    {TLX_DIGEST_MD4, "MD4"},
    {TLX_DIGEST_MDC2, "MDC2"},
};

void end() noexcept {
    g_ended.store(true, std::memory_order_relaxed);
}

OSSL_LIB_CTX *make_context() noexcept {
    const ErrorScope errors;
    OSSL_LIB_CTX *made = OSSL_LIB_CTX_new();
    OSSL_PROVIDER *provider = made == nullptr ? nullptr : OSSL_PROVIDER_load(made, "default");
    OSSL_LIB_CTX *ready = nullptr;
    // libcrypto begins its cleaning up with what was registered here.
    const bool complete = provider != nullptr && OPENSSL_atexit(end) == 1;
    if (complete && g_context.compare_exchange_strong(ready, made, std::memory_order_acq_rel)) {
        g_default.store(provider);
        return made;
    }
    if (provider != nullptr) OSSL_PROVIDER_unload(provider);
    OSSL_LIB_CTX_free(made);
    return ready;
}

}  // namespace

OSSL_LIB_CTX *backend() noexcept {
    if (g_ended.load(std::memory_order_relaxed)) return nullptr;
    OSSL_LIB_CTX *const ready = g_context.load(std::memory_order_acquire);
    return ready != nullptr ? ready : make_context();
}

void load_legacy(OSSL_LIB_CTX *context) noexcept {
    if (g_legacy.load() != nullptr) return;
    OSSL_PROVIDER *const loaded = OSSL_PROVIDER_load(context, "legacy");
    OSSL_PROVIDER *before = nullptr;
    if (loaded != nullptr && !g_legacy.compare_exchange_strong(before, loaded)) OSSL_PROVIDER_unload(loaded);
}

const EVP_MD *backend_digest(u32 digest_id) noexcept {
    return digest_id == TLX_DIGEST_SHAKE256 ? nullptr : backend_digest_or_xof(digest_id);
}

const EVP_MD *backend_digest_or_xof(u32 digest_id) noexcept {
    return find_fetched(g_digests, digest_id);
}

#ifdef _WIN32
void release_backend() noexcept {
    for (FetchedDigest &digest : g_digests)
        digest.release();
    for (std::atomic<OSSL_PROVIDER *> *provider : {&g_legacy, &g_default}) {
        if (provider->load() != nullptr) OSSL_PROVIDER_unload(provider->exchange(nullptr));
    }
    OSSL_LIB_CTX_free(g_context.exchange(nullptr));
}
#endif

}  // namespace tlx
