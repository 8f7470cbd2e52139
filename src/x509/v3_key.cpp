// Extensions about keys.
#include <tlxcrypto/digest.h>
#include <tlxpki/objects.h>
#include <tlxpki/x509v3.h>

#include <algorithm>
#include <bit>

#include "asn1/oid_lookup.hpp"
#include "x509/certificate_records.hpp"
#include "x509/extension_records.hpp"

using namespace tlx;

namespace {

// AuthorityKeyIdentifier ::= SEQUENCE {
//     keyIdentifier [0] OCTET STRING OPTIONAL, authorityCertIssuer [1] GeneralNames OPTIONAL,
//     authorityCertSerialNumber [2] INTEGER OPTIONAL }
// A child goes by its tag number alone, in any order. The status of the names goes up unchanged when they are
// read; a primitive element is no names.
struct IssuerNames : GeneralNames {
    static u32 decode(const Element &element, STACK **out) noexcept {
        if (!element.constructed()) return kFieldFailed;
        return decode_list<GeneralNames>(element, out, codes::GENERAL_NAMES.decode);
    }
};
constexpr auto kAuthorityKeyId = record<AUTHORITY_KEYID>(
    at_least(1), by_number(implicit<Octets>(0, &AUTHORITY_KEYID::keyIdentifier),
                           implicit<IssuerNames>(1, &AUTHORITY_KEYID::authorityCertIssuer),
                           implicit<Integer>(2, &AUTHORITY_KEYID::authorityCertSerialNumber)));

// SubjectKeyIdentifier ::= OCTET STRING
// KeyUsage ::= BIT STRING { digitalSignature (0), ..., decipherOnly (8) }

// ExtKeyUsageSyntax ::= SEQUENCE SIZE (1..MAX) OF KeyPurposeId
using ExtendedKeyUsage = OneOrMore<Oid>;

/// What identifies the key of a CA: its own statement, or else what is usual. Null on failure.
OCTET_STRING *key_identifier_of(const X509_TBS_CERT &issuer) noexcept {
    const i32 index =
        get_X509_EXTENSION_index_by_OID_index(issuer.extensions, oid::kSubjectKeyIdentifier, -1);
    if (index < 0) return create_SUBJECT_KEYID(issuer.subjectPublicKeyInfo);
    const Bytes value = octets_of(get_X509_EXTENSION(issuer.extensions, index)->data);
    Element element;
    if (!read_element(value, element) || element.whole.size() != value.size() || element.tag != Octets::tag) {
        return nullptr;
    }
    OCTET_STRING *identifier = nullptr;
    return Octets::decode(element, &identifier) == 0 ? identifier : nullptr;
}

/// A list with the one name as its directoryName; null on failure.
GENERAL_NAMES *general_names_of(const X509_NAME *name) noexcept {
    const Owned<GENERAL_NAME> general(create_GENERAL_NAME_directoryName(name));
    if (!general) return nullptr;
    GENERAL_NAMES *names = new_GENERAL_NAMES();
    if (add_GENERAL_NAMES_child(names, general.get(), -1) == 0) return names;
    free_GENERAL_NAMES(names);
    return nullptr;
}

}  // namespace

TLX_DEFINE_RECORD(AUTHORITY_KEYID, kAuthorityKeyId)
TLX_DEFINE_STRING_RECORD(SUBJECT_KEYID, Octets)
TLX_DEFINE_STRING_RECORD(KEY_USAGE, NamedBits)
TLX_DEFINE_LIST(OBJECT_IDENTIFIERS, OBJECT_IDENTIFIER, ObjectIdentifiers)
TLX_DEFINE_LIST(EXTENDED_KEY_USAGE, OBJECT_IDENTIFIER, ExtendedKeyUsage)

AUTHORITY_KEYID *create_AUTHORITY_KEYID(const X509_CERT *issuer, uint32_t parts) {
    constexpr u32 kAll = TLX_KEYID_KEY | TLX_KEYID_ISSUER_AND_SERIAL;
    if (issuer == nullptr || issuer->tbsCertificate == nullptr || parts == 0 || parts > kAll) return nullptr;
    const X509_TBS_CERT &tbs = *issuer->tbsCertificate;
    Owned<AUTHORITY_KEYID> record(new_AUTHORITY_KEYID());
    if (!record) return nullptr;
    if ((parts & TLX_KEYID_KEY) != 0) {
        record->keyIdentifier = key_identifier_of(tbs);
        if (record->keyIdentifier == nullptr) return nullptr;
    }
    if ((parts & TLX_KEYID_ISSUER_AND_SERIAL) != 0) {
        record->authorityCertIssuer = general_names_of(tbs.issuer);
        record->authorityCertSerialNumber = dup_BIGINT(tbs.serialNumber);
        if (record->authorityCertIssuer == nullptr || record->authorityCertSerialNumber == nullptr) {
            return nullptr;
        }
    }
    return record.release();
}

SUBJECT_KEYID *create_SUBJECT_KEYID(const X509_PUBKEY *key) {
    const Bytes octets = octets_of(key != nullptr ? key->subjectPublicKey : nullptr);
    u8 digest[TLX_DIGEST_MAX_LENGTH];
    u32 len = 0;
    if (octets.empty() ||
        Digest(TLX_DIGEST_SHA1, octets.data(), static_cast<u32>(octets.size()), digest, &len) != 0) {
        return nullptr;
    }
    return new_string(TLX_TAG_OCTET_STRING, {digest, len});
}

uint32_t get_BIT_STRING_named_bits(const BIT_STRING *bits) {
    if (bits == nullptr) return 0;
    const BIT_STRING trimmed = without_trailing_zero_bits(*bits);
    const Bytes octets = octets_of(&trimmed);
    const std::size_t count = octets.size() * 8 - static_cast<std::size_t>(trimmed.extra);
    u32 mask = 0;
    for (u32 number = 0; number < std::min<std::size_t>(count, 32); ++number) {
        if (((octets[number / 8] << (number % 8)) & 0x80) != 0) mask |= 1U << number;
    }
    return mask;
}

BIT_STRING *named_bits_to_BIT_STRING(uint32_t bits) {
    const auto count = static_cast<u32>(std::bit_width(bits));
    u8 octets[4] = {};
    for (u32 number = 0; number < count; ++number) {
        if (((bits >> number) & 1U) != 0) octets[number / 8] |= static_cast<u8>(0x80U >> (number % 8));
    }
    const u32 size = (count + 7) / 8;
    BIT_STRING *string = new_string(TLX_TAG_BIT_STRING, {octets, size});
    if (string != nullptr) string->extra = static_cast<i32>(size * 8 - count);
    return string;
}

uint32_t add_OBJECT_IDENTIFIERS(OBJECT_IDENTIFIERS *list, const OBJECT_IDENTIFIER *oid) {
    return add_OBJECT_IDENTIFIERS_child(list, oid, -1);
}

int32_t get_OBJECT_IDENTIFIERS_index_by_OBJECT_IDENTIFIER(const OBJECT_IDENTIFIERS *list,
                                                          const OBJECT_IDENTIFIER *wanted) {
    if (wanted == nullptr) return -1;
    for (u32 i = 0; i < get_STACK_count(list); ++i) {
        const auto *each = static_cast<const OBJECT_IDENTIFIER *>(get_STACK_value(list, i));
        if (each != nullptr && text_of(each) == text_of(wanted)) return static_cast<i32>(i);
    }
    return -1;
}
