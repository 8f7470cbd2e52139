// Files of any size, written in pieces.
#pragma once

#include <filesystem>

#include "source.hpp"

namespace tool {

/// A file that appears, or replaces another, once it is complete: until then its octets go to a file beside
/// it, which is deleted when the command fails or is interrupted. What is written to a stream, that is
/// standard output, a pipe or a device, cannot be taken back.
class Target {
  public:
    /// "-" stands for standard output. Throws Failure for a file that cannot be written, as all below do.
    explicit Target(const std::string &path);
    ~Target();
    Target(const Target &) = delete;
    Target &operator=(const Target &) = delete;

    [[nodiscard]] bool is_stream() const { return unfinished_.empty(); }
    /// The file that holds what was written so far; empty for a stream.
    [[nodiscard]] const std::filesystem::path &unfinished() const { return unfinished_; }
    void write(Octets octets);
    /// Makes the file complete.
    void finish();

  private:
    [[noreturn]] void fail(int error) const;
    void open_beside();
    void close();

    std::string path_;
    std::filesystem::path file_;        ///< which links lead to
    std::filesystem::path unfinished_;  ///< beside it; empty for a stream
    File opened_;                       ///< null before the first octet of a stream
};

}  // namespace tool
