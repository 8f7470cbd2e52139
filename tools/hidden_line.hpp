// Lines that are typed unseen.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace tool {

/// Asks on the terminal for a line, which it does not show. Returns its length, 0 when none was typed;
/// nothing when standard error is no terminal or there is none to ask on.
[[nodiscard]] std::optional<std::size_t> read_hidden_line(const std::string &prompt, std::span<char> room);

}  // namespace tool
