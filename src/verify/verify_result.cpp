#include "verify/verify_result.hpp"

#include <algorithm>

#include "asn1/asn1_time_calendar.hpp"
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

/// Null for kNone.
const RuleText *text_of(Rule rule) noexcept {
    const auto *found = std::ranges::find(kRuleTexts, rule, &RuleText::rule);
    return found == std::end(kRuleTexts) ? nullptr : found;
}

u32 get_finding(const Array<Finding> &findings, u32 index, VERIFY_FINDING *out) noexcept {
    if (out == nullptr || index >= findings.size()) return 1;
    const Finding &finding = findings[index];
    const RuleText *text = text_of(finding.rule);
    if (text == nullptr) return 1;
    *out = {finding.certificate, static_cast<u32>(finding.rule), text->name + 1, text->section, text->text};
    return 0;
}

/// Octets that a result keeps, with their length. Null for none.
const u8 *get_octets(const VERIFY_RESULT *result, Array<VERIFY_RESULT::Range> VERIFY_RESULT::*ranges,
                     u32 index, u32 *len) noexcept {
    if (len == nullptr) return nullptr;
    *len = 0;
    if (result == nullptr || index >= (result->*ranges).size()) return nullptr;
    const Bytes octets = result->bytes_of((result->*ranges)[index]);
    *len = static_cast<u32>(octets.size());
    return octets.empty() ? nullptr : octets.data();
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
    return get_octets(result, &VERIFY_RESULT::certificates, index, len);
}

uint32_t get_VERIFY_RESULT_revocation(const VERIFY_RESULT *result, uint32_t index,
                                      VERIFY_REVOCATION *revocation) {
    if (revocation == nullptr || index >= get_VERIFY_RESULT_path_count(result)) return 1;
    const RevocationState state = index < result->states.size() ? result->states[index] : RevocationState();
    const RuleText *text = text_of(state.why);
    *revocation = {state.state,
                   state.source,
                   state.reason,
                   calendar_time(state.time),
                   static_cast<u32>(state.why),
                   text == nullptr ? nullptr : text->text};
    return 0;
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

const uint8_t *get_VERIFY_RESULT_policy_qualifiers(const VERIFY_RESULT *result, uint32_t index,
                                                   uint32_t *len) {
    return get_octets(result, &VERIFY_RESULT::qualifiers, index, len);
}

uint32_t get_VERIFY_RESULT_candidates(const VERIFY_RESULT *result) {
    return result == nullptr ? 0 : result->candidates;
}

uint32_t get_VERIFY_RESULT_paths(const VERIFY_RESULT *result) {
    return result == nullptr ? 0 : result->paths;
}

uint32_t get_VERIFY_RESULT_attempt_count(const VERIFY_RESULT *result) {
    return result == nullptr ? 0 : result->attempts.size();
}

uint32_t get_VERIFY_RESULT_attempt(const VERIFY_RESULT *result, uint32_t index, VERIFY_ATTEMPT *attempt) {
    if (result == nullptr || attempt == nullptr) return 1;
    attempt->certificate = get_octets(result, &VERIFY_RESULT::tried, index, &attempt->certificate_len);
    return get_finding(result->attempts, index, &attempt->finding);
}

}  // extern "C"
