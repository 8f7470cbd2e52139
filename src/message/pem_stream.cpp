// PEM texts in pieces (RFC 7468).
#include <tlxpki/base64.h>
#include <tlxpki/message_stream.h>

#include <algorithm>
#include <string_view>

#include "asn1/base64.hpp"
#include "asn1/pem_scan.hpp"
#include "message/message_output.hpp"
#include "verify/object.hpp"

using namespace tlx;

namespace {

using std::string_view;

constexpr std::size_t kMostLabel = TLX_PEM_LABEL_MAX_LENGTH;

Bytes octets_of(string_view text) noexcept {
    return {reinterpret_cast<const u8 *>(text.data()), text.size()};
}

constexpr bool is_blank(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\r';
}

/// A line, without the blanks at its end, of which no more is kept than the longest line that counts has.
class Line {
  public:
    void append(char c) noexcept {
        if (size_ < sizeof text_) text_[size_++] = c;
    }
    void clear() noexcept { size_ = 0; }
    /// The label between a beginning and dashes; empty when the line is another one.
    [[nodiscard]] string_view label(string_view beginning) const noexcept {
        const string_view line = text();
        const std::size_t around = beginning.size() + kPemDashes.size();
        if (line.size() <= around || line.size() > around + kMostLabel) return {};
        if (!line.starts_with(beginning) || !line.ends_with(kPemDashes)) return {};
        return part(line, beginning.size(), line.size() - around);
    }

  private:
    [[nodiscard]] string_view text() const noexcept {
        std::size_t size = size_;
        while (size > 0 && is_blank(text_[size - 1])) {
            --size;
        }
        return {text_, size};
    }

    char text_[kPemBegin.size() + kMostLabel + kPemDashes.size() + 8] = {};
    std::size_t size_ = 0;
};

}  // namespace

struct PEM_READER {
  public:
    PEM_READER(MESSAGE_OUTPUT output, void *context) noexcept : out_(output, context) {}

    [[nodiscard]] u32 update(string_view text) noexcept {
        for (const char c : text) {
            if (status_ == 0) status_ = take(c);
        }
        return status_;
    }
    [[nodiscard]] u32 finish() noexcept {
        if (status_ == 0 && place_ == Place::last_line) status_ = end_line();
        if (status_ != 0) return status_;
        status_ = 0x5286002B;
        return place_ == Place::after ? 0 : 0x5286004F;
    }
    [[nodiscard]] const char *label() const noexcept { return label_; }

  private:
    enum class Place : u8 { before, body, last_line, after };
    /// Characters that are decoded together, a multiple of four.
    static constexpr std::size_t kBlock = 8192;

    [[nodiscard]] u32 take(char c) noexcept;
    [[nodiscard]] u32 take_body(char c) noexcept;
    [[nodiscard]] u32 end_line() noexcept;
    [[nodiscard]] u32 decode() noexcept;

    MessageOutput out_;
    Place place_ = Place::before;
    Line line_;
    char label_[kMostLabel + 1] = {};
    bool at_line_start_ = true;
    bool is_padded_ = false;  ///< nothing may follow
    std::size_t size_ = 0;
    u8 block_[kBlock] = {};
    u32 status_ = 0;
};

u32 PEM_READER::take(char c) noexcept {
    if (place_ == Place::after) return 0;
    if (place_ == Place::body) return take_body(c);
    if (c == '\n') return end_line();
    line_.append(c);
    return 0;
}

u32 PEM_READER::take_body(char c) noexcept {
    if (c == '\n') {
        at_line_start_ = true;
        return 0;
    }
    if (is_blank(c)) return 0;
    if (c == '-' && at_line_start_) {
        place_ = Place::last_line;
        line_.append(c);
        return decode();
    }
    at_line_start_ = false;
    block_[size_++] = static_cast<u8>(c);
    return size_ == kBlock ? decode() : 0;
}

u32 PEM_READER::end_line() noexcept {
    const bool is_first = place_ == Place::before;
    const string_view label = line_.label(is_first ? kPemBegin : kPemEnd);
    line_.clear();
    if (is_first && !label.empty()) {
        *std::ranges::copy(label, label_).out = 0;
        place_ = Place::body;
    }
    if (is_first) return 0;
    place_ = Place::after;
    return label == string_view(label_) ? 0 : 0x52850048;
}

u32 PEM_READER::decode() noexcept {
    u8 octets[base64_room(kBlock)];
    if (size_ == 0) return 0;
    const u8 *end = is_padded_ ? nullptr : decode_base64({block_, size_}, octets);
    if (end == nullptr) return 0x52850048;
    is_padded_ = block_[size_ - 1] == '=';
    size_ = 0;
    out_.raw({octets, static_cast<std::size_t>(end - octets)});
    return out_.status();
}

struct PEM_WRITER {
  public:
    PEM_WRITER(string_view label, MESSAGE_OUTPUT output, void *context) noexcept : out_(output, context) {
        label_size_ = static_cast<std::size_t>(std::ranges::copy(label, label_).out - label_);
    }

    [[nodiscard]] u32 update(Bytes octets) noexcept;
    [[nodiscard]] u32 finish() noexcept;

  private:
    /// Octets that are encoded together: whole lines of 64 characters.
    static constexpr std::size_t kBlock = 48 * 128;

    void begin() noexcept;
    void put_line(string_view beginning) noexcept;
    [[nodiscard]] u32 encode() noexcept;

    MessageOutput out_;
    char label_[kMostLabel] = {};
    std::size_t label_size_;
    bool begun_ = false;
    std::size_t size_ = 0;
    u8 block_[kBlock] = {};
    u32 status_ = 0;
};

void PEM_WRITER::put_line(string_view beginning) noexcept {
    out_.raw(octets_of(beginning));
    out_.raw(octets_of({label_, label_size_}));
    out_.raw(octets_of("-----\n"));
}

void PEM_WRITER::begin() noexcept {
    if (!std::exchange(begun_, true)) put_line(kPemBegin);
}

u32 PEM_WRITER::update(Bytes octets) noexcept {
    if (status_ == 0) begin();
    while (status_ == 0 && !octets.empty()) {
        const std::size_t taken = std::min(octets.size(), kBlock - size_);
        std::memcpy(block_ + size_, octets.data(), taken);
        octets = octets.subspan(taken);
        size_ += taken;
        if (size_ == kBlock) status_ = encode();
    }
    return status_;
}

u32 PEM_WRITER::encode() noexcept {
    char *text = nullptr;
    const auto size = static_cast<u32>(std::exchange(size_, 0));
    if (size == 0) return out_.status();
    const u32 length = encode_Base64(block_, size, &text, 1);
    const OwnedOctets<char> owner(text);
    if (length == 0) return 0x5287003C;
    out_.raw(octets_of({text, length}));
    out_.raw(octets_of("\n"));
    return out_.status();
}

u32 PEM_WRITER::finish() noexcept {
    u32 status = update({});
    if (status == 0) status = encode();
    if (status == 0) put_line(kPemEnd);
    if (status_ == 0) status_ = 0x5288002B;
    return status != 0 ? status : out_.status();
}

PEM_READER *new_PEM_READER(MESSAGE_OUTPUT output, void *context) {
    return output == nullptr ? nullptr : make_object<PEM_READER>(output, context).release();
}

void free_PEM_READER(PEM_READER *reader) {
    Destroy<PEM_READER>{}(reader);
}

uint32_t update_PEM_READER(PEM_READER *reader, const char *text, uint32_t len) {
    if (reader == nullptr || (text == nullptr && len != 0)) return 0x52850049;
    return reader->update({text, len});
}

uint32_t final_PEM_READER(PEM_READER *reader) {
    return reader == nullptr ? 0x52860049 : reader->finish();
}

const char *get_PEM_READER_label(const PEM_READER *reader) {
    return reader == nullptr ? nullptr : reader->label();
}

PEM_WRITER *new_PEM_WRITER(const char *label, MESSAGE_OUTPUT output, void *context) {
    if (label == nullptr || output == nullptr) return nullptr;
    const string_view name(label);
    const bool is_printable = std::ranges::all_of(name, [](char c) { return c >= ' ' && c <= '~'; });
    if (name.empty() || name.size() > kMostLabel || !is_printable) return nullptr;
    return make_object<PEM_WRITER>(name, output, context).release();
}

void free_PEM_WRITER(PEM_WRITER *writer) {
    Destroy<PEM_WRITER>{}(writer);
}

uint32_t update_PEM_WRITER(PEM_WRITER *writer, const uint8_t *octets, uint32_t len) {
    if (writer == nullptr || (octets == nullptr && len != 0)) return 0x52870049;
    return writer->update({octets, len});
}

uint32_t final_PEM_WRITER(PEM_WRITER *writer) {
    return writer == nullptr ? 0x52880049 : writer->finish();
}
