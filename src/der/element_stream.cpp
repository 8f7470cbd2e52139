#include "der/element_stream.hpp"

#include <algorithm>
#include <utility>

namespace tlx {

ElementStream::Event ElementStream::next(Bytes &in) noexcept {
    if (broken_) return Event::broken;
    if (finished_) return in.empty() ? Event::need_more : fail();
    const Frame &frame = frames_[depth_];
    if (frame.closed) return take_contents(in);
    if (depth_ > 0 && !frame.indefinite && frame.left == 0) return header_size_ == 0 ? end() : fail();
    return take_header(in);
}

void ElementStream::stay_closed() noexcept {
    frames_[depth_].closed = !frames_[depth_].indefinite;
}

ElementStream::Event ElementStream::fail() noexcept {
    broken_ = true;
    return Event::broken;
}

ElementStream::Event ElementStream::take_contents(Bytes &in) noexcept {
    Frame &frame = frames_[depth_];
    if (frame.left == 0) return end();
    if (in.empty()) return Event::need_more;
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(frame.left, in.size()));
    octets_ = in.first(size);
    in = in.subspan(size);
    frame.left -= size;
    event_depth_ = depth_;
    return Event::octets;
}

ElementStream::Event ElementStream::take_header(Bytes &in) noexcept {
    Frame &frame = frames_[depth_];
    while (!in.empty()) {
        if (frame.left == 0 || header_size_ == kLongestHeader) return fail();
        header_[header_size_++] = in.front();
        in = in.subspan(1);
        --frame.left;
        if (header_complete()) return begin();
    }
    return Event::need_more;
}

bool ElementStream::header_complete() const noexcept {
    if (header_size_ < 2) return false;
    const bool is_long = header_[1] > kIndefiniteLength;
    return header_size_ == 2U + (is_long ? header_[1] & 0x7FU : 0);
}

ElementStream::Event ElementStream::begin() noexcept {
    Frame &outer = frames_[depth_];
    begun_size_ = std::exchange(header_size_, 0);
    if (header_[0] == 0) return outer.indefinite && header_[1] == 0 ? end() : fail();
    const bool constructed = (header_[0] & kConstructed) != 0;
    const bool indefinite = header_[1] == kIndefiniteLength;
    std::uint64_t length = header_[1] < kIndefiniteLength ? header_[1] : 0;
    for (std::size_t i = 2; i < begun_size_; ++i) {
        if (length > kLongest >> 8) return fail();
        length = (length << 8) | header_[i];
    }
    if (depth_ == kMaxDepth || length > outer.left || (indefinite && !constructed)) return fail();
    event_depth_ = depth_++;
    frames_[depth_] = {indefinite ? outer.left : length, indefinite, !constructed};
    if (!indefinite) outer.left -= length;
    return Event::begin;
}

ElementStream::Event ElementStream::end() noexcept {
    const Frame &ended = frames_[depth_--];
    ended_indefinite_ = ended.indefinite;
    if (ended.indefinite) frames_[depth_].left = ended.left;
    event_depth_ = depth_;
    finished_ = depth_ == 0;
    return Event::end;
}

}  // namespace tlx
