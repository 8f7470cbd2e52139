// The differences between systems.
#pragma once

#include <string>
#include <vector>

namespace tool {

enum class Stream { kOutput, kError };

[[nodiscard]] bool is_terminal(Stream stream);

/// Makes a terminal take UTF-8 and escape sequences where it does not by itself; lines end the same
/// everywhere, and octets of standard input stay as they are.
void prepare_streams();

#ifdef _WIN32
using NativeCharacter = wchar_t;
#else
using NativeCharacter = char;
#endif
/// The arguments after the program's name, in UTF-8.
[[nodiscard]] std::vector<std::string> utf8_arguments(int argc, NativeCharacter **argv);

}  // namespace tool
