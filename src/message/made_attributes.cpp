#include "message/made_attributes.hpp"

#include <tlxcrypto/digest.h>

#include "der/list_items.hpp"
#include "der/received_octets.hpp"
#include "message/attribute_order.hpp"
#include "message/signer_attributes.hpp"

namespace tlx {
namespace {

using OwnedTime = std::unique_ptr<ASN1_TIME, FreeWith<free_ASN1_TIME>>;
using OwnedAttribute = std::unique_ptr<X509_ATTRIBUTE, FreeWith<free_X509_ATTRIBUTE>>;

// Attribute ::= SEQUENCE { attrType OBJECT IDENTIFIER, attrValues SET OF AttributeValue }
template <typename WriteValue>
void write_attribute(Encoder &out, std::string_view type, WriteValue write_value) noexcept {
    const auto attribute = out.sequence();
    out.oid(type);
    const auto values = out.set();
    write_value();
}

// SigningCertificateV2 ::= SEQUENCE { certs SEQUENCE OF ESSCertIDv2, ... } (RFC 5035, section 5.4.1)
// ESSCertIDv2 ::= SEQUENCE { hashAlgorithm ... DEFAULT {algorithm id-sha256}, certHash OCTET STRING, ... }
void write_signing_certificate(Encoder &out, const X509_CERT &cert) noexcept {
    RecordOctets octets;
    u8 digest[TLX_DIGEST_MAX_LENGTH];
    u32 length = 0;
    if (!octets.read(cert)) return out.fail();
    const Bytes whole = octets.bytes();
    if (Digest(TLX_DIGEST_SHA256, whole.data(), size_of(whole), digest, &length) != 0) return out.fail();
    const auto attribute = out.sequence();
    const auto certs = out.sequence();
    const auto first = out.sequence();
    out.primitive(TLX_TAG_OCTET_STRING, {digest, length});
}

void write_protection(Encoder &out, const CMS_SIGNER_INFO &signer) noexcept {
    CMS_ALGORITHM_PROTECTION protection = {};
    protection.digestAlgorithm = signer.digestAlgorithm;
    protection.signatureAlgorithm = signer.signatureAlgorithm;
    Codec<CMS_ALGORITHM_PROTECTION>::encode(out, &protection);
}

void write_wanted(Encoder &out, const SignedAttributes &wanted) noexcept {
    const auto attributes = out.set();
    write_attribute(out, attribute_id::kContentType, [&] { out.oid(wanted.content_type); });
    write_attribute(out, attribute_id::kMessageDigest,
                    [&] { out.primitive(TLX_TAG_OCTET_STRING, wanted.digest); });
    write_attribute(out, attribute_id::kSigningTime, [&] { out.any_string(wanted.time); });
    if (wanted.certificate != nullptr) {
        write_attribute(out, attribute_id::kSigningCertificateV2,
                        [&] { write_signing_certificate(out, *wanted.certificate); });
    }
    if (wanted.algorithms != nullptr) {
        write_attribute(out, attribute_id::kAlgorithmProtection,
                        [&] { write_protection(out, *wanted.algorithms); });
    }
}

OwnedAttributes read_wanted(const Encoder &written) noexcept {
    Element element;
    X509_ATTRIBUTES *made = nullptr;
    if (!written.ok() || !read_element(written.bytes(), element)) return nullptr;
    static_cast<void>(Attributes::decode(element, &made));
    return OwnedAttributes(made);
}

/// Appends copies of the attributes whose types are not there yet. False when memory runs out.
bool append_others(X509_ATTRIBUTES *attributes, const X509_ATTRIBUTES *others) noexcept {
    const u32 own = get_STACK_count(attributes);
    for (u32 i = 0; i < get_STACK_count(others); ++i) {
        const auto *other = static_cast<const X509_ATTRIBUTE *>(others->values[i]);
        const i32 same = index_by_type(attributes, &X509_ATTRIBUTE::type,
                                       other != nullptr ? text_of(other->type) : "", -1);
        if (same >= 0 && static_cast<u32>(same) < own) continue;
        OwnedAttribute copy(dup_X509_ATTRIBUTE(other));
        if (!copy || push_STACK_value(attributes, copy.get()) != 0) return false;
        static_cast<void>(copy.release());
    }
    return true;
}

}  // namespace

Owned<ASN1_STRING> signing_time(const ASN1_TIME *time) noexcept {
    constexpr u32 kWithSeconds = 2;
    const OwnedTime now(time == nullptr ? getCurrentGMTime() : nullptr);
    if (time == nullptr) time = now.get();
    if (time == nullptr) return nullptr;
    constexpr i32 kFirstYear = 50;  // since 1900
    constexpr i32 kLastYear = 149;
    const bool short_year = time->year >= kFirstYear && time->year <= kLastYear;
    return Owned<ASN1_STRING>(short_year ? asn1TimeToUTC_TIME(time, kWithSeconds)
                                         : asn1TimeToGENERALIZED_TIME(time, kWithSeconds));
}

OwnedAttributes make_signed_attributes(const SignedAttributes &wanted,
                                       const X509_ATTRIBUTES *others) noexcept {
    Encoder written;
    write_wanted(written, wanted);
    OwnedAttributes made = read_wanted(written);
    const bool done = made && append_others(made.get(), others) && sort_attributes(made.get());
    return done ? std::move(made) : nullptr;
}

}  // namespace tlx
