// Headers of ASN.1 elements at their offsets in a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <vector>

#include "text.hpp"

namespace tool {

/// The identifier and length octets of an element (X.690, 8.1.2 and 8.1.3).
struct Element {
    std::size_t offset = 0;
    std::size_t header_length = 0;
    uint8_t tag_class = 0;  ///< 0 universal, 1 application, 2 context-specific, 3 private
    bool constructed = false;
    bool indefinite = false;
    uint64_t tag = 0;
    std::size_t length = 0;  ///< of the contents; 0 when it is indefinite

    [[nodiscard]] std::size_t contents() const { return offset + header_length; }
    [[nodiscard]] std::size_t end() const { return contents() + length; }
    [[nodiscard]] bool is_universal(uint64_t number) const { return tag_class == 0 && tag == number; }
    [[nodiscard]] bool is_end_of_contents() const { return is_universal(0) && !constructed && length == 0; }
};

/// An element with a broken header or contents.
class BrokenElement : public std::runtime_error {
  public:
    BrokenElement(std::size_t offset, const std::string &why) : std::runtime_error(why), offset_(offset) {}
    [[nodiscard]] std::size_t offset() const { return offset_; }

  private:
    std::size_t offset_;
};

/// Reads the header at an offset, which has to lie before end. Throws BrokenElement when the header is not
/// complete or the contents reach past end.
[[nodiscard]] Element read_element(Octets octets, std::size_t offset, std::size_t end);

/// The children of an element, with their headers, up to one whose length is indefinite or wrong.
[[nodiscard]] std::vector<Octets> children_of(Octets element);

/// The child at an index; empty when there is none.
[[nodiscard]] Octets child_of(Octets element, std::size_t index);

/// The contents of an element that child_of() gave.
[[nodiscard]] Octets contents_of(Octets element);

/// Where an OBJECT IDENTIFIER with an arc above 32 bits begins, which the library does not read; nothing when
/// there is none.
[[nodiscard]] std::optional<std::size_t> find_long_arc(Octets octets);

}  // namespace tool
