// What the searches of one verification share.
#pragma once

#include "verify/fetch.hpp"
#include "verify/links.hpp"

namespace tlx {

/// What became of the search for the path of a list's signer.
struct SearchedSigner {
    const StoreEntry *entry;
    const StoreEntry *anchor;
    bool has_path;
};

class Session {
  public:
    Session(const Store &main_store, const Store *more, const Settings &settings) noexcept
        : links(settings.budget.signatures),
          fetcher(settings),
          store_(main_store),
          pool_(more),
          most_candidates_(settings.budget.candidates) {}

    Links links;
    Fetcher fetcher;
    /// Signers of lists whose own paths are being searched, the innermost last.
    Array<const StoreEntry *> signers;
    Array<SearchedSigner> searched;

    /// The store whose anchors count.
    [[nodiscard]] const Store &store() const noexcept { return store_; }
    /// Calls a function with each store.
    template <typename Visit>
    void each_store(Visit visit) const noexcept {
        visit(store_);
        if (pool_ != nullptr) visit(*pool_);
        if (fetcher.store() != nullptr) visit(*fetcher.store());
    }

    /// Counts an issuer, a list or an answer that is tried. False when the verification has ended.
    [[nodiscard]] bool take_candidate() noexcept {
        if (end_ != Rule::kNone) return false;
        if (candidates_ == most_candidates_) return fail(Rule::kCandidateBudget);
        ++candidates_;
        return true;
    }
    [[nodiscard]] u32 candidates() const noexcept { return candidates_; }

    /// Ends the verification early, unless it has ended; false.
    bool fail(Rule rule) noexcept {
        if (end_ == Rule::kNone || rule == Rule::kNoMemory) end_ = rule;
        return false;
    }
    /// Why the verification ended early; kNone when it did not.
    [[nodiscard]] Rule end() const noexcept { return end_; }

  private:
    const Store &store_;
    const Store *pool_;
    u32 candidates_ = 0;
    u32 most_candidates_;
    Rule end_ = Rule::kNone;
};

}  // namespace tlx
