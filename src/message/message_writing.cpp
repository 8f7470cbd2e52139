#include "message/message_writing.hpp"

using namespace tlx;

u32 MessageWriting::count(Bytes octets) noexcept {
    if (octets.size() > most_ - taken_) return statuses_.too_long;
    taken_ += octets.size();
    return 0;
}

u32 MessageWriting::begin_message(const Encoder &whole, std::uint64_t size, u8 tag) noexcept {
    MessageFrame frame = {};
    if (!whole.ok() || !frame.split(whole.bytes(), layout_)) return statuses_.no_memory;
    if (is_der()) {
        frame.begin_der(out_, size, tag);
    } else if (!is_detached()) {
        if (!segments_.start()) return statuses_.no_memory;
        frame.begin_indefinite(out_);
    }
    return out_.status();
}

u32 MessageWriting::write(Bytes content) noexcept {
    if (is_der()) {
        out_.raw(content);
    } else if (!is_detached()) {
        segments_.update(out_, content);
    }
    return out_.status();
}

u32 MessageWriting::end_message(const Encoder &whole) noexcept {
    MessageFrame frame = {};
    if (!whole.ok() || !frame.split(whole.bytes(), layout_)) return statuses_.no_memory_at_end;
    if (is_detached()) {
        out_.raw(whole.bytes());
    } else if (is_der()) {
        frame.end_der(out_);
    } else {
        segments_.finish(out_);
        frame.end_indefinite(out_);
    }
    return out_.status();
}
