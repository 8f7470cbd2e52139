#include "status/ocsp_cert_id.hpp"

#include <tlxcrypto/digest.h>
#include <tlxpki/objects.h>
#include <tlxpki/ocsp.h>

#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"

namespace tlx {
namespace {

struct KnownDigest {
    u32 id;
    u32 row;
};
constexpr KnownDigest kDigests[] = {
    {TLX_DIGEST_SHA1, oid::kSha1},     {TLX_DIGEST_SHA256, oid::kSha256}, {TLX_DIGEST_SHA224, oid::kSha224},
    {TLX_DIGEST_SHA384, oid::kSha384}, {TLX_DIGEST_SHA512, oid::kSha512},
};

/// Issuer or subject in a certificate's octets: a record keeps less of some names than they say.
bool find_name(Bytes certificate, bool subject, Bytes &name) noexcept {
    Element element;
    Element tbs;
    if (!read_element(certificate, element) || !Cursor(element).next(TLX_TAG_SEQUENCE, tbs)) return false;
    Cursor members(tbs);
    Element member;
    // Version, which may be absent; serial number, signature, issuer, validity, subject.
    u32 place = !members.at_end() && members.peek_tag() == context(0) ? 0 : 1;
    const u32 last = subject ? 5 : 3;
    for (; place <= last; ++place) {
        if (!members.next(member)) return false;
    }
    name = member.whole;
    return true;
}

bool digest_octets(u32 digest_id, Bytes octets, u8 *digest, u32 &length) noexcept {
    return Digest(digest_id, octets.data(), static_cast<u32>(octets.size()), digest, &length) == 0;
}

}  // namespace

IssuerDigests::Result IssuerDigests::compute(u32 digest_id, const X509_CERT *named,
                                             X509_NAME *X509_TBS_CERT::*name,
                                             const X509_CERT *issuer) noexcept {
    const X509_PUBKEY *key = get_X509_SPKI(issuer);
    const X509_TBS_CERT *tbs = named->tbsCertificate;
    if (tbs == nullptr || tbs->*name == nullptr || key == nullptr) return Result::missing_member;
    if (get_DigestLength(digest_id) == 0) return Result::unknown_digest;
    const OwnedOctets<u8> received(join_received(named->received));
    Encoder encoded;
    Bytes octets;
    if (named->received != nullptr) {
        if (!received) return Result::no_memory;
        const bool subject = name == &X509_TBS_CERT::subject;
        if (!find_name({received.get(), received_size(named->received)}, subject, octets)) {
            return Result::missing_member;
        }
    } else {
        Name::encode(encoded, tbs->*name, kSequence);
        if (!encoded.ok()) return encoded.out_of_memory() ? Result::no_memory : Result::missing_member;
        octets = encoded.bytes();
    }
    const bool made = digest_octets(digest_id, octets, name_, length_) &&
                      digest_octets(digest_id, octets_of(key->subjectPublicKey), key_, length_);
    return made ? Result::good : Result::no_memory;
}

bool IssuerDigests::are_in(const OCSP_CERT_ID &id) const noexcept {
    return std::ranges::equal(octets_of(id.issuerNameHash), name()) &&
           std::ranges::equal(octets_of(id.issuerKeyHash), key());
}

u32 digest_of(const OCSP_CERT_ID &id) noexcept {
    const u32 row = oid_index(text_of(get_X509_ALGO_IDENTIFIER_OID(id.hashAlgorithm)));
    const auto *known = std::ranges::find(kDigests, row, &KnownDigest::row);
    return known == std::end(kDigests) ? 0 : known->id;
}

}  // namespace tlx

using namespace tlx;

uint32_t generate_OCSP_CERT_ID(OCSP_CERT_ID **id, const X509_CERT *cert, const X509_CERT *issuer,
                               uint32_t digestId) {
    if (id == nullptr || cert == nullptr || issuer == nullptr) return 0x50190049;
    const auto *known = std::ranges::find(kDigests, digestId, &KnownDigest::id);
    if (known == std::end(kDigests)) return 0x5019002B;
    const BIGINT *serial = get_X509_serial(cert);
    if (serial == nullptr) return 0x5019003B;
    IssuerDigests digests;
    const auto result = digests.compute(digestId, cert, &X509_TBS_CERT::issuer, issuer);
    if (result == IssuerDigests::Result::missing_member) return 0x5019003B;
    Owned<OCSP_CERT_ID> made(new_OCSP_CERT_ID());
    if (result != IssuerDigests::Result::good || !made) return 0x5019003C;
    made->hashAlgorithm = algorithm_with_null(known->row).release();
    made->issuerNameHash = new_string(TLX_TAG_OCTET_STRING, digests.name());
    made->issuerKeyHash = new_string(TLX_TAG_OCTET_STRING, digests.key());
    made->serialNumber = dup_BIGINT(serial);
    if (made->hashAlgorithm == nullptr || made->issuerNameHash == nullptr || made->issuerKeyHash == nullptr ||
        made->serialNumber == nullptr) {
        return 0x5019003C;
    }
    deliver(std::move(made), id);
    return 0;
}

uint32_t match_OCSP_CERT_ID(const OCSP_CERT_ID *id, const X509_CERT *issuer) {
    if (id == nullptr || issuer == nullptr) return 0x501D0049;
    const u32 digest_id = digest_of(*id);
    if (digest_id == 0) return 0x501D0048;
    IssuerDigests digests;
    switch (digests.compute(digest_id, issuer, &X509_TBS_CERT::subject, issuer)) {
        case IssuerDigests::Result::good:
            return digests.are_in(*id) ? 0 : 0x501D0106;
        case IssuerDigests::Result::no_memory:
            return 0x501D003C;
        default:
            return 0x501D0106;
    }
}
