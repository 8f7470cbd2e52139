#include "describe.hpp"
#include "element.hpp"
#include "whole_name.hpp"

namespace tool {

namespace {

constexpr char kPss[] = "1.2.840.113549.1.1.10";
constexpr uint8_t kVersionTag = 0xA0;
constexpr std::size_t kMostSerialOctets = 0x7F;
constexpr std::size_t kSerial = 0;
constexpr std::size_t kIssuer = 2;
constexpr std::size_t kSubject = 4;

std::string digest_of(uint32_t digest_id, Octets octets) {
    uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    uint32_t size = 0;
    must(Digest(digest_id, octets.data(), static_cast<uint32_t>(octets.size()), digest, &size));
    std::string text = hex({digest, 1});
    for (uint32_t i = 1; i < size; ++i) {
        text += ":" + hex({digest + i, 1});
    }
    return text;
}

Json describe_notice(const USER_NOTICE *notice) {
    Json json = Json::object();
    if (notice->noticeRef != nullptr) {
        json["organization"] = text_of(notice->noticeRef->organization);
        json["numbers"] = describe_items<NOTICE_NUMBERS, BIGINT>(
            notice->noticeRef->noticeNumbers, get_NOTICE_NUMBERS_count, get_NOTICE_NUMBERS_child,
            [](const BIGINT *number) { return Json(number_text(number)); });
    }
    if (notice->explicitText != nullptr) json["text"] = text_of(notice->explicitText);
    return json;
}

Json describe_qualifier(const POLICY_QUALIFIER_INFO *qualifier) {
    if (qualifier->cPSuri != nullptr) return {{"cps", text_of(qualifier->cPSuri)}};
    if (qualifier->userNotice != nullptr) return {{"notice", describe_notice(qualifier->userNotice)}};
    return {{"qualifier", oid_json(qualifier->policyQualifierId)}};
}

Json describe_policy(const POLICY_INFO *policy) {
    Json json = {{"policy", oid_json(policy->policyIdentifier)}};
    if (policy->policyQualifiers != nullptr) {
        json["qualifiers"] = describe_items(policy->policyQualifiers, get_POLICY_QUALIFIER_INFOS_count,
                                            get_POLICY_QUALIFIER_INFOS_child, describe_qualifier);
    }
    return json;
}

/// Says whether the certificate is signed with its own key, unless the library cannot verify with that key.
void add_self_signed(Json &json, const X509_CERT *cert) {
    const bool self_issued = is_selfSigned(cert) == 0;
    const uint32_t status = self_issued ? verify_SIG_X509_CERT(cert, get_X509_SPKI(cert)) : 0;
    if (status != 0 && status != TLX_RSA_BAD_SIGNATURE && status != TLX_KCDSA_BAD_SIGNATURE) return;
    json["self_signed"] = self_issued && status == 0;
}

/// TBSCertificate  ::=  SEQUENCE  {
///      version         [0]  EXPLICIT Version DEFAULT v1,
///      serialNumber         CertificateSerialNumber,
///      signature            AlgorithmIdentifier,
///      issuer               Name,
///      validity             Validity,
///      subject              Name,
///      ...  }
/// A member as it was received, counted from the serial number.
Octets member_of(Octets der, std::size_t index) {
    const Octets tbs = child_of(der, 0);
    const Octets first = child_of(tbs, 0);
    return child_of(tbs, !first.empty() && first[0] == kVersionTag ? index + 1 : index);
}

/// Sets a name with all of its pairs, of which the record has the first of each relative distinguished name.
void add_name(Json &json, const char *key, const X509_NAME *name, Octets received) {
    const std::string whole = whole_name(received);
    json[key] = whole.empty() ? name_text(name) : whole;
    if (whole.empty()) return;
    json["notes"].push_back(std::string("the ") + key +
                            " has several pairs in one relative distinguished name; paths and comparisons "
                            "see the first of them");
}

/// Sets the serial number, whose octets are a two's complement. The number in the record has no sign.
void add_serial(Json &json, const X509_CERT *cert, Octets der) {
    const Octets contents = contents_of(member_of(der, kSerial));
    if (contents.empty() || contents.size() > kMostSerialOctets || contents[0] < 0x80) {
        json["serial"] = number_hex(get_X509_serial(cert));
        json["serial_decimal"] = number_text(get_X509_serial(cert));
        return;
    }
    std::vector<uint8_t> element{TLX_TAG_INTEGER, static_cast<uint8_t>(contents.size())};
    for (const uint8_t octet : contents) {
        element.push_back(static_cast<uint8_t>(~octet));
    }
    // The first octet has its high bit clear, so that the one that is added is not carried past it.
    std::size_t last = element.size() - 1;
    while (++element[last] == 0) {
        --last;
    }
    const auto magnitude = made<Owned<BIGINT, free_BIGINT>>(decodeToBERInteger(element.data()));
    json["serial"] = "-" + number_hex(magnitude.get());
    json["serial_decimal"] = "-" + number_text(magnitude.get());
}

}  // namespace

Json describe_policies(const CERTIFICATE_POLICIES *policies) {
    return describe_items(policies, get_CERTIFICATE_POLICIES_count, get_CERTIFICATE_POLICIES_child,
                          describe_policy);
}

Json describe_certificate_briefly(const X509_CERT *cert) {
    return {{"subject", name_text(get_X509_subject(cert))},
            {"issuer", name_text(get_X509_issuer(cert))},
            {"serial", number_hex(get_X509_serial(cert))},
            {"not_before", time_text(get_X509_notBefore(cert))},
            {"not_after", time_text(get_X509_notAfter(cert))},
            {"public_key", key_line(get_X509_SPKI(cert))}};
}

Json describe_certificate(const X509_CERT *cert, Octets der) {
    Json json = {{"kind", "certificate"}, {"version", get_X509_version(cert) + 1}};
    add_serial(json, cert, der);
    add_name(json, "subject", get_X509_subject(cert), member_of(der, kSubject));
    add_name(json, "issuer", get_X509_issuer(cert), member_of(der, kIssuer));
    json.update({{"not_before", time_text(get_X509_notBefore(cert))},
                 {"not_after", time_text(get_X509_notAfter(cert))}});
    add_self_signed(json, cert);
    json["signature_algorithm"] = algorithm_name(get_X509_sig_alg(cert));
    const Octets parameters = child_of(child_of(der, 1), 1);
    if (dotted_text(get_X509_sig_alg(cert)) == kPss) json["pss"] = describe_pss(parameters);
    json["public_key"] = describe_public_key(get_X509_SPKI(cert));
    json["extensions"] = describe_items(get_X509_extensions(cert), get_X509_EXTENSION_count,
                                        get_X509_EXTENSION, describe_extension);
    json["digests"] = {{"sha1", digest_of(TLX_DIGEST_SHA1, der)},
                       {"sha256", digest_of(TLX_DIGEST_SHA256, der)}};
    if (check_X509_received(cert) != 0) {
        json["notes"].push_back(
            "the library does not write this certificate as it was read, so that its "
            "signature does not verify");
    }
    return json;
}

}  // namespace tool
