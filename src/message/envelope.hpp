// What enveloped, signed-and-enveloped and encrypted data have in common.
#pragma once

#include "message/message_records.hpp"

TLX_OWNS(BLOCK_CIPHER_UNIT);

namespace tlx {

struct Envelope {
    P7_RECIPIENT_INFOS **recipients = nullptr;  ///< null for encrypted data, which has none
    P7_ENCRYPTED_CONTENT_INFO **encrypted = nullptr;
    X509_CERTIFICATES *certificates = nullptr;
    u32 *output_flag = nullptr;  ///< null for data that always collects the ciphertext
};

/// The envelope of a message, whose members stay the message's. 0; 0x4B200049 for null and content that is
/// missing; 0x4B200048 for any other type.
[[nodiscard]] u32 find_envelope(const P7_CONTENT_INFO *info, Envelope &envelope) noexcept;

/// The first recipient that the certificate belongs to. Without one, each recipient's certificate is looked
/// up among those of the message, and null is the result when one is missing.
[[nodiscard]] const P7_RECIPIENT_INFO *find_recipient(const Envelope &envelope,
                                                      const X509_CERT *cert) noexcept;

/// What was received of a message no longer says what it holds.
void forget_received(P7_CONTENT_INFO &info) noexcept;

/// A key and an IV for any cipher, wiped at the end.
struct ContentKey {
    u8 key[64];
    u8 iv[64];

    ContentKey() noexcept = default;
    ~ContentKey() { tlx_wipe(this, sizeof *this); }
    ContentKey(const ContentKey &) = delete;
    ContentKey &operator=(const ContentKey &) = delete;
    /// False when the generator fails.
    [[nodiscard]] bool draw() noexcept;
};

/// init_PKCS7_Encrypt(), also with kModeOfRecipient.
[[nodiscard]] u32 begin_encryption(P7_CONTENT_INFO *info, const X509_ALGO_IDENTIFIER *algorithm,
                                   u32 output_flag, const u8 *key, const u8 *iv, u32 mode) noexcept;

/// Takes all of the data into an encryption that has begun, and ends it. A status of update_PKCS7_encrypt()
/// or final_PKCS7_Encrypt().
[[nodiscard]] u32 encrypt_all(P7_CONTENT_INFO *info, Bytes data) noexcept;

}  // namespace tlx
