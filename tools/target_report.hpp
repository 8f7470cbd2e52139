// What verification says of each target: a tree for one, a line each for several, or JSON.
#pragma once

#include <functional>

#include "document.hpp"
#include "terminal.hpp"

namespace tool {

struct TargetReport {
    Json document;         ///< source, subject, valid, status, hint, warnings, path, policies and others
    std::string preamble;  ///< what stands above the tree; may be empty
};

/// Verifies so many targets, each by its index, and prints what was found. Returns the exit status.
[[nodiscard]] int report_targets(std::size_t count, const std::function<TargetReport(std::size_t)> &verify,
                                 bool as_json, Warner &warner);

}  // namespace tool
