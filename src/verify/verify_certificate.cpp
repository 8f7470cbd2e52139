// One verification: settings in, findings out.
#include <ctime>
#include <string_view>

#include "asn1/asn1_time_calendar.hpp"
#include "der/encoder.hpp"
#include "verify/verify_result.hpp"

using namespace tlx;

namespace {

Bytes text_of(const char *text) noexcept {
    const std::string_view view(text == nullptr ? "" : text);
    return {reinterpret_cast<const u8 *>(view.data()), view.size()};
}

u32 anchor_rules_of(u32 choice) noexcept {
    switch (choice) {
        case TLX_ANCHOR_RULES_NONE:
            return 0;
        case TLX_ANCHOR_RULES_VALIDITY:
            return kAnchorValidity;
        case TLX_ANCHOR_RULES_CONSTRAINTS:
            return kAnchorConstraints;
        default:
            return kAnchorValidity | kAnchorConstraints;
    }
}

void set_budget(Budget &budget, const VERIFY_BUDGET &wanted) noexcept {
    const std::pair<u32 *, u32> members[] = {{&budget.signatures, wanted.signatures},
                                             {&budget.candidates, wanted.candidates},
                                             {&budget.path_length, wanted.path_length},
                                             {&budget.policy_nodes, wanted.policy_nodes},
                                             {&budget.name_comparisons, wanted.name_comparisons},
                                             {&budget.fetches, wanted.fetches}};
    for (const auto &[member, value] : members) {
        if (value != 0) *member = value;
    }
}

bool are_in_range(const VERIFY_SETTINGS &settings) noexcept {
    const bool has_address = settings.address != nullptr;
    return settings.profile <= TLX_PROFILE_ANY && settings.anchor_rules <= TLX_ANCHOR_RULES_CONSTRAINTS &&
           settings.purpose <= TLX_PURPOSE_KEY_MANAGEMENT && settings.revocation <= TLX_REVOCATION_PATH &&
           (!has_address || settings.address_len == 4 || settings.address_len == 16);
}

/// The settings that the caller's stand for. The policies are written to `policies`, which has to outlive
/// them. False for settings that are not as documented, and when memory runs out.
bool read_settings(const VERIFY_SETTINGS &from, Encoder &policies, Settings &to) noexcept {
    if (!are_in_range(from)) return false;
    to.time = from.time == nullptr ? std::time(nullptr) : calendar_seconds(*from.time);
    to.profile = static_cast<Profile>(from.profile);
    to.least_rsa_bits = from.least_rsa_bits;
    to.accepted = from.accepted_faults;
    to.anchor_rules = anchor_rules_of(from.anchor_rules);
    for (u32 i = 0; i < get_STACK_count(from.policies); ++i) {
        policies.oid(static_cast<const OBJECT_IDENTIFIER *>(get_STACK_value(from.policies, i)));
    }
    to.user_policies = policies.bytes();
    to.explicit_policy = from.explicit_policy != 0;
    to.inhibit_mapping = from.inhibit_mapping != 0;
    to.inhibit_any_policy = from.inhibit_any_policy != 0;
    to.purpose = static_cast<Purpose>(from.purpose);
    to.host = text_of(from.host);
    if (from.address != nullptr) to.address = {from.address, from.address_len};
    to.mailbox = text_of(from.mailbox);
    set_budget(to.budget, from.budget);
    constexpr u32 kDay = 86400;
    to.response_age = from.response_age != 0 ? from.response_age : kDay;
    to.fetch = from.fetch;
    to.fetch_context = from.fetch_context;
    return policies.ok();
}

RevocationMode mode_of(u32 choice, const Settings &settings, const Store &store, const Store *pool) noexcept {
    constexpr RevocationMode kModes[] = {RevocationMode::off, RevocationMode::off, RevocationMode::present,
                                         RevocationMode::target, RevocationMode::path};
    const bool has_status = settings.fetch != nullptr || store.status().size() != 0 ||
                            (pool != nullptr && pool->status().size() != 0);
    return choice == TLX_REVOCATION_DEFAULT && has_status ? RevocationMode::present : kModes[choice];
}

void judge(StoreEntry &target, Bytes octets, const Settings &settings, Session &session,
           SearchResult &found) noexcept {
    const Rule rule = read_entry(octets, settings.accepted, target);
    if (rule == Rule::kNone) {
        search_path(target, nullptr, settings, session, found);
        return;
    }
    target.view.whole = octets;
    if (!found.path.append(&target)) found.verdict.out_of_memory = true;
    found.verdict.note(0, rule);
}

bool keep_found(SearchResult &found, VERIFY_RESULT &result) noexcept {
    result.findings.swap(found.verdict.findings);
    result.warnings.swap(found.verdict.warnings);
    result.states.swap(found.verdict.states);
    result.paths = found.paths;
    for (const StoreEntry *entry : found.path) {
        if (!result.keep(result.certificates, entry->view.whole)) return false;
    }
    for (const Policy &policy : found.verdict.policies) {
        if (!result.keep(result.policies, policy.oid) || !result.keep(result.qualifiers, policy.qualifiers)) {
            return false;
        }
    }
    for (const Attempt &attempt : found.attempts) {
        if (!result.keep(result.tried, attempt.certificate->view.whole) ||
            !result.attempts.append({attempt.place, attempt.rule})) {
            return false;
        }
    }
    return true;
}

}  // namespace

extern "C" {

uint32_t verify_CERTIFICATE(const VERIFY_STORE *store, const VERIFY_STORE *pool, const uint8_t *certificate,
                            uint32_t len, const VERIFY_SETTINGS *settings, VERIFY_RESULT **result) {
    if (store == nullptr || certificate == nullptr) return 0x550A0049;
    constexpr VERIFY_SETTINGS kDefaults = {};
    Encoder policies;
    Settings wanted;
    if (!read_settings(settings == nullptr ? kDefaults : *settings, policies, wanted)) {
        return policies.out_of_memory() ? static_cast<u32>(Rule::kNoMemory) : 0x550A0048;
    }
    const Store *more = pool == nullptr ? nullptr : &pool->store;
    wanted.revocation = mode_of(settings == nullptr ? 0 : settings->revocation, wanted, store->store, more);
    StoreEntry target;
    SearchResult found;
    Session session(store->store, more, wanted);
    judge(target, {certificate, len}, wanted, session, found);
    if (found.verdict.out_of_memory) return static_cast<u32>(Rule::kNoMemory);
    const u32 status = found.verdict.findings.empty() ? 0 : static_cast<u32>(found.verdict.findings[0].rule);
    if (result == nullptr) return status;
    OwnedObject<VERIFY_RESULT> made = make_object<VERIFY_RESULT>();
    if (!made || !keep_found(found, *made)) return static_cast<u32>(Rule::kNoMemory);
    made->candidates = session.candidates();
    *result = made.release();
    return status;
}

}  // extern "C"
