#include "strict_report.hpp"

#include "path_report.hpp"

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

Json describe_path(const VERIFY_RESULT *result, const Json &findings) {
    Json path = Json::array();
    for (uint32_t i = 0; i < get_VERIFY_RESULT_path_count(result); ++i) {
        const Certificate cert = result_certificate(result, i);
        const Mark mark = mark_of(findings, i, get_VERIFY_RESULT_paths(result) > 0);
        path.push_back(describe_path_certificate(cert.get(), mark));
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

Certificate result_certificate(const VERIFY_RESULT *result, uint32_t index) {
    uint32_t size = 0;
    const uint8_t *octets = get_VERIFY_RESULT_certificate(result, index, &size);
    X509_CERT *cert = nullptr;
    if (octets == nullptr || readDER_from_Buffer(reinterpret_cast<void **>(&cert),
                                                 TLX_DECODER(Seq_to_X509_CERT), octets, size) != 0) {
        return nullptr;
    }
    return Certificate(cert);
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
