// Time texts of any kind. What reads is written in each form; what was read from the written text is the same
// time, and adding seconds and taking them off again leads back.
#include "values.hpp"

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

using Time = fuzz::Held<free_ASN1_TIME>;

void write_and_read(const Kind &kind, const ASN1_TIME *time) {
    ASN1_STRING *text = kind.write(time, 2);
    if (text == nullptr) return;  // a year that the text cannot hold
    fuzz::require(cmp_ASN1_TIME(Time(kind.read(text)).get(), time) == 0);
    constexpr std::int32_t kSeconds = 86399;
    if (kind.add(&text, kSeconds) == 0) {
        fuzz::require(kind.add(&text, -kSeconds) == 0);
        fuzz::require(cmp_ASN1_TIME(Time(kind.read(text)).get(), time) == 0);
    }
    free_ASN1_STRING(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string octets(reinterpret_cast<const char *>(data), size);
    for (const Kind &kind : kKinds) {
        const Time time(kind.read(fuzz::string_of(kind.type, octets).get()));
        if (time == nullptr) continue;
        fuzz::require(check_ASN1_TIME(time.get()) == 0);
        write_and_read(kind, time.get());
    }
    free_ASN1_TIME(charToASN1_TIME(octets.c_str()));
    return 0;
}
