#include "verify/verify_result.hpp"

#include "der/values.hpp"

using namespace tlx;

namespace {

struct RuleText {
    Rule rule;
    const char *name;
    const char *section;
    const char *text;
};

// Names without their first letter, k.
constexpr RuleText kRuleTexts[] = {
#define RULE(name, status, section, text) {Rule::name, #name, section, text},
#include "verify/rules.inc"
#undef RULE
};

u32 get_finding(const Array<Finding> &findings, u32 index, VERIFY_FINDING *out) noexcept {
    if (out == nullptr || index >= findings.size()) return 1;
    const Finding &finding = findings[index];
    for (const RuleText &each : kRuleTexts) {
        if (each.rule != finding.rule) continue;
        *out = {finding.certificate, static_cast<u32>(finding.rule), each.name + 1, each.section, each.text};
        return 0;
    }
    return 1;
}

}  // namespace

extern "C" {

void free_VERIFY_RESULT(VERIFY_RESULT *result) {
    Destroy<VERIFY_RESULT>{}(result);
}

uint32_t get_VERIFY_RESULT_finding_count(const VERIFY_RESULT *result) {
    return result == nullptr ? 0 : result->findings.size();
}

uint32_t get_VERIFY_RESULT_finding(const VERIFY_RESULT *result, uint32_t index, VERIFY_FINDING *finding) {
    return result == nullptr ? 1 : get_finding(result->findings, index, finding);
}

uint32_t get_VERIFY_RESULT_warning_count(const VERIFY_RESULT *result) {
    return result == nullptr ? 0 : result->warnings.size();
}

uint32_t get_VERIFY_RESULT_warning(const VERIFY_RESULT *result, uint32_t index, VERIFY_FINDING *warning) {
    return result == nullptr ? 1 : get_finding(result->warnings, index, warning);
}

uint32_t get_VERIFY_RESULT_path_count(const VERIFY_RESULT *result) {
    return result == nullptr ? 0 : result->certificates.size();
}

const uint8_t *get_VERIFY_RESULT_certificate(const VERIFY_RESULT *result, uint32_t index, uint32_t *len) {
    if (len == nullptr) return nullptr;
    *len = 0;
    if (result == nullptr || index >= result->certificates.size()) return nullptr;
    const Bytes octets = result->bytes_of(result->certificates[index]);
    *len = static_cast<u32>(octets.size());
    return octets.empty() ? nullptr : octets.data();
}

uint32_t get_VERIFY_RESULT_policy_count(const VERIFY_RESULT *result) {
    return result == nullptr ? 0 : result->policies.size();
}

uint32_t get_VERIFY_RESULT_policy(const VERIFY_RESULT *result, uint32_t index, OBJECT_IDENTIFIER **policy) {
    if (result == nullptr || policy == nullptr || index >= result->policies.size()) return 1;
    OBJECT_IDENTIFIER *made = decode_oid(result->bytes_of(result->policies[index]));
    if (made == nullptr) return 1;
    free_ASN1_STRING(std::exchange(*policy, made));
    return 0;
}

uint32_t get_VERIFY_RESULT_candidates(const VERIFY_RESULT *result) {
    return result == nullptr ? 0 : result->candidates;
}

uint32_t get_VERIFY_RESULT_paths(const VERIFY_RESULT *result) {
    return result == nullptr ? 0 : result->paths;
}

}  // extern "C"
