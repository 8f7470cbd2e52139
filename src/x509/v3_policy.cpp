// Certificate policies and policy mappings.
#include <tlxpki/x509v3_policy.h>

#include <cstring>

#include "x509/extension_records.hpp"

using namespace tlx;

namespace {

// noticeNumbers SEQUENCE OF INTEGER
using NoticeNumbers = List<Integer>;

// NoticeReference ::= SEQUENCE { organization DisplayText, noticeNumbers SEQUENCE OF INTEGER }
constexpr auto kNoticeReference =
    record<NOTICE_REFERENCE>(exactly(2), field<Text>(&NOTICE_REFERENCE::organization),
                             field<NoticeNumbers>(&NOTICE_REFERENCE::noticeNumbers));

// UserNotice ::= SEQUENCE { noticeRef NoticeReference OPTIONAL, explicitText DisplayText OPTIONAL }
constexpr auto kUserNotice =
    record<USER_NOTICE>(between(0, 2), optional<Nested<NOTICE_REFERENCE>>(&USER_NOTICE::noticeRef),
                        optional<Text>(&USER_NOTICE::explicitText));

constexpr std::string_view kIdQtCps = "1.3.6.1.5.5.7.2.1";
constexpr std::string_view kIdQtUnotice = "1.3.6.1.5.5.7.2.2";

// PolicyQualifierInfo ::= SEQUENCE {
//     policyQualifierId PolicyQualifierId, qualifier ANY DEFINED BY policyQualifierId }
using Qualifier = POLICY_QUALIFIER_INFO;
constexpr auto kPolicyQualifierInfo =
    record<Qualifier>(exactly(2), field<Oid>(&Qualifier::policyQualifierId),
                      defined_by(&Qualifier::policyQualifierId, field<Node>(&Qualifier::other),
                                 when(kIdQtCps, field<Text>(&Qualifier::cPSuri)),
                                 when(kIdQtUnotice, field<Nested<USER_NOTICE>>(&Qualifier::userNotice))));

// policyQualifiers SEQUENCE SIZE (1..MAX) OF PolicyQualifierInfo
using PolicyQualifierInfos = OneOrMore<Nested<POLICY_QUALIFIER_INFO>>;

// PolicyInformation ::= SEQUENCE {
//     policyIdentifier CertPolicyId,
//     policyQualifiers SEQUENCE SIZE (1..MAX) OF PolicyQualifierInfo OPTIONAL }
constexpr auto kPolicyInfo =
    record<POLICY_INFO>(between(1, 2), field<Oid>(&POLICY_INFO::policyIdentifier),
                        optional<PolicyQualifierInfos>(&POLICY_INFO::policyQualifiers));

// CertificatePolicies ::= SEQUENCE SIZE (1..MAX) OF PolicyInformation
using CertificatePolicies = OneOrMore<Nested<POLICY_INFO>>;

// PolicyMappings ::= SEQUENCE SIZE (1..MAX) OF SEQUENCE {
//     issuerDomainPolicy CertPolicyId, subjectDomainPolicy CertPolicyId }
constexpr auto kPolicyMapping =
    record<POLICY_MAPPING>(exactly(2), field<Oid>(&POLICY_MAPPING::issuerDomainPolicy),
                           field<Oid>(&POLICY_MAPPING::subjectDomainPolicy));
using PolicyMappings = OneOrMore<Nested<POLICY_MAPPING>>;

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

TLX_DEFINE_LIST(NOTICE_NUMBERS, BIGINT, NoticeNumbers)
TLX_DEFINE_RECORD(NOTICE_REFERENCE, kNoticeReference)
TLX_DEFINE_RECORD(USER_NOTICE, kUserNotice)
TLX_DEFINE_RECORD(POLICY_QUALIFIER_INFO, kPolicyQualifierInfo)
TLX_DEFINE_LIST(POLICY_QUALIFIER_INFOS, POLICY_QUALIFIER_INFO, PolicyQualifierInfos)
TLX_DEFINE_RECORD(POLICY_INFO, kPolicyInfo)
TLX_DEFINE_LIST(CERTIFICATE_POLICIES, POLICY_INFO, CertificatePolicies)
TLX_DEFINE_RECORD(POLICY_MAPPING, kPolicyMapping)
TLX_DEFINE_LIST(POLICY_MAPPINGS, POLICY_MAPPING, PolicyMappings)

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
