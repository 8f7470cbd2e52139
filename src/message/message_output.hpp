// Giving out the octets of a message that is written in pieces.
#pragma once

#include <tlxpki/message_stream.h>

#include "der/encoder.hpp"
#include "der/owned.hpp"

namespace tlx {

/// Gives octets to an output, which may be null. Returns its status.
[[nodiscard]] inline u32 give_out(MESSAGE_OUTPUT output, void *context, Bytes octets) noexcept {
    if (output == nullptr || octets.empty()) return 0;
    return output(context, octets.data(), static_cast<u32>(octets.size()));
}

/// What a message is written to. The first status of the output that is not 0 stays.
class MessageOutput {
  public:
    MessageOutput(MESSAGE_OUTPUT output, void *context) noexcept : output_(output), context_(context) {}

    void raw(Bytes octets) noexcept {
        if (status_ == 0) status_ = give_out(output_, context_, octets);
    }
    /// Identifier and length octets.
    void header(u8 tag, std::uint64_t length) noexcept;
    void indefinite(u8 tag) noexcept {
        const u8 octets[] = {tag, kIndefiniteLength};
        raw(octets);
    }
    /// Ends elements of indefinite length.
    void end(u32 elements) noexcept {
        constexpr u8 kEndOfContents[kEndOfContentsSize] = {};
        for (; elements > 0; --elements) {
            raw(kEndOfContents);
        }
    }
    [[nodiscard]] u32 status() const noexcept { return status_; }

  private:
    MESSAGE_OUTPUT output_;
    void *context_;
    u32 status_ = 0;
};

/// The octets of an element with contents of a length, which is far below 2^64.
[[nodiscard]] std::uint64_t element_size(std::uint64_t length) noexcept;

/// Cuts octets that come in pieces of any length into segments of 65536 octets, and a last one.
class SegmentWriter {
  public:
    [[nodiscard]] bool start() noexcept;
    void update(MessageOutput &out, Bytes octets) noexcept;
    void finish(MessageOutput &out) noexcept;

  private:
    static constexpr std::size_t kSegment = 65536;

    OwnedOctets<u8> segment_;
    std::size_t size_ = 0;
};

}  // namespace tlx
