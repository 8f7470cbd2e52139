// Signing and encrypting in one message, and back (RFC 2315, section 11).
#include <tlxpki/pkcs7_encrypt.h>
#include <tlxpki/pkcs7_sign.h>

#include "message/envelope.hpp"
#include "message/key_scheme.hpp"
#include "message/sign.hpp"

using namespace tlx;

namespace {

/// What is encrypted, and how.
struct Request {
    const X509_ALGO_IDENTIFIER *algorithm;
    Bytes data;
    u32 mode;
};

bool is_both(const P7_CONTENT_INFO *info) noexcept {
    return content_type(info) == oid::kPkcs7SignedAndEnvelopedData;
}

/// The signers receive the data itself: the message holds none of it that final_PKCS7_Sign() could sign.
u32 sign_and_encrypt(P7_CONTENT_INFO *info, const Request &request, const u8 *key, const u8 *iv) noexcept {
    SignedMembers members;
    if (!is_both(info) || !find_signed_members(info, members)) return 1;
    if (const u32 status = init_PKCS7_Sign(info, 1); status != 0) return status;
    ContentOctets content;
    content.use(request.data);
    u32 status = sign_with_all(members, content);
    if (status == 0) status = begin_encryption(info, request.algorithm, 0, key, iv, request.mode);
    return status == 0 ? encrypt_all(info, request.data) : status;
}

bool has_all(const P7_CONTENT_INFO *info, const Request &request) noexcept {
    return info != nullptr && request.algorithm != nullptr && request.data.data() != nullptr;
}

u32 sign_and_encrypt_at_random(P7_CONTENT_INFO *info, const Request &request) noexcept {
    ContentKey secret;
    return secret.draw() ? sign_and_encrypt(info, request, secret.key, secret.iv) : 1;
}

}  // namespace

uint32_t sign_encrypt_PKCS7(P7_CONTENT_INFO *info, uint32_t /*reserved*/,
                            const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *data, uint32_t len,
                            uint32_t mode) {
    const Request request{algorithm, {data, len}, mode};
    if (!has_all(info, request)) return 1;
    return is_rsaes_mode(mode) ? sign_and_encrypt_at_random(info, request) : 0x4B00002B;
}

uint32_t sign_encrypt_PKCS7_userKEY(P7_CONTENT_INFO *info, uint32_t /*reserved*/,
                                    const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *data, uint32_t len,
                                    const uint8_t *key, const uint8_t *iv, uint32_t mode) {
    const Request request{algorithm, {data, len}, mode};
    if (!has_all(info, request) || key == nullptr) return 1;
    return is_rsaes_mode(mode) ? sign_and_encrypt(info, request, key, iv) : 0x4B00002B;
}

uint32_t sign_encrypt_PKCS7_SP(P7_CONTENT_INFO *info, uint32_t /*reserved*/,
                               const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *data, uint32_t len) {
    const Request request{algorithm, {data, len}, kModeOfRecipient};
    return has_all(info, request) ? sign_and_encrypt_at_random(info, request) : 1;
}

uint32_t sign_encrypt_PKCS7_userKEY_SP(P7_CONTENT_INFO *info, uint32_t /*reserved*/,
                                       const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *data,
                                       uint32_t len, const uint8_t *key, const uint8_t *iv) {
    const Request request{algorithm, {data, len}, kModeOfRecipient};
    return has_all(info, request) && key != nullptr ? sign_and_encrypt(info, request, key, iv) : 1;
}

uint32_t verify_decrypt_PKCS7(P7_CONTENT_INFO *info, const X509_CERT *cert, const uint8_t *key, uint8_t *out,
                              uint32_t *out_len) {
    if (!is_both(info)) return 1;
    if (const u32 status = decrypt_PKCS7(info, key, nullptr, out, out_len); status != 0) return status;
    const u32 status = verify_PKCS7(info, cert, out, static_cast<i32>(*out_len));
    if (status != 0) tlx_wipe(out, std::exchange(*out_len, 0));
    return status;
}
