// Trust lists of an authority.
#include <tlxpki/x509_sign.h>

#include <algorithm>

#include "containers/signed_trust_list.hpp"
#include "message/content_kinds.hpp"
#include "message/strict_path.hpp"
#include "trust/extension.hpp"

using namespace tlx;

namespace {

using OwnedReports = std::unique_ptr<P7_SIGNER_REPORTS, FreeWith<free_P7_SIGNER_REPORTS>>;
using OwnedIdentifiers = std::unique_ptr<OBJECT_IDENTIFIERS, FreeWith<free_OBJECT_IDENTIFIERS>>;

/// The list that signed data carries; null for other content.
const CERT_TRUST_LIST *list_in(const P7_SIGNED_DATA &data) noexcept {
    const P7_CONTENT_INFO *content = data.contentInfo;
    return content_type(content) == oid::kKisaCtl ? content->content.trustList : nullptr;
}

/// RFC 5280, section 4.2.1.12: without the extension a key may be used for any purpose.
bool may_sign_lists(const X509_CERT *cert) noexcept {
    const X509_EXTENSION *extension = find_extension(cert, "2.5.29.37");
    Element element;
    if (extension == nullptr) return true;
    if (!read_extension(extension, element)) return false;
    STACK *decoded = nullptr;
    static_cast<void>(ObjectIdentifiers::decode(element, &decoded));
    const OwnedIdentifiers purposes(decoded);
    constexpr std::string_view kPurposes[] = {"1.3.6.1.4.1.311.10.3.1", "2.5.29.37.0"};
    for (u32 i = 0; i < get_STACK_count(decoded); ++i) {
        const auto *purpose = static_cast<const OBJECT_IDENTIFIER *>(decoded->values[i]);
        if (std::ranges::find(kPurposes, text_of(purpose)) != std::end(kPurposes)) return true;
    }
    return false;
}

/// Whether a signer with whom nothing else is wrong signs for an authority.
u32 check_authority(const P7_SIGNER_REPORT &report, const X509_CERTIFICATES *authorities) noexcept {
    constexpr u32 kNoIssuer = 0x55030047;
    constexpr u32 kNoAnchor = 0x53050116;
    if (report.pathStatus == kNoIssuer || report.pathStatus == kNoAnchor) return 0x54100116;
    if (report.pathStatus != 0) return report.pathStatus;
    for (u32 i = 0; i < get_STACK_count(authorities); ++i) {
        if (cmp_X509_CERT(report.certificate, static_cast<const X509_CERT *>(authorities->values[i])) == 0) {
            return 0;
        }
    }
    return may_sign_lists(report.certificate) ? 0 : 0x54100118;
}

u32 check_signers(const P7_SIGNER_REPORTS *reports, const X509_CERTIFICATES *authorities) noexcept {
    for (u32 i = 0; i < get_STACK_count(reports); ++i) {
        const auto &report = *static_cast<const P7_SIGNER_REPORT *>(reports->values[i]);
        for (const u32 status :
             {report.certificateStatus, report.contentStatus, report.signingCertificateStatus,
              report.protectionStatus, report.signatureStatus, check_authority(report, authorities),
              report.algorithmStatus}) {
            if (status != 0) return status;
        }
    }
    return 0;
}

/// Checks the time as the validity of a certificate is checked.
u32 check_updates(const CERT_TRUST_LIST &list, const ASN1_TIME *time) noexcept {
    if (list.thisUpdate == nullptr || list.nextUpdate == nullptr) return 0x54100113;
    X509_VALIDITY validity{*list.thisUpdate, *list.nextUpdate};
    X509_TBS_CERT members{};
    X509_CERT cert{};
    members.validity = &validity;
    cert.tbsCertificate = &members;
    return verify_X509_validity(&cert, time) == 0 ? 0 : 0x54100113;
}

}  // namespace

uint32_t verify_CTL_of_authority(const P7_CONTENT_INFO *info, const X509_CERTIFICATES *authorities,
                                 const ASN1_TIME *time, P7_SIGNER_REPORTS **reports) {
    const VERIFY_SETTINGS settings = signing_settings(time);
    return verify_CTL_of_authority_ex(info, authorities, &settings, reports);
}

uint32_t verify_CTL_of_authority_ex(const P7_CONTENT_INFO *info, const X509_CERTIFICATES *authorities,
                                    const VERIFY_SETTINGS *settings, P7_SIGNER_REPORTS **reports) {
    const P7_SIGNED_DATA *data = signed_data_of(info);
    if (data == nullptr || authorities == nullptr) return 0x54100049;
    const CERT_TRUST_LIST *list = list_in(*data);
    if (list == nullptr) return 0x54100048;
    const VERIFY_SETTINGS wanted = settings != nullptr ? *settings : signing_settings(nullptr);
    const Owned<VERIFY_STORE> store = store_of_certificates(authorities, wanted.accepted_faults);
    if (!store) return 0x5410003C;
    P7_SIGNER_REPORTS *made = nullptr;
    u32 status = verify_PKCS7_Signers_ex(info, nullptr, 0, authorities, store.get(), &wanted, &made);
    OwnedReports checked(made);
    if (!checked) return status;
    status = check_signers(checked.get(), authorities);
    if (reports != nullptr) {
        free_P7_SIGNER_REPORTS(*reports);
        *reports = checked.release();
    }
    return status != 0 ? status : check_updates(*list, wanted.time);
}
