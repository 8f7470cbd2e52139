// How the content key of a CMS message is opened and made, one pair of functions for each kind of recipient.
// Those that open return the statuses of open_CMS_RECIPIENT_INFO(), those that make a recipient the statuses
// of make_CMS_RECIPIENT_INFO().
#pragma once

#include <tlxpki/cms_keys.h>

#include "keys/pbe.hpp"
#include "message/cms_records.hpp"
#include "message/wiped_octets.hpp"

namespace tlx {

/// A content key.
struct OpenedKey : WipedOctets<TLX_CMS_KEY_MAX_LENGTH> {
    /// Whether the key is as long as it has to be; 0 when any length will do.
    [[nodiscard]] bool is_of_length(u32 expected_len) const noexcept {
        return expected_len == 0 || len == expected_len;
    }
};

/// open_CMS_RECIPIENT_INFO() for a reader of all recipients of a message, whose derivations share a budget.
[[nodiscard]] u32 open_recipient(const CMS_RECIPIENT_INFO &recipient, const CMS_KEY_HOLDER &holder,
                                 u32 expected_len, OpenedKey &key, WorkBudget &budget) noexcept;

[[nodiscard]] u32 open_key_transport(const CMS_KEY_TRANS_RECIPIENT &recipient, const CMS_KEY_HOLDER &holder,
                                     u32 expected_len, OpenedKey &key) noexcept;
[[nodiscard]] u32 make_key_transport(const CMS_RECIPIENT_SETTINGS &settings, Bytes key,
                                     CMS_RECIPIENT_INFO &out) noexcept;

[[nodiscard]] u32 open_key_agreement(const CMS_KEY_AGREE_RECIPIENT &recipient, const CMS_KEY_HOLDER &holder,
                                     OpenedKey &key) noexcept;
[[nodiscard]] u32 make_key_agreement(const CMS_RECIPIENT_SETTINGS &settings, Bytes key,
                                     CMS_RECIPIENT_INFO &out) noexcept;

[[nodiscard]] u32 open_kek(const CMS_KEK_RECIPIENT &recipient, const CMS_KEY_HOLDER &holder,
                           OpenedKey &key) noexcept;
[[nodiscard]] u32 make_kek(const CMS_RECIPIENT_SETTINGS &settings, Bytes key,
                           CMS_RECIPIENT_INFO &out) noexcept;

[[nodiscard]] u32 open_password(const CMS_PASSWORD_RECIPIENT &recipient, const CMS_KEY_HOLDER &holder,
                                OpenedKey &key, WorkBudget &budget) noexcept;
[[nodiscard]] u32 make_password(const CMS_RECIPIENT_SETTINGS &settings, Bytes key,
                                CMS_RECIPIENT_INFO &out) noexcept;

/// The key identifier that a certificate has in its extension. False for one without.
[[nodiscard]] bool find_key_identifier(const X509_CERT *cert, Bytes &identifier) noexcept;
/// Whether a certificate has what names it in a message.
[[nodiscard]] bool can_be_named(const X509_CERT *cert, bool by_key_identifier) noexcept;
/// Whether a message names this certificate; null for any.
[[nodiscard]] bool is_named(const X509_CERT *cert, const P7_ISSUER_AND_SERIAL_NUMBER *number) noexcept;
[[nodiscard]] bool is_named(const X509_CERT *cert, const OCTET_STRING *key_identifier) noexcept;

/// Whether an algorithm identifier has no parameters, or NULL.
[[nodiscard]] bool lacks_parameters(const X509_ALGO_IDENTIFIER &algorithm) noexcept;
/// An algorithm identifier with these parameters, which become its own or are freed; null when memory runs
/// out.
[[nodiscard]] Owned<X509_ALGO_IDENTIFIER> make_algorithm(std::string_view dotted,
                                                         ASN1_UNIT *parameters) noexcept;

/// An OCTET STRING; null when memory runs out.
[[nodiscard]] inline OCTET_STRING *make_octets(Bytes octets) noexcept {
    return new_string(TLX_TAG_OCTET_STRING, octets);
}

}  // namespace tlx
