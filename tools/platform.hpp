// The differences between systems.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace tool {

enum class Stream { kOutput, kError };

[[nodiscard]] bool is_terminal(Stream stream);

/// Makes a terminal take UTF-8 and escape sequences where it does not by itself; lines end the same
/// everywhere, and octets of standard input stay as they are.
void prepare_streams();

/// Opens a file to read its octets; null on failure, with errno set.
[[nodiscard]] std::FILE *open_to_read(const std::filesystem::path &path);
/// The same to write behind what it holds.
[[nodiscard]] std::FILE *open_to_append(const std::filesystem::path &path);
/// Makes a file that does not exist, to write it; null on failure. Others may delete it while it is open.
[[nodiscard]] std::FILE *open_new(const std::filesystem::path &path);

/// A signal that ends the command deletes this file first. An empty path stands for none.
void delete_when_interrupted(const std::filesystem::path &path);

#ifdef _WIN32
using NativeCharacter = wchar_t;
#else
using NativeCharacter = char;
#endif
/// The arguments after the program's name, in UTF-8.
[[nodiscard]] std::vector<std::string> utf8_arguments(int argc, NativeCharacter **argv);

}  // namespace tool
