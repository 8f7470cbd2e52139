// The verification of time stamps (RFC 3161, sections 2.2 and 2.4.2; RFC 5816).
#include "message/timestamp_verify.hpp"

#include <tlxpki/general_name.h>
#include <tlxpki/time.h>

#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"
#include "message/signed_body.hpp"
#include "message/signer_attributes.hpp"
#include "verify/strength.hpp"

using namespace tlx;

namespace {

using OwnedTime = std::unique_ptr<ASN1_TIME, FreeWith<free_ASN1_TIME>>;
using OwnedReports = std::unique_ptr<P7_SIGNER_REPORTS, FreeWith<free_P7_SIGNER_REPORTS>>;
using OwnedNames = std::unique_ptr<GENERAL_NAMES, FreeWith<free_GENERAL_NAMES>>;

bool has_critical(const X509_EXTENSIONS *extensions) noexcept {
    for (u32 i = 0; i < get_STACK_count(extensions); ++i) {
        const auto *extension = item_at<X509_EXTENSION>(extensions, static_cast<i32>(i));
        if (extension != nullptr && extension->critical != 0) return true;
    }
    return false;
}

u32 compare_imprint(const CMS_MESSAGE_IMPRINT &imprint, const Stamped &stamped) noexcept {
    if (stamped.octets.data() != nullptr) {
        return match_CMS_MESSAGE_IMPRINT(&imprint, stamped.octets.data(), size_of(stamped.octets));
    }
    if (stamped.digest.data() == nullptr) return 0;
    return std::ranges::equal(octets_of(imprint.hashedMessage), stamped.digest) ? 0 : 0x52C6005E;
}

/// The digest has to pass the profile: who finds two files with one digest has a stamp for both.
u32 check_imprint(const CMS_MESSAGE_IMPRINT &imprint, const Stamped &stamped, u32 profile) noexcept {
    SignatureAlgorithm algorithm;
    Settings strength;
    algorithm.digest_id = get_CMS_MESSAGE_IMPRINT_digest(&imprint);
    strength.profile = static_cast<Profile>(profile);
    if (algorithm.digest_id == 0) return 0x52C60048;
    if (const u32 status = compare_imprint(imprint, stamped); status != 0) return status;
    return static_cast<u32>(check_digest(algorithm, strength));
}

/// Whether two names have the same encoding. False also when memory runs out.
bool is_same_name(const GENERAL_NAME *a, const GENERAL_NAME *b) noexcept {
    Encoder first;
    Encoder second;
    Codec<GENERAL_NAME>::encode(first, a);
    Codec<GENERAL_NAME>::encode(second, b);
    return first.ok() && second.ok() && std::ranges::equal(first.bytes(), second.bytes());
}

/// RFC 3161, section 2.4.2: the name of the authority is one of its certificate.
bool has_name(const X509_CERT *cert, const GENERAL_NAME *name) noexcept {
    if (name->choice == TLX_GENERAL_NAME_DIRECTORY_NAME &&
        cmp_X509_NAME(get_X509_subject(cert), name->value.directoryName) == 0) {
        return true;
    }
    void *read = nullptr;
    static_cast<void>(decode_X509_EXTENSION_by_OID_index(extensions_of(cert), oid::kSubjectAltName,
                                                         TLX_DECODER(Seq_to_GENERAL_NAMES), &read));
    const OwnedNames others(static_cast<STACK *>(read));
    for (u32 i = 0; i < get_STACK_count(others.get()); ++i) {
        if (is_same_name(item_at<GENERAL_NAME>(others.get(), static_cast<i32>(i)), name)) return true;
    }
    return false;
}

/// What RFC 3161 asks of a signer besides what every signer has to have.
u32 check_authority(const CMS_SIGNER_INFO &signer, const CMS_TST_INFO &info, const X509_CERT *cert) noexcept {
    if (!has_signing_certificate(signer.signedAttrs)) return 0x52C7003B;
    return info.tsa == nullptr || has_name(cert, info.tsa) ? 0 : 0x52C70106;
}

/// The settings of signers as those of authorities: what the caller asks of signers' names and policies is
/// not asked of them.
VERIFY_SETTINGS authority_settings(const VERIFY_SETTINGS &of_signers, const ASN1_TIME *stamped) noexcept {
    VERIFY_SETTINGS settings = of_signers;
    settings.purpose = TLX_PURPOSE_TIME_STAMPING;
    settings.host = settings.mailbox = nullptr;
    settings.address = nullptr;
    settings.policies = nullptr;
    settings.explicit_policy = 0;
    if (settings.time == nullptr) settings.time = stamped;
    return settings;
}

/// Verifies the one signer of a token. False when memory runs out.
bool check_signers(const CMS_SIGNED_DATA &data, const SignerTrust &trust,
                   CMS_TIMESTAMP_REPORT &report) noexcept {
    report.signerStatus = 0x52C7002B;
    if (get_STACK_count(data.signerInfos) != 1) return true;
    const Owned<STACK> certificates = certificates_of(data);
    SignerTrust wanted = trust;
    wanted.settings = authority_settings(trust.settings, report.time);
    wanted.judges_strength = true;
    wanted.stamps_count = false;
    SignerChecks checks(octets_of(data.encapContentInfo->eContent));
    checks.content_type = data.encapContentInfo->eContentType;
    P7_SIGNER_REPORTS *made = nullptr;
    if (!certificates) return false;
    report.signerStatus = verify_signers(wanted, signer_members(data, certificates.get()), checks, &made);
    const OwnedReports reports(made);
    if (!reports) return false;
    report.signer = take_item<P7_SIGNER_REPORT>(made, 0);
    if (report.signerStatus == 0) {
        report.signerStatus = check_authority(*item_at<CMS_SIGNER_INFO>(data.signerInfos, 0), *report.info,
                                              report.signer->certificate);
    }
    return true;
}

/// Checks what a token says. False when memory runs out.
bool check_info(const CMS_CONTENT_INFO &token, const Stamped &stamped, const SignerTrust &trust,
                CMS_TIMESTAMP_REPORT &report) noexcept {
    report.infoStatus = decode_CMS_TST_INFO(&token, &report.info);
    report.imprintStatus = report.requestStatus = report.signerStatus = report.infoStatus;
    if (report.infoStatus != 0) return true;
    const CMS_TST_INFO &info = *report.info;
    report.time = stamp_time(info.genTime).release();
    if (report.time == nullptr) return false;
    if (has_critical(info.extensions)) report.infoStatus = 0x52C70048;
    report.imprintStatus = check_imprint(*info.messageImprint, stamped, trust.settings.profile);
    report.requestStatus = stamped.request != nullptr ? compare_with_request(info, *stamped.request) : 0;
    return check_signers(*token.signedData, trust, report);
}

u32 first_failure(const CMS_TIMESTAMP_REPORT &report) noexcept {
    for (const u32 status :
         {report.infoStatus, report.imprintStatus, report.requestStatus, report.signerStatus}) {
        if (status != 0) return status;
    }
    return 0;
}

OwnedStampReport new_report() noexcept {
    return OwnedStampReport(TLX_NEW(CMS_TIMESTAMP_REPORT));
}

/// Whether a token and its authority are proven.
bool is_proven(const CMS_TIMESTAMP_REPORT &report) noexcept {
    return report.status == 0 && report.signer->pathStatus == 0;
}

/// The report about a value of the attribute. Null when memory runs out.
OwnedStampReport check_value(const X509_ATTRIBUTE *attribute, i32 index, Bytes signature,
                             const SignerTrust &trust) noexcept {
    Element value;
    CMS_CONTENT_INFO *decoded = nullptr;
    u32 status = 0x52020104;
    if ((get_X509_ATTRIBUTE_data_type(attribute, index) & kConstructed) != 0 &&
        view_node(static_cast<const ASN1_UNIT *>(get_X509_ATTRIBUTE_data(attribute, index)), value)) {
        status = Codec<CMS_CONTENT_INFO>::decode(value, &decoded);
    }
    const Owned<CMS_CONTENT_INFO> token(decoded);
    if (status == 0) return check_stamp(*token, {signature, {}, nullptr}, trust);
    OwnedStampReport report = new_report();
    if (!report) return nullptr;
    report->status = report->infoStatus = report->imprintStatus = report->signerStatus = status;
    return report;
}

}  // namespace

OwnedStampReport tlx::check_stamp(const CMS_CONTENT_INFO &token, const Stamped &stamped,
                                  const SignerTrust &trust) noexcept {
    OwnedStampReport report = new_report();
    if (!report || !check_info(token, stamped, trust, *report)) return nullptr;
    report->status = first_failure(*report);
    return report;
}

bool SignerStamps::verify(const SignerView &signer, const SignerTrust &trust) noexcept {
    const X509_ATTRIBUTES *attributes = signer.unsigned_attributes;
    for (i32 at = -1;
         (at = index_by_type(attributes, &X509_ATTRIBUTE::type, attribute_id::kTimeStampToken, at)) >= 0;) {
        if (!take(get_X509_ATTRIBUTES_child(attributes, at), signer, trust)) return false;
    }
    return true;
}

bool SignerStamps::take(const X509_ATTRIBUTE *attribute, const SignerView &signer,
                        const SignerTrust &trust) noexcept {
    constexpr u32 kMostStamps = 8;  // one signer may not cost as much as all of them
    for (u32 i = 0; i < get_X509_ATTRIBUTE_count(attribute); ++i) {
        if (get_STACK_count(reports_.get()) == kMostStamps) {
            if (status_ == 0) status_ = 0x52C7001C;
            return true;
        }
        const auto index = static_cast<i32>(i);
        if (!add(check_value(attribute, index, octets_of(signer.signature), trust))) return false;
    }
    return true;
}

bool SignerStamps::add(OwnedStampReport report) noexcept {
    if (!reports_) reports_.reset(new_STACK());
    if (!report || !reports_ || push_STACK_value(reports_.get(), report.get()) != 0) return false;
    const CMS_TIMESTAMP_REPORT &kept = *report.release();
    if (status_ == 0) status_ = kept.status;
    if (is_proven(kept) && (time_ == nullptr || cmp_ASN1_TIME(kept.time, time_) < 0)) time_ = kept.time;
    return true;
}

void SignerStamps::give_to(P7_SIGNER_REPORT &report) noexcept {
    report.timestampStatus = status_;
    report.timestamps = reports_.release();
    if (report.status == 0) report.status = status_;
}

uint32_t verify_CMS_TIMESTAMP(const CMS_CONTENT_INFO *token, const CMS_TIMESTAMP_SETTINGS *settings,
                              CMS_TIMESTAMP_REPORT **report) {
    if (token == nullptr || settings == nullptr) return 0x52C70049;
    const Stamped stamped = {{settings->octets, settings->octets_len},
                             {settings->digest, settings->digest_len},
                             settings->request};
    if (settings->octets == nullptr && settings->digest == nullptr && settings->request == nullptr) {
        return 0x52C70049;
    }
    if (settings->request != nullptr && settings->request->messageImprint == nullptr) return 0x52C70049;
    SignerTrust trust;
    trust.pool = settings->pool;
    trust.store = settings->store;
    if (settings->settings != nullptr) trust.settings = *settings->settings;
    OwnedStampReport made = check_stamp(*token, stamped, trust);
    if (!made) return 0x52C7003C;
    const u32 status = made->status;
    if (report != nullptr) {
        free_CMS_TIMESTAMP_REPORT(*report);
        *report = made.release();
    }
    return status;
}

void free_CMS_TIMESTAMP_REPORT(CMS_TIMESTAMP_REPORT *report) {
    if (report == nullptr) return;
    free_CMS_TST_INFO(report->info);
    free_ASN1_TIME(report->time);
    free_signer_report(report->signer);
    tlx_free(report);
}

void free_CMS_TIMESTAMP_REPORTS(CMS_TIMESTAMP_REPORTS *reports) {
    clean_STACK_values(reports, [](void *report) {
        free_CMS_TIMESTAMP_REPORT(static_cast<CMS_TIMESTAMP_REPORT *>(report));
    });
    free_STACK(reports);
}

uint32_t get_CMS_TIMESTAMP_REPORTS_count(const CMS_TIMESTAMP_REPORTS *reports) {
    return get_STACK_count(reports);
}

const CMS_TIMESTAMP_REPORT *get_CMS_TIMESTAMP_REPORTS_child(const CMS_TIMESTAMP_REPORTS *reports,
                                                            int32_t index) {
    return static_cast<const CMS_TIMESTAMP_REPORT *>(get_STACK_value(reports, static_cast<u32>(index)));
}
