#include "message/envelope.hpp"

#include <tlxcrypto/random.h>

#include "message/content_kinds.hpp"

using namespace tlx;

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
