#include "output.hpp"

#include <cerrno>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "failure.hpp"
#include "input.hpp"

namespace tool {

namespace {

void write_by(decltype(binary_to_File) write, const std::string &path, Octets octets) {
    if (path == "-") {
        std::cout.write(reinterpret_cast<const char *>(octets.data()),
                        static_cast<std::streamsize>(octets.size()));
        return;
    }
    errno = 0;
    if (write(path.c_str(), octets.data(), static_cast<uint32_t>(octets.size())) == 0) return;
    const std::string reason = errno == 0 ? "" : ": " + std::generic_category().message(errno);
    const std::filesystem::path file = file_path(path);
    std::error_code ignored;
    if (std::filesystem::is_regular_file(file, ignored)) std::filesystem::remove(file, ignored);
    throw Failure(path + ": cannot be written" + reason);
}

}  // namespace

void write_octets(const std::string &path, Octets octets) {
    write_by(binary_to_File, path, octets);
}

void write_private_octets(const std::string &path, Octets octets) {
    write_by(binary_to_private_File, path, octets);
}

void expect_room_for_json(bool json, const std::string &output) {
    if (json && output == "-") {
        throw Failure("--json needs another --output than standard output, which it takes itself");
    }
}

}  // namespace tool
