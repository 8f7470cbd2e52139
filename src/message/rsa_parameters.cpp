#include "message/rsa_parameters.hpp"

#include <tlxpki/objects.h>

#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "der/oid_text.hpp"

namespace tlx {
namespace {

/// The digests of RSASSA-PSS and RSAES-OAEP (RFC 4055, section 2.1).
struct NamedDigest {
    u32 id;
    u32 row;
};
constexpr NamedDigest kDigests[] = {
    {TLX_DIGEST_SHA1, oid::kSha1},     {TLX_DIGEST_SHA224, oid::kSha224}, {TLX_DIGEST_SHA256, oid::kSha256},
    {TLX_DIGEST_SHA384, oid::kSha384}, {TLX_DIGEST_SHA512, oid::kSha512},
};

bool read_digest(const Element &element, u32 &digest_id) noexcept {
    AlgorithmElement digest;
    if (!digest.read(element) || digest.has_parameters()) return false;
    const auto *const known = std::ranges::find(kDigests, digest.row, &NamedDigest::row);
    if (known == std::end(kDigests)) return false;
    digest_id = known->id;
    return true;
}

bool read_mask_generation(const Element &element, u32 &digest_id) noexcept {
    AlgorithmElement function;
    return function.read(element) && function.row == oid::kMgf1 &&
           read_digest(function.parameters, digest_id);
}

void write_digest(Encoder &out, u32 digest_id) noexcept {
    const auto *const known = std::ranges::find(kDigests, digest_id, &NamedDigest::id);
    if (known == std::end(kDigests)) return out.fail();
    const auto algorithm = out.sequence();
    out.oid(OID_LIST(static_cast<i32>(known->row))->dotted);
    out.null();
}

}  // namespace

bool names_rsa_digest(u32 digest_id) noexcept {
    return std::ranges::find(kDigests, digest_id, &NamedDigest::id) != std::end(kDigests);
}

bool AlgorithmElement::read(const Element &element) noexcept {
    Cursor members(element);
    Element identifier;
    char text[kMaxDottedText + 1];
    u32 length = 0;
    if (element.tag != kSequence || !members.next(TLX_TAG_OBJECT_IDENTIFIER, identifier)) return false;
    if (!oid_to_text(identifier.contents, text, length)) return false;
    row = oid_index({text, length});
    return members.at_end() || (members.next(parameters) && members.at_end());
}

bool RsaDigests::read(Cursor &fields) noexcept {
    return read_field(fields, 0, read_digest, digest_id) &&
           read_field(fields, 1, read_mask_generation, mgf_digest_id);
}

void RsaDigests::write(Encoder &out) const noexcept {
    if (digest_id != TLX_DIGEST_SHA1) {
        const auto field = out.nest(context(0));
        write_digest(out, digest_id);
    }
    if (mgf_digest_id != TLX_DIGEST_SHA1) {
        const auto field = out.nest(context(1));
        const auto algorithm = out.sequence();
        out.oid(OID_LIST(oid::kMgf1)->dotted);
        write_digest(out, mgf_digest_id);
    }
}

}  // namespace tlx
