// Decrypting the content of a message with its key, and this key with that of a recipient.
#include <tlxpki/objects.h>
#include <tlxpki/pkcs7_encrypt.h>

#include "der/list_items.hpp"
#include "message/envelope.hpp"
#include "message/key_scheme.hpp"

using namespace tlx;

namespace {

/// The octets of an IV in the parameters of the algorithm; null when there are none, and when they are NULL.
/// False for parameters that are no OCTET STRING, or too short.
bool find_iv(const X509_ALGO_IDENTIFIER &algorithm, u32 cipher_id, const u8 *&iv) noexcept {
    Element parameters;
    if (!view_node(algorithm.parameters, parameters) || parameters.tag == TLX_TAG_NULL) return true;
    iv = parameters.contents.data();
    return parameters.tag == TLX_TAG_OCTET_STRING && parameters.contents.size() >= get_IVLength(cipher_id);
}

/// Decrypts into a buffer that may have less room than the ciphertext has octets.
u32 decrypt_into(u32 cipher_id, const u8 *key, const u8 *iv, Bytes ciphertext, u8 *out, u32 room,
                 u32 *out_len) noexcept {
    const auto size = static_cast<u32>(ciphertext.size());
    if (room >= size) return BlockCipher(cipher_id, 0, key, iv, out, out_len, ciphertext.data(), size);
    SecretBytes plain(size);
    if (!plain) return 1;
    u32 len = 0;
    const u32 status = BlockCipher(cipher_id, 0, key, iv, plain.data(), &len, ciphertext.data(), size);
    if (status != 0) return status;
    if (len > room) return 1;
    if (len > 0) std::memcpy(out, plain.data(), len);
    *out_len = len;
    return 0;
}

}  // namespace

const P7_RECIPIENT_INFO *tlx::find_recipient(const Envelope &envelope, const X509_CERT *cert) noexcept {
    if (envelope.recipients == nullptr) return nullptr;
    for (u32 i = 0; i < get_STACK_count(*envelope.recipients); ++i) {
        const auto *recipient = item_at<P7_RECIPIENT_INFO>(*envelope.recipients, static_cast<i32>(i));
        const P7_ISSUER_AND_SERIAL_NUMBER *number =
            recipient == nullptr ? nullptr : recipient->issuerAndSerialNumber;
        if (number == nullptr) return nullptr;
        const X509_CERT *own = cert != nullptr
                                   ? cert
                                   : find_X509_CERT_by_IssuerAndSerialNumber(
                                         envelope.certificates, number->issuer, number->serialNumber);
        if (own == nullptr) return nullptr;
        if (cmp_P7_ISSUER_AND_SERIAL_NUMBER(own, number) == 0) return recipient;
    }
    return nullptr;
}

uint32_t decrypt_PKCS7_enveloped_CEK(const P7_CONTENT_INFO *info, const X509_CERT *cert,
                                     const ASYMMETRIC_KEY *private_key, uint8_t *key, uint32_t *key_len,
                                     uint32_t mode) {
    if (key_len == nullptr) return 1;
    u32 len = std::exchange(*key_len, 0);
    Envelope envelope;
    if (find_envelope(info, envelope) != 0) return 1;
    const P7_RECIPIENT_INFO *recipient = find_recipient(envelope, cert);
    const RSA_UNIT *unit = rsa_unit(private_key);
    if (recipient == nullptr || unit == nullptr) return 1;
    // A copy, so that several threads may use one key.
    const Owned<RSA_UNIT> own(dup_RSA_UNIT(unit));
    if (const u32 status = init_RSAES(own.get(), mode, 1, 0); status != 0) return status;
    const Bytes sealed = octets_of(recipient->encryptedKey);
    const u32 status = decrypt_RSAES(own.get(), key, &len, sealed.data(), static_cast<u32>(sealed.size()));
    *key_len = len;
    return status;
}

uint32_t decrypt_PKCS7(const P7_CONTENT_INFO *info, const uint8_t *key, const uint8_t *iv, uint8_t *out,
                       uint32_t *out_len) {
    if (out_len == nullptr) return 1;
    const u32 room = std::exchange(*out_len, 0);
    Envelope envelope;
    if (find_envelope(info, envelope) != 0 || key == nullptr || out == nullptr) return 1;
    const P7_ENCRYPTED_CONTENT_INFO *content = *envelope.encrypted;
    if (content == nullptr || content->encryptedContent == nullptr) return 1;
    const X509_ALGO_IDENTIFIER *algorithm = content->contentEncryptionAlgorithm;
    const u32 cipher_id = get_CipherID_from_OID(get_X509_ALGO_IDENTIFIER_OID(algorithm));
    if (cipher_id == 0 || (iv == nullptr && !find_iv(*algorithm, cipher_id, iv))) return 1;
    return decrypt_into(cipher_id, key, iv, octets_of(content->encryptedContent), out, room, out_len);
}
