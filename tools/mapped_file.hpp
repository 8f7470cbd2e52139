// Files whose octets the system reads when they are looked at.
#pragma once

#include <filesystem>

#include "text.hpp"

namespace tool {

/// A regular file in one piece, of any size. It has to stay as it is meanwhile.
class MappedFile {
  public:
    /// Without octets for another file, one that is empty, and one that cannot be read.
    explicit MappedFile(const std::filesystem::path &path);
    ~MappedFile();
    MappedFile(const MappedFile &) = delete;
    MappedFile &operator=(const MappedFile &) = delete;

    [[nodiscard]] Octets octets() const { return {octets_, size_}; }

  private:
    const uint8_t *octets_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace tool
