// Keys as they stand in a SubjectPublicKeyInfo.
#pragma once

#include <tlxpki/x509_types.h>

#include "der/encoder.hpp"

namespace tlx {

/// What became of the key of a SubjectPublicKeyInfo.
enum class KeyOutcome : u8 {
    decoded,    ///< there is a key now
    unknown,    ///< no known algorithm or curve, or not of its form: there is no key
    no_memory,  ///< there is no key either
};

/// Decodes the key from the members of the record and puts it in place of the one it has.
KeyOutcome decode_key(X509_PUBKEY &pubkey) noexcept;

}  // namespace tlx
