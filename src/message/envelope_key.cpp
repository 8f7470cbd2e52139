#include "message/envelope_key.hpp"

#include <tlxcrypto/random.h>

#include "message/agreed_keys.hpp"
#include "message/key_scheme.hpp"

using namespace tlx;

namespace {

/// A recipient longer than this, which nobody writes, is passed over: the records of one are many times as
/// long. An agreement is as long as all but its keys and one of them.
constexpr std::size_t kLongestRecipient = 32768;
constexpr u32 kNotTheHolder = 0x52B10047;
constexpr u32 kDoesNotDecrypt = 0x52B10012;
constexpr u32 kNoRecipient = 0x52A00047;
constexpr u32 kNotDecoded = 0x52A00104;

template <typename T>
Owned<T> decode(const Element &element) noexcept {
    T *made = nullptr;
    static_cast<void>(Codec<T>::decode(element, &made));
    return Owned<T>(made);
}

// KeyAgreeRecipientInfo ::= SEQUENCE {
//     version CMSVersion, originator [0], ukm [1] OPTIONAL, keyEncryptionAlgorithm SEQUENCE,
//     recipientEncryptedKeys SEQUENCE OF RecipientEncryptedKey }
bool split_agreement(const Element &recipient, Bytes &others, Element &keys) noexcept {
    for (Cursor members(recipient); !members.at_end();) {
        others = recipient.contents.first(recipient.contents.size() - members.rest().size());
        if (!members.next(keys)) return false;
    }
    return keys.tag == kSequence;
}

/// A recipient with no keys.
Owned<CMS_RECIPIENT_INFO> decode_agreement(Bytes others) noexcept {
    Encoder encoder;
    Element element;
    {
        const auto recipient = encoder.nest(context(TLX_CMS_KEY_AGREEMENT));
        encoder.raw(others);
        const auto keys = encoder.sequence();
    }
    if (!encoder.ok() || !read_element(encoder.bytes(), element)) return nullptr;
    return decode<CMS_RECIPIENT_INFO>(element);
}

/// One record exists at a time, however many recipients there are.
class KeySearch {
  public:
    KeySearch(const CMS_KEY_HOLDER &holder, u32 expected_len, OpenedKey &key) noexcept
        : holder_(holder), expected_len_(expected_len), key_(key) {}

    void run(const Element &recipients) noexcept {
        for (Cursor cursor(recipients); status_ != 0 && !cursor.at_end();) {
            Element element;
            if (!cursor.next(element)) return note(kNotDecoded);
            const bool is_agreement = element.tag == context(TLX_CMS_KEY_AGREEMENT);
            note(is_agreement ? open_agreement(element) : open_other(element));
        }
    }
    [[nodiscard]] u32 status() const noexcept { return status_; }

  private:
    void note(u32 status) noexcept {
        const bool says_little = status_ == kNoRecipient || status_ == kNotDecoded;
        if (status == 0 || (says_little && status != kNotTheHolder)) status_ = status;
    }
    u32 open_other(const Element &element) noexcept {
        if (element.whole.size() > kLongestRecipient) return kNotTheHolder;
        const auto recipient = decode<CMS_RECIPIENT_INFO>(element);
        return recipient ? open_recipient(*recipient, holder_, expected_len_, key_, budget_) : kNotDecoded;
    }
    u32 open_agreement(const Element &element) noexcept {
        Bytes others;
        Element keys;
        if (!split_agreement(element, others, keys)) return kNotDecoded;
        if (others.size() > kLongestRecipient) return kNotTheHolder;
        const auto recipient = decode_agreement(others);
        if (!recipient) return kNotDecoded;
        AgreedKeys agreed(*recipient->value.kari, holder_, key_);
        const bool all_decoded = try_keys(keys, kLongestRecipient - others.size(), agreed);
        if (agreed.status() == 0) return key_.is_of_length(expected_len_) ? 0 : kDoesNotDecrypt;
        return agreed.status() != kNotTheHolder || all_decoded ? agreed.status() : kNotDecoded;
    }
    /// Passes over keys that are longer than `most`. False when one that was tried is not decoded.
    static bool try_keys(const Element &keys, std::size_t most, AgreedKeys &agreed) noexcept {
        bool all_decoded = true;
        for (Cursor cursor(keys); !cursor.at_end();) {
            Element element;
            if (!cursor.next(element)) return false;
            if (element.whole.size() > most) continue;
            const auto key = decode<CMS_RECIPIENT_ENCRYPTED_KEY>(element);
            all_decoded = all_decoded && key;
            if (key && !agreed.try_next(*key)) break;
        }
        return all_decoded;
    }

    const CMS_KEY_HOLDER &holder_;
    u32 expected_len_;
    OpenedKey &key_;
    WorkBudget budget_;
    u32 status_ = kNoRecipient;  ///< the first one that says the most, as long as no recipient opens
};

}  // namespace

u32 tlx::open_content_key(const Element &recipients, const CMS_KEY_HOLDER &holder, u32 expected_len,
                          OpenedKey &key) noexcept {
    KeySearch search(holder, expected_len, key);
    search.run(recipients);
    if (search.status() != kDoesNotDecrypt) return search.status();
    key.len = expected_len != 0 ? expected_len : kRandomKeyLength;
    return RAND_BYTES(key.octets, key.len) == 0 ? 0 : 0x52A0003C;
}
