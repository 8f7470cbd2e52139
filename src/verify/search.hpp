// Building of paths, from the target up to an anchor.
#pragma once

#include "verify/validate.hpp"

namespace tlx {

/// What became of a search: the verdict of the path that is valid, or of the first one that was complete.
/// Without any complete path it has one finding, which says where the search ended.
struct SearchResult {
    Path path;  ///< anchor first; without a complete path only the target
    Verdict verdict;
    u32 candidates = 0;  ///< certificates tried as issuers
    u32 paths = 0;       ///< complete paths validated
};

/// Tries all paths from a target to the anchors of the stores, in the order of their promise, until one is
/// valid.
/// @param pool more certificates, such as a message has; may be null
void search_path(const StoreEntry &target, const Store &store, const Store *pool, const Settings &settings,
                 SearchResult &result) noexcept;

}  // namespace tlx
