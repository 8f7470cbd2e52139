// Files of any size, read in pieces.
#pragma once

#include <cstdio>
#include <optional>

#include "input.hpp"

namespace tool {

struct CloseFile {
    void operator()(std::FILE *file) const { (void)std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// A file, a pipe, or standard input for "-".
class Source {
  public:
    /// Throws Failure when it cannot be opened, as all below do when it cannot be read.
    explicit Source(const std::string &path);

    /// Whether it is a file, which can be opened again.
    [[nodiscard]] bool is_regular() const { return is_regular_; }
    /// In what people read.
    [[nodiscard]] const std::string &name() const { return name_; }
    /// The octets that come next, up to a number; fewer only where the source ends. They are not taken.
    [[nodiscard]] Octets peek(std::size_t most);
    /// Takes the next octets; none at the end. They last until the next call.
    [[nodiscard]] Octets next();
    /// How many octets there are in all: of a regular file, and of what peek() saw to its end.
    [[nodiscard]] std::optional<uint64_t> size() const;
    /// All octets from the present place on.
    [[nodiscard]] Buffer rest();
    /// Throws Failure when more octets would be kept than may be: 2 GB of a file, 256 MB of a pipe or a
    /// device.
    void expect_keepable(uint64_t octets) const;

  private:
    static constexpr std::size_t kPiece = 65536;

    [[nodiscard]] std::size_t read(uint8_t *room, std::size_t size);

    std::string path_;
    std::string name_;
    File opened_;
    std::FILE *file_;
    bool is_regular_;
    bool at_end_ = false;
    Buffer piece_;
    std::size_t begin_ = 0;  ///< of the octets in the piece that are not taken
    std::size_t end_ = 0;
    uint64_t read_ = 0;  ///< octets so far
};

}  // namespace tool
