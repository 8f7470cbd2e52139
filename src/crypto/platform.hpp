// What the operating system gives us, beyond the C and C++ standard libraries. The only file that may call
// it.
#pragma once

#include <cstdint>
#include <cstdio>

namespace tlx {

/// Opens a file by its UTF-8 path in an fopen mode; null on failure.
std::FILE *open_file(const char *path, const char *mode) noexcept;

}  // namespace tlx
