#include "source.hpp"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "failure.hpp"
#include "platform.hpp"

namespace tool {

namespace {

/// What a file may hold at most when it is read whole.
constexpr uint64_t kMostOctets = 0x7FFFFFFF;

/// The same of a pipe or a device, since it may have no end.
constexpr uint64_t kMostStreamMegabytes = 256;
constexpr uint64_t kMostStreamOctets = kMostStreamMegabytes * 1024 * 1024;

/// Throws Failure with the system's reason why a file could not be read.
[[noreturn]] void fail_to_read(const std::string &path, int error) {
    std::error_code ignored;
    if (std::filesystem::is_directory(file_path(path), ignored)) {
        throw Failure(source_of(path) + ": is a directory");
    }
    const std::string reason = error == 0 ? "" : ": " + std::generic_category().message(error);
    throw Failure(source_of(path) + ": cannot be read" + reason);
}

bool is_file(const std::string &path) {
    std::error_code ignored;
    return path != "-" && std::filesystem::is_regular_file(file_path(path), ignored);
}

}  // namespace

// A buffer of its own in the C library would keep a copy of a key.
Source::Source(const std::string &path)
    : path_(path), name_(source_of(path)), file_(stdin), is_regular_(is_file(path)) {
    errno = 0;
    if (path != "-") {
        opened_.reset(open_to_read(file_path(path)));
        file_ = opened_.get();
    }
    if (file_ == nullptr || std::setvbuf(file_, nullptr, _IONBF, 0) != 0) fail_to_read(path, errno);
}

std::size_t Source::read(uint8_t *room, std::size_t size) {
    errno = 0;
    const std::size_t got = at_end_ ? 0 : std::fread(room, 1, size, file_);
    if (std::ferror(file_) != 0) fail_to_read(path_, errno);
    at_end_ = got < size;
    read_ += got;
    return got;
}

Octets Source::peek(std::size_t most) {
    if (piece_.octets().size() < begin_ + most) {
        Buffer larger = Buffer::of_size(std::max(most, kPiece));
        std::copy_n(piece_.octets().data() + begin_, end_ - begin_, larger.data());
        piece_ = std::move(larger);
        end_ -= std::exchange(begin_, 0);
    }
    if (end_ - begin_ < most) end_ += read(piece_.data() + end_, most - (end_ - begin_));
    return piece_.octets().subspan(begin_, std::min(most, end_ - begin_));
}

Octets Source::next() {
    if (begin_ == end_) {
        begin_ = 0;
        if (piece_.octets().empty()) piece_ = Buffer::of_size(kPiece);
        end_ = read(piece_.data(), std::min(kPiece, piece_.octets().size()));
    }
    const Octets taken = piece_.octets().subspan(begin_, end_ - begin_);
    begin_ = end_;
    return taken;
}

std::optional<uint64_t> Source::size() const {
    if (at_end_) return read_;
    std::error_code error;
    const uint64_t size = is_regular_ ? std::filesystem::file_size(file_path(path_), error) : 0;
    return is_regular_ && !error ? std::optional(size) : std::nullopt;
}

void Source::expect_keepable(uint64_t octets) const {
    if (octets <= (is_regular_ ? kMostOctets : kMostStreamOctets)) return;
    throw Failure(name_ + (is_regular_
                               ? ": is larger than 2 GB"
                               : ": does not end within " + std::to_string(kMostStreamMegabytes) + " MB"));
}

Buffer Source::rest() {
    const uint64_t expected = size().value_or(0);
    expect_keepable(expected);
    Buffer all = Buffer::of_size(std::max<std::size_t>(kPiece, expected));
    std::size_t taken = 0;
    for (Octets piece = next(); !piece.empty(); piece = next()) {
        expect_keepable(taken + piece.size());
        if (piece.size() > all.octets().size() - taken) all = all.resized(2 * all.octets().size());
        std::copy(piece.begin(), piece.end(), all.data() + taken);
        taken += piece.size();
    }
    return all.octets().size() == taken ? std::move(all) : all.resized(taken);
}

}  // namespace tool
