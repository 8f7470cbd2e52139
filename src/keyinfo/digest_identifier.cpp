#include "keyinfo/digest_identifier.hpp"

#include <tlxcrypto/digest.h>

#include <algorithm>

#include "der/oid_text.hpp"
#include "keyinfo/key_curve.hpp"

namespace tlx {
namespace {

constexpr bool kCurrent = true;
constexpr DigestIdentifier kDigests[] = {
    {"\x2B\x0E\x03\x02\x1A", TLX_DIGEST_SHA1},  // 1.3.14.3.2.26
    // 2.16.840.1.101.3.4.2
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x01", TLX_DIGEST_SHA256, kCurrent, "sha256"},
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x02", TLX_DIGEST_SHA384, kCurrent, "sha384"},
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x03", TLX_DIGEST_SHA512, kCurrent, "sha512"},
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x04", TLX_DIGEST_SHA224, kCurrent, "sha224"},
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x05", TLX_DIGEST_SHA512_224},
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x06", TLX_DIGEST_SHA512_256},
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x07", TLX_DIGEST_SHA3_224},
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x08", TLX_DIGEST_SHA3_256},
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x09", TLX_DIGEST_SHA3_384},
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x0A", TLX_DIGEST_SHA3_512},
    {"\x2A\x83\x1A\x8C\x9A\x44\x01\x02", TLX_DIGEST_HAS160, !kCurrent},  // 1.2.410.200004.1.2
    {"\x2A\x86\x48\x86\xF7\x0D\x02\x05", TLX_DIGEST_MD5, !kCurrent},     // 1.2.840.113549.2.5
    {"\x2A\x86\x48\x86\xF7\x0D\x02\x04", TLX_DIGEST_MD4, !kCurrent},
};

/// An identifier as a dotted text.
struct Dotted {
    explicit Dotted(const DigestIdentifier &known) noexcept {
        static_cast<void>(oid_to_text(octets_of_oid(known.oid), text, length));
    }
    char text[kMaxDottedText + 1] = {};
    u32 length = 0;
};

template <typename Is>
u32 find(Is is) noexcept {
    const auto *const found = std::ranges::find_if(kDigests, is);
    return found == std::end(kDigests) ? 0 : found->digest_id;
}

}  // namespace

std::span<const DigestIdentifier> digest_identifiers() noexcept {
    return kDigests;
}

u32 digest_of(std::string_view dotted) noexcept {
    return find([&](const DigestIdentifier &known) {
        const Dotted own(known);
        return std::string_view(own.text, own.length) == dotted;
    });
}

u32 digest_of(const X509_ALGO_IDENTIFIER *algorithm) noexcept {
    return digest_of(text_of(get_X509_ALGO_IDENTIFIER_OID(algorithm)));
}

u32 digest_of_name(std::string_view name) noexcept {
    return find([&](const DigestIdentifier &known) { return !name.empty() && known.name == name; });
}

bool is_known_digest(u32 digest_id) noexcept {
    return std::ranges::find(kDigests, digest_id, &DigestIdentifier::digest_id) != std::end(kDigests);
}

}  // namespace tlx
