// Writes DER front to back into one growing buffer. A length is fixed up when its element closes, or leaves
// room when something long is about to be written inside, so that what is long is never moved.
#pragma once

#include <tlxpki/types.h>

#include <string_view>
#include <utility>

#include "der/buffer.hpp"
#include "der/element.hpp"

namespace tlx {

constexpr u8 kSequence = 0x30;
constexpr u8 kSet = 0x31;
/// [n] EXPLICIT, or an implicitly tagged constructed type.
constexpr u8 context(u8 number) noexcept {
    return static_cast<u8>(kContextSpecific | kConstructed | number);
}
/// [n] IMPLICIT over a primitive type.
constexpr u8 context_primitive(u8 number) noexcept {
    return static_cast<u8>(kContextSpecific | number);
}

/// Remembers any failure (a null value, an unencodable text, no memory); `ok` says so at the end.
class Encoder {
  public:
    /// A constructed element that is closed when this object goes out of scope.
    class Nest {
      public:
        Nest(Encoder &encoder, u8 tag) noexcept
            : encoder_(encoder), outer_(std::exchange(encoder.innermost_, this)), start_(encoder.open(tag)) {}
        ~Nest() { encoder_.close(*this); }
        Nest(const Nest &) = delete;
        Nest &operator=(const Nest &) = delete;

      private:
        friend Encoder;
        Encoder &encoder_;
        Nest *outer_;
        std::size_t start_;     ///< of the contents
        std::size_t room_ = 1;  ///< length octets before them
    };

    [[nodiscard]] Nest sequence() noexcept { return {*this, kSequence}; }
    [[nodiscard]] Nest set() noexcept { return {*this, kSet}; }
    [[nodiscard]] Nest nest(u8 tag) noexcept { return {*this, tag}; }

    void primitive(u8 tag, Bytes contents) noexcept;
    void boolean(bool value, u8 tag = TLX_TAG_BOOLEAN) noexcept;
    /// (bits + 8) / 8 octets, one for zero.
    void integer(const BIGINT *number, u8 tag = TLX_TAG_INTEGER) noexcept;
    void small_integer(u8 value, u8 tag = TLX_TAG_INTEGER) noexcept;
    void bit_string(const BIT_STRING *bits, u8 tag = TLX_TAG_BIT_STRING) noexcept;
    void oid(std::string_view dotted, u8 tag = TLX_TAG_OBJECT_IDENTIFIER) noexcept;
    void oid(const OBJECT_IDENTIFIER *oid, u8 tag = TLX_TAG_OBJECT_IDENTIFIER) noexcept;
    void null() noexcept { primitive(TLX_TAG_NULL, {}); }
    /// A string record's octets under a tag.
    void string(const ASN1_STRING *string, u8 tag) noexcept;
    /// A string record under its own type, as pseudo-tag 32 writes it.
    void any_string(const ASN1_STRING *string) noexcept;
    /// A string record under an identifier octet, which undoes decode_any_string: octets come back as they
    /// were read.
    void any_value(const ASN1_STRING *value, u32 identifier) noexcept;
    /// A finished node, as it is.
    void node(const ASN1_UNIT *node) noexcept;
    /// Finished encodings, as they are.
    void raw(Bytes octets) noexcept;

    void fail() noexcept { buffer_.fail(); }
    /// Calls write(). When that is where encoding fails, and nothing inside has named its own status, this
    /// status says so.
    template <typename Write>
    void blaming(u32 status, Write write) noexcept {
        const bool was_ok = ok();
        write();
        if (was_ok && !ok() && blamed_ == 0) blamed_ = status;
    }
    /// The status that says where encoding failed; 0 when none does.
    [[nodiscard]] u32 blamed() const noexcept { return blamed_; }
    [[nodiscard]] bool ok() const noexcept { return buffer_.ok(); }
    [[nodiscard]] bool out_of_memory() const noexcept { return buffer_.out_of_memory(); }
    [[nodiscard]] Bytes bytes() const noexcept { return buffer_.bytes(); }
    [[nodiscard]] Buffer &buffer() noexcept { return buffer_; }
    /// Makes a node of the one element written so far, and may give it the buffer; null when something
    /// failed.
    [[nodiscard]] ASN1_UNIT *to_node() noexcept;

  private:
    std::size_t open(u8 tag) noexcept;
    void close(Nest &nest) noexcept;
    /// Widens the length octets of an open element to `count`.
    void widen(Nest &nest, std::size_t count) noexcept;
    /// Does so for all open elements, before an element inside them gets as many contents octets.
    void prepare(std::size_t length) noexcept;
    /// Identifier and length octets of an element with `length` contents octets; room for the contents, or
    /// null.
    u8 *header(u8 tag, std::size_t length) noexcept;

    Buffer buffer_;
    Nest *innermost_ = nullptr;  ///< the open element that is written to
    u32 blamed_ = 0;
};

/// An encoder for secrets: it wipes its octets before it frees them. Room for all of them has to be made
/// beforehand, so that growing leaves no copy behind.
class SecretEncoder : public Encoder {
  public:
    SecretEncoder() noexcept = default;
    ~SecretEncoder() { buffer().wipe(); }
    SecretEncoder(const SecretEncoder &) = delete;
    SecretEncoder &operator=(const SecretEncoder &) = delete;
};

/// Gives the finished encoding to *out as a new node. False when the encoder failed or memory ran out; *out
/// is unchanged then.
[[nodiscard]] bool hand_over(Encoder &encoder, ASN1_UNIT **out) noexcept;

}  // namespace tlx
