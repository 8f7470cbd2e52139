// The keys of one key agreement, opened one at a time.
#pragma once

#include "message/agreement_key.hpp"
#include "message/cms_key_wrap.hpp"

namespace tlx {

/// A key encryption key.
using WrappingKey = WipedOctets<TLX_CIPHER_MAX_KEY_LENGTH>;

/// Unwraps the first key for the holder's certificate; without one, the first that unwraps. The secret is
/// agreed on once, for the first key that may be the holder's.
class AgreedKeys {
  public:
    /// The keys in the recipient's own list do not count.
    AgreedKeys(const CMS_KEY_AGREE_RECIPIENT &recipient, const CMS_KEY_HOLDER &holder,
               OpenedKey &key) noexcept;

    /// False when the search is over.
    [[nodiscard]] bool try_next(const CMS_RECIPIENT_ENCRYPTED_KEY &own) noexcept;
    /// A status of open_CMS_RECIPIENT_INFO().
    [[nodiscard]] u32 status() const noexcept { return status_; }

  private:
    [[nodiscard]] u32 agree_on_key() noexcept;

    const CMS_KEY_AGREE_RECIPIENT &recipient_;
    const CMS_KEY_HOLDER &holder_;
    OpenedKey &key_;
    const KeyCurve *curve_;
    const KeyWrap *wrap_ = nullptr;  ///< once the secret is agreed on
    WrappingKey wrapping_;
    u32 status_;
    bool is_over_;
};

}  // namespace tlx
