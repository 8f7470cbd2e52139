#include "describe.hpp"
#include "key_file.hpp"
#include "public_part.hpp"

namespace tool {

namespace {

std::string form_name(const KeyFile &key) {
    if (key.is_pkcs12) return "PKCS #12";
    const bool is_encrypted = key.container != nullptr || key.is_encrypted_pem;
    const char *form = key.is_pkcs1 ? "PKCS #1" : key.is_ec ? "EC private key" : "PKCS #8";
    return std::string(form) + (key.is_der ? ", DER" : ", PEM") +
           (is_encrypted ? ", encrypted" : ", not encrypted");
}

}  // namespace

Json describe_key_file(const KeyFile &key) {
    Json json = {{"form", form_name(key)}};
    if (key.container != nullptr) {
        json["encryption"] = describe_encryption(key.container->encryptionAlgorithm);
    }
    json.update(describe_public_key(public_part(key.info.get()).get()));
    json["random_number"] = get_PRIV_KEY_random(key.info.get()) != nullptr;
    return json;
}

}  // namespace tool
