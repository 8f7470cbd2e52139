#include "output.hpp"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "failure.hpp"
#include "input.hpp"
#include "target.hpp"

namespace tool {

void write_octets(const std::string &path, Octets octets) {
    Target target(path);
    target.write(octets);
    target.finish();
}

void write_private_octets(const std::string &path, Octets octets) {
    if (path == "-") return write_octets(path, octets);
    errno = 0;
    const auto size = static_cast<uint32_t>(octets.size());
    if (binary_to_private_File(path.c_str(), octets.data(), size) == 0) return;
    const std::string reason = errno == 0 ? "" : ": " + std::generic_category().message(errno);
    const std::filesystem::path file = file_path(path);
    std::error_code ignored;
    if (std::filesystem::is_regular_file(file, ignored)) std::filesystem::remove(file, ignored);
    throw Failure(path + ": cannot be written" + reason);
}

void expect_room_for_json(bool json, const std::string &output) {
    if (json && output == "-") {
        throw Failure("--json needs another --output than standard output, which it takes itself");
    }
}

}  // namespace tool
