#include "message/message_output.hpp"

#include <algorithm>

namespace tlx {
namespace {

/// Octets of a length in DER.
std::size_t length_octets(std::uint64_t length) noexcept {
    std::size_t octets = 1;
    for (std::uint64_t rest = length < kIndefiniteLength ? 0 : length; rest != 0; rest >>= 8) {
        ++octets;
    }
    return octets;
}

}  // namespace

void MessageOutput::header(u8 tag, std::uint64_t length) noexcept {
    const std::size_t octets = length_octets(length);
    u8 header[2 + sizeof length] = {tag, static_cast<u8>(length)};
    if (octets > 1) header[1] = static_cast<u8>(kIndefiniteLength | (octets - 1));
    for (std::size_t i = octets; i > 1; --i, length >>= 8) {
        header[i] = static_cast<u8>(length);
    }
    raw({header, 1 + octets});
}

std::uint64_t element_size(std::uint64_t length) noexcept {
    return 1 + length_octets(length) + length;
}

bool SegmentWriter::start() noexcept {
    segment_.reset(static_cast<u8 *>(TLX_ALLOCATE(kSegment)));
    return segment_ != nullptr;
}

void SegmentWriter::update(MessageOutput &out, Bytes octets) noexcept {
    while (!octets.empty()) {
        if (size_ == 0 && octets.size() >= kSegment) {
            out.header(TLX_TAG_OCTET_STRING, kSegment);
            out.raw(octets.first(kSegment));
            octets = octets.subspan(kSegment);
            continue;
        }
        const std::size_t taken = std::min(octets.size(), kSegment - size_);
        std::memcpy(segment_.get() + size_, octets.data(), taken);
        octets = octets.subspan(taken);
        size_ += taken;
        if (size_ == kSegment) finish(out);
    }
}

void SegmentWriter::finish(MessageOutput &out) noexcept {
    if (size_ == 0) return;
    out.header(TLX_TAG_OCTET_STRING, size_);
    out.raw({segment_.get(), size_});
    size_ = 0;
}

}  // namespace tlx
