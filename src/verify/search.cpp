#include "verify/search.hpp"

#include <algorithm>

namespace tlx {
namespace {

/// Issuers that one certificate is tried with, at most.
constexpr u32 kMostIssuers = 256;
/// Attempts that are kept, at most.
constexpr u32 kMostAttempts = 32;

struct Candidate {
    const StoreEntry *entry;
    u32 distance;  ///< the smaller, the more promising
    u32 place;     ///< among those found, which decides between equals

    [[nodiscard]] bool operator<(const Candidate &other) const noexcept {
        return distance != other.distance ? distance < other.distance : place < other.place;
    }
};

class Search {
  public:
    Search(const StoreEntry &target, const StoreEntry *anchor, const Settings &settings, Session &session,
           SearchResult &result) noexcept
        : target_(target), anchor_(anchor), settings_(settings), session_(session), result_(result) {}

    void run() noexcept {
        const bool found = path_.append(&target_) ? (equals_anchor() ? try_path() : extend())
                                                  : session_.fail(Rule::kNoMemory);
        if (!found) report_end();
    }

  private:
    /// Whether an anchor has the target's name and key.
    bool equals_anchor() const noexcept {
        const Store &store = session_.store();
        const StoreEntry *each = store.find_name(store.hash_of_name(target_.view.subject));
        for (; each != nullptr; each = each->next_of_name) {
            if (counts_as_anchor(store, *each) && is_same_holder(*each, target_)) return true;
        }
        return false;
    }
    /// Only the main store has anchors that count, and only one of them when the path has to end there.
    bool counts_as_anchor(const Store &store, const StoreEntry &entry) const noexcept {
        return entry.is_anchor && &store == &session_.store() &&
               (anchor_ == nullptr || is_same_holder(entry, *anchor_));
    }
    static bool is_same_holder(const StoreEntry &a, const StoreEntry &b) noexcept {
        return same(a.view.key_info, b.view.key_info) && are_equal_names(a.view.subject, b.view.subject);
    }

    void report_end() noexcept;
    void remember_end(Rule rule) noexcept;
    void forget_reported() noexcept;
    void give_up(const Attempt &attempt) noexcept;

    bool extend() noexcept;
    bool try_issuers(Array<Candidate> &candidates, Rule &refused) noexcept;
    bool try_issuer(const StoreEntry &issuer, Rule &refused) noexcept;
    bool try_path() noexcept;
    void gather(const Store &store, Array<Candidate> &candidates) noexcept;
    void offer(const Store &store, const StoreEntry &entry, Array<Candidate> &candidates) noexcept;
    u32 distance(const StoreEntry &entry) const noexcept;

    const StoreEntry &target_;
    const StoreEntry *anchor_;  ///< null for any
    const Settings &settings_;
    Session &session_;
    SearchResult &result_;
    Path path_;     ///< target first
    Path longest_;  ///< that reached no anchor, target first
    Rule longest_rule_ = Rule::kNone;
};

// What a complete path lacks says more than where others ended.
void Search::report_end() noexcept {
    Verdict &verdict = result_.verdict;
    if (result_.paths == 0) {
        result_.path.shrink(0);
        for (u32 i = longest_.size(); i-- > 0;) {
            if (!result_.path.append(longest_[i])) session_.fail(Rule::kNoMemory);
        }
        verdict.note(0, longest_rule_);
    }
    forget_reported();
    verdict.note(0, session_.end());
}

void Search::remember_end(Rule rule) noexcept {
    if (path_.size() <= longest_.size()) return;
    longest_rule_ = rule;
    longest_.shrink(0);
    for (const StoreEntry *entry : path_) {
        if (!longest_.append(entry)) session_.fail(Rule::kNoMemory);
    }
}

void Search::give_up(const Attempt &attempt) noexcept {
    Array<Attempt> &attempts = result_.attempts;
    const bool known = std::find(attempts.begin(), attempts.end(), attempt) != attempts.end();
    if (known || attempts.size() == kMostAttempts) return;
    if (!attempts.append(attempt)) session_.fail(Rule::kNoMemory);
}

/// The first finding says why a path, anchor first, is not valid.
Attempt attempt_of(const Path &path, const Verdict &verdict) noexcept {
    const Finding &first = verdict.findings[0];
    return {path[first.certificate], path.size() - 1 - first.certificate, first.rule};
}

/// Drops what the verdict is about.
void Search::forget_reported() noexcept {
    if (result_.verdict.findings.empty() || session_.end() == Rule::kNoMemory) return;
    Array<Attempt> &attempts = result_.attempts;
    const Attempt reported = attempt_of(result_.path, result_.verdict);
    const Attempt *end = std::remove(attempts.begin(), attempts.end(), reported);
    attempts.shrink(static_cast<u32>(end - attempts.begin()));
}

// Key identifiers that agree come before missing ones, and those before ones that differ. Then come
// certificates that are valid now, and anchors before others.
u32 Search::distance(const StoreEntry &entry) const noexcept {
    const Bytes wanted = path_.back()->view.authority_key;
    const Bytes own = entry.view.subject_key;
    const bool known = !wanted.empty() && !own.empty();
    const u32 key_distance = !known ? 1 : same(wanted, own) ? 0 : 2;
    const bool valid = !entry.has_certificate ||
                       (settings_.time >= entry.view.not_before && settings_.time <= entry.view.not_after);
    return 4 * key_distance + (valid ? 0U : 2U) + (entry.is_anchor ? 0U : 1U);
}

/// Adds an entry of a store, unless it is no issuer for the path.
void Search::offer(const Store &store, const StoreEntry &entry, Array<Candidate> &candidates) noexcept {
    if (candidates.size() >= kMostIssuers || (entry.is_anchor && !counts_as_anchor(store, entry))) return;
    if (!are_equal_names(entry.view.subject, path_.back()->view.issuer)) return;
    const auto is_entry = [&entry](const Candidate &each) noexcept { return each.entry == &entry; };
    if (std::any_of(candidates.begin(), candidates.end(), is_entry)) return;
    const auto is_holder = [&entry](const StoreEntry *each) noexcept { return is_same_holder(*each, entry); };
    if (std::any_of(path_.begin(), path_.end(), is_holder)) return;
    if (!candidates.append({&entry, distance(entry), candidates.size()})) session_.fail(Rule::kNoMemory);
}

void Search::gather(const Store &store, Array<Candidate> &candidates) noexcept {
    const CertificateView &view = path_.back()->view;
    const u64 hash = path_.back()->issuer_hash;
    if (!view.authority_key.empty()) {
        const StoreEntry *each = store.find_key(hash, view.authority_key);
        for (u32 i = 0; each != nullptr && i < kMostIssuers; each = each->next_of_key, ++i) {
            offer(store, *each, candidates);
        }
    }
    const StoreEntry *each = store.find_name(hash);
    for (u32 i = 0; each != nullptr && i < kMostIssuers; each = each->next_of_name, ++i) {
        offer(store, *each, candidates);
    }
}

/// Tries issuers in the order of their promise. True when a valid path came of one.
bool Search::try_issuers(Array<Candidate> &candidates, Rule &refused) noexcept {
    std::sort(candidates.begin(), candidates.end());
    for (const Candidate &candidate : candidates) {
        if (try_issuer(*candidate.entry, refused)) return true;
        if (session_.end() != Rule::kNone) return false;
    }
    return false;
}

/// Tries the issuers of the path's last certificate, and then those that are fetched for it.
bool Search::extend() noexcept {
    Array<Candidate> candidates;
    Rule refused = Rule::kNone;
    session_.each_store([&](const Store &store) noexcept { gather(store, candidates); });
    if (try_issuers(candidates, refused)) return true;
    bool has_issuers = !candidates.empty();
    const CertificateView &view = path_.back()->view;
    if (session_.end() == Rule::kNone && session_.fetcher.ask(TLX_FETCH_ISSUERS, view, nullptr)) {
        candidates.shrink(0);
        gather(*session_.fetcher.store(), candidates);
        has_issuers |= !candidates.empty();
        if (try_issuers(candidates, refused)) return true;
    }
    const Rule no_candidate = are_equal_names(view.issuer, view.subject) ? Rule::kNoAnchor : Rule::kNoIssuer;
    if (!has_issuers) give_up({path_.back(), path_.size() - 1, no_candidate});
    if (refused == Rule::kNone) refused = session_.end() != Rule::kNone ? session_.end() : no_candidate;
    remember_end(refused);
    return false;
}

/// Tries one issuer. A link whose signature does not verify leads nowhere; the first reason is stored.
bool Search::try_issuer(const StoreEntry &issuer, Rule &refused) noexcept {
    if (!session_.take_candidate()) return false;
    const bool is_postponed = inherits_parameters(issuer);
    Rule rule = is_postponed ? Rule::kNone : session_.links.verify(path_.back()->view, issuer);
    if (rule == Rule::kSignatureBudget || rule == Rule::kNoMemory) return session_.fail(rule);
    if (path_.size() >= settings_.budget.path_length) rule = Rule::kLengthBudget;
    if (rule != Rule::kNone) {
        if (refused == Rule::kNone) refused = rule;
        give_up({&issuer, path_.size(), rule});
        return false;
    }
    if (!path_.append(&issuer)) return session_.fail(Rule::kNoMemory);
    const bool found = issuer.is_anchor ? try_path() : extend();
    path_.shrink(path_.size() - 1);
    return found;
}

/// Validates the path. Its verdict is kept when it is valid or the first.
bool Search::try_path() noexcept {
    Path path;
    for (u32 i = path_.size(); i-- > 0;) {
        if (!path.append(path_[i])) return session_.fail(Rule::kNoMemory);
    }
    Verdict verdict;
    validate_path(path, settings_, session_, verdict);
    const bool valid = verdict.findings.empty() && !verdict.out_of_memory;
    if (verdict.out_of_memory) session_.fail(Rule::kNoMemory);
    if (++result_.paths > 1) {
        if (!verdict.findings.empty()) give_up(attempt_of(path, verdict));
        if (!valid) return false;
        give_up(attempt_of(result_.path, result_.verdict));
    }
    result_.path.swap(path);
    result_.verdict.findings.swap(verdict.findings);
    result_.verdict.warnings.swap(verdict.warnings);
    result_.verdict.policies.swap(verdict.policies);
    result_.verdict.states.swap(verdict.states);
    return valid;
}

}  // namespace

void search_path(const StoreEntry &target, const StoreEntry *anchor, const Settings &settings,
                 Session &session, SearchResult &result) noexcept {
    Search(target, anchor, settings, session, result).run();
    if (session.end() == Rule::kNoMemory) result.verdict.out_of_memory = true;
}

}  // namespace tlx
