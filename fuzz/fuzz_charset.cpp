// Text of any kind, converted from each character set in turn. Korean text comes back from UTF-8, except the
// characters that UTF-8 writes in two octets.
#include <tlxcrypto/memory.h>
#include <tlxpki/ber.h>
#include <tlxpki/convert.h>
#include <tlxpki/print.h>
#include <tlxpki/string.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

std::string taken(char *text, std::uint32_t length) {
    if ((text == nullptr) != (length == 0)) std::abort();
    std::string copy(text != nullptr ? text : "", length);
    tlx_free(text);
    return copy;
}

void dump_as(std::int32_t type, const std::uint8_t *data, std::size_t size) {
    ASN1_STRING *string = new_ASN1_STRING();
    set_ASN1_STRING_value(string, type, data, static_cast<std::uint32_t>(size));
    tlx_free(dump_ASN1STRING(string));
    free_ASN1_STRING(string);
}

void there_and_back(const std::string &text) {
    ASN1_STRING *bmp = nullptr;
    ASN1_STRING *utf8 = nullptr;
    const std::uint32_t units = cp949ToBMP(text.c_str(), &bmp);
    const std::uint32_t octets = cp949ToUTF8(text.c_str(), &utf8);
    if ((units == 0) != (octets == 0)) std::abort();
    if (units != 0) {
        char *back = nullptr;
        const std::uint32_t length = utf8ToCP949(utf8, &back);
        const std::string same = taken(back, length);
        if (same.size() != std::strlen(text.c_str())) std::abort();
        for (std::size_t i = 0; i < same.size(); ++i) {
            if (same[i] != text[i] && same[i] != '\0') std::abort();
        }
    }
    free_BMP_STRING(bmp);
    free_UTF8_STRING(utf8);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    for (const std::int32_t type : {TLX_TAG_UTF8_STRING, TLX_TAG_BMP_STRING, TLX_TAG_OBJECT_IDENTIFIER})
        dump_as(type, data, size);
    const std::string text(reinterpret_cast<const char *>(data), size);
    there_and_back(text);

    const auto length = static_cast<std::uint32_t>(size);
    char *narrow = nullptr;
    const std::uint32_t narrowed = uniToasc(data, length, &narrow);
    taken(narrow, narrowed);
    std::uint8_t *octets = nullptr;
    hexToASCII(text.data(), length, &octets);
    tlx_free(octets);

    std::uint8_t *units = nullptr;
    const std::uint32_t widened = ascTouni(text.data(), length, &units);
    char *back = nullptr;
    const std::uint32_t same = uniToasc(units, widened, &back);
    if (taken(back, same) != text) std::abort();
    tlx_free(units);
    return 0;
}
