// Certificate policies and policy mappings.
#include <tlxpki/x509v3_policy.h>

#include <cstring>

#include "x509/v3_codecs.hpp"

using namespace tlx;

namespace {

// noticeNumbers SEQUENCE OF INTEGER
using NoticeNumbers = List<Integer>;
constexpr Codes kNoticeNumbers = codes(0x47250000, 0x47260000);

// NoticeReference ::= SEQUENCE { organization DisplayText, noticeNumbers SEQUENCE OF INTEGER }
constexpr auto kNoticeReference = record<NOTICE_REFERENCE>(
    codes(0x47210000, 0x47220000), exactly(2), field<Text>(&NOTICE_REFERENCE::organization),
    field<NoticeNumbers>(&NOTICE_REFERENCE::noticeNumbers));

// UserNotice ::= SEQUENCE { noticeRef NoticeReference OPTIONAL, explicitText DisplayText OPTIONAL }
constexpr auto kUserNotice = record<USER_NOTICE>(codes(0x471F0000, 0x47200000), between(0, 2),
                                                 optional<Nested<NOTICE_REFERENCE>>(&USER_NOTICE::noticeRef),
                                                 optional<Text>(&USER_NOTICE::explicitText));

constexpr std::string_view kIdQtCps = "1.3.6.1.5.5.7.2.1";
constexpr std::string_view kIdQtUnotice = "1.3.6.1.5.5.7.2.2";

/// The qualifier, in the member that its identifier asks for.
struct QualifierField {
    using R = POLICY_QUALIFIER_INFO;
    Field<R, Text> cps_uri = field<Text>(&R::cPSuri);
    Field<R, Nested<USER_NOTICE>> user_notice = field<Nested<USER_NOTICE>>(&R::userNotice);
    Field<R, Node> other = field<Node>(&R::other);

    void clear(R &record) const noexcept {
        cps_uri.clear(record);
        user_notice.clear(record);
        other.clear(record);
    }
    [[nodiscard]] bool copy(R &to, const R &from) const noexcept {
        return cps_uri.copy(to, from) && user_notice.copy(to, from) && other.copy(to, from);
    }
    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        clear(record);
        const std::string_view id = text_of(record.policyQualifierId);
        if (id == kIdQtCps) return cps_uri.read(children, record);
        if (id == kIdQtUnotice) return user_notice.read(children, record);
        return other.read(children, record);
    }
    void write(Encoder &out, const R &record) const noexcept {
        const std::string_view id = text_of(record.policyQualifierId);
        if (id == kIdQtCps) return cps_uri.write(out, record);
        if (id == kIdQtUnotice) return user_notice.write(out, record);
        other.write(out, record);
    }
};

// PolicyQualifierInfo ::= SEQUENCE {
//     policyQualifierId PolicyQualifierId, qualifier ANY DEFINED BY policyQualifierId }
constexpr auto kPolicyQualifierInfo =
    record<POLICY_QUALIFIER_INFO>(codes(0x47170000, 0x47180000), exactly(2),
                                  field<Oid>(&POLICY_QUALIFIER_INFO::policyQualifierId), QualifierField{});

// policyQualifiers SEQUENCE SIZE (1..MAX) OF PolicyQualifierInfo
using PolicyQualifierInfos = OneOrMore<Nested<POLICY_QUALIFIER_INFO>>;
constexpr Codes kPolicyQualifierInfos = codes(0x47190000, 0x471A0000);

// PolicyInformation ::= SEQUENCE {
//     policyIdentifier CertPolicyId,
//     policyQualifiers SEQUENCE SIZE (1..MAX) OF PolicyQualifierInfo OPTIONAL }
constexpr auto kPolicyInfo = record<POLICY_INFO>(
    codes(0x471B0000, 0x471C0000), between(1, 2), field<Oid>(&POLICY_INFO::policyIdentifier),
    optional<PolicyQualifierInfos>(&POLICY_INFO::policyQualifiers));

// CertificatePolicies ::= SEQUENCE SIZE (1..MAX) OF PolicyInformation
using CertificatePolicies = OneOrMore<Nested<POLICY_INFO>>;
constexpr Codes kCertificatePolicies = codes(0x471D0000, 0x471E0000);

// PolicyMappings ::= SEQUENCE SIZE (1..MAX) OF SEQUENCE {
//     issuerDomainPolicy CertPolicyId, subjectDomainPolicy CertPolicyId }
constexpr auto kPolicyMapping = record<POLICY_MAPPING>(codes(0x47270000, 0x47280000), exactly(2),
                                                       field<Oid>(&POLICY_MAPPING::issuerDomainPolicy),
                                                       field<Oid>(&POLICY_MAPPING::subjectDomainPolicy));
using PolicyMappings = OneOrMore<Nested<POLICY_MAPPING>>;
constexpr Codes kPolicyMappings = codes(0x47290000, 0x472A0000);

Bytes octets_of_text(std::string_view text) noexcept {
    return {reinterpret_cast<const u8 *>(text.data()), text.size()};
}

/// A qualifier with its identifier only; null when memory runs out.
Owned<POLICY_QUALIFIER_INFO> make_qualifier(std::string_view id) noexcept {
    Owned<POLICY_QUALIFIER_INFO> qualifier(new_POLICY_QUALIFIER_INFO());
    if (!qualifier) return nullptr;
    qualifier->policyQualifierId = new_string(TLX_TAG_OBJECT_IDENTIFIER, octets_of_text(id));
    if (qualifier->policyQualifierId == nullptr) return nullptr;
    return qualifier;
}

}  // namespace

TLX_DEFINE_LIST(NOTICE_NUMBERS, BIGINT, NoticeNumbers, kNoticeNumbers)
TLX_DEFINE_RECORD(NOTICE_REFERENCE, kNoticeReference)
TLX_DEFINE_RECORD(USER_NOTICE, kUserNotice)
TLX_DEFINE_RECORD(POLICY_QUALIFIER_INFO, kPolicyQualifierInfo)
TLX_DEFINE_LIST(POLICY_QUALIFIER_INFOS, POLICY_QUALIFIER_INFO, PolicyQualifierInfos, kPolicyQualifierInfos)
TLX_DEFINE_RECORD(POLICY_INFO, kPolicyInfo)
TLX_DEFINE_LIST(CERTIFICATE_POLICIES, POLICY_INFO, CertificatePolicies, kCertificatePolicies)
TLX_DEFINE_RECORD(POLICY_MAPPING, kPolicyMapping)
TLX_DEFINE_LIST(POLICY_MAPPINGS, POLICY_MAPPING, PolicyMappings, kPolicyMappings)

POLICY_QUALIFIER_INFO *create_POLICY_QUALIFIER_INFO_cPSuri(const char *uri) {
    if (uri == nullptr) return nullptr;
    Owned<POLICY_QUALIFIER_INFO> qualifier = make_qualifier(kIdQtCps);
    if (!qualifier) return nullptr;
    qualifier->cPSuri = new_string(TLX_TAG_IA5_STRING, octets_of_text(uri));
    return qualifier->cPSuri != nullptr ? qualifier.release() : nullptr;
}

POLICY_QUALIFIER_INFO *create_POLICY_QUALIFIER_INFO_userNotice(const USER_NOTICE *notice) {
    if (notice == nullptr) return nullptr;
    Owned<POLICY_QUALIFIER_INFO> qualifier = make_qualifier(kIdQtUnotice);
    if (!qualifier) return nullptr;
    qualifier->userNotice = dup_USER_NOTICE(notice);
    return qualifier->userNotice != nullptr ? qualifier.release() : nullptr;
}
