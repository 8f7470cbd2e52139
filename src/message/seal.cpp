// Encrypting and decrypting as a message itself says.
#include <tlxpki/objects.h>
#include <tlxpki/pkcs7_encrypt.h>

#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"
#include "keyinfo/content_cipher.hpp"
#include "message/envelope.hpp"
#include "message/key_scheme.hpp"

using namespace tlx;

namespace {

u32 seal_key_for(P7_RECIPIENT_INFO *recipient, Bytes key) noexcept {
    RSA_UNIT *unit = recipient == nullptr ? nullptr : rsa_unit(recipient->publicKey);
    if (unit == nullptr) return 0x4B400048;
    KeyScheme scheme;
    const u32 status = prepare_unit(unit, recipient->keyEncryptionAlgorithm, scheme, 0);
    if (status != 0) return status == kUnknownScheme ? 0x4B400048 : status;
    return encrypt_key(recipient->encryptedKey, unit, key, 0x4B20003A);
}

/// Replaces the encrypted content by an empty one, whose cipher is ready.
u32 begin_content(const Envelope &envelope, const ContentCipher &cipher, const ContentKey &secret) noexcept {
    Owned<P7_ENCRYPTED_CONTENT_INFO> content(new_P7_ENCRYPTED_CONTENT_INFO());
    if (!content) return 0x4B40003A;
    content->cipher = new_BLOCK_CIPHER_UNIT();
    content->contentType = index_to_OBJECT_IDENTIFIER(oid::kPkcs7Data);
    content->contentEncryptionAlgorithm = make_content_algorithm(cipher, secret.iv);
    if (content->contentType == nullptr || content->contentEncryptionAlgorithm == nullptr) return 0x4B40003A;
    if (init_BlockCipher(content->cipher, cipher.cipher_id, secret.key, secret.iv, 1) != 0) return 0x4B40003A;
    free_P7_ENCRYPTED_CONTENT_INFO(*envelope.encrypted);
    *envelope.encrypted = content.release();
    return 0;
}

constexpr KeyStatuses kOpenStatuses = {0x4B41003A, 0x4B410048, 0x4B410012};

}  // namespace

const char *get_PKCS7_cipher_name(uint32_t index) {
    const auto ciphers = content_ciphers();
    return index < ciphers.size() && !ciphers[index].name.empty() ? ciphers[index].name.data() : nullptr;
}

uint32_t init_PKCS7_Seal(P7_CONTENT_INFO *info, const char *cipher_name, uint32_t output_flag) {
    Envelope envelope;
    if (info == nullptr || cipher_name == nullptr) return 0x4B400049;
    const ContentCipher *cipher = find_content_cipher(cipher_name);
    const u32 found = find_envelope(info, envelope);
    if (found == 0x4B200049) return 0x4B400049;
    if (found != 0 || envelope.recipients == nullptr) return 0x4B400048;
    if (cipher == nullptr || get_KeyLength(cipher->cipher_id) == 0) return 0x4B400048;
    const u32 count = get_STACK_count(*envelope.recipients);
    if (count == 0) return 0x4B400049;
    forget_received(*info);
    if (envelope.output_flag != nullptr) *envelope.output_flag = output_flag;
    ContentKey secret;
    if (!secret.draw()) return 0x4B40003A;
    if (const u32 status = begin_content(envelope, *cipher, secret); status != 0) return status;
    for (u32 i = 0; i < count; ++i) {
        auto *recipient = item_at<P7_RECIPIENT_INFO>(*envelope.recipients, static_cast<i32>(i));
        const u32 status = seal_key_for(recipient, {secret.key, get_KeyLength(cipher->cipher_id)});
        if (status != 0) return status;
    }
    return 0;
}

uint32_t seal_PKCS7(P7_CONTENT_INFO *info, const char *cipher_name, const uint8_t *data, uint32_t len) {
    if (data == nullptr && len != 0) return 0x4B400049;
    const u32 status = init_PKCS7_Seal(info, cipher_name, 0);
    return status != 0 ? status : encrypt_all(info, {data, len});
}

uint32_t open_PKCS7(const P7_CONTENT_INFO *info, const X509_CERT *cert, const ASYMMETRIC_KEY *private_key,
                    uint8_t **content, uint32_t *len) {
    Envelope envelope;
    if (private_key == nullptr || content == nullptr || len == nullptr) return 0x4B410049;
    const u32 found = find_envelope(info, envelope);
    if (found == 0x4B200049) return 0x4B410049;
    const RSA_UNIT *unit = rsa_unit(private_key);
    if (found != 0 || envelope.recipients == nullptr || unit == nullptr) return 0x4B410048;
    const P7_ENCRYPTED_CONTENT_INFO *encrypted = *envelope.encrypted;
    if (encrypted == nullptr || encrypted->encryptedContent == nullptr) return 0x4B410049;
    const P7_RECIPIENT_INFO *recipient = find_recipient(envelope, cert);
    if (recipient == nullptr) return 0x4B410047;
    u32 cipher_id = 0;
    const u8 *iv = nullptr;
    if (!read_content_algorithm(encrypted->contentEncryptionAlgorithm, cipher_id, iv)) return 0x4B410048;

    ContentKey secret;
    u32 key_len = 0;
    const u32 status =
        decrypt_key(unit, recipient->keyEncryptionAlgorithm, octets_of(recipient->encryptedKey),
                    get_KeyLength(cipher_id), secret.key, key_len, kOpenStatuses);
    if (status != 0) return status;
    const Bytes ciphertext = octets_of(encrypted->encryptedContent);
    const auto size = static_cast<u32>(ciphertext.size());
    OwnedOctets<u8> plain(static_cast<u8 *>(TLX_ALLOCATE(ciphertext.size() + 1)));
    if (!plain) return 0x4B41003A;
    u32 plain_len = 0;
    if (BlockCipher(cipher_id, 0, secret.key, iv, plain.get(), &plain_len, ciphertext.data(), size) != 0) {
        return 0x4B410012;
    }
    plain.get()[plain_len] = 0;
    *content = plain.release();
    *len = plain_len;
    return 0;
}
