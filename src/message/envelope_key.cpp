#include "message/envelope_key.hpp"

#include <tlxcrypto/random.h>

#include "message/key_scheme.hpp"

using namespace tlx;

namespace {

/// A recipient longer than this, which nobody writes, is passed over: the records of one are many times as
/// long.
constexpr std::size_t kLongestRecipient = 32768;
constexpr u32 kNotTheHolder = 0x52B10047;
constexpr u32 kDoesNotDecrypt = 0x52B10012;

/// One record exists at a time, however many recipients there are.
class KeySearch {
  public:
    KeySearch(const CMS_KEY_HOLDER &holder, u32 expected_len, OpenedKey &key) noexcept
        : holder_(holder), expected_len_(expected_len), key_(key) {}

    /// False when the search is over.
    [[nodiscard]] bool try_next(const Element &element) noexcept {
        CMS_RECIPIENT_INFO *made = nullptr;
        if (element.whole.size() > kLongestRecipient) return true;
        if (Codec<CMS_RECIPIENT_INFO>::decode(element, &made) != 0) {
            status_ = 0x52A00104;
            return false;
        }
        const Owned<CMS_RECIPIENT_INFO> recipient(made);
        const u32 status = open_recipient(*made, holder_, expected_len_, key_, budget_);
        if (status == 0 || status_ == 0x52A00047) status_ = status == kNotTheHolder ? status_ : status;
        return status != 0;
    }
    [[nodiscard]] u32 status() const noexcept { return status_; }

  private:
    const CMS_KEY_HOLDER &holder_;
    u32 expected_len_;
    OpenedKey &key_;
    WorkBudget budget_;
    u32 status_ = 0x52A00047;  ///< the first one that says more, as long as no recipient opens
};

}  // namespace

u32 tlx::open_content_key(const Element &recipients, const CMS_KEY_HOLDER &holder, u32 expected_len,
                          OpenedKey &key) noexcept {
    KeySearch search(holder, expected_len, key);
    for (Cursor cursor(recipients); !cursor.at_end();) {
        Element element;
        if (!cursor.next(element)) return 0x52A00104;
        if (!search.try_next(element)) break;
    }
    if (search.status() != kDoesNotDecrypt) return search.status();
    key.len = expected_len != 0 ? expected_len : kRandomKeyLength;
    return RAND_BYTES(key.octets, key.len) == 0 ? 0 : 0x52A0003C;
}
