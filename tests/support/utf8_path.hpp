#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tlx_test {

/// The standard library's path of a UTF-8 text. On Windows a plain string has another encoding.
inline std::filesystem::path utf8_path(const std::string &text) {
    return std::u8string(text.begin(), text.end());
}

/// The octets of a file; none when there is no file.
inline std::string read_text(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace tlx_test
