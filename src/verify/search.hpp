// Building of paths, from the target up to an anchor.
#pragma once

#include "verify/validate.hpp"

namespace tlx {

/// A certificate that a search gave up: an issuer that was refused, the end of a path without issuers, or the
/// certificate that a complete path failed by.
struct Attempt {
    const StoreEntry *certificate;
    u32 place;  ///< certificates between it and the target; 0 for the target
    Rule rule;

    [[nodiscard]] bool operator==(const Attempt &) const noexcept = default;
};

/// What became of a search: the verdict of the path that is valid, or of the first one that was complete.
/// Without any complete path it has one finding, which says where the search ended.
struct SearchResult {
    Path path;  ///< anchor first; without a complete path only the target
    Verdict verdict;
    u32 paths = 0;            ///< complete paths validated
    Array<Attempt> attempts;  ///< the first of those that the verdict is not about, each once
};

/// Tries all paths from a target to the anchors of the main store, in the order of their promise, until one
/// is valid.
/// @param anchor the only one that a path may end at; null for any
void search_path(const StoreEntry &target, const StoreEntry *anchor, const Settings &settings,
                 Session &session, SearchResult &result) noexcept;

}  // namespace tlx
