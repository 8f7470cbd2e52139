#include "message/signer_check.hpp"

#include <tlxcrypto/rsa.h>
#include <tlxpki/objects.h>
#include <tlxpki/time.h>
#include <tlxpki/x509_sign.h>

#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "message/attribute_order.hpp"
#include "message/key_signature.hpp"
#include "message/signer_algorithms.hpp"

using namespace tlx;

namespace {

/// The one value of the one attribute of a type; null when there is none, several, or a constructed one.
const ASN1_STRING *only_value(const X509_ATTRIBUTES *attributes, u32 row) noexcept {
    const char *dotted = OID_LIST(static_cast<i32>(row))->dotted;
    const i32 first = index_by_type(attributes, &X509_ATTRIBUTE::type, dotted, -1);
    if (first < 0 || index_by_type(attributes, &X509_ATTRIBUTE::type, dotted, first) >= 0) return nullptr;
    const X509_ATTRIBUTE *attribute = get_X509_ATTRIBUTES_child(attributes, first);
    if (get_X509_ATTRIBUTE_count(attribute) != 1) return nullptr;
    if ((get_X509_ATTRIBUTE_data_type(attribute, 0) & kConstructed) != 0) return nullptr;
    return static_cast<const ASN1_STRING *>(get_X509_ATTRIBUTE_data(attribute, 0));
}

bool has_type(const ASN1_STRING *value, i32 type) noexcept {
    return value != nullptr && value->type == type;
}

ASN1_TIME *signing_time_of(const X509_ATTRIBUTES *attributes) noexcept {
    const ASN1_STRING *value = only_value(attributes, oid::kSigningTime);
    if (has_type(value, TLX_TAG_UTC_TIME)) return utcTimeToASN1_TIME(value);
    return has_type(value, TLX_TAG_GENERALIZED_TIME) ? generalizedTimeToASN1_TIME(value) : nullptr;
}

/// RFC 5280, section 4.2.1.3: without the extension a key may sign what it likes.
bool may_sign_messages(const X509_CERT *cert) noexcept {
    constexpr u8 kDigitalSignatureOrNonRepudiation = 0xC0;
    const X509_EXTENSION *usage = find_extension(cert, extension_id::kKeyUsage);
    Bytes bits;  // the unused-bits octet, then the bits
    if (usage == nullptr) return true;
    return read_extension(usage, TLX_TAG_BIT_STRING, bits) && bits.size() > 1 &&
           (bits[1] & kDigitalSignatureOrNonRepudiation) != 0;
}

u32 check_certificate(const X509_CERT *cert, const ASN1_TIME *time) noexcept {
    if (cert == nullptr) return 0x4B300047;
    return may_sign_messages(cert) ? verify_X509_validity(cert, time) : 0x4B300118;
}

/// Whether the scheme of the signature is one of the kind of key.
bool fits_key(u32 cipher_id, u32 kind) noexcept {
    constexpr u32 kRsa = 0x20;
    constexpr u32 kKcdsa = 0x40;
    const u32 family = cipher_id >> 24;
    if (kind == TLX_KEY_KCDSA) return family == kKcdsa;
    return kind == TLX_KEY_RSA && family == kRsa && (cipher_id & 0xFF) <= TLX_RSA_MODE_PSS;
}

/// Whether the digest of the signature is that of the signer: a signature with PKCS #1 v1.5 names one, unless
/// it is called "rsaEncryption".
bool fits_digest(const P7_SIGNER_INFO &signer, const SignerAlgorithms &algorithms) noexcept {
    const u32 named = get_DigestID_from_OID(get_X509_ALGO_IDENTIFIER_OID(signer.digestEncryptionAlgorithm));
    constexpr u32 kRsaWithDigest = 0x20000001;
    return named == algorithms.digest_id || (named == 0 && algorithms.cipher_id != kRsaWithDigest);
}

u32 check_algorithms(const P7_SIGNER_INFO &signer, const SignerAlgorithms &algorithms,
                     const ASYMMETRIC_KEY *key) noexcept {
    const bool good = algorithms.digest_id != 0 && key != nullptr &&
                      fits_key(algorithms.cipher_id, key->kind) && fits_digest(signer, algorithms) &&
                      apply_pss_parameters(signer, algorithms, *key) &&
                      begin_signature(key, algorithms, SigningDirection::verify, 1) == 0;
    return good ? 0 : 0x4B300048;
}

/// Whether content is what a signer with attributes signs. Somebody may have taken a signature over
/// attributes and made them the content.
bool is_signed_attributes(Bytes content) noexcept {
    Element set;
    X509_ATTRIBUTES *decoded = nullptr;
    if (!read_element(content, set) || set.tag != kSet || set.whole.size() != content.size()) return false;
    static_cast<void>(Attributes::decode(set, &decoded));
    const OwnedAttributes attributes(decoded);
    return only_value(decoded, oid::kMessageDigest) != nullptr;
}

/// RFC 2315, section 9.2: attributes need contentType and messageDigest, which stand for the content. Only
/// data may be signed without attributes.
u32 check_content(const P7_SIGNER_INFO &signer, u32 digest_id, SignerChecks &checks) noexcept {
    const X509_ATTRIBUTES *attributes = signer.authenticatedAttributes;
    const Bytes expected = checks.digests.get(digest_id);
    if (expected.empty() && checks.digests.are_listed()) return 0x52820047;
    if (attributes == nullptr) {
        const bool is_data = oid_index(text_of(checks.content_type)) == oid::kPkcs7Data;
        const bool is_safe =
            checks.has_content ? !is_signed_attributes(checks.content) : !checks.content_is_set;
        return is_data && is_safe ? 0 : 0x4B30002B;
    }
    const ASN1_STRING *type = only_value(attributes, oid::kContentType);
    const ASN1_STRING *digest = only_value(attributes, oid::kMessageDigest);
    if (!has_type(type, TLX_TAG_OBJECT_IDENTIFIER) || !has_type(digest, TLX_TAG_OCTET_STRING)) {
        return 0x4B30002B;
    }
    if (text_of(type) != text_of(checks.content_type)) return 0x4B300106;
    return !expected.empty() && std::ranges::equal(octets_of(digest), expected) ? 0 : 0x4B30005E;
}

/// Verifies a signature over octets. False when memory runs out.
bool verify_octets(const P7_SIGNER_INFO &signer, const SignerAlgorithms &algorithms,
                   const ASYMMETRIC_KEY *key, Bytes octets, u32 &status) noexcept {
    const Bytes signature = octets_of(signer.encryptedDigest);
    status = 0x4B300054;
    if (signature.empty()) return true;
    if (begin_signature(key, algorithms, SigningDirection::verify, 1) != 0 ||
        update_signature(key, octets, 1) != 0) {
        return false;
    }
    const u32 result = check_signature(key, signature);
    if (result == 0) status = 0;
    return result != 1;
}

/// Verifies a signature over content of which only the digest is left: a digest of KCDSA begins with the key,
/// and nobody knew it in time. False when memory runs out.
bool verify_digest(const P7_SIGNER_INFO &signer, const SignerAlgorithms &algorithms,
                   const ASYMMETRIC_KEY *key, Bytes digest, u32 &status) noexcept {
    const RSA_UNIT *rsa = rsa_unit(key);
    status = digest.empty() ? 0x52820047 : 0x52820048;
    if (rsa == nullptr || digest.empty()) return true;
    const Bytes signature = octets_of(signer.encryptedDigest);
    const u32 result = verify_RSA_digest(rsa, algorithms.digest_id, algorithms.padding_mode(), digest.data(),
                                         static_cast<u32>(digest.size()), signature.data(),
                                         static_cast<u32>(signature.size()));
    status = result == 0 ? 0 : 0x4B300054;
    return result != 1;
}

/// What signers sign of their attributes: the element as received under the tag of a SET, or what is written.
bool write_attributes(const P7_SIGNER_INFO &signer, Encoder &out) noexcept {
    if (signer.receivedAttributes == nullptr) {
        Attributes::encode(out, signer.authenticatedAttributes, kSet);
        return out.ok();
    }
    out.node(signer.receivedAttributes);
    if (!out.ok()) return false;
    out.buffer().data()[0] = kSet;
    return true;
}

/// Their form in DER, which is what is signed whatever was sent (RFC 2315, section 9.3).
bool write_sorted_attributes(const P7_SIGNER_INFO &signer, Encoder &out) noexcept {
    const OwnedAttributes sorted(dup_X509_ATTRIBUTES(signer.authenticatedAttributes));
    if (!sorted || !sort_attributes(sorted.get())) return false;
    Attributes::encode(out, sorted.get(), kSet);
    return out.ok();
}

/// Verifies the signature. False when memory runs out.
bool check_octets(const P7_SIGNER_INFO &signer, const SignerAlgorithms &algorithms, const ASYMMETRIC_KEY *key,
                  SignerChecks &checks, u32 &status) noexcept {
    if (signer.authenticatedAttributes == nullptr) {
        if (checks.has_content) return verify_octets(signer, algorithms, key, checks.content, status);
        return verify_digest(signer, algorithms, key, checks.digests.get(algorithms.digest_id), status);
    }
    Encoder sent;
    if (!write_attributes(signer, sent)) return false;
    if (!verify_octets(signer, algorithms, key, sent.bytes(), status)) return false;
    if (status == 0) return true;
    Encoder sorted;
    if (!write_sorted_attributes(signer, sorted)) return false;
    if (std::ranges::equal(sent.bytes(), sorted.bytes())) return true;
    return verify_octets(signer, algorithms, key, sorted.bytes(), status);
}

/// The first of the findings that is not 0.
u32 first_failure(const P7_SIGNER_REPORT &report, bool has_anchors) noexcept {
    for (const u32 status : {report.certificateStatus, report.algorithmStatus, report.contentStatus,
                             report.signatureStatus, has_anchors ? report.pathStatus : 0}) {
        if (status != 0) return status;
    }
    return 0;
}

const X509_CERT *find_certificate(const P7_SIGNER_INFO &signer, const SignerChecks &checks,
                                  bool &failed) noexcept {
    const ISSUER_AND_SERIAL_NUMBER *number = signer.issuerAndSerialNumber;
    if (number == nullptr || number->issuer == nullptr || number->serialNumber == nullptr) return nullptr;
    return checks.certificates.find({number->issuer, number->serialNumber}, failed);
}

/// Verifies the path. False when memory runs out.
bool check_path(const X509_CERT &cert, const SignerChecks &checks, P7_SIGNER_REPORT &report) noexcept {
    if (checks.strict != nullptr) return checks.strict->check(cert, report);
    report.pathStatus = checks.compatible != nullptr ? checks.compatible->check(&cert) : 0x4B300116;
    return true;
}

/// The checks that take the certificate. False when memory runs out.
bool check_with(const X509_CERT *cert, const P7_SIGNER_INFO &signer, SignerChecks &checks,
                P7_SIGNER_REPORT &report) noexcept {
    const SignerAlgorithms algorithms(signer);
    const bool has_key = get_X509_PUBKEY_key(get_X509_SPKI(cert)) != nullptr;
    const auto key = copy_public_key(cert);
    report.certificate = dup_X509_CERT(cert);
    if (report.certificate == nullptr || (has_key && !key)) return false;
    if (!check_path(*cert, checks, report)) return false;
    report.algorithmStatus = check_algorithms(signer, algorithms, key.get());
    report.signatureStatus = report.algorithmStatus;
    return report.algorithmStatus != 0 ||
           check_octets(signer, algorithms, key.get(), checks, report.signatureStatus);
}

}  // namespace

bool tlx::check_signer(const P7_SIGNER_INFO &signer, SignerChecks &checks,
                       P7_SIGNER_REPORT &report) noexcept {
    bool failed = false;
    const X509_CERT *cert = find_certificate(signer, checks, failed);
    if (failed) return false;
    report.digestAlgorithm = algorithm_row(signer.digestAlgorithm);
    report.signatureAlgorithm = algorithm_row(signer.digestEncryptionAlgorithm);
    report.signingTime = signing_time_of(signer.authenticatedAttributes);
    report.certificateStatus = check_certificate(cert, checks.time);
    report.contentStatus = check_content(signer, SignerAlgorithms(signer).digest_id, checks);
    report.algorithmStatus = report.signatureStatus = report.pathStatus = report.certificateStatus;
    if (cert != nullptr && !check_with(cert, signer, checks, report)) return false;
    report.status = first_failure(report, checks.has_paths());
    return true;
}
