// Text for the functions of Windows that take UTF-16.
#pragma once

#include <windows.h>

#include "crypto/memory.hpp"

namespace tlx {

/// A new UTF-16 text of one in UTF-8 or else in the ANSI code page, freed with tlx_free; null when it is
/// neither, or memory is short.
inline wchar_t *to_wide(const char *text) noexcept {
    for (const UINT code_page : {UINT{CP_UTF8}, UINT{CP_ACP}}) {
        const int units = MultiByteToWideChar(code_page, MB_ERR_INVALID_CHARS, text, -1, nullptr, 0);
        if (units <= 0) continue;
        auto *wide = static_cast<wchar_t *>(TLX_ALLOCATE(static_cast<std::size_t>(units) * sizeof(wchar_t)));
        if (wide != nullptr) MultiByteToWideChar(code_page, MB_ERR_INVALID_CHARS, text, -1, wide, units);
        return wide;
    }
    return nullptr;
}

}  // namespace tlx
