// UTCTime and GeneralizedTime texts.
//
// UTCTime:         YYMMDDhhmm[ss](Z | +hhmm | -hhmm)
// GeneralizedTime: YYYYMMDDhhmm[ss](Z | +hhmm | -hhmm)
#include <tlxpki/ber.h>
#include <tlxpki/time.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "asn1/asn1_time_calendar.hpp"
#include "asn1/asn1_time_text.hpp"
#include "der/memory.hpp"
#include "der/owned.hpp"
#include "der/values.hpp"

using namespace tlx;

namespace {

using std::string_view;

constexpr std::size_t kOffsetDigits = 4;
constexpr std::size_t kOffsetSize = 1 + kOffsetDigits;

/// What distinguishes the two kinds of text.
struct Kind {
    i32 type;
    std::size_t year_digits;
    i32 first_year;  ///< the years that can be written, since 1900
    i32 last_year;
};
constexpr Kind kUtc{TLX_TAG_UTC_TIME, 2, 50, 149};
constexpr Kind kGeneralized{TLX_TAG_GENERALIZED_TIME, 4, -1900, 8099};

/// What distinguishes the four forms of one kind.
struct Form {
    bool seconds;
    bool offset;  ///< a sign and four digits in place of "Z"

    static constexpr Form of_number(u32 number) noexcept { return {(number & 2) != 0, (number & 1) != 0}; }
    [[nodiscard]] constexpr std::size_t text_size(const Kind &kind) const noexcept {
        return kind.year_digits + 8 + (seconds ? 2 : 0) + (offset ? kOffsetSize : 1);
    }
};

/// The longest text: a GeneralizedTime of form 3.
constexpr std::size_t kMaxText = Form{true, true}.text_size(kGeneralized);

bool form_of_size(const Kind &kind, std::size_t size, Form &form) noexcept {
    for (u32 number = 0; number < 4; ++number) {
        form = Form::of_number(number);
        if (form.text_size(kind) == size) return true;
    }
    return false;
}

/// Takes fields off the front of a text. Remembers a character that does not match.
class FieldReader {
  public:
    explicit FieldReader(string_view text) noexcept : rest_(text) {}

    i32 number(std::size_t digits) noexcept {
        i32 value = 0;
        for (; digits > 0; --digits) {
            const char c = take();
            if (c < '0' || c > '9') ok_ = false;
            value = 10 * value + (c - '0');
        }
        return ok_ ? value : 0;
    }
    void literal(char expected) noexcept {
        if (take() != expected) ok_ = false;
    }
    void sign() noexcept {
        const char c = take();
        if (c != '+' && c != '-') ok_ = false;
    }
    /// The whole text was read, and all of it matched.
    [[nodiscard]] bool done() const noexcept { return ok_ && rest_.empty(); }

  private:
    char take() noexcept {
        if (rest_.empty()) {
            ok_ = false;
            return '\0';
        }
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    string_view rest_;
    bool ok_ = true;
};

/// Years since 1900 of the number in the text.
i32 year_of_text(const Kind &kind, i32 number) noexcept {
    if (kind.year_digits == 4) return number - 1900;
    return number < 50 ? number + 100 : number;
}

/// The fields as they stand in the text, whatever their values.
bool parse_fields(const Kind &kind, string_view text, Form &form, ASN1_TIME &parsed) noexcept {
    if (!form_of_size(kind, text.size(), form)) return false;
    FieldReader fields(text);
    parsed.year = year_of_text(kind, fields.number(kind.year_digits));
    parsed.month = fields.number(2) - 1;
    parsed.day = fields.number(2);
    parsed.hour = fields.number(2);
    parsed.minute = fields.number(2);
    parsed.second = form.seconds ? fields.number(2) : 0;
    if (form.offset) {
        fields.sign();
        fields.number(kOffsetDigits);
    } else {
        fields.literal('Z');
    }
    return fields.done();
}

bool parse(const Kind &kind, string_view text, ASN1_TIME &time) noexcept {
    Form form{};
    ASN1_TIME parsed{};
    if (!parse_fields(kind, text, form, parsed)) return false;
    if (!form.offset) parsed = calendar_time(calendar_seconds(parsed));
    if (check_ASN1_TIME(&parsed) != 0) return false;
    time = parsed;
    return true;
}

ASN1_TIME *text_to_time(const Kind &kind, const ASN1_STRING *text) noexcept {
    ASN1_TIME time{};
    return parse(kind, text_of(text), time) ? dup_ASN1_TIME(&time) : nullptr;
}

/// A time text under construction.
class TextWriter {
  public:
    void number(i32 value, std::size_t digits) noexcept {
        for (std::size_t i = digits; i > 0; --i, value /= 10) {
            text_[size_ + i - 1] = static_cast<char>('0' + value % 10);
        }
        size_ += digits;
    }
    void literal(string_view characters) noexcept {
        std::copy(characters.begin(), characters.end(), text_.begin() + size_);
        size_ += characters.size();
    }
    [[nodiscard]] Bytes bytes() const noexcept { return {reinterpret_cast<const u8 *>(text_.data()), size_}; }

  private:
    std::array<char, kMaxText> text_{};
    std::size_t size_ = 0;
};

/// A new record; `offset` is written in the forms that carry one.
ASN1_STRING *time_to_text(const Kind &kind, Form form, const ASN1_TIME &time, string_view offset) noexcept {
    if (check_ASN1_TIME(&time) != 0 || time.year < kind.first_year || time.year > kind.last_year) {
        return nullptr;
    }
    TextWriter text;
    text.number(kind.year_digits == 4 ? time.year + 1900 : time.year % 100, kind.year_digits);
    text.number(time.month + 1, 2);
    text.number(time.day, 2);
    text.number(time.hour, 2);
    text.number(time.minute, 2);
    if (form.seconds) text.number(time.second, 2);
    text.literal(form.offset ? offset : "Z");
    return decode_time(kind.type, text.bytes());
}

ASN1_STRING *time_to_text(const Kind &kind, u32 form, const ASN1_TIME *time) noexcept {
    if (time == nullptr || form > 3) return nullptr;
    return time_to_text(kind, Form::of_number(form), *time, "+0000");
}

enum class Sum { kDone, kUnreadable, kUnwritable };

/// Replaces a text by that of a time some seconds later. The offset, which says how far the text is from UTC,
/// stays.
Sum add_seconds(const Kind &kind, ASN1_STRING **text, i32 seconds) noexcept {
    const string_view old = text_of(*text);
    ASN1_TIME time{};
    Form form{};
    if (!parse(kind, old, time) || !form_of_size(kind, old.size(), form)) return Sum::kUnreadable;
    const ASN1_TIME later = calendar_time(calendar_seconds(time) + seconds);
    ASN1_STRING *sum = time_to_text(kind, form, later, {old.end() - kOffsetSize, old.end()});
    if (sum == nullptr) return Sum::kUnwritable;
    free_ASN1_STRING(*text);
    *text = sum;
    return Sum::kDone;
}

i32 compare(const Kind &kind, const ASN1_STRING *a, const ASN1_STRING *b) noexcept {
    ASN1_TIME left{};
    ASN1_TIME right{};
    const bool left_reads = parse(kind, text_of(a), left);
    const bool right_reads = parse(kind, text_of(b), right);
    return cmp_ASN1_TIME(left_reads ? &left : nullptr, right_reads ? &right : nullptr);
}

}  // namespace

namespace tlx {

bool has_existing_date(const ASN1_STRING *text, bool generalized) noexcept {
    Form form{};
    ASN1_TIME time{};
    if (!parse_fields(generalized ? kGeneralized : kUtc, text_of(text), form, time)) return false;
    const ASN1_TIME date{0, 0, 0, time.day, time.month, time.year, 0, 0, 0};
    return check_ASN1_TIME_date(&date) == 0;
}

}  // namespace tlx

ASN1_TIME *charToASN1_TIME(const char *text) {
    if (text == nullptr) return nullptr;
    FieldReader fields(text);
    ASN1_TIME time{};
    time.year = fields.number(4) - 1900;
    fields.literal('-');
    time.month = fields.number(2) - 1;
    fields.literal('-');
    time.day = fields.number(2);
    fields.literal(',');
    time.hour = fields.number(2);
    fields.literal(':');
    time.minute = fields.number(2);
    fields.literal(':');
    time.second = fields.number(2);
    return fields.done() ? dup_ASN1_TIME(&time) : nullptr;
}

ASN1_TIME *utcTimeToASN1_TIME(const UTC_TIME *utc) {
    return text_to_time(kUtc, utc);
}

ASN1_TIME *generalizedTimeToASN1_TIME(const GENERALIZED_TIME *generalized) {
    return text_to_time(kGeneralized, generalized);
}

UTC_TIME *asn1TimeToUTC_TIME(const ASN1_TIME *time, uint32_t form) {
    return time_to_text(kUtc, form, time);
}

GENERALIZED_TIME *asn1TimeToGENERALIZED_TIME(const ASN1_TIME *time, uint32_t form) {
    return time_to_text(kGeneralized, form, time);
}

uint32_t add_UTC_TIME(UTC_TIME **time, int32_t seconds) {
    if (time == nullptr || *time == nullptr) return 0x45020049;
    switch (add_seconds(kUtc, time, seconds)) {
        case Sum::kUnreadable:
            return 0x4502003C;
        case Sum::kUnwritable:
            return 0x45020030;
        default:
            return 0;
    }
}

uint32_t add_GENERALIZED_TIME(GENERALIZED_TIME **time, int32_t seconds) {
    if (time == nullptr || *time == nullptr) return 0x45030049;
    switch (add_seconds(kGeneralized, time, seconds)) {
        case Sum::kUnreadable:
            return 0x4503003C;
        case Sum::kUnwritable:
            return 0x45030030;
        default:
            return 0;
    }
}

int32_t cmp_UTC_TIME(const UTC_TIME *a, const UTC_TIME *b) {
    return compare(kUtc, a, b);
}

int32_t cmp_GENERALIZED_TIME(const GENERALIZED_TIME *a, const GENERALIZED_TIME *b) {
    return compare(kGeneralized, a, b);
}
