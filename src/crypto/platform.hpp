// What the operating system gives us, beyond the C and C++ standard libraries. The only file that may call
// it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace tlx {

/// Opens a file by its path, as <tlxcrypto/file.h> takes it, in an fopen mode of up to three letters; null on
/// failure.
std::FILE *open_file(const char *path, const char *mode) noexcept;

/// Opens a file to be written anew, its owner's alone as binary_to_private_File says; null on failure.
std::FILE *make_private_file(const char *path) noexcept;

/// Asks for large pages under a block of this many octets, so that looking up places all over it is faster.
void advise_large_pages(void *block, std::size_t size) noexcept;

/// Lets another thread run.
void yield_thread() noexcept;

#ifdef _WIN32
/// The library's pointer for this thread; null at first.
void *thread_pointer() noexcept;
void set_thread_pointer(void *pointer) noexcept;
/// The DLL calls these when it is loaded and unloaded.
bool open_thread_pointer() noexcept;
void close_thread_pointer() noexcept;
#endif

}  // namespace tlx
