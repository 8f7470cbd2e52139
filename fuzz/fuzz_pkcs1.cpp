// RSA key files of any kind. What reads is written, and what was written reads again.
#include "values.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const auto *text = reinterpret_cast<const char *>(data);
    const fuzz::Held<free_RSA_UNIT> unit(new_RSA_UNIT());
    if (readPKCS1_from_Binary(unit.get(), "password", 8, text, static_cast<std::int32_t>(size)) != 0)
        return 0;
    char *made = nullptr;
    const bool is_private = get_RSA_UNIT_kind(unit.get()) == TLX_RSA_PRIVATE;
    fuzz::require((is_private ? writePKCS1PrivateKey_to_Binary(unit.get(), nullptr, 0, &made)
                              : writePKCS1PublicKey_to_Binary(unit.get(), nullptr, &made)) == 0);
    const std::string written = fuzz::taken(made, static_cast<std::uint32_t>(std::string_view(made).size()));
    const auto length = static_cast<std::int32_t>(written.size());
    fuzz::require(readPKCS1_from_Binary(unit.get(), nullptr, 0, written.data(), length) == 0);
    return 0;
}
