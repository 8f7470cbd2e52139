// What an encrypted container says of its encryption.
#include <tlxpki/pkcs5.h>

#include "keys/pbe.hpp"

using namespace tlx;

namespace {

/// The name of a cipher; empty for one that is not written.
const char *cipher_name(const X509_ALGO_IDENTIFIER *algorithm) noexcept {
    u32 cipher_id = 0;
    const u8 *iv = nullptr;
    if (!read_content_algorithm(algorithm, cipher_id, iv)) return "";
    for (const ContentCipher &cipher : content_ciphers()) {
        if (cipher.cipher_id == cipher_id && !cipher.name.empty()) return cipher.name.data();
    }
    return "";
}

const char *prf_name(const X509_ALGO_IDENTIFIER *algorithm) noexcept {
    const Prf *prf = find_prf(algorithm);
    return prf == nullptr ? "" : prf->name.data();
}

}  // namespace

uint32_t get_PKCS8_scheme(const P8_ENCRYPTED_KEY *container, PKCS8_SCHEME *out) {
    if (container == nullptr || out == nullptr) return 0x4A420049;
    const PbeAlgorithm *algorithm = find_pbe_algorithm(text_of(get_OID_PKCS8(container)));
    if (algorithm == nullptr) return 0x4A420048;
    const bool is_pbes2 = algorithm->family == PbeFamily::pbes2;
    const Owned<P5_PBE_PARAM> param(get_PKCS8_P5_PBE_PARAM(container));
    if (!param && !is_pbes2) return 0x4A42002B;
    *out = {algorithm->name.data(), "", "", 0};
    if (!param) return 0;
    out->iterations = get_BIGINT_word(param->iterationCount);
    if (is_pbes2) {
        out->cipher = cipher_name(param->encryptionScheme);
        out->prf = prf_name(param->prf);
    }
    return 0;
}
