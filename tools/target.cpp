#include "target.hpp"

#include <cerrno>
#include <iostream>
#include <system_error>

#include "failure.hpp"
#include "platform.hpp"

namespace tool {

namespace {

namespace fs = std::filesystem;

/// The path behind links, also of a file that does not exist.
fs::path behind_links(const fs::path &path) {
    std::error_code error;
    fs::path real = fs::weakly_canonical(path, error);
    return error ? path : real;
}

/// A name that no other file has.
fs::path beside(const fs::path &file) {
    constexpr std::size_t kNameOctets = 12;
    uint8_t name[kNameOctets];
    must(RAND_BYTES(name, kNameOctets));
    return file.parent_path() / (".tlxpki-" + hex(name));
}

}  // namespace

Target::Target(const std::string &path) : path_(path), file_(behind_links(file_path(path))) {
    std::error_code ignored;
    const fs::file_status status = fs::status(file_path(path), ignored);
    if (path == "-" || (fs::exists(status) && !fs::is_regular_file(status))) return;
    open_beside();
    if (fs::exists(status)) fs::permissions(unfinished_, status.permissions(), ignored);
}

/// A file that must not be changed is not replaced either.
void Target::open_beside() {
    errno = 0;
    std::error_code ignored;
    if (fs::exists(file_, ignored) && File(open_to_append(file_)) == nullptr) fail(errno);
    unfinished_ = beside(file_);
    delete_when_interrupted(unfinished_);
    opened_.reset(open_new(unfinished_));
    if (opened_ == nullptr) fail(errno);
    (void)std::setvbuf(opened_.get(), nullptr, _IONBF, 0);
}

Target::~Target() {
    if (unfinished_.empty()) return;
    opened_.reset();
    std::error_code ignored;
    fs::remove(unfinished_, ignored);
    delete_when_interrupted({});
}

void Target::fail(int error) const {
    const std::string reason = error == 0 ? "" : ": " + std::generic_category().message(error);
    throw Failure(path_ + ": cannot be written" + reason);
}

void Target::write(Octets octets) {
    if (path_ == "-") {
        std::cout.write(reinterpret_cast<const char *>(octets.data()),
                        static_cast<std::streamsize>(octets.size()));
        if (!std::cout) throw Failure("the output cannot be written");
        return;
    }
    errno = 0;
    if (opened_ == nullptr) opened_.reset(open_to_append(file_));
    if (opened_ == nullptr) fail(errno);
    if (std::fwrite(octets.data(), 1, octets.size(), opened_.get()) != octets.size()) fail(errno);
}

void Target::close() {
    errno = 0;
    std::FILE *file = opened_.release();
    if (file != nullptr && std::fclose(file) != 0) fail(errno);
}

void Target::finish() {
    if (opened_ == nullptr && path_ != "-") write({});
    close();
    if (is_stream()) return;
    std::error_code error;
    fs::rename(unfinished_, file_, error);
    if (error) throw Failure(path_ + ": cannot be written: " + error.message());
    unfinished_.clear();
    delete_when_interrupted({});
}

}  // namespace tool
