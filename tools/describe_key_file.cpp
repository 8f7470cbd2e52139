#include "describe.hpp"
#include "failure.hpp"
#include "key_file.hpp"

namespace tool {

namespace {

/// The public numbers of a key that this library computes with.
PublicKey public_key_of(const ASYMMETRIC_KEY *key) {
    auto made_key = made<PublicKey>(new_X509_PUBKEY());
    if (key->kind == TLX_KEY_RSA) {
        must(set_X509_PUBKEY_rsa(made_key.get(), static_cast<const RSA_UNIT *>(key->key)));
        return made_key;
    }
    const auto unit = made<Owned<KCDSA, free_KCDSA>>(dup_KCDSA(static_cast<const KCDSA *>(key->key)));
    if (compute_KCDSA_public(unit.get()) != 0) throw Failure("the numbers of the KCDSA key make no key");
    must(set_X509_PUBKEY_kcdsa(made_key.get(), unit.get()));
    return made_key;
}

std::string form_name(const KeyFile &key) {
    const bool is_encrypted = key.container != nullptr || key.is_encrypted_pem;
    return std::string(key.is_pkcs1 ? "PKCS #1" : "PKCS #8") + (key.is_der ? ", DER" : ", PEM") +
           (is_encrypted ? ", encrypted" : ", not encrypted");
}

Json describe_encryption(const KeyFile &key) {
    const KeyForm form = form_of(key);
    Json json = {{"scheme", form.scheme}};
    if (!form.cipher.empty()) json["cipher"] = form.cipher;
    if (!form.prf.empty()) json["function"] = "hmac-" + form.prf;
    if (form.iterations != 0) json["iterations"] = form.iterations;
    return json;
}

}  // namespace

Json describe_key_file(const KeyFile &key) {
    Json json = {{"form", form_name(key)}};
    if (key.container != nullptr) json["encryption"] = describe_encryption(key);
    const ASYMMETRIC_KEY *held = key.info->privateKey;
    if (held != nullptr && held->key != nullptr) {
        json.update(describe_public_key(public_key_of(held).get()));
    } else {
        json["algorithm"] = oid_json(get_X509_ALGO_IDENTIFIER_OID(key.info->otherAlgorithm));
    }
    json["random_number"] = get_PRIV_KEY_random(key.info.get()) != nullptr;
    return json;
}

}  // namespace tool
