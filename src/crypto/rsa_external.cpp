// RSA keys whose private operations a caller's functions do.
#include <tlxcrypto/rsa_external.h>

#include <cstring>

#include "crypto/memory.hpp"
#include "crypto/rsa.hpp"

namespace tlx {

u32 sign_externally(const RSA_UNIT &unit, const RSA_SIGNATURE_INPUT &input, u8 *signature) noexcept {
    const RsaExternal &external = *unit.external;
    if (external.functions.sign == nullptr) return 1;
    const u32 size = get_RSA_length(&unit);
    u32 length = size;
    const u32 status = external.functions.sign(external.context, &input, signature, &length);
    const u32 answer = status == 0 && length != size ? TLX_RSA_BAD_KEY : status;
    if (answer != 0) tlx_wipe(signature, size);
    return answer;
}

u32 decrypt_externally(const RSA_UNIT &unit, u32 mode, Bytes ciphertext, u8 *message, u32 *length) noexcept {
    const RsaExternal &external = *unit.external;
    if (external.functions.decrypt == nullptr) return TLX_RSA_BAD_KEY;
    const u32 size = get_RSA_length(&unit);
    if (ciphertext.size() != size) return 1;
    RSA_DECRYPTION_INPUT input = {};
    input.mode = TLX_RSAES_MODE_PKCS1;
    input.ciphertext = ciphertext.data();
    input.ciphertext_length = static_cast<u32>(ciphertext.size());
    if (mode == TLX_RSAES_MODE_OAEP || mode == TLX_RSAES_MODE_OAEP_SET) {
        input.mode = TLX_RSAES_MODE_OAEP;
        input.digest_id = unit.oaep.digest_id;
        input.mgf_digest_id = unit.oaep.mgf_digest_id;
        input.label = unit.oaep.label.get();
        input.label_length = unit.oaep.label_length;
    }
    // What a function that fails leaves unwritten is read all the same, so that failing takes as long.
    std::memset(message, 0, size);
    *length = size;
    const u32 status = external.functions.decrypt(external.context, &input, message, length);
    return status == 0 && *length > size ? TLX_RSA_BAD_KEY : status;
}

}  // namespace tlx
