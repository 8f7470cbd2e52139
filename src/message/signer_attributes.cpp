#include "message/signer_attributes.hpp"

#include <tlxcrypto/digest.h>
#include <tlxpki/time.h>

#include <algorithm>

#include "der/list_items.hpp"
#include "der/received_octets.hpp"
#include "message/signer_scheme.hpp"

namespace tlx {
namespace {

/// How many attributes of a type there are, and the first of them.
u32 find_attribute(const X509_ATTRIBUTES *attributes, std::string_view dotted,
                   const X509_ATTRIBUTE *&first) noexcept {
    u32 count = 0;
    for (i32 at = -1; (at = index_by_type(attributes, &X509_ATTRIBUTE::type, dotted, at)) >= 0; ++count) {
        if (count == 0) first = get_X509_ATTRIBUTES_child(attributes, at);
    }
    return count;
}

/// Calls check(record) with the one value of the one attribute of a type. True when there is no such
/// attribute; false when there are several, or a value that is no such record.
template <typename Record, typename Check>
bool absent_or(const X509_ATTRIBUTES *attributes, std::string_view dotted, Check check) noexcept {
    const X509_ATTRIBUTE *attribute = nullptr;
    const u32 count = find_attribute(attributes, dotted, attribute);
    if (count == 0) return true;
    if (count > 1 || get_X509_ATTRIBUTE_count(attribute) != 1) return false;
    Element value;
    if ((get_X509_ATTRIBUTE_data_type(attribute, 0) & kConstructed) == 0) return false;
    if (!view_node(static_cast<const ASN1_UNIT *>(get_X509_ATTRIBUTE_data(attribute, 0)), value))
        return false;
    Record *made = nullptr;
    const u32 status = Codec<Record>::decode(value, &made);
    const Owned<Record> record(made);
    return status == 0 && record != nullptr && check(*record);
}

bool has_digest(const X509_CERT &cert, u32 digest_id, const OCTET_STRING *expected) noexcept {
    RecordOctets octets;
    u8 digest[TLX_DIGEST_MAX_LENGTH];
    u32 length = 0;
    if (!octets.read(cert)) return false;
    const Bytes whole = octets.bytes();
    return Digest(digest_id, whole.data(), size_of(whole), digest, &length) == 0 &&
           std::ranges::equal(Bytes(digest, length), octets_of(expected));
}

/// RFC 5035, section 5.4.1.1: without a name only the digest counts.
bool is_of(const X509_CERT &cert, const CMS_ISSUER_SERIAL *serial) noexcept {
    if (serial == nullptr) return true;
    const auto *name = static_cast<const GENERAL_NAME *>(get_STACK_value(serial->issuer, 0));
    return get_STACK_count(serial->issuer) == 1 && name->choice == TLX_GENERAL_NAME_DIRECTORY_NAME &&
           cmp_X509_NAME(get_X509_issuer(&cert), name->value.directoryName) == 0 &&
           cmp_BIGINT(get_X509_serial(&cert), serial->serialNumber) == 0;
}

bool names(const CMS_SIGNING_CERTIFICATE &attribute, const X509_CERT &cert) noexcept {
    const auto *first = static_cast<const CMS_ESS_CERT_ID *>(get_STACK_value(attribute.certs, 0));
    return first != nullptr && has_digest(cert, TLX_DIGEST_SHA1, first->certHash) &&
           is_of(cert, first->issuerSerial);
}

bool names(const CMS_SIGNING_CERTIFICATE_V2 &attribute, const X509_CERT &cert) noexcept {
    const auto *first = static_cast<const CMS_ESS_CERT_ID_V2 *>(get_STACK_value(attribute.certs, 0));
    if (first == nullptr) return false;
    const X509_ALGO_IDENTIFIER *hash = first->hashAlgorithm;
    u32 digest_id = TLX_DIGEST_SHA256;
    if (hash != nullptr && !find_digest_id(hash, digest_id)) return false;
    return has_digest(cert, digest_id, first->certHash) && is_of(cert, first->issuerSerial);
}

/// Reads the parameters of an algorithm. False when there are none; NULL counts as none.
bool read_parameters(const X509_ALGO_IDENTIFIER *algorithm, Element &parameters) noexcept {
    return view_node(get_X509_ALGO_IDENTIFIER_parameters(algorithm), parameters) &&
           parameters.tag != TLX_TAG_NULL;
}

bool has_same_parameters(const X509_ALGO_IDENTIFIER *a, const X509_ALGO_IDENTIFIER *b) noexcept {
    Element one;
    Element other;
    const bool has_some = read_parameters(a, one);
    if (read_parameters(b, other) != has_some) return false;
    return !has_some || (one.tag == other.tag && std::ranges::equal(one.contents, other.contents));
}

bool is_same(const X509_ALGO_IDENTIFIER *a, const X509_ALGO_IDENTIFIER *b) noexcept {
    return text_of(get_X509_ALGO_IDENTIFIER_OID(a)) == text_of(get_X509_ALGO_IDENTIFIER_OID(b)) &&
           has_same_parameters(a, b);
}

}  // namespace

const ASN1_STRING *only_string(const X509_ATTRIBUTES *attributes, std::string_view dotted) noexcept {
    const X509_ATTRIBUTE *attribute = nullptr;
    if (find_attribute(attributes, dotted, attribute) != 1) return nullptr;
    if (get_X509_ATTRIBUTE_count(attribute) != 1) return nullptr;
    if ((get_X509_ATTRIBUTE_data_type(attribute, 0) & kConstructed) != 0) return nullptr;
    return static_cast<const ASN1_STRING *>(get_X509_ATTRIBUTE_data(attribute, 0));
}

ASN1_TIME *signing_time_of(const X509_ATTRIBUTES *attributes) noexcept {
    const ASN1_STRING *value = only_string(attributes, attribute_id::kSigningTime);
    if (value == nullptr) return nullptr;
    if (value->type == TLX_TAG_UTC_TIME) return utcTimeToASN1_TIME(value);
    return value->type == TLX_TAG_GENERALIZED_TIME ? generalizedTimeToASN1_TIME(value) : nullptr;
}

bool names_certificate(const X509_ATTRIBUTES *attributes, const X509_CERT &cert) noexcept {
    const auto named = [&](const auto &attribute) { return names(attribute, cert); };
    return absent_or<CMS_SIGNING_CERTIFICATE>(attributes, attribute_id::kSigningCertificate, named) &&
           absent_or<CMS_SIGNING_CERTIFICATE_V2>(attributes, attribute_id::kSigningCertificateV2, named);
}

bool has_signing_certificate(const X509_ATTRIBUTES *attributes) noexcept {
    const auto has = [&](std::string_view dotted) {
        return index_by_type(attributes, &X509_ATTRIBUTE::type, dotted, -1) >= 0;
    };
    return has(attribute_id::kSigningCertificate) || has(attribute_id::kSigningCertificateV2);
}

bool protects_algorithms(const SignerView &signer) noexcept {
    return absent_or<CMS_ALGORITHM_PROTECTION>(
        signer.signed_attributes, attribute_id::kAlgorithmProtection,
        [&](const CMS_ALGORITHM_PROTECTION &protection) {
            return is_same(protection.digestAlgorithm, signer.digest_algorithm) &&
                   protection.signatureAlgorithm != nullptr &&
                   is_same(protection.signatureAlgorithm, signer.signature_algorithm);
        });
}

u32 count_countersignatures(const X509_ATTRIBUTES *attributes) noexcept {
    u32 count = 0;
    for (i32 at = -1;
         (at = index_by_type(attributes, &X509_ATTRIBUTE::type, attribute_id::kCountersignature, at)) >= 0;) {
        count += get_X509_ATTRIBUTE_count(get_X509_ATTRIBUTES_child(attributes, at));
    }
    return count;
}

}  // namespace tlx
