// Character sets.
#include <tlxcrypto/file.h>
#include <tlxpki/ber.h>
#include <tlxpki/convert.h>

#include <string_view>

#include "asn1/convert_table.hpp"
#include "asn1/utf8.hpp"
#include "der/memory.hpp"
#include "der/owned.hpp"
#include "der/values.hpp"

using namespace tlx;

namespace {

using std::string_view;

/// Writes text into a block whose size was computed beforehand; the caller writes no more than that.
class Writer {
  public:
    explicit Writer(std::size_t size) noexcept : block_(static_cast<u8 *>(TLX_ALLOCATE(size))) {}

    explicit operator bool() const noexcept { return block_ != nullptr; }
    void octet(u32 value) noexcept { block_.get()[size_++] = static_cast<u8>(value); }
    void pair(u32 value) noexcept {
        octet(value >> 8);
        octet(value);
    }
    void character(u32 code_point) noexcept { size_ += write_utf8(code_point, block_.get() + size_); }
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    template <typename T>
    T *release() noexcept {
        return reinterpret_cast<T *>(block_.release());
    }

  private:
    OwnedOctets<u8> block_;
    std::size_t size_ = 0;
};

/// Ends a text and hands it over, unless it is empty.
template <typename T>
u32 finish_text(Writer &text, T **out) noexcept {
    const auto length = static_cast<u32>(text.size());
    if (length == 0) return 0;
    text.octet(0);
    *out = text.release<T>();
    return length;
}

/// Walks a double-octet text and gives each code point to `write`. False at a character that is not in the
/// plane.
template <typename Write>
bool each_code_point(string_view text, Write write) noexcept {
    for (std::size_t at = 0; at < text.size(); ++at) {
        u32 code_point = static_cast<u8>(text[at]);
        if (code_point >= 0x80) {
            if (++at == text.size()) return false;
            code_point = ksx1001_to_unicode(static_cast<u8>(code_point), static_cast<u8>(text[at]));
            if (code_point == 0) return false;
        }
        write(code_point);
    }
    return true;
}

/// The contents of a new string record of `type`; `most` bounds the octets that one octet of the text can
/// become.
template <typename Write>
u32 convert_text(const char *text, i32 type, std::size_t most, ASN1_STRING **out, Write write) noexcept {
    if (text == nullptr || out == nullptr) return 0;
    const string_view characters(text);
    if (characters.empty() || characters.size() > kMaxLength / most) return 0;

    Owned<ASN1_STRING> string(new_ASN1_STRING());
    Writer contents(most * characters.size() + 1);
    if (!string || !contents) return 0;
    if (!each_code_point(characters, [&](u32 code_point) { write(code_point, contents); })) return 0;
    string->type = type;
    const u32 length = finish_text(contents, &string->data);
    string->length = static_cast<i32>(length);
    *out = string.release();
    return length;
}

}  // namespace

uint32_t cp949ToUnicode(uint8_t lead, uint8_t trail) {
    return ksx1001_to_unicode(lead, trail);
}

uint8_t *unicodeToCP949(uint32_t code_point) {
    const u32 character = unicode_to_ksx1001(code_point);
    if (character == 0) return nullptr;
    Writer octets(2);
    if (!octets) return nullptr;
    octets.pair(character);
    return octets.release<u8>();
}

uint32_t bmpToCP949(const BMP_STRING *string, char **out) {
    const Bytes units = octets_of(string);
    if (out == nullptr || units.size() % 2 != 0) return 0;
    Writer text(units.size() + 1);
    if (!text) return 0;
    for (std::size_t at = 0; at < units.size(); at += 2) {
        const u8 high = units[at];
        const u8 low = units[at + 1];
        // Only the upper half of the plane goes through the table. Callers use the lower half for ASCII, and
        // other characters there come out wrong.
        if (high <= 0x7F) {
            text.octet(low & 0x7F);
            continue;
        }
        const u32 character = unicode_to_ksx1001(u32{high} << 8 | low);
        if (character == 0) return 0;
        text.pair(character);
    }
    return finish_text(text, out);
}

uint32_t utf8ToCP949(const UTF8_STRING *string, char **out) {
    Bytes rest = octets_of(string);
    if (out == nullptr) return 0;
    Writer text(rest.size() + 1);
    if (!text) return 0;
    while (!rest.empty()) {
        Utf8 character{};
        if (!read_utf8(rest, character)) return 0;
        rest = rest.subspan(character.size);
        if (character.size == 1) {
            text.octet(character.code_point);
        } else if (character.size == 3) {
            const u32 converted = unicode_to_ksx1001(character.code_point);
            if (converted == 0) return 0;
            text.pair(converted);
        } else {
            text.pair(0);  // replaces a character that callers of this text do not expect
        }
    }
    return finish_text(text, out);
}

uint32_t cp949ToBMP(const char *text, BMP_STRING **out) {
    return convert_text(text, TLX_TAG_BMP_STRING, 2, out,
                        [](u32 code_point, Writer &contents) { contents.pair(code_point); });
}

uint32_t cp949ToUTF8(const char *text, UTF8_STRING **out) {
    return convert_text(text, TLX_TAG_UTF8_STRING, 2, out,
                        [](u32 code_point, Writer &contents) { contents.character(code_point); });
}

uint32_t ascTouni(const char *text, uint32_t len, uint8_t **out) {
    constexpr u32 kMostCharacters = 0x7FFFFFFE;
    if (text == nullptr || out == nullptr || len > kMostCharacters) return 0;
    Writer units(2 * std::size_t{len} + 2);
    if (!units) return 0;
    for (const char c : string_view(text, len)) {
        units.pair(static_cast<u8>(c));
    }
    units.pair(0);
    const auto size = static_cast<u32>(units.size());
    *out = units.release<u8>();
    return size;
}

uint32_t uniToasc(const uint8_t *units, uint32_t len, char **out) {
    if (units == nullptr || out == nullptr || len % 2 != 0) return 0;
    Bytes rest(units, len);
    if (len >= 2 && units[len - 2] == 0 && units[len - 1] == 0) rest = rest.first(len - 2);
    for (std::size_t at = 0; at < rest.size(); at += 2) {
        if (rest[at] != 0) return 0;
    }
    Writer text(rest.size() / 2 + 1);
    if (!text) return 0;
    for (std::size_t at = 1; at < rest.size(); at += 2) {
        text.octet(rest[at]);
    }
    return finish_text(text, out);
}

uint32_t hexToASCII(const char *hex, uint32_t len, uint8_t **out) {
    u32 size = 0;
    if (hex == nullptr || out == nullptr || len == 0) return 0;
    return hex_to_binary(hex, len, out, &size) == 0 ? size : 0;
}
