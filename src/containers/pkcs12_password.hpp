// The forms in which programs turn a password into 16-bit characters.
#pragma once

#include <algorithm>

#include "keys/pbe.hpp"

namespace tlx {

/// UTF-16 and octets widened one by one, where they differ; of a password without octets, the empty one (two
/// zero octets) and the absent one.
class PasswordForms {
  public:
    /// An absent password has no data.
    explicit PasswordForms(Bytes text) noexcept
        : text_(text),
          utf16_(text, PasswordUnits::From::utf8),
          widened_(text, PasswordUnits::From::octets),
          first_(text.data() == nullptr ? 1 : 0) {}

    /// False when memory ran out.
    [[nodiscard]] bool ok() const noexcept { return utf16_ && widened_; }
    [[nodiscard]] std::size_t count() const noexcept { return text_.empty() || differ() ? 2 : 1; }
    /// The form at an index, the likely one first.
    [[nodiscard]] PbePassword at(std::size_t index) const noexcept {
        const bool other = (index != 0) != (first_ != 0);
        if (!other) return {text_, utf16_.bytes()};
        return {text_, text_.empty() ? Bytes() : widened_.bytes()};
    }
    /// Puts the form at an index, which turned out to be right, first.
    void prefer(std::size_t index) noexcept { first_ ^= index; }

  private:
    [[nodiscard]] bool differ() const noexcept {
        return !std::ranges::equal(utf16_.bytes(), widened_.bytes());
    }

    Bytes text_;
    PasswordUnits utf16_;
    PasswordUnits widened_;
    std::size_t first_;
};

}  // namespace tlx
