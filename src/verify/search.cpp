#include "verify/search.hpp"

#include <algorithm>

namespace tlx {
namespace {

/// Issuers that one certificate is tried with, at most.
constexpr u32 kMostIssuers = 256;

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
    Search(const StoreEntry &target, const Store &store, const Store *pool, const Settings &settings,
           SearchResult &result) noexcept
        : target_(target),
          store_(store),
          pool_(pool),
          settings_(settings),
          result_(result),
          links_(settings.budget.signatures) {}

    void run() noexcept {
        const bool found =
            path_.append(&target_) ? (equals_anchor() ? try_path() : extend()) : fail(Rule::kNoMemory);
        if (!found) report_end();
    }

  private:
    /// Whether an anchor has the target's name and key.
    bool equals_anchor() const noexcept {
        for (const StoreEntry *each = store_.find_name(store_.hash_of_name(target_.view.subject));
             each != nullptr; each = each->next_of_name) {
            if (each->is_anchor && is_same_holder(*each, target_)) return true;
        }
        return false;
    }
    static bool is_same_holder(const StoreEntry &a, const StoreEntry &b) noexcept {
        return same(a.view.key_info, b.view.key_info) && are_equal_names(a.view.subject, b.view.subject);
    }

    /// Ends the search, without a valid path.
    bool fail(Rule rule) noexcept {
        if (end_ == Rule::kNone) end_ = rule;
        if (rule == Rule::kNoMemory) result_.verdict.out_of_memory = true;
        return false;
    }
    void report_end() noexcept;
    void remember_end(Rule rule) noexcept;

    bool extend() noexcept;
    bool try_issuer(const StoreEntry &issuer, Rule &refused) noexcept;
    bool try_path() noexcept;
    void gather(const Store &store, Array<Candidate> &candidates) noexcept;
    void offer(const Store &store, const StoreEntry &entry, Array<Candidate> &candidates) noexcept;
    u32 distance(const StoreEntry &entry) const noexcept;

    const StoreEntry &target_;
    const Store &store_;
    const Store *pool_;
    const Settings &settings_;
    SearchResult &result_;
    Links links_;
    Path path_;               ///< target first
    Rule end_ = Rule::kNone;  ///< why the search ended early
    Path longest_;            ///< that reached no anchor, target first
    Rule longest_rule_ = Rule::kNone;
};

// What a complete path lacks says more than where others ended.
void Search::report_end() noexcept {
    Verdict &verdict = result_.verdict;
    if (result_.paths == 0) {
        result_.path.shrink(0);
        for (u32 i = longest_.size(); i-- > 0;) {
            if (!result_.path.append(longest_[i])) fail(Rule::kNoMemory);
        }
        verdict.note(0, longest_rule_);
    }
    verdict.note(0, end_);
}

void Search::remember_end(Rule rule) noexcept {
    if (path_.size() <= longest_.size()) return;
    longest_rule_ = rule;
    longest_.shrink(0);
    for (const StoreEntry *entry : path_) {
        if (!longest_.append(entry)) fail(Rule::kNoMemory);
    }
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

/// Adds an entry of a store, unless it is no issuer for the path. Only the first store has anchors that
/// count.
void Search::offer(const Store &store, const StoreEntry &entry, Array<Candidate> &candidates) noexcept {
    if (candidates.size() >= kMostIssuers || (entry.is_anchor && &store != &store_)) return;
    if (!are_equal_names(entry.view.subject, path_.back()->view.issuer)) return;
    const auto is_entry = [&entry](const Candidate &each) noexcept { return each.entry == &entry; };
    if (std::any_of(candidates.begin(), candidates.end(), is_entry)) return;
    const auto is_holder = [&entry](const StoreEntry *each) noexcept { return is_same_holder(*each, entry); };
    if (std::any_of(path_.begin(), path_.end(), is_holder)) return;
    if (!candidates.append({&entry, distance(entry), candidates.size()})) fail(Rule::kNoMemory);
}

void Search::gather(const Store &store, Array<Candidate> &candidates) noexcept {
    const CertificateView &view = path_.back()->view;
    const u64 hash = store.hash_of_name(view.issuer);
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

/// Tries the issuers of the path's last certificate. True when a valid path came of one.
bool Search::extend() noexcept {
    Array<Candidate> candidates;
    gather(store_, candidates);
    if (pool_ != nullptr) gather(*pool_, candidates);
    std::sort(candidates.begin(), candidates.end());
    Rule refused = Rule::kNone;
    for (const Candidate &candidate : candidates) {
        if (end_ == Rule::kNone && try_issuer(*candidate.entry, refused)) return true;
    }
    const CertificateView &view = path_.back()->view;
    const Rule no_candidate = are_equal_names(view.issuer, view.subject) ? Rule::kNoAnchor : Rule::kNoIssuer;
    remember_end(refused != Rule::kNone ? refused : no_candidate);
    return false;
}

/// Tries one issuer. A link whose signature does not verify leads nowhere; the first reason is stored.
bool Search::try_issuer(const StoreEntry &issuer, Rule &refused) noexcept {
    if (result_.candidates == settings_.budget.candidates) return fail(Rule::kCandidateBudget);
    ++result_.candidates;
    const bool is_postponed = inherits_parameters(issuer);
    Rule rule = is_postponed ? Rule::kNone : links_.verify(*path_.back(), issuer);
    if (rule == Rule::kSignatureBudget || rule == Rule::kNoMemory) return fail(rule);
    if (path_.size() >= settings_.budget.path_length) rule = Rule::kLengthBudget;
    if (rule != Rule::kNone) {
        if (refused == Rule::kNone) refused = rule;
        return false;
    }
    if (!path_.append(&issuer)) return fail(Rule::kNoMemory);
    const bool found = issuer.is_anchor ? try_path() : extend();
    path_.shrink(path_.size() - 1);
    return found;
}

/// Validates the path. Its verdict is kept when it is valid or the first.
bool Search::try_path() noexcept {
    Path path;
    for (u32 i = path_.size(); i-- > 0;) {
        if (!path.append(path_[i])) return fail(Rule::kNoMemory);
    }
    Verdict verdict;
    validate_path(path, settings_, links_, verdict);
    const bool valid = verdict.findings.empty() && !verdict.out_of_memory;
    if (verdict.out_of_memory) fail(Rule::kNoMemory);
    if (++result_.paths > 1 && !valid) return false;
    result_.path.swap(path);
    result_.verdict.findings.swap(verdict.findings);
    result_.verdict.warnings.swap(verdict.warnings);
    result_.verdict.policies.swap(verdict.policies);
    return valid;
}

}  // namespace

void search_path(const StoreEntry &target, const Store &store, const Store *pool, const Settings &settings,
                 SearchResult &result) noexcept {
    Search(target, store, pool, settings, result).run();
}

}  // namespace tlx
