// The algorithms of key encryption: rsaEncryption, and id-RSAES-OAEP with its parameters (RFC 4055, section
// 4).
#include "message/key_scheme.hpp"

#include <tlxpki/objects.h>

#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "der/oid_text.hpp"

using namespace tlx;

namespace {

/// The digests of OAEP (RFC 8017, appendix B.1).
struct OaepDigest {
    u32 id;
    u32 row;
};
constexpr OaepDigest kDigests[] = {
    {TLX_DIGEST_SHA1, oid::kSha1},     {TLX_DIGEST_SHA224, oid::kSha224}, {TLX_DIGEST_SHA256, oid::kSha256},
    {TLX_DIGEST_SHA384, oid::kSha384}, {TLX_DIGEST_SHA512, oid::kSha512},
};

/// An AlgorithmIdentifier where it lies.
struct Algorithm {
    u32 row = 0;         ///< 0 when the registry lacks it
    Element parameters;  ///< the tag is 0 when there are none

    [[nodiscard]] bool read(const Element &element) noexcept {
        Cursor members(element);
        Element identifier;
        char text[kMaxDottedText + 1];
        u32 length = 0;
        if (element.tag != kSequence || !members.next(TLX_TAG_OBJECT_IDENTIFIER, identifier)) return false;
        if (!oid_to_text(identifier.contents, text, length)) return false;
        row = oid_index({text, length});
        return members.at_end() || (members.next(parameters) && members.at_end());
    }
    [[nodiscard]] bool has_parameters() const noexcept {
        return parameters.tag != 0 && parameters.tag != TLX_TAG_NULL;
    }
};

bool read_digest(const Element &element, u32 &digest_id) noexcept {
    Algorithm digest;
    if (!digest.read(element) || digest.has_parameters()) return false;
    const auto *const known = std::ranges::find(kDigests, digest.row, &OaepDigest::row);
    if (known == std::end(kDigests)) return false;
    digest_id = known->id;
    return true;
}

bool read_mask_generation(const Element &element, u32 &digest_id) noexcept {
    Algorithm function;
    return function.read(element) && function.row == oid::kMgf1 &&
           read_digest(function.parameters, digest_id);
}

bool read_label(const Element &element, Bytes &label) noexcept {
    Algorithm source;
    if (!source.read(element) || source.row != oid::kPSpecified) return false;
    if (!source.has_parameters()) return true;
    label = source.parameters.contents;
    return source.parameters.tag == TLX_TAG_OCTET_STRING;
}

/// Hands the element inside the next member to read() when this carries the tag.
template <typename Value>
bool read_optional(Cursor &members, u8 tag, bool (*read)(const Element &, Value &), Value &value) noexcept {
    if (members.at_end() || members.peek_tag() != tag) return true;
    Element wrapper;
    Element inside;
    if (!members.next(wrapper)) return false;
    Cursor content(wrapper);
    return content.next(inside) && content.at_end() && read(inside, value);
}

// RSAES-OAEP-params ::= SEQUENCE {
//     hashFunc      [0] AlgorithmIdentifier DEFAULT sha1Identifier,
//     maskGenFunc   [1] AlgorithmIdentifier DEFAULT mgf1SHA1Identifier,
//     pSourceFunc   [2] AlgorithmIdentifier DEFAULT pSpecifiedEmptyIdentifier }
bool read_oaep(const ASN1_UNIT *parameters, KeyScheme &scheme) noexcept {
    Element element;
    if (!view_node(parameters, element) || element.tag != kSequence) return false;
    Cursor members(element);
    return read_optional(members, context(0), read_digest, scheme.digest_id) &&
           read_optional(members, context(1), read_mask_generation, scheme.mgf_digest_id) &&
           read_optional(members, context(2), read_label, scheme.label) && members.at_end();
}

void write_digest(Encoder &out, u32 digest_id) noexcept {
    const auto *const known = std::ranges::find(kDigests, digest_id, &OaepDigest::id);
    if (known == std::end(kDigests)) return out.fail();
    const auto algorithm = out.sequence();
    out.oid(OID_LIST(static_cast<i32>(known->row))->dotted);
    out.null();
}

/// What is the default is not written.
void write_oaep(Encoder &out, const KeyScheme &scheme) noexcept {
    const auto parameters = out.sequence();
    if (scheme.digest_id != TLX_DIGEST_SHA1) {
        const auto wrapper = out.nest(context(0));
        write_digest(out, scheme.digest_id);
    }
    if (scheme.mgf_digest_id != TLX_DIGEST_SHA1) {
        const auto wrapper = out.nest(context(1));
        const auto algorithm = out.sequence();
        out.oid(OID_LIST(oid::kMgf1)->dotted);
        write_digest(out, scheme.mgf_digest_id);
    }
    if (!scheme.label.empty()) {
        const auto wrapper = out.nest(context(2));
        const auto algorithm = out.sequence();
        out.oid(OID_LIST(oid::kPSpecified)->dotted);
        out.primitive(TLX_TAG_OCTET_STRING, scheme.label);
    }
}

}  // namespace

bool tlx::write_oaep_scheme(const KeyScheme &scheme, X509_ALGO_IDENTIFIER &algorithm) noexcept {
    Encoder parameters;
    write_oaep(parameters, scheme);
    algorithm.algorithm = index_to_OBJECT_IDENTIFIER(oid::kRsaesOaep);
    algorithm.parameters = parameters.to_node();
    return algorithm.algorithm != nullptr && algorithm.parameters != nullptr;
}

bool tlx::read_key_scheme(const X509_ALGO_IDENTIFIER *algorithm, KeyScheme &scheme) noexcept {
    if (algorithm == nullptr) return false;
    scheme = {};
    switch (oid_index(text_of(algorithm->algorithm))) {
        case oid::kRsaEncryption:
            return true;
        case oid::kRsaesOaep:
            scheme.mode = TLX_RSAES_MODE_OAEP;
            return read_oaep(algorithm->parameters, scheme);
        default:
            return false;
    }
}

u32 tlx::prepare_unit(RSA_UNIT *unit, const X509_ALGO_IDENTIFIER *algorithm, KeyScheme &scheme,
                      u32 direction) noexcept {
    if (!read_key_scheme(algorithm, scheme)) return kUnknownScheme;
    if (!is_oaep(scheme.mode)) return init_RSAES(unit, scheme.mode, direction, 0);
    return init_RSAES_OAEP(unit, direction, scheme.digest_id, scheme.mgf_digest_id, scheme.label.data(),
                           static_cast<u32>(scheme.label.size()));
}

u32 tlx::encrypt_key(P7_RECIPIENT_INFO &recipient, const RSA_UNIT *unit, Bytes key) noexcept {
    const OwnedOctets<u8> octets(static_cast<u8 *>(TLX_ALLOCATE(std::size_t{get_RSA_length(unit)} + 1)));
    if (!octets) return 0x4B20003A;
    u32 len = 0;
    const u32 status = encrypt_RSAES(unit, octets.get(), &len, key.data(), static_cast<u32>(key.size()));
    if (status != 0) return status;
    OCTET_STRING *encrypted = new_string(TLX_TAG_OCTET_STRING, {octets.get(), len});
    if (encrypted == nullptr) return 0x4B20003A;
    free_ASN1_STRING(recipient.encryptedKey);
    recipient.encryptedKey = encrypted;
    return 0;
}
