// Keys and certificates of signers.
#pragma once

#include <tlxpki/pkcs8.h>
#include <tlxpki/verify.h>

#include "support/chain_builder.hpp"

namespace tlx_test {

/// The certificate of a signing_key() by number, with the serial number 10 and up, below "CA 1" and "Root".
inline CertSpec signer_spec(unsigned key) {
    CertSpec spec = valid_chain(3)[0];
    spec.key = key;
    spec.serial = "1" + std::to_string(key);
    return spec;
}

/// The private key of signing_key() by number as a record; one without a key for any other number.
inline Held<free_P8_PRIV_KEY_INFO> private_key(unsigned number) {
    Held<free_P8_PRIV_KEY_INFO> info(new_P8_PRIV_KEY_INFO());
    if (number <= kKcdsaKey) set_PRIV_KEY_KeyParams(info.get(), signing_key(number));
    return info;
}

/// Settings for signers with keys of 1024 bits.
inline VERIFY_SETTINGS legacy_settings(const ASN1_TIME *time) {
    VERIFY_SETTINGS settings = {};
    settings.time = time;
    settings.profile = TLX_PROFILE_KOREAN_LEGACY;
    settings.purpose = TLX_PURPOSE_SIGNING;
    return settings;
}

/// Makes the keys of signing_key(), which are never freed, and what their first signatures compute, before a
/// test counts live blocks.
inline void make_signing_keys() {
    for (unsigned key = 0; key <= kKcdsaKey; ++key) {
        CertSpec spec = signer_spec(key);
        spec.signer = key;
        (void)spec.make();
    }
}

}  // namespace tlx_test
