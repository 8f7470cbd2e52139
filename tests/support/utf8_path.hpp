#pragma once

#include <filesystem>
#include <string>

namespace tlx_test {

/// The standard library's path of a UTF-8 text. On Windows a plain string has another encoding.
inline std::filesystem::path utf8_path(const std::string &text) {
    return std::u8string(text.begin(), text.end());
}

}  // namespace tlx_test
