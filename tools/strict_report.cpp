#include "strict_report.hpp"

#include "path_report.hpp"
#include "revocation.hpp"

namespace tool {

namespace {

Json describe_finding(const VERIFY_FINDING &finding) {
    return {{"certificate", finding.certificate},
            {"rule", finding.rule},
            {"section", finding.section},
            {"status", code_text(finding.status)},
            {"text", finding.text}};
}

Json describe_findings(const VERIFY_RESULT *result) {
    Json findings = Json::array();
    VERIFY_FINDING finding;
    for (uint32_t i = 0; get_VERIFY_RESULT_finding(result, i, &finding) == 0; ++i) {
        findings.push_back(describe_finding(finding));
    }
    return findings;
}

/// Where no path reached an anchor, nothing above and below a finding was judged.
Mark mark_of(const Json &findings, uint32_t certificate, bool was_validated) {
    for (const Json &finding : findings) {
        if (finding["certificate"] == certificate) return Mark::kFailed;
    }
    return was_validated ? Mark::kGood : Mark::kUnchecked;
}

Json describe_revocation(const VERIFY_RESULT *result, uint32_t certificate) {
    constexpr const char *kRevocationStates[] = {"not checked", "good", "revoked", "undetermined", "exempt"};
    constexpr const char *kSources[] = {"none", "crl", "ocsp"};
    VERIFY_REVOCATION known{};
    (void)get_VERIFY_RESULT_revocation(result, certificate, &known);
    Json json = {{"state", kRevocationStates[known.state]}};
    if (known.source != TLX_REVOCATION_SOURCE_NONE) json["source"] = kSources[known.source];
    if (known.state == TLX_REVOCATION_REVOKED) {
        json["time"] = time_text(known.time);
        json["reason"] = reason_name(known.reason);
    }
    if (known.status != 0) {
        json["status"] = code_text(known.status);
        json["text"] = known.text;
    }
    return json;
}

Json describe_path(const VERIFY_RESULT *result, const Json &findings) {
    Json path = Json::array();
    for (uint32_t i = 0; i < get_VERIFY_RESULT_path_count(result); ++i) {
        const Certificate cert = result_certificate(result, i);
        const Mark mark = mark_of(findings, i, get_VERIFY_RESULT_paths(result) > 0);
        path.push_back(describe_path_certificate(cert.get(), mark));
        path.back()["revocation"] = describe_revocation(result, i);
    }
    return path;
}

Json describe_policies(const VERIFY_RESULT *result) {
    Json policies = Json::array();
    for (uint32_t i = 0; i < get_VERIFY_RESULT_policy_count(result); ++i) {
        OBJECT_IDENTIFIER *policy = nullptr;
        must(get_VERIFY_RESULT_policy(result, i, &policy));
        policies.push_back(dotted_text(Oid(policy).get()));
    }
    return policies;
}

}  // namespace

Certificate decode_received(Octets octets) {
    X509_CERT *cert = nullptr;
    const uint32_t status =
        readDER_from_Buffer(reinterpret_cast<void **>(&cert), TLX_DECODER(Seq_to_X509_CERT), octets.data(),
                            static_cast<uint32_t>(octets.size()));
    return Certificate(status == 0 ? cert : nullptr);
}

Certificate result_certificate(const VERIFY_RESULT *result, uint32_t index) {
    uint32_t size = 0;
    const uint8_t *octets = get_VERIFY_RESULT_certificate(result, index, &size);
    return octets == nullptr ? nullptr : decode_received({octets, size});
}

Json describe_result(const VERIFY_RESULT *result) {
    Json findings = describe_findings(result);
    Json path = describe_path(result, findings);
    return {{"path", std::move(path)},
            {"policies", describe_policies(result)},
            {"findings", std::move(findings)},
            {"candidates", get_VERIFY_RESULT_candidates(result)},
            {"paths", get_VERIFY_RESULT_paths(result)}};
}

std::vector<std::string> result_warnings(const VERIFY_RESULT *result, const Json &description) {
    std::vector<std::string> warnings;
    VERIFY_FINDING warning;
    for (uint32_t i = 0; get_VERIFY_RESULT_warning(result, i, &warning) == 0; ++i) {
        warnings.push_back(shown_subject(description["path"][warning.certificate]["subject"]) + ": " +
                           finding_line(describe_finding(warning)));
    }
    return warnings;
}

}  // namespace tool
