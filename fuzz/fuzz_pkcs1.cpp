// RSA key files from hostile octets. What is read is written, and read again.
#include "values.hpp"

namespace {

void check_file(const char *text, std::int32_t size) {
    RSA_UNIT *unit = new_RSA_UNIT();
    if (readPKCS1_from_Binary(unit, "password", 8, text, size) == 0) {
        char *written = nullptr;
        const bool is_private = get_RSA_UNIT_kind(unit) == TLX_RSA_PRIVATE;
        fuzz::require((is_private ? writePKCS1PrivateKey_to_Binary(unit, nullptr, 0, &written)
                                  : writePKCS1PublicKey_to_Binary(unit, nullptr, &written)) == 0);
        const auto length = static_cast<std::int32_t>(std::string(written).size());
        fuzz::require(readPKCS1_from_Binary(unit, nullptr, 0, written, length) == 0);
        tlx_free(written);
    }
    free_RSA_UNIT(unit);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    check_file(reinterpret_cast<const char *>(data), static_cast<std::int32_t>(size));
    return 0;
}
