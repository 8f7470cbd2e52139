// Keys and certificates of signers.
#pragma once

#include "support/chain_builder.hpp"

namespace tlx_test {

/// The certificate of a signing_key() by number, with the serial number 10 and up, below "CA 1" and "Root".
inline CertSpec signer_spec(unsigned key) {
    CertSpec spec = valid_chain(3)[0];
    spec.key = key;
    spec.serial = "1" + std::to_string(key);
    return spec;
}

/// Makes the keys of signing_key(), which are never freed, before a test counts live blocks.
inline void make_signing_keys() {
    for (unsigned key = 0; key <= kKcdsaKey; ++key)
        (void)signer_spec(key).make();
}

}  // namespace tlx_test
