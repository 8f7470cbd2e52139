#include "verify/validate.hpp"

#include <algorithm>

#include "verify/name_constraints.hpp"
#include "verify/purpose.hpp"
#include "verify/revocation.hpp"
#include "verify/strength.hpp"

namespace tlx {
namespace {

class Validation {
  public:
    Validation(const Path &path, const Settings &settings, Session &session, Verdict &verdict) noexcept
        : path_(path),
          settings_(settings),
          session_(session),
          verdict_(verdict),
          last_(path.size() - 1),
          graph_(settings.budget.policy_nodes),
          name_budget_(settings.budget.name_comparisons) {}

    void run() noexcept {
        initialise();
        judge_anchor();
        for (u32 i = 1; i <= last_; ++i) {
            process(i);
            if (i < last_) prepare_next(i);
        }
        wrap_up();
    }

  private:
    void note(u32 place, Rule rule) noexcept { verdict_.note(place, rule); }
    const CertificateView &view(u32 place) const noexcept { return path_[place]->view; }
    bool is_self_issued(u32 place) const noexcept {
        return are_equal_names(view(place).issuer, view(place).subject);
    }

    void initialise() noexcept;
    void judge_anchor() noexcept;
    void judge_key(u32 place) noexcept { note(place, check_strength(path_[place]->key, settings_)); }
    void judge_time(u32 place) noexcept;

    void process(u32 place) noexcept;
    void judge_signature(u32 place) noexcept;
    void judge_revocation(u32 place) noexcept;
    void judge_names(u32 place) noexcept;
    void judge_policies(u32 place) noexcept;

    void prepare_next(u32 place) noexcept;
    void take_key(u32 place) noexcept;
    void take_counters(u32 place) noexcept;
    void judge_issuer(u32 place) noexcept;
    void judge_extensions(u32 place) noexcept;
    void limit_counters(u32 place) noexcept;

    void wrap_up() noexcept;

    const Path &path_;
    const Settings &settings_;
    Session &session_;
    Verdict &verdict_;
    const u32 last_;  ///< place of the target, and the number of certificates below the anchor

    PolicyGraph graph_;
    u32 explicit_policy_ = 0;
    u32 policy_mapping_ = 0;
    u32 inhibit_any_policy_ = 0;
    u32 max_path_length_ = 0;
    u32 name_budget_;
    PublicKey inherited_;  ///< the working key, when its parameters are those of a key above
    bool has_inherited_ = false;
};

// 6.1.2
void Validation::initialise() noexcept {
    explicit_policy_ = settings_.explicit_policy ? 0 : last_ + 1;
    policy_mapping_ = settings_.inhibit_mapping ? 0 : last_ + 1;
    inhibit_any_policy_ = settings_.inhibit_any_policy ? 0 : last_ + 1;
    max_path_length_ = last_;
}

// The anchor's certificate, as far as the settings let it count (RFC 5937). Its signature is never verified.
void Validation::judge_anchor() noexcept {
    judge_key(0);
    if (!verdict_.states.append({})) verdict_.out_of_memory = true;
    if (!path_[0]->has_certificate) return;
    if ((settings_.anchor_rules & kAnchorValidity) != 0) judge_time(0);
    if ((settings_.anchor_rules & kAnchorConstraints) == 0) return;
    judge_extensions(0);
    if (last_ == 0) return;
    const CertificateView &anchor = view(0);
    if (anchor.extensions[kBasicConstraints].present && !anchor.is_ca) note(0, Rule::kNotCa);
    if (anchor.extensions[kKeyUsage].present && (anchor.key_usage & kKeyCertSign) == 0) {
        note(0, Rule::kNoCertSign);
    }
    note(0, check_name_constraints(anchor));
    limit_counters(0);
}

void Validation::judge_time(u32 place) noexcept {
    const bool valid = settings_.time >= view(place).not_before && settings_.time <= view(place).not_after;
    if (!valid) note(place, Rule::kNotValidNow);
}

// 6.1.3
void Validation::process(u32 place) noexcept {
    judge_key(place);
    judge_signature(place);
    judge_time(place);
    judge_revocation(place);
    if (view(place).issuer.empty()) note(place, Rule::kEmptyIssuer);
    judge_names(place);
    judge_policies(place);
    if (view(place).ca_false_written && !verdict_.warnings.append({place, Rule::kCaFalse})) {
        verdict_.out_of_memory = true;
    }
}

// (a)(1)
void Validation::judge_signature(u32 place) noexcept {
    note(place, check_digest(view(place).algorithm, settings_));
    note(place, has_inherited_ ? session_.links.verify_with(view(place), inherited_)
                               : session_.links.verify(view(place), *path_[place - 1]));
}

// (a)(3)
void Validation::judge_revocation(u32 place) noexcept {
    const PublicKey &issuer_key = has_inherited_ ? inherited_ : path_[place - 1]->key;
    const RevocationState state = find_revocation(path_, place, issuer_key, settings_, session_);
    if (!verdict_.states.append(state)) verdict_.out_of_memory = true;
    const bool is_required = settings_.revocation == RevocationMode::path ||
                             (settings_.revocation == RevocationMode::target && place == last_);
    if (state.state == TLX_REVOCATION_REVOKED) note(place, Rule::kRevoked);
    if (state.state == TLX_REVOCATION_UNDETERMINED && is_required) note(place, state.why);
}

// (b) and (c)
void Validation::judge_names(u32 place) noexcept {
    const Rule readable = check_alternative_names(view(place));
    note(place, readable);
    if (readable != Rule::kNone || (place < last_ && is_self_issued(place))) return;
    const bool anchor_counts =
        path_[0]->has_certificate && (settings_.anchor_rules & kAnchorConstraints) != 0;
    for (u32 above = anchor_counts ? 0 : 1; above < place; ++above) {
        note(place, check_names(view(above), view(place), name_budget_));
    }
}

// (d), (e) and (f)
void Validation::judge_policies(u32 place) noexcept {
    const bool any_counts = inhibit_any_policy_ > 0 || (place < last_ && is_self_issued(place));
    note(place, graph_.add_policies(view(place), any_counts));
    if (explicit_policy_ == 0 && graph_.is_empty()) note(place, Rule::kNoPolicy);
}

// 6.1.4
void Validation::prepare_next(u32 place) noexcept {
    note(place, graph_.add_mappings(view(place), policy_mapping_ > 0));
    take_key(place);
    note(place, check_name_constraints(view(place)));
    take_counters(place);
    judge_issuer(place);
    judge_extensions(place);
}

// (d) to (f)
void Validation::take_key(u32 place) noexcept {
    if (!inherits_parameters(*path_[place])) {
        has_inherited_ = false;
        return;
    }
    PublicKey key;
    const CertificateView &certificate = view(place);
    Rule rule = make_key(certificate.key_algorithm, certificate.key, key);
    if (rule == Rule::kNone) {
        rule = inherit_parameters(has_inherited_ ? inherited_ : path_[place - 1]->key, key);
    }
    note(place, rule);
    inherited_ = std::move(key);
    has_inherited_ = true;
}

// (h) to (j), (l) and (m)
void Validation::take_counters(u32 place) noexcept {
    if (!is_self_issued(place)) {
        for (u32 *counter : {&explicit_policy_, &policy_mapping_, &inhibit_any_policy_}) {
            if (*counter > 0) --*counter;
        }
        if (max_path_length_ == 0) note(place, Rule::kPathTooLong);
        if (max_path_length_ > 0) --max_path_length_;
    }
    limit_counters(place);
}

void Validation::limit_counters(u32 place) noexcept {
    const CertificateView &certificate = view(place);
    explicit_policy_ = std::min(explicit_policy_, certificate.require_explicit_policy);
    policy_mapping_ = std::min(policy_mapping_, certificate.inhibit_policy_mapping);
    inhibit_any_policy_ = std::min(inhibit_any_policy_, certificate.inhibit_any_policy);
    max_path_length_ = std::min(max_path_length_, certificate.path_length);
}

// (k) and (n)
void Validation::judge_issuer(u32 place) noexcept {
    const CertificateView &certificate = view(place);
    if (certificate.version < 3) note(place, Rule::kOldVersion);
    if (certificate.version == 3 && !certificate.is_ca) note(place, Rule::kNotCa);
    if (certificate.subject.empty()) note(place, Rule::kEmptyCaSubject);
    const bool has_usage = certificate.extensions[kKeyUsage].present;
    if (has_usage && (certificate.key_usage & kKeyCertSign) == 0) note(place, Rule::kNoCertSign);
}

// (o)
void Validation::judge_extensions(u32 place) noexcept {
    if (!view(place).unknown_critical.empty()) note(place, Rule::kUnknownCritical);
}

// 6.1.5
void Validation::wrap_up() noexcept {
    if (last_ == 0) return;
    const CertificateView &target = view(last_);
    if (explicit_policy_ > 0) --explicit_policy_;
    if (target.require_explicit_policy == 0) explicit_policy_ = 0;
    judge_extensions(last_);
    note(last_, graph_.intersect(settings_.user_policies, verdict_.policies));
    if (explicit_policy_ == 0 && verdict_.policies.empty()) note(last_, Rule::kNoPolicy);
}

}  // namespace

void validate_path(const Path &path, const Settings &settings, Session &session, Verdict &verdict) noexcept {
    Validation(path, settings, session, verdict).run();
    judge_purpose(path, settings, verdict);
    judge_target_names(path, settings, verdict);
}

}  // namespace tlx
