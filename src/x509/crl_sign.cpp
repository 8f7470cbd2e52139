// Signing revocation lists and relying on them.
#include <tlxpki/ber.h>
#include <tlxpki/objects.h>
#include <tlxpki/time.h>
#include <tlxpki/x509.h>
#include <tlxpki/x509v3_key.h>

#include <algorithm>

#include "x509/crl_entries.hpp"
#include "x509/crl_extension.hpp"
#include "x509/crl_records.hpp"
#include "x509/octet_signature.hpp"

using namespace tlx;

namespace {

using OwnedTime = std::unique_ptr<ASN1_TIME, FreeWith<free_ASN1_TIME>>;

/// The extensions of lists that are known: issuerAltName, cRLNumber, deltaCRLIndicator,
/// issuingDistributionPoint, authorityKeyIdentifier, freshestCRL and authorityInfoAccess.
constexpr std::string_view kKnown[] = {"2.5.29.18", "2.5.29.20", "2.5.29.27",        "2.5.29.28",
                                       "2.5.29.35", "2.5.29.46", "1.3.6.1.5.5.7.1.1"};

bool has_unknown_extension(const X509_CRL &crl) noexcept {
    for (u32 i = 0; i < get_STACK_count(crl.extensions); ++i) {
        const X509_EXTENSION *extension = get_X509_EXTENSION(crl.extensions, static_cast<i32>(i));
        if (extension->critical != 0 &&
            std::ranges::find(kKnown, text_of(extension->object)) == std::end(kKnown)) {
            return true;
        }
    }
    return crl.entries != nullptr && crl.entries->has_unknown();
}

/// Whether the list and the certificate name keys that differ; `readable` becomes false when they cannot be
/// read.
bool names_another_key(const X509_CRL &crl, const X509_CERT &issuer, bool &readable) noexcept {
    constexpr u8 kKeyIdentifier = context_primitive(0);
    Element own;
    Element authority;
    readable = readable &&
               read_extension(get_X509_extensions(&issuer), TLX_OID_SUBJECT_KEY_IDENTIFIER,
                              TLX_TAG_OCTET_STRING, own) &&
               read_extension(crl.extensions, TLX_OID_AUTHORITY_KEY_IDENTIFIER, kSequence, authority);
    Element wanted;
    if (!Cursor(authority).next(wanted) || wanted.tag != kKeyIdentifier || own.whole.empty()) return false;
    return !std::ranges::equal(wanted.contents, own.contents);
}

/// Whether the key usage, if there is one, allows signing lists.
bool may_sign_lists(const X509_CERT &issuer, bool &readable) noexcept {
    Element usage;
    readable = readable &&
               read_extension(get_X509_extensions(&issuer), TLX_OID_KEY_USAGE, TLX_TAG_BIT_STRING, usage);
    if (usage.whole.empty()) return true;
    const Owned<BIT_STRING> bits(decode_bit_string(usage.contents));
    readable = readable && bits != nullptr;
    return (get_BIT_STRING_named_bits(bits.get()) & TLX_KEY_USAGE_CRL_SIGN) != 0;
}

/// The signed octets: those received, or those that an own list is written with.
bool find_signed_octets(const X509_CRL &crl, Encoder &written, Bytes &octets) noexcept {
    Element list;
    Element tbs;
    if (crl.entries != nullptr && read_element(crl.entries->received(), list)) {
        const bool found = Cursor(list).next(tbs);
        octets = tbs.whole;
        return found;
    }
    encode_crl_tbs(written, crl);
    octets = written.bytes();
    return written.ok();
}

}  // namespace

bool tlx::put_signature(X509_CRL &crl, Owned<BIT_STRING> signature) noexcept {
    Owned<OBJECT_IDENTIFIER> algorithm(dup_OBJECT_IDENTIFIER(crl.signature));
    if (!algorithm) return false;
    free_OBJECT_IDENTIFIER(std::exchange(crl.signatureAlgorithm, algorithm.release()));
    free_BIT_STRING(std::exchange(crl.signatureValue, signature.release()));
    forget_received(crl);
    return true;
}

uint32_t gen_SIG_X509_CRL(X509_CRL *crl, const ASYMMETRIC_KEY *private_key) {
    if (crl == nullptr || crl->signature == nullptr || private_key == nullptr ||
        private_key->key == nullptr) {
        return 0x48070049;
    }
    constexpr SigningStatuses kStatuses = {0x4807002B, 0x4807003B};
    Encoder tbs;
    encode_crl_tbs(tbs, *crl);
    if (!tbs.ok()) return tbs.out_of_memory() ? 0x4807003B : 0x48070103;
    BIT_STRING *signature = nullptr;
    const u32 status = sign_octets(tbs.bytes(), crl->signature, *private_key, kStatuses, &signature);
    if (status != 0) return status == kOtherKey ? 0x48070048 : status;
    return put_signature(*crl, Owned<BIT_STRING>(signature)) ? 0 : 0x4807003B;
}

uint32_t verify_SIG_X509_CRL(const X509_CRL *crl, const X509_PUBKEY *issuer_key) {
    if (crl == nullptr || issuer_key == nullptr || issuer_key->key == nullptr) return 0x48080049;
    constexpr VerifyingStatuses kStatuses = {0x4808002B, 0x48080104};
    Encoder written;
    Bytes octets;
    if (!find_signed_octets(*crl, written, octets)) return 0x48080103;
    const BIT_STRING *signature = crl->signatureValue;
    const bool altered = (signature != nullptr && signature->extra != 0) ||
                         text_of(crl->signatureAlgorithm) != text_of(crl->signature);
    const SignedOctets what = {octets, crl->signatureAlgorithm, signature, altered};
    const u32 status = verify_octets(what, *issuer_key->key, kStatuses);
    return status == kOtherKey ? 0x48080048 : status;
}

uint32_t verify_X509_CRL_validity(const X509_CRL *crl, const ASN1_TIME *time) {
    if (crl == nullptr || crl->thisUpdate == nullptr) return 0x48090049;
    const OwnedTime made(X509_TIME_to_ASN1_TIME(crl->thisUpdate));
    const OwnedTime next(X509_TIME_to_ASN1_TIME(crl->nextUpdate));
    if (!made || (crl->nextUpdate != nullptr && !next)) return 0x48090104;
    const OwnedTime now(time == nullptr ? getCurrentGMTime() : nullptr);
    if (time == nullptr) time = now.get();
    if (time == nullptr) return 0x4809003C;
    const bool within =
        cmp_ASN1_TIME(made.get(), time) <= 0 && (!next || cmp_ASN1_TIME(time, next.get()) <= 0);
    return within ? 0 : 0x48090113;
}

uint32_t verify_X509_CRL(const X509_CRL *crl, const X509_CERT *issuer, const ASN1_TIME *time) {
    if (crl == nullptr || issuer == nullptr) return 0x480A0049;
    bool readable = true;
    if (cmp_X509_NAME(crl->issuer, get_X509_subject(issuer)) != 0 ||
        names_another_key(*crl, *issuer, readable)) {
        return 0x480A0106;
    }
    const bool may_sign = may_sign_lists(*issuer, readable);
    if (!readable) return 0x480A0104;
    if (!may_sign) return 0x480A0118;
    if (has_unknown_extension(*crl)) return 0x480A0048;
    const u32 status = verify_SIG_X509_CRL(crl, get_X509_SPKI(issuer));
    return status == 0 ? verify_X509_CRL_validity(crl, time) : status;
}
