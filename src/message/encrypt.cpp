// Encrypting the content of a message, and its key for each recipient (RFC 2315, sections 10 and 13).
#include <tlxpki/objects.h>
#include <tlxpki/pkcs7_encrypt.h>

#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "asn1/oid_table.hpp"
#include "der/list_items.hpp"
#include "message/envelope.hpp"
#include "message/key_scheme.hpp"

using namespace tlx;

namespace {

// Parameters ::= iv OCTET STRING
bool set_iv(X509_ALGO_IDENTIFIER &algorithm, const BLOCK_CIPHER_UNIT *unit) noexcept {
    u32 len = 0;
    const u8 *iv = get_BLOCK_CIPHER_UNIT_iv(unit, &len);
    Encoder encoder;
    encoder.primitive(TLX_TAG_OCTET_STRING, {iv, len});
    ASN1_UNIT *node = encoder.to_node();
    if (node == nullptr) return false;
    free_ASN1_UNIT(algorithm.parameters);
    algorithm.parameters = node;
    return true;
}

bool has_parameters(const X509_ALGO_IDENTIFIER &algorithm) noexcept {
    Element element;
    return view_node(algorithm.parameters, element) && element.tag != TLX_TAG_NULL;
}

/// Encrypted data has no key of its own: the unit that encrypts it was keyed beforehand.
u32 begin_encrypted_data(const Envelope &envelope, const X509_ALGO_IDENTIFIER *algorithm, u32 flag) noexcept {
    P7_ENCRYPTED_CONTENT_INFO *content = *envelope.encrypted;
    if (content == nullptr || content->cipher == nullptr || algorithm == nullptr) return 0x4B200049;
    *envelope.output_flag = flag;
    if (set_PKCS7_P7_ENCRYPTED_CONTENT_INFO(content, TLX_OID_PKCS7_DATA, algorithm, nullptr, 0) != 0) {
        return 0x4B20003A;
    }
    X509_ALGO_IDENTIFIER &own = *content->contentEncryptionAlgorithm;
    const bool needs_iv =
        get_AlgorType_from_OID(own.algorithm) != oid::kPasswordBased && !has_parameters(own);
    return !needs_iv || set_iv(own, content->cipher) ? 0 : 0x4B20003A;
}

/// A copy of an algorithm with the IV of a unit; null when memory runs out.
Owned<X509_ALGO_IDENTIFIER> with_iv(const X509_ALGO_IDENTIFIER *algorithm,
                                    const BLOCK_CIPHER_UNIT *unit) noexcept {
    Owned<X509_ALGO_IDENTIFIER> copy(dup_X509_ALGO_IDENTIFIER(algorithm));
    return copy && set_iv(*copy, unit) ? std::move(copy) : nullptr;
}

/// The encrypted content of a message that is being encrypted.
struct UnderWay {
    P7_ENCRYPTED_CONTENT_INFO *content = nullptr;
    bool collects = true;  ///< the message keeps the ciphertext

    [[nodiscard]] u32 find(P7_CONTENT_INFO *info) noexcept {
        Envelope envelope;
        if (const u32 status = find_envelope(info, envelope); status != 0) return status;
        content = *envelope.encrypted;
        collects = envelope.output_flag == nullptr || *envelope.output_flag == 0;
        return content == nullptr || content->cipher == nullptr ? 0x4B200049 : 0;
    }
};

/// Room for further octets at the end of the ciphertext, and for a last block, so that the end needs no more
/// memory; null when it cannot be had. tlx_realloc() makes growing cost linear time in total.
u8 *reserve(P7_ENCRYPTED_CONTENT_INFO &content, u32 more) noexcept {
    if (content.encryptedContent == nullptr) content.encryptedContent = new_string(TLX_TAG_OCTET_STRING, {});
    OCTET_STRING *octets = content.encryptedContent;
    if (octets == nullptr || octets->length < 0) return nullptr;
    const std::size_t size =
        static_cast<std::size_t>(octets->length) + more + TLX_CIPHER_MAX_BLOCK_LENGTH + 1;
    if (size > kMaxLength) return nullptr;
    auto *data = static_cast<u8 *>(TLX_REALLOCATE(octets->data, size));
    if (data == nullptr) return nullptr;
    octets->data = data;
    return data + octets->length;
}

/// A caller's buffer, which may be missing.
struct Output {
    u8 *octets;
    u32 *len;
    u32 room = len != nullptr ? *len : 0;

    [[nodiscard]] bool has_room(u32 count) const noexcept {
        return octets != nullptr && len != nullptr && room >= count;
    }
};

/// Counts octets that were written into the room, and shows them to a caller whose buffer has room for
/// `least`.
void collect(OCTET_STRING &octets, u32 count, u32 least, const Output &out) noexcept {
    if (count > 0 && out.has_room(std::max(count, least))) {
        std::memcpy(out.octets, octets.data + octets.length, count);
    }
    octets.length += static_cast<i32>(count);
    octets.data[octets.length] = 0;
    if (out.octets != nullptr && out.len != nullptr) *out.len = count;
}

}  // namespace

uint32_t set_PKCS7_P7_ENCRYPTED_CONTENT_INFO(P7_ENCRYPTED_CONTENT_INFO *content, int32_t type_index,
                                             const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *ciphertext,
                                             uint32_t len) {
    if (content == nullptr || algorithm == nullptr) return 1;
    const Owned<P7_ENCRYPTED_CONTENT_INFO> fresh(new_P7_ENCRYPTED_CONTENT_INFO());
    if (!fresh) return 1;
    fresh->contentType = index_to_OBJECT_IDENTIFIER(type_index);
    fresh->contentEncryptionAlgorithm = dup_X509_ALGO_IDENTIFIER(algorithm);
    if (fresh->contentType == nullptr || fresh->contentEncryptionAlgorithm == nullptr) return 1;
    if (ciphertext != nullptr) {
        fresh->encryptedContent = new_string(TLX_TAG_OCTET_STRING, {ciphertext, len});
        if (fresh->encryptedContent == nullptr) return 1;
    }
    std::swap(fresh->cipher, content->cipher);
    std::swap(*fresh, *content);
    return 0;
}

uint32_t set_PKCS7_Cipher(P7_CONTENT_INFO *info, BLOCK_CIPHER_UNIT *unit) {
    Envelope envelope;
    if (unit == nullptr || find_envelope(info, envelope) != 0) return 1;
    P7_ENCRYPTED_CONTENT_INFO *&content = *envelope.encrypted;
    if (content == nullptr) content = new_P7_ENCRYPTED_CONTENT_INFO();
    if (content == nullptr) return 1;
    if (content->cipher != unit) free_BLOCK_CIPHER_UNIT(content->cipher);
    content->cipher = unit;
    return 0;
}

u32 tlx::begin_encryption(P7_CONTENT_INFO *info, const X509_ALGO_IDENTIFIER *algorithm, u32 output_flag,
                          const u8 *key, const u8 *iv, u32 mode) noexcept {
    Envelope envelope;
    if (const u32 status = find_envelope(info, envelope); status != 0) return status;
    forget_received(*info);
    if (envelope.recipients == nullptr) return begin_encrypted_data(envelope, algorithm, output_flag);
    if (get_STACK_count(*envelope.recipients) == 0) return 0x4B200049;
    if (envelope.output_flag != nullptr) *envelope.output_flag = output_flag;
    const u32 cipher_id = get_CipherID_from_OID(get_X509_ALGO_IDENTIFIER_OID(algorithm));
    if (cipher_id == 0) return 0x4B200048;
    Owned<BLOCK_CIPHER_UNIT> cipher;
    if (const u32 status = make_cipher(cipher_id, key, iv, cipher, 0x4B20003A); status != 0) return status;
    Owned<X509_ALGO_IDENTIFIER> own = with_iv(algorithm, cipher.get());
    return begin_envelope(envelope, std::move(own), std::move(cipher), {key, get_KeyLength(cipher_id)}, mode,
                          {0x4B20003A, 0x4B200048});
}

uint32_t init_PKCS7_Encrypt(P7_CONTENT_INFO *info, uint32_t /*reserved*/,
                            const X509_ALGO_IDENTIFIER *algorithm, uint32_t output_flag, const uint8_t *key,
                            const uint8_t *iv, uint32_t mode) {
    if (info == nullptr || !is_rsaes_mode(mode)) return 0x4B200049;
    return begin_encryption(info, algorithm, output_flag, key, iv, mode);
}

uint32_t update_PKCS7_encrypt(P7_CONTENT_INFO *info, const uint8_t *in, uint32_t in_len, uint8_t *out,
                              uint32_t *out_len) {
    const Output output{out, out_len};
    UnderWay encryption;
    if (const u32 status = encryption.find(info); status != 0) return status;
    P7_ENCRYPTED_CONTENT_INFO &content = *encryption.content;
    if (!encryption.collects) {
        const u32 ready = get_BLOCK_CIPHER_UNIT_output(content.cipher, in_len);
        if (!output.has_room(std::max(in_len, ready))) return 0x4B200049;
        return update_BlockCipher(content.cipher, out, out_len, in, in_len);
    }
    u8 *end = reserve(content, in_len);
    if (end == nullptr) return 0x4B20003A;
    u32 written = 0;
    const u32 status = update_BlockCipher(content.cipher, end, &written, in, in_len);
    if (status == 0) collect(*content.encryptedContent, written, in_len, output);
    return status;
}

uint32_t final_PKCS7_Encrypt(P7_CONTENT_INFO *info, uint8_t *out, uint32_t *out_len) {
    const Output output{out, out_len};
    UnderWay encryption;
    if (const u32 status = encryption.find(info); status != 0) return status;
    P7_ENCRYPTED_CONTENT_INFO &content = *encryption.content;
    if (!encryption.collects) {
        if (!output.has_room(get_BLOCK_CIPHER_UNIT_final(content.cipher))) return 0x4B200049;
        return final_BlockCipher(content.cipher, out, out_len);
    }
    u8 *end = reserve(content, 0);
    if (end == nullptr) return 0x4B20003A;
    u32 written = 0;
    const u32 status = final_BlockCipher(content.cipher, end, &written);
    if (status == 0) collect(*content.encryptedContent, written, 0, output);
    return status;
}

uint32_t get_PKCS7_ENCRYPTED_CONTENT_length(const P7_CONTENT_INFO *info) {
    Envelope envelope;
    if (find_envelope(info, envelope) != 0 || *envelope.encrypted == nullptr) return 0;
    return static_cast<u32>(octets_of((*envelope.encrypted)->encryptedContent).size());
}
