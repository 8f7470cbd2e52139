#include "crypto/backend.hpp"

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
    EVP_MD *digests[std::size(kDigests)];
};

// The legacy provider may be missing: what it alone offers is then not available.
Backend make_backend() noexcept {
    const ErrorScope errors;
    Backend made = {};
    made.context = OSSL_LIB_CTX_new();
    if (made.context == nullptr) return made;
    if (OSSL_PROVIDER_load(made.context, "default") == nullptr) {
        OSSL_LIB_CTX_free(made.context);
        return {};
    }
    OSSL_PROVIDER_load(made.context, "legacy");
    for (std::size_t i = 0; i < std::size(kDigests); ++i) {
        made.digests[i] = EVP_MD_fetch(made.context, kDigests[i].name, nullptr);
    }
    return made;
}

// Lives until the process ends: a destructor could run after libcrypto's own.
const Backend &the_backend() noexcept {
    static const Backend backend = make_backend();
    return backend;
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

}  // namespace tlx
