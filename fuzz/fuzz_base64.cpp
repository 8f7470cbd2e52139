// Base64 text of any kind. Octets that decode encode to the same text without its line ends.
#include <tlxcrypto/memory.h>
#include <tlxpki/base64.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    std::string plain;
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] != '\r' && data[i] != '\n') plain += static_cast<char>(data[i]);
    }
    std::uint8_t *octets = nullptr;
    const std::uint32_t count =
        decode_Base64(reinterpret_cast<const char *>(data), static_cast<std::uint32_t>(size), &octets);
    if ((count == 0) != (octets == nullptr)) std::abort();
    if (count == 0) return 0;

    char *text = nullptr;
    const std::uint32_t length = encode_Base64(octets, count, &text, 0);
    if (std::string(text, length) != plain) std::abort();
    tlx_free(text);
    tlx_free(octets);
    return 0;
}
