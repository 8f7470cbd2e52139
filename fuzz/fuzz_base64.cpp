// Base64 text of any kind. What decodes is encoded again, and has to give the text without its line ends.
#include "values.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    std::string plain(reinterpret_cast<const char *>(data), size);
    std::erase_if(plain, [](char c) { return c == '\r' || c == '\n'; });
    std::uint8_t *octets = nullptr;
    const std::uint32_t count =
        decode_Base64(reinterpret_cast<const char *>(data), static_cast<std::uint32_t>(size), &octets);
    fuzz::require((count == 0) == (octets == nullptr));
    if (count == 0) return 0;
    char *text = nullptr;
    const std::uint32_t length = encode_Base64(octets, count, &text, 0);
    fuzz::require(fuzz::taken(text, length) == plain);
    tlx_free(octets);
    return 0;
}
