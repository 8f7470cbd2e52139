#include "message/signer_check.hpp"

#include <tlxpki/time.h>
#include <tlxpki/x509_sign.h>

#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "message/attribute_order.hpp"
#include "message/signer_algorithms.hpp"
#include "message/signer_attributes.hpp"
#include "message/signer_scheme.hpp"
#include "message/timestamp_verify.hpp"
#include "verify/strength.hpp"

using namespace tlx;

namespace {

bool has_type(const ASN1_STRING *value, i32 type) noexcept {
    return value != nullptr && value->type == type;
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

u32 check_algorithm_strength(const SignatureAlgorithm &algorithm, const PublicKey &key,
                             const Settings &strength) noexcept {
    const Rule rule = check_digest(algorithm, strength);
    return static_cast<u32>(rule != Rule::kNone ? rule : check_strength(key, strength));
}

/// Whether content is what a signer with attributes signs. Somebody may have taken a signature over
/// attributes and made them the content.
bool is_signed_attributes(Bytes content) noexcept {
    Element set;
    X509_ATTRIBUTES *decoded = nullptr;
    if (!read_element(content, set) || set.tag != kSet || set.whole.size() != content.size()) return false;
    static_cast<void>(Attributes::decode(set, &decoded));
    const OwnedAttributes attributes(decoded);
    return only_string(decoded, attribute_id::kMessageDigest) != nullptr;
}

/// RFC 2315, section 9.2: attributes need contentType and messageDigest, which stand for the content. Only
/// data may be signed without attributes.
u32 check_content(const SignerView &signer, u32 digest_id, SignerChecks &checks) noexcept {
    const X509_ATTRIBUTES *attributes = signer.signed_attributes;
    const Bytes expected = checks.digests.get(digest_id);
    if (expected.empty() && checks.digests.are_listed()) return 0x52820047;
    if (attributes == nullptr) {
        const bool is_data = oid_index(text_of(checks.content_type)) == oid::kPkcs7Data;
        const bool is_safe =
            checks.has_content ? !is_signed_attributes(checks.content) : !checks.content_is_set;
        return is_data && is_safe ? 0 : 0x4B30002B;
    }
    const ASN1_STRING *type = only_string(attributes, attribute_id::kContentType);
    const ASN1_STRING *digest = only_string(attributes, attribute_id::kMessageDigest);
    if (!has_type(type, TLX_TAG_OBJECT_IDENTIFIER) || !has_type(digest, TLX_TAG_OCTET_STRING)) {
        return 0x4B30002B;
    }
    if (text_of(type) != text_of(checks.content_type)) return 0x4B300106;
    return !expected.empty() && std::ranges::equal(octets_of(digest), expected) ? 0 : 0x4B30005E;
}

/// What verifies the signature of a signer.
struct Verifier {
    const SignerView &signer;
    const SignerScheme &scheme;
    const PublicKey &key;

    /// The status of a signature by what was found. False when memory runs out.
    static bool judge(Rule rule, u32 &status) noexcept {
        status = rule == Rule::kNone ? 0 : 0x4B300054;
        return rule != Rule::kNoMemory;
    }
    /// Verifies the signature over octets. False when memory runs out.
    [[nodiscard]] bool verify(Bytes octets, u32 &status) const noexcept {
        const Bytes signature = octets_of(signer.signature);
        status = 0x4B300054;
        return signature.empty() || judge(verify_signature(key, scheme.signature, octets, signature), status);
    }
    /// The same over a digest.
    [[nodiscard]] bool verify_digest(Bytes digest, u32 &status) const noexcept {
        const Bytes signature = octets_of(signer.signature);
        status = 0x4B300054;
        return signature.empty() ||
               judge(verify_signature_of_digest(key, scheme.signature, digest, signature), status);
    }
    /// The same over content of which only digests are left. EdDSA takes octets in one piece, and a digest of
    /// KCDSA begins with the key, which nobody may have known in time.
    [[nodiscard]] bool verify_gone(SignerChecks &checks, u32 &status) const noexcept {
        Bytes digest = checks.digests.get(scheme.digest_id);
        status = 0x52820047;
        if (digest.empty()) return true;
        status = 0x52820012;
        if (key.kind == KeyKind::eddsa) return verify_again(checks.again.octets(), digest, status);
        if (key.kind != KeyKind::kcdsa) return verify_digest(digest, status);
        const Bytes keyed = checks.keyed_digests->get(scheme.digest_id, key.kcdsa.get());
        if (!keyed.empty()) return verify_digest(keyed, status);
        status = 0x52820048;
        return verify_again(checks.again.octets(), digest, status);
    }
    /// The same over content that is given again, unless it has another digest.
    [[nodiscard]] bool verify_again(Bytes content, Bytes digest, u32 &status) const noexcept {
        const bool is_keyed = key.kind == KeyKind::kcdsa;
        RunningDigests digests;
        if (content.data() == nullptr) return true;
        if (digests.start(scheme.digest_id) != RunningDigests::Start::done) return false;
        if (is_keyed) {
            const RunningDigests::Start started = digests.start(scheme.digest_id, key.kcdsa.get());
            if (started != RunningDigests::Start::done) return started == RunningDigests::Start::bad_key;
        }
        if (!digests.update(content) || !digests.finish()) return false;
        if (!std::ranges::equal(digests.get(scheme.digest_id), digest)) return true;
        if (!is_keyed) return verify(content, status);
        return verify_digest(digests.get(scheme.digest_id, key.kcdsa.get()), status);
    }
};

/// What signers sign of their attributes: the element as received under the tag of a SET, or what is written.
bool write_attributes(const SignerView &signer, Encoder &out) noexcept {
    if (signer.received_attributes == nullptr) {
        Attributes::encode(out, signer.signed_attributes, kSet);
        return out.ok();
    }
    out.node(signer.received_attributes);
    if (!out.ok()) return false;
    out.buffer().data()[0] = kSet;
    return true;
}

/// Their form in DER, which is what is signed whatever was sent (RFC 2315, section 9.3).
bool write_sorted_attributes(const SignerView &signer, Encoder &out) noexcept {
    const OwnedAttributes sorted(dup_X509_ATTRIBUTES(signer.signed_attributes));
    if (!sorted || !sort_attributes(sorted.get())) return false;
    Attributes::encode(out, sorted.get(), kSet);
    return out.ok();
}

/// Verifies the signature. False when memory runs out.
bool check_signature(const Verifier &verifier, SignerChecks &checks, u32 &status) noexcept {
    const SignerView &signer = verifier.signer;
    if (signer.signed_attributes == nullptr) {
        if (checks.has_content) return verifier.verify(checks.content, status);
        return verifier.verify_gone(checks, status);
    }
    Encoder sent;
    if (!write_attributes(signer, sent)) return false;
    if (!verifier.verify(sent.bytes(), status)) return false;
    if (status == 0) return true;
    Encoder sorted;
    if (!write_sorted_attributes(signer, sorted)) return false;
    if (std::ranges::equal(sent.bytes(), sorted.bytes())) return true;
    return verifier.verify(sorted.bytes(), status);
}

/// The first of the findings that is not 0.
u32 first_failure(const P7_SIGNER_REPORT &report, bool has_anchors) noexcept {
    for (const u32 status : {report.certificateStatus, report.algorithmStatus, report.contentStatus,
                             report.signingCertificateStatus, report.protectionStatus, report.signatureStatus,
                             has_anchors ? report.pathStatus : 0}) {
        if (status != 0) return status;
    }
    return 0;
}

/// Verifies the path at a time, which is the message's by the compatible rules. False when memory runs out.
bool check_path(const X509_CERT &cert, const ASN1_TIME *time, const SignerChecks &checks,
                P7_SIGNER_REPORT &report) noexcept {
    if (checks.strict != nullptr) return checks.strict->check(cert, time, report);
    report.pathStatus = checks.compatible != nullptr ? checks.compatible->check(&cert) : 0x4B300116;
    return true;
}

/// The checks that take the certificate. False when memory runs out.
bool check_with(const X509_CERT &cert, const SignerView &signer, const SignerScheme &scheme,
                SignerChecks &checks, P7_SIGNER_REPORT &report) noexcept {
    PublicKey key;
    report.certificate = dup_X509_CERT(&cert);
    if (report.certificate == nullptr || !check_path(cert, checks.time, checks, report)) return false;
    const Rule rule = read_signer_key(cert, key);
    if (rule == Rule::kNoMemory) return false;
    if (!names_certificate(signer.signed_attributes, cert)) report.signingCertificateStatus = 0x5282005E;
    report.algorithmStatus = report.signatureStatus = 0x4B300048;
    if (rule != Rule::kNone || !can_verify(key, scheme)) return true;
    report.algorithmStatus = check_algorithm_strength(scheme.signature, key, checks.strength);
    return check_signature({signer, scheme, key}, checks, report.signatureStatus);
}

/// The checks with a certificate, which is null when there is none. Null when memory runs out.
OwnedSignerReport check_as(const X509_CERT *cert, const SignerView &signer, SignerChecks &checks) noexcept {
    SignerScheme scheme;
    OwnedSignerReport report(TLX_NEW(P7_SIGNER_REPORT));
    if (!report || !scheme.read(signer)) return nullptr;
    report->digestAlgorithm = algorithm_row(signer.digest_algorithm);
    report->signatureAlgorithm = algorithm_row(signer.signature_algorithm);
    report->signingTime = signing_time_of(signer.signed_attributes);
    report->signature = dup_ASN1_STRING(signer.signature);
    report->unsignedAttributes = dup_X509_ATTRIBUTES(signer.unsigned_attributes);
    if ((report->signature == nullptr && signer.signature != nullptr) ||
        (report->unsignedAttributes == nullptr && signer.unsigned_attributes != nullptr)) {
        return nullptr;
    }
    report->countersignatures = count_countersignatures(signer.unsigned_attributes);
    report->certificateStatus = check_certificate(cert, checks.time);
    report->contentStatus = check_content(signer, scheme.digest_id, checks);
    report->protectionStatus = protects_algorithms(signer) ? 0 : 0x52820106;
    report->algorithmStatus = report->signatureStatus = report->pathStatus = report->certificateStatus;
    if (cert != nullptr && !check_with(*cert, signer, scheme, checks, *report)) return nullptr;
    report->status = first_failure(*report, checks.has_paths());
    return report;
}

const X509_CERT *find_certificate(const SignerView &signer, const SignerChecks &checks,
                                  bool &failed) noexcept {
    const ISSUER_AND_SERIAL_NUMBER *number = signer.number;
    if (number == nullptr || number->issuer == nullptr || number->serialNumber == nullptr) return nullptr;
    return checks.certificates.find({number->issuer, number->serialNumber}, failed);
}

/// Which certificate is the signer's: what it says itself decides, then the signature, then the path.
u32 rank(const P7_SIGNER_REPORT &report) noexcept {
    const u32 named = report.signingCertificateStatus == 0 ? 4 : 0;
    const u32 verified = report.signatureStatus == 0 ? 2 : 0;
    return named + verified + (report.pathStatus == 0 && report.certificateStatus == 0 ? 1 : 0);
}

bool has_key_identifier(const X509_CERT *cert, const OCTET_STRING *identifier) noexcept {
    Bytes octets;
    return read_extension(find_extension(cert, extension_id::kSubjectKeyIdentifier), TLX_TAG_OCTET_STRING,
                          octets) &&
           std::ranges::equal(octets, octets_of(identifier));
}

/// Tries the certificates with the key identifier of the signer, and keeps the best report. Null when memory
/// runs out.
OwnedSignerReport check_by_key_identifier(const SignerView &signer, SignerChecks &checks) noexcept {
    constexpr u32 kMostTries = 8;  // one signer may not cost as much as all of them
    constexpr u32 kBest = 7;
    OwnedSignerReport best;
    u32 tries = 0;
    for (u32 i = 0; i < get_STACK_count(checks.pool) && tries < kMostTries; ++i) {
        const auto *cert = static_cast<const X509_CERT *>(checks.pool->values[i]);
        if (!has_key_identifier(cert, signer.key_identifier)) continue;
        ++tries;
        OwnedSignerReport report = check_as(cert, signer, checks);
        if (!report) return nullptr;
        if (!best || rank(*report) > rank(*best)) best = std::move(report);
        if (rank(*best) == kBest) break;
    }
    return best ? std::move(best) : check_as(nullptr, signer, checks);
}

/// The checks at the time that they know.
OwnedSignerReport check_at_time(const SignerView &signer, SignerChecks &checks) noexcept {
    if (signer.key_identifier != nullptr) return check_by_key_identifier(signer, checks);
    bool failed = false;
    const X509_CERT *cert = find_certificate(signer, checks, failed);
    return failed ? nullptr : check_as(cert, signer, checks);
}

}  // namespace

Bytes ContentAgain::octets() const noexcept {
    const u8 *octets = nullptr;
    std::uint64_t size = 0;
    if (give == nullptr || give(context, &octets, &size) != 0 || octets == nullptr) return {};
    return {octets, static_cast<std::size_t>(size)};
}

void tlx::free_signer_report(P7_SIGNER_REPORT *report) noexcept {
    if (report == nullptr) return;
    free_VERIFY_RESULT(report->path);
    free_X509_CERT(report->certificate);
    free_ASN1_TIME(report->signingTime);
    free_ASN1_STRING(report->signature);
    free_X509_ATTRIBUTES(report->unsignedAttributes);
    free_CMS_TIMESTAMP_REPORTS(report->timestamps);
    tlx_free(report);
}

OwnedSignerReport tlx::check_signer(const SignerView &signer, SignerChecks &checks) noexcept {
    SignerStamps stamps;
    if (checks.stamps == nullptr) return check_at_time(signer, checks);
    if (!stamps.verify(signer, *checks.stamps)) return nullptr;
    const bool is_stamped = checks.stamps->settings.time == nullptr && stamps.time() != nullptr;
    const ASN1_TIME *now = std::exchange(checks.time, is_stamped ? stamps.time() : checks.time);
    OwnedSignerReport report = check_at_time(signer, checks);
    checks.time = now;
    if (report) stamps.give_to(*report);
    return report;
}
