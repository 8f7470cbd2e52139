// Keys and certificates of signers.
#pragma once

#include "support/chain_builder.hpp"

namespace tlx_test {

/// The certificate of a signing_key() by number, with the serial number after it and the issuer "Signers".
inline CertSpec signer_spec(unsigned key) {
    CertSpec spec{.subject = "Signer", .issuer = "Signers", .serial = "0" + std::to_string(key + 1)};
    spec.key = key;
    return spec;
}

/// Makes the keys of signing_key(), which are never freed, before a test counts live blocks.
inline void make_signing_keys() {
    for (unsigned key = 0; key <= kKcdsaKey; ++key)
        (void)signer_spec(key).make();
}

}  // namespace tlx_test
