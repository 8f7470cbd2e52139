// What enveloped, signed-and-enveloped and encrypted data have in common.
#pragma once

#include <tlxcrypto/cipher.h>

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

/// A cipher that encrypts. A status of init_BlockCipher(), or `no_memory`.
[[nodiscard]] u32 make_cipher(u32 cipher_id, const u8 *key, const u8 *iv, Owned<BLOCK_CIPHER_UNIT> &unit,
                              u32 no_memory) noexcept;

/// What the callers of begin_envelope() return.
struct EnvelopeStatuses {
    u32 no_memory;
    u32 unusable;  ///< a recipient without an RSA key, or with an algorithm that does not suit
};
/// Replaces the encrypted content by an empty one, and encrypts its key for each recipient in order.
/// @param algorithm of the content, with its IV; null when memory ran out
/// @param mode of RSAES, or kModeOfRecipient
/// @return 0; one of the statuses; that of a unit
[[nodiscard]] u32 begin_envelope(const Envelope &envelope, Owned<X509_ALGO_IDENTIFIER> algorithm,
                                 Owned<BLOCK_CIPHER_UNIT> cipher, Bytes key, u32 mode,
                                 const EnvelopeStatuses &statuses) noexcept;

/// init_PKCS7_Encrypt(), also with kModeOfRecipient.
[[nodiscard]] u32 begin_encryption(P7_CONTENT_INFO *info, const X509_ALGO_IDENTIFIER *algorithm,
                                   u32 output_flag, const u8 *key, const u8 *iv, u32 mode) noexcept;

/// Takes all of the data into an encryption that has begun, and ends it. A status of update_PKCS7_encrypt()
/// or final_PKCS7_Encrypt().
[[nodiscard]] u32 encrypt_all(P7_CONTENT_INFO *info, Bytes data) noexcept;

}  // namespace tlx
