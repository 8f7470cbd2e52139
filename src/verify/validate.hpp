// Validation of one path (RFC 5280, section 6.1), one function a step, in the standard's order.
#pragma once

#include "verify/policy_graph.hpp"
#include "verify/session.hpp"

namespace tlx {

/// Anchor first, target last.
using Path = Array<const StoreEntry *>;

struct Finding {
    u32 certificate;  ///< its place in the path
    Rule rule;
};

/// What is known of a certificate's revocation.
struct RevocationState {
    u32 state = TLX_REVOCATION_NOT_CHECKED;
    u32 source = TLX_REVOCATION_SOURCE_NONE;
    u32 reason = 0;
    std::int64_t time = 0;
    Rule why = Rule::kNone;  ///< of an undetermined one
};

/// What a validation found: the path is valid when nothing.
struct Verdict {
    Array<Finding> findings;
    Array<Finding> warnings;
    Array<Policy> policies;         ///< in the anchor's domain, those that the user accepts
    Array<RevocationState> states;  ///< of the certificates of the path, as far as they were judged
    bool out_of_memory = false;

    /// Adds a finding; ignores kNone and one that was found just before.
    void note(u32 certificate, Rule rule) noexcept {
        const bool known =
            !findings.empty() && findings.back().rule == rule && findings.back().certificate == certificate;
        if (rule == Rule::kNone || known) return;
        if (rule == Rule::kNoMemory || !findings.append({certificate, rule})) out_of_memory = true;
    }
};

/// Validates a path whose names chain. It goes on after a finding, so that all are found.
void validate_path(const Path &path, const Settings &settings, Session &session, Verdict &verdict) noexcept;

}  // namespace tlx
