// Files that the command writes.
#pragma once

#include <string>

#include "text.hpp"

namespace tool {

/// Writes a file, or standard output for "-". A file stays as it was unless all is written. Throws Failure.
void write_octets(const std::string &path, Octets octets);
/// The same of a secret: the file is its owner's alone. One that cannot be written whole is removed again.
void write_private_octets(const std::string &path, Octets octets);

/// Throws Failure when JSON and what a command writes would both go to standard output.
void expect_room_for_json(bool json, const std::string &output);

}  // namespace tool
