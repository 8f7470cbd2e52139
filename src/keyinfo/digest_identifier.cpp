#include "keyinfo/digest_identifier.hpp"

#include <tlxcrypto/digest.h>
#include <tlxpki/objects.h>

#include <algorithm>

namespace tlx {
namespace {

struct KnownDigest {
    const char *dotted;
    u32 digest_id;
};
constexpr KnownDigest kDigests[] = {
    {"1.3.14.3.2.26", TLX_DIGEST_SHA1},
    {"2.16.840.1.101.3.4.2.1", TLX_DIGEST_SHA256},
    {"2.16.840.1.101.3.4.2.2", TLX_DIGEST_SHA384},
    {"2.16.840.1.101.3.4.2.3", TLX_DIGEST_SHA512},
    {"2.16.840.1.101.3.4.2.4", TLX_DIGEST_SHA224},
    {"2.16.840.1.101.3.4.2.5", TLX_DIGEST_SHA512_224},
    {"2.16.840.1.101.3.4.2.6", TLX_DIGEST_SHA512_256},
    {"2.16.840.1.101.3.4.2.7", TLX_DIGEST_SHA3_224},
    {"2.16.840.1.101.3.4.2.8", TLX_DIGEST_SHA3_256},
    {"2.16.840.1.101.3.4.2.9", TLX_DIGEST_SHA3_384},
    {"2.16.840.1.101.3.4.2.10", TLX_DIGEST_SHA3_512},
    {"1.2.410.200004.1.2", TLX_DIGEST_HAS160},
    {"1.2.840.113549.2.5", TLX_DIGEST_MD5},
    {"1.2.840.113549.2.4", TLX_DIGEST_MD4},
};

}  // namespace

u32 digest_of(std::string_view dotted) noexcept {
    const auto *const found = std::ranges::find(kDigests, dotted, &KnownDigest::dotted);
    return found == std::end(kDigests) ? 0 : found->digest_id;
}

u32 digest_of(const X509_ALGO_IDENTIFIER *algorithm) noexcept {
    return digest_of(text_of(get_X509_ALGO_IDENTIFIER_OID(algorithm)));
}

bool is_known_digest(u32 digest_id) noexcept {
    return std::ranges::find(kDigests, digest_id, &KnownDigest::digest_id) != std::end(kDigests);
}

Owned<X509_ALGO_IDENTIFIER> digest_algorithm(u32 digest_id) noexcept {
    const auto *const found = std::ranges::find(kDigests, digest_id, &KnownDigest::digest_id);
    return found == std::end(kDigests) ? nullptr : algorithm_with_null(found->dotted);
}

}  // namespace tlx
