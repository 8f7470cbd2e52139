// Reading elements out of octets that come in pieces of any length, in constant memory.
#pragma once

#include "der/element.hpp"

namespace tlx {

/// Follows the elements of one outermost element (X.690, 8.1). Lengths have 64 bits. What is nested deeper
/// than kMaxDepth is refused, and so are octets after the outermost element.
class ElementStream {
  public:
    enum class Event : u8 {
        need_more,  ///< all octets are taken
        begin,      ///< of an element: see header(), tag() and depth()
        octets,     ///< contents of a primitive element, or of one that stays closed: see octets()
        end,        ///< of an element: see depth() and ends_indefinite()
        broken,     ///< for good
    };

    /// Takes octets off the front of `in` up to the next event.
    [[nodiscard]] Event next(Bytes &in) noexcept;
    /// After `begin`: the contents come as octets, also those of a constructed element. One of indefinite
    /// length is opened nevertheless.
    void stay_closed() noexcept;

    [[nodiscard]] u8 tag() const noexcept { return header_[0]; }
    [[nodiscard]] bool indefinite() const noexcept { return frames_[depth_].indefinite; }
    [[nodiscard]] bool ends_indefinite() const noexcept { return ended_indefinite_; }
    /// Identifier and length octets.
    [[nodiscard]] Bytes header() const noexcept { return {header_, begun_size_}; }
    [[nodiscard]] Bytes octets() const noexcept { return octets_; }
    /// How many elements the one that begins or ended lies in.
    [[nodiscard]] unsigned depth() const noexcept { return event_depth_; }
    [[nodiscard]] bool finished() const noexcept { return finished_; }

  private:
    /// An element that is open.
    struct Frame {
        std::uint64_t left;  ///< octets until its end, or that of what it lies in
        bool indefinite;
        bool closed;  ///< its contents come as octets
    };
    static constexpr std::uint64_t kLongest = 0x7FFFFFFFFFFFFFFF;

    [[nodiscard]] Event fail() noexcept;
    [[nodiscard]] Event take_contents(Bytes &in) noexcept;
    [[nodiscard]] Event take_header(Bytes &in) noexcept;
    [[nodiscard]] bool header_complete() const noexcept;
    [[nodiscard]] Event begin() noexcept;
    [[nodiscard]] Event end() noexcept;

    u8 header_[kLongestHeader] = {};
    std::size_t header_size_ = 0;  ///< of the header that is being collected
    std::size_t begun_size_ = 0;
    Bytes octets_;
    /// The first one is what the outermost element lies in.
    Frame frames_[kMaxDepth + 1] = {{kLongest, false, false}};
    unsigned depth_ = 0;
    unsigned event_depth_ = 0;
    bool ended_indefinite_ = false;
    bool finished_ = false;
    bool broken_ = false;
};

}  // namespace tlx
