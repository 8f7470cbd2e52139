#include "asn1/pem_scan.hpp"

#include <algorithm>

namespace tlx {

namespace {

using std::string_view;

constexpr string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr string_view kLineEnds = "\r\n";

bool is_control(char c) noexcept {
    constexpr string_view kOfText = "\t\r\n\f";
    return static_cast<u8>(c) < ' ' && kOfText.find(c) == string_view::npos;
}

}  // namespace

bool PemScanner::is_pem() const noexcept {
    return next_ != string_view::npos && std::ranges::none_of(part(text_, 0, next_), is_control);
}

/// Also after a byte order mark, which files keep when they are put together.
bool PemScanner::begins_line(std::size_t at) const noexcept {
    string_view before = part(text_, 0, at);
    if (before.ends_with(kByteOrderMark)) before.remove_suffix(kByteOrderMark.size());
    return before.empty() || kLineEnds.find(before.back()) != string_view::npos;
}

std::size_t PemScanner::end_of_line(std::size_t at) const noexcept {
    return std::min(text_.find_first_of(kLineEnds, at), text_.size());
}

std::size_t PemScanner::find_begin(std::size_t from) const noexcept {
    std::size_t at = text_.find(kPemBegin, from);
    while (at != string_view::npos && !begins_line(at)) {
        at = text_.find(kPemBegin, at + 1);
    }
    return at;
}

/// Where "-----END " stands; npos when there is none before the next block.
std::size_t PemScanner::find_end(std::size_t from) const noexcept {
    for (std::size_t at = text_.find(kPemDashes, from); at != string_view::npos;
         at = text_.find(kPemDashes, at + 1)) {
        const string_view rest = part(text_, at);
        if (rest.starts_with(kPemEnd)) return at;
        if (rest.starts_with(kPemBegin) && begins_line(at)) break;
    }
    return string_view::npos;
}

/// The label at the given place. False when no dashes follow it on its line.
bool PemScanner::read_label(std::size_t at, string_view &label) const noexcept {
    const string_view line = part(text_, at, end_of_line(at) - at);
    const std::size_t dashes = line.find(kPemDashes);
    if (dashes == string_view::npos) return false;
    label = part(line, 0, dashes);
    return true;
}

bool PemScanner::next(PemBlock &block) noexcept {
    if (next_ == string_view::npos) return false;
    block = {};
    const std::size_t after = read_block(block);
    block.whole = part(text_, next_, after - next_);
    next_ = find_begin(after);
    return true;
}

/// Reads the block at next_. Returns where it ends: with a broken line, or where the next one begins when it
/// has no end.
std::size_t PemScanner::read_block(PemBlock &block) const noexcept {
    const std::size_t label = next_ + kPemBegin.size();
    if (!read_label(label, block.label)) {
        block.status = 0x4E010000;
        return end_of_line(label);
    }
    const std::size_t body = label + block.label.size() + kPemDashes.size();
    const std::size_t end = find_end(body);
    if (end == string_view::npos) {
        block.status = 0x4E010047;
        return std::min(find_begin(body), text_.size());
    }
    string_view end_label;
    if (!read_label(end + kPemEnd.size(), end_label)) {
        block.status = 0x4E010000;
        return end_of_line(end);
    }
    if (end_label != block.label) block.status = 0x4E010048;
    if (block.status == 0) block.body = part(text_, body, end - body);
    return end + kPemEnd.size() + end_label.size() + kPemDashes.size();
}

string_view take_headers(string_view &body) noexcept {
    const std::size_t colon = body.rfind(':');
    if (colon == string_view::npos) return {};
    std::size_t line_end = body.find('\n', colon);
    while (line_end != string_view::npos) {
        const std::size_t next = body.find('\n', line_end + 1);
        if (next == string_view::npos) break;
        const string_view line = part(body, line_end, next - line_end);
        if (line.find_first_not_of(" \t\r\n") == string_view::npos) {
            const string_view headers = part(body, 0, line_end);
            body.remove_prefix(next);
            return headers;
        }
        line_end = next;
    }
    return {};
}

}  // namespace tlx
