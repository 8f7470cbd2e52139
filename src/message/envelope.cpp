#include "message/envelope.hpp"

#include <tlxcrypto/random.h>

#include "der/list_items.hpp"
#include "message/content_kinds.hpp"
#include "message/key_scheme.hpp"

using namespace tlx;

namespace {

/// False for an algorithm that does not suit the mode: parameters other than those of the encryption would
/// make a message that nobody opens.
bool find_scheme(const X509_ALGO_IDENTIFIER *algorithm, u32 mode, KeyScheme &scheme) noexcept {
    const bool is_read = read_key_scheme(algorithm, scheme);
    if (mode == kModeOfRecipient) return is_read;
    if (is_read && !scheme.is_plain()) return false;
    scheme = {mode, {}, {}};
    return true;
}

u32 encrypt_key_for(P7_RECIPIENT_INFO *recipient, Bytes key, u32 mode,
                    const EnvelopeStatuses &statuses) noexcept {
    const RSA_UNIT *unit = recipient == nullptr ? nullptr : rsa_unit(recipient->publicKey);
    KeyScheme scheme;
    if (unit == nullptr || !find_scheme(recipient->keyEncryptionAlgorithm, mode, scheme)) {
        return statuses.unusable;
    }
    return encrypt_key(unit, scheme, key, recipient->encryptedKey, statuses.no_memory);
}

}  // namespace

u32 tlx::find_envelope(const P7_CONTENT_INFO *info, Envelope &envelope) noexcept {
    if (info == nullptr) return 0x4B200049;
    switch (content_type(info)) {
        case oid::kPkcs7EnvelopedData:
            if (auto *data = info->content.envelopedData; data != nullptr) {
                envelope = {&data->recipientInfos, &data->encryptedContentInfo, nullptr, &data->outputFlag};
                return 0;
            }
            return 0x4B200049;
        case oid::kPkcs7SignedAndEnvelopedData:
            if (auto *data = info->content.signedAndEnvelopedData; data != nullptr) {
                envelope = {&data->recipientInfos, &data->encryptedContentInfo, data->certificates, nullptr};
                return 0;
            }
            return 0x4B200049;
        case oid::kPkcs7EncryptedData:
            if (auto *data = info->content.encryptedData; data != nullptr) {
                envelope = {nullptr, &data->encryptedContentInfo, nullptr, &data->outputFlag};
                return 0;
            }
            return 0x4B200049;
        default:
            return 0x4B200048;
    }
}

void tlx::forget_received(P7_CONTENT_INFO &info) noexcept {
    free_ASN1_UNIT(info.received);
    info.received = nullptr;
}

bool tlx::ContentKey::draw() noexcept {
    return RAND_BYTES(key, sizeof key) == 0 && RAND_BYTES(iv, sizeof iv) == 0;
}

u32 tlx::make_cipher(u32 cipher_id, const u8 *key, const u8 *iv, Owned<BLOCK_CIPHER_UNIT> &unit,
                     u32 no_memory) noexcept {
    unit.reset(new_BLOCK_CIPHER_UNIT());
    return unit ? init_BlockCipher(unit.get(), cipher_id, key, iv, 1) : no_memory;
}

u32 tlx::begin_envelope(const Envelope &envelope, Owned<X509_ALGO_IDENTIFIER> algorithm,
                        Owned<BLOCK_CIPHER_UNIT> cipher, Bytes key, u32 mode,
                        const EnvelopeStatuses &statuses) noexcept {
    Owned<P7_ENCRYPTED_CONTENT_INFO> content(new_P7_ENCRYPTED_CONTENT_INFO());
    if (!content || !algorithm) return statuses.no_memory;
    content->contentType = index_to_OBJECT_IDENTIFIER(oid::kPkcs7Data);
    if (content->contentType == nullptr) return statuses.no_memory;
    content->contentEncryptionAlgorithm = algorithm.release();
    content->cipher = cipher.release();
    free_P7_ENCRYPTED_CONTENT_INFO(*envelope.encrypted);
    *envelope.encrypted = content.release();
    for (u32 i = 0; i < get_STACK_count(*envelope.recipients); ++i) {
        auto *recipient = item_at<P7_RECIPIENT_INFO>(*envelope.recipients, static_cast<i32>(i));
        const u32 status = encrypt_key_for(recipient, key, mode, statuses);
        if (status != 0) return status;
    }
    return 0;
}
