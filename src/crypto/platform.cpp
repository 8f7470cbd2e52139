#include "crypto/platform.hpp"

#ifdef _WIN32
#include <windows.h>

#include "crypto/memory.hpp"
#endif

namespace tlx {

#ifdef _WIN32

namespace {

// A new UTF-16 text of a UTF-8 one, freed with tlx_free; null when it is not UTF-8.
wchar_t *to_wide(const char *text) noexcept {
    const int units = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, -1, nullptr, 0);
    if (units <= 0) return nullptr;
    auto *wide = static_cast<wchar_t *>(TLX_ALLOCATE(static_cast<std::size_t>(units) * sizeof(wchar_t)));
    if (wide != nullptr) MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, -1, wide, units);
    return wide;
}

}  // namespace

std::FILE *open_file(const char *path, const char *mode) noexcept {
    wchar_t *wide_path = to_wide(path);
    wchar_t *wide_mode = to_wide(mode);
    std::FILE *file = wide_path == nullptr || wide_mode == nullptr ? nullptr : _wfopen(wide_path, wide_mode);
    tlx_free(wide_path);
    tlx_free(wide_mode);
    return file;
}

#else

std::FILE *open_file(const char *path, const char *mode) noexcept {
    return std::fopen(path, mode);
}

#endif

}  // namespace tlx
