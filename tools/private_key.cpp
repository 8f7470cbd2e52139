#include "private_key.hpp"

#include "record.hpp"

namespace tool {

namespace {

/// The cipher of a line "DEK-Info: DES-EDE3-CBC,0123456789ABCDEF"; empty when there is none.
std::string_view cipher_of(std::string_view block) {
    constexpr std::string_view kHeader = "DEK-Info: ";
    const std::size_t at = block.find(kHeader);
    if (at == std::string_view::npos) return {};
    const std::string_view value = block.substr(at + kHeader.size());
    return value.substr(0, value.find_first_of(",\r\n"));
}

std::string why_not_decrypted(const Block &block, uint32_t status) {
    constexpr std::string_view kSupported = "DES-EDE3-CBC";
    const std::string_view cipher = cipher_of(block.text);
    if (!cipher.empty() && cipher != kSupported) {
        return "the key is encrypted with " + std::string(cipher) + ", which is not supported, only " +
               std::string(kSupported) + " is";
    }
    return "the key cannot be decrypted (is the password right?): " + status_sentence(status);
}

}  // namespace

RsaKey decrypt_key(const Block &block, Password &password) {
    if (block.label != "RSA PRIVATE KEY") {
        throw Failure(block.source + ": an encrypted " + block.label + " cannot be read");
    }
    const std::string_view text = password.of_key(block.source);
    auto unit = made<RsaKey>(new_RSA_UNIT());
    const uint32_t status = readPKCS1_from_Binary(unit.get(), text.data(), static_cast<int32_t>(text.size()),
                                                  block.text.data(), static_cast<int32_t>(block.text.size()));
    if (status != 0) throw Failure(block.source + ": " + why_not_decrypted(block, status));
    return unit;
}

RsaKey decode_private_key(const Block &block) {
    auto unit = made<RsaKey>(new_RSA_UNIT());
    const Owned<PKCS1_RSA_PRIVATE_KEY, free_PKCS1_RSA_PRIVATE_KEY> key(
        decode_record(block, Seq_to_PKCS1_RSA_PRIVATE_KEY));
    must(get_RSA_UNIT_from_PKCS1_RSA_PRIVATE_KEY(unit.get(), key.get()));
    return unit;
}

}  // namespace tool
