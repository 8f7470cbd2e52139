// Text of any kind, taken for each character set in turn. Korean text that converts comes back from UTF-8 but
// for the characters that UTF-8 writes in two octets.
#include "values.hpp"

namespace {

template <typename T>
std::string taken(T *text, std::uint32_t length) {
    fuzz::require((text == nullptr) == (length == 0));
    return fuzz::taken(text, length);
}

void there_and_back(const std::string &text) {
    ASN1_STRING *bmp = nullptr;
    ASN1_STRING *utf8 = nullptr;
    const std::uint32_t units = cp949ToBMP(text.c_str(), &bmp);
    const std::uint32_t octets = cp949ToUTF8(text.c_str(), &utf8);
    const fuzz::String owners[] = {fuzz::String(bmp), fuzz::String(utf8)};
    fuzz::require((units == 0) == (octets == 0));
    if (units == 0) return;
    char *back = nullptr;
    const std::uint32_t length = utf8ToCP949(utf8, &back);
    const std::string same = taken(back, length);
    fuzz::require(same.size() == std::string(text.c_str()).size());
    for (std::size_t i = 0; i < same.size(); ++i)
        fuzz::require(same[i] == text[i] || same[i] == '\0');
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    for (const std::int32_t type : {TLX_TAG_UTF8_STRING, TLX_TAG_BMP_STRING, TLX_TAG_OBJECT_IDENTIFIER})
        tlx_free(dump_ASN1STRING(fuzz::string_of(type, text).get()));
    there_and_back(text);

    const auto length = static_cast<std::uint32_t>(size);
    char *narrow = nullptr;
    const std::uint32_t narrowed = uniToasc(data, length, &narrow);
    taken(narrow, narrowed);
    std::uint8_t *octets = nullptr;
    const std::uint32_t count = hexToASCII(text.data(), length, &octets);
    taken(octets, count);

    std::uint8_t *units = nullptr;
    const std::uint32_t widened = ascTouni(text.data(), length, &units);
    char *back = nullptr;
    const std::uint32_t same = uniToasc(units, widened, &back);
    fuzz::require(taken(back, same) == text);
    tlx_free(units);
    return 0;
}
