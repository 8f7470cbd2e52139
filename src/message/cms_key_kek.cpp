// Key encryption keys (RFC 5652, section 6.2.3).
#include <algorithm>

#include "message/cms_key_wrap.hpp"

using namespace tlx;

namespace {

/// The wrap that settings ask for; null for an unknown one.
const KeyWrap *choose_wrap(const CMS_RECIPIENT_SETTINGS &settings) noexcept {
    if (settings.wrap_cipher_id != 0) return find_key_wrap(settings.wrap_cipher_id);
    for (const u32 cipher_id : {TLX_CIPHER_AES128, TLX_CIPHER_AES192}) {
        if (settings.kek_len == get_KeyLength(cipher_id)) return find_key_wrap(cipher_id);
    }
    return find_key_wrap(TLX_CIPHER_AES256);
}

bool is_held(const CMS_KEY_HOLDER &holder, const CMS_KEY_IDENTIFIER &identifier) noexcept {
    if (holder.kek == nullptr) return false;
    return holder.kek_id == nullptr ||
           std::ranges::equal(Bytes(holder.kek_id, holder.kek_id_len), octets_of(identifier.keyIdentifier));
}

}  // namespace

u32 tlx::open_kek(const CMS_KEK_RECIPIENT &recipient, const CMS_KEY_HOLDER &holder, OpenedKey &key) noexcept {
    if (recipient.kekid == nullptr || recipient.keyEncryptionAlgorithm == nullptr ||
        recipient.encryptedKey == nullptr) {
        return 0x52B10049;
    }
    if (!is_held(holder, *recipient.kekid)) return 0x52B10047;
    const KeyWrap *wrap = read_key_wrap(recipient.keyEncryptionAlgorithm);
    if (wrap == nullptr) return 0x52B10048;
    if (holder.kek_len != wrap->key_length()) return 0x52B10012;
    return unwrap_key(*wrap, {holder.kek, holder.kek_len}, octets_of(recipient.encryptedKey), key);
}

u32 tlx::make_kek(const CMS_RECIPIENT_SETTINGS &settings, Bytes key, CMS_RECIPIENT_INFO &out) noexcept {
    const KeyWrap *wrap = choose_wrap(settings);
    if (wrap == nullptr) return 0x52B00048;
    if (settings.kek_len != wrap->key_length() || !can_be_wrapped(key)) return 0x52B0001C;
    CMS_KEK_RECIPIENT *made = new_CMS_KEK_RECIPIENT();
    out.type = TLX_CMS_KEY_ENCRYPTION_KEY;
    out.value.kekri = made;
    if (made == nullptr) return 0x52B0003C;
    made->version = 4;
    made->kekid = new_CMS_KEY_IDENTIFIER();
    if (made->kekid == nullptr) return 0x52B0003C;
    made->kekid->keyIdentifier =
        make_octets({settings.kek_id, settings.kek_id == nullptr ? 0 : settings.kek_id_len});
    made->keyEncryptionAlgorithm = make_algorithm(wrap->dotted, nullptr).release();
    made->encryptedKey = wrap_key(*wrap, {settings.kek, settings.kek_len}, key);
    const bool complete = made->kekid->keyIdentifier != nullptr && made->keyEncryptionAlgorithm != nullptr &&
                          made->encryptedKey != nullptr;
    return complete ? 0 : 0x52B0003C;
}
