// Files that the command writes.
#pragma once

#include <string>

#include "text.hpp"

namespace tool {

/// Writes a file, or standard output for "-". A file that cannot be written whole is removed again. Throws
/// Failure.
void write_octets(const std::string &path, Octets octets);

}  // namespace tool
