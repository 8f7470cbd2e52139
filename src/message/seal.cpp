// Encrypting and decrypting as a message itself says.
#include <tlxpki/objects.h>
#include <tlxpki/pkcs7_encrypt.h>

#include "message/content_algorithm.hpp"
#include "message/envelope.hpp"
#include "message/key_scheme.hpp"

using namespace tlx;

namespace {

constexpr KeyStatuses kOpenStatuses = {0x4B41003A, 0x4B410048, 0x4B410012};

}  // namespace

const char *get_PKCS7_cipher_name(uint32_t index) {
    const auto ciphers = content_ciphers();
    return index < ciphers.size() && !ciphers[index].name.empty() ? ciphers[index].name.data() : nullptr;
}

uint32_t init_PKCS7_Seal(P7_CONTENT_INFO *info, const char *cipher_name, uint32_t output_flag) {
    Envelope envelope;
    if (info == nullptr || cipher_name == nullptr) return 0x4B400049;
    ContentAlgorithm algorithm;
    const bool is_known = find_algorithm(cipher_name, algorithm) && !algorithm.authenticates;
    const u32 found = find_envelope(info, envelope);
    if (found == 0x4B200049) return 0x4B400049;
    if (found != 0 || envelope.recipients == nullptr || !is_known) return 0x4B400048;
    if (get_STACK_count(*envelope.recipients) == 0) return 0x4B400049;
    forget_received(*info);
    if (envelope.output_flag != nullptr) *envelope.output_flag = output_flag;
    ContentKey secret;
    Owned<BLOCK_CIPHER_UNIT> cipher;
    const bool is_keyed = secret.draw() && algorithm.draw_iv() &&
                          make_cipher(algorithm.cipher_id, secret.key, algorithm.iv, cipher, 0x4B40003A) == 0;
    if (!is_keyed) return 0x4B40003A;
    return begin_envelope(envelope, make_identifier(algorithm), std::move(cipher),
                          {secret.key, algorithm.key_length()}, kModeOfRecipient, {0x4B40003A, 0x4B400048});
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
    ContentAlgorithm algorithm;
    const X509_ALGO_IDENTIFIER *identifier = encrypted->contentEncryptionAlgorithm;
    const bool is_known =
        identifier != nullptr && read_algorithm(*identifier, algorithm) == AlgorithmRead::known;
    if (!is_known || algorithm.authenticates) return 0x4B410048;

    ContentKey secret;
    u32 key_len = 0;
    const u32 status =
        decrypt_key(unit, recipient->keyEncryptionAlgorithm, octets_of(recipient->encryptedKey),
                    algorithm.key_length(), secret.key, key_len, kOpenStatuses);
    if (status != 0) return status;
    const Bytes ciphertext = octets_of(encrypted->encryptedContent);
    const auto size = static_cast<u32>(ciphertext.size());
    OwnedOctets<u8> plain(static_cast<u8 *>(TLX_ALLOCATE(ciphertext.size() + 1)));
    if (!plain) return 0x4B41003A;
    u32 plain_len = 0;
    if (BlockCipher(algorithm.cipher_id, 0, secret.key, algorithm.iv, plain.get(), &plain_len,
                    ciphertext.data(), size) != 0) {
        return 0x4B410012;
    }
    plain.get()[plain_len] = 0;
    *content = plain.release();
    *len = plain_len;
    return 0;
}
