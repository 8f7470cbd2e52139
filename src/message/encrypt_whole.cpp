// Encrypting content in one call.
#include <tlxpki/pkcs7_encrypt.h>

#include "message/envelope.hpp"
#include "message/key_scheme.hpp"

using namespace tlx;

u32 tlx::encrypt_all(P7_CONTENT_INFO *info, Bytes data) noexcept {
    const u32 status =
        update_PKCS7_encrypt(info, data.data(), static_cast<u32>(data.size()), nullptr, nullptr);
    return status != 0 ? status : final_PKCS7_Encrypt(info, nullptr, nullptr);
}

uint32_t encrypt_PKCS7_userKEY(P7_CONTENT_INFO *info, uint32_t reserved,
                               const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *data, uint32_t len,
                               const uint8_t *key, const uint8_t *iv, uint32_t mode) {
    if (info == nullptr || algorithm == nullptr || data == nullptr || key == nullptr) return 1;
    if (!is_rsaes_mode(mode)) return 0x4B00002B;
    const u32 status = init_PKCS7_Encrypt(info, reserved, algorithm, 0, key, iv, mode);
    return status != 0 ? status : encrypt_all(info, {data, len});
}

uint32_t encrypt_PKCS7(P7_CONTENT_INFO *info, uint32_t reserved, const X509_ALGO_IDENTIFIER *algorithm,
                       const uint8_t *data, uint32_t len, uint32_t mode) {
    ContentKey secret;
    if (!secret.draw()) return 1;
    return encrypt_PKCS7_userKEY(info, reserved, algorithm, data, len, secret.key, secret.iv, mode);
}
