// Where the PEM blocks of a text stand (RFC 7468).
#pragma once

#include <algorithm>
#include <string_view>

#include "der/types.hpp"

namespace tlx {

/// A part of a text; unlike substr() it has no exception to throw, which would bring its support into the
/// DLL.
inline std::string_view part(std::string_view text, std::size_t at,
                             std::size_t count = std::string_view::npos) noexcept {
    return {text.data() + at, std::min(count, text.size() - at)};
}

constexpr std::string_view kPemBegin = "-----BEGIN ";
constexpr std::string_view kPemEnd = "-----END ";
constexpr std::string_view kPemDashes = "-----";

/// One block as it stands in the text.
struct PemBlock {
    std::string_view label;
    std::string_view whole;  ///< from "-----BEGIN " to the end of the line that ends it
    std::string_view body;   ///< between the two lines; empty when one of them is broken
    u32 status = 0;          ///< 0, or what is wrong with the two lines
};

/// Finds the blocks of a text one after the other, in one pass over it.
class PemScanner {
  public:
    explicit PemScanner(std::string_view text) noexcept : text_(text), next_(find_begin(0)) {}

    /// Whether the text is PEM: a block begins in it, and nothing but text stands before that.
    [[nodiscard]] bool is_pem() const noexcept;
    /// False when there are no more blocks.
    [[nodiscard]] bool next(PemBlock &block) noexcept;

  private:
    [[nodiscard]] std::size_t find_begin(std::size_t from) const noexcept;
    [[nodiscard]] std::size_t find_end(std::size_t from) const noexcept;
    [[nodiscard]] bool begins_line(std::size_t at) const noexcept;
    [[nodiscard]] bool read_label(std::size_t at, std::string_view &label) const noexcept;
    [[nodiscard]] std::size_t end_of_line(std::size_t at) const noexcept;
    std::size_t read_block(PemBlock &block) const noexcept;

    std::string_view text_;
    std::size_t next_;
};

/// Takes the encapsulated headers (RFC 1421), which have colons and end with an empty line, off the front of
/// a body. Returns them; empty when there are none.
[[nodiscard]] std::string_view take_headers(std::string_view &body) noexcept;

}  // namespace tlx
