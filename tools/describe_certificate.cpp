#include "describe.hpp"

namespace tool {

namespace {

std::string digest_of(uint32_t digest_id, Octets octets) {
    uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    uint32_t size = 0;
    must(Digest(digest_id, octets.data(), static_cast<uint32_t>(octets.size()), digest, &size));
    return hex({digest, size});
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

/// Whether the library writes the certificate as it was read. Otherwise its signature cannot be verified.
bool is_kept(const X509_CERT *cert, Octets der) {
    uint8_t *octets = nullptr;
    const uint32_t size = writeDER_to_Binary(cert, TLX_ENCODER(X509_CERT_to_Seq), &octets);
    if (size == 0xFFFFFFFF) return false;
    const Owned<uint8_t, tlx_free> owner(octets);
    return std::equal(octets, octets + size, der.begin(), der.end());
}

}  // namespace

Json describe_policies(const CERTIFICATE_POLICIES *policies) {
    return describe_items(policies, get_CERTIFICATE_POLICIES_count, get_CERTIFICATE_POLICIES_child,
                          describe_policy);
}

Json describe_certificate(const X509_CERT *cert, Octets der) {
    Json json = {{"kind", "certificate"},
                 {"version", get_X509_version(cert) + 1},
                 {"serial", number_hex(get_X509_serial(cert))},
                 {"serial_decimal", number_text(get_X509_serial(cert))},
                 {"subject", name_text(get_X509_subject(cert))},
                 {"issuer", name_text(get_X509_issuer(cert))},
                 {"not_before", time_text(get_X509_notBefore(cert))},
                 {"not_after", time_text(get_X509_notAfter(cert))},
                 {"signature_algorithm", algorithm_name(get_X509_sig_alg(cert))},
                 {"public_key", describe_public_key(get_X509_SPKI(cert))}};
    json["extensions"] = describe_items(get_X509_extensions(cert), get_X509_EXTENSION_count,
                                        get_X509_EXTENSION, describe_extension);
    json["digests"] = {{"sha1", digest_of(TLX_DIGEST_SHA1, der)},
                       {"sha256", digest_of(TLX_DIGEST_SHA256, der)}};
    if (!is_kept(cert, der)) {
        json["note"] =
            "this certificate is not written as it was read, so that its signature will not verify";
    }
    return json;
}

}  // namespace tool
