// Time texts of any kind. A time that reads is written in each form, and the written text reads as the same
// time. Adding and subtracting seconds gives the time back.
#include <tlxpki/ber.h>
#include <tlxpki/string.h>
#include <tlxpki/time.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

/// The functions of one kind of text.
struct Kind {
    std::int32_t type;
    ASN1_TIME *(*read)(const ASN1_STRING *text);
    ASN1_STRING *(*write)(const ASN1_TIME *time, std::uint32_t form);
    std::uint32_t (*add)(ASN1_STRING **text, std::int32_t seconds);
};
constexpr Kind kKinds[] = {
    {TLX_TAG_UTC_TIME, utcTimeToASN1_TIME, asn1TimeToUTC_TIME, add_UTC_TIME},
    {TLX_TAG_GENERALIZED_TIME, generalizedTimeToASN1_TIME, asn1TimeToGENERALIZED_TIME, add_GENERALIZED_TIME},
};

void write_and_read(const Kind &kind, const ASN1_TIME *time) {
    ASN1_STRING *text = kind.write(time, 2);
    if (text == nullptr) return;  // a year that the text cannot hold
    ASN1_TIME *same = kind.read(text);
    if (cmp_ASN1_TIME(same, time) != 0) std::abort();
    constexpr std::int32_t kSeconds = 86399;
    if (kind.add(&text, kSeconds) == 0) {
        if (kind.add(&text, -kSeconds) != 0) std::abort();
        ASN1_TIME *back = kind.read(text);
        if (cmp_ASN1_TIME(back, time) != 0) std::abort();
        free_ASN1_TIME(back);
    }
    free_ASN1_TIME(same);
    free_ASN1_STRING(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    for (const Kind &kind : kKinds) {
        ASN1_STRING *text = new_ASN1_STRING();
        set_ASN1_STRING_value(text, kind.type, data, static_cast<std::uint32_t>(size));
        ASN1_TIME *time = kind.read(text);
        if (time != nullptr) {
            if (check_ASN1_TIME(time) != 0) std::abort();
            write_and_read(kind, time);
        }
        free_ASN1_TIME(time);
        free_ASN1_STRING(text);
    }
    free_ASN1_TIME(charToASN1_TIME(std::string(reinterpret_cast<const char *>(data), size).c_str()));
    return 0;
}
