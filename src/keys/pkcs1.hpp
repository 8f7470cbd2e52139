// RSA keys of PKCS #1, for the modules that carry them inside other structures.
#pragma once

#include <tlxpki/pkcs1.h>

#include "der/record.hpp"

TLX_DECLARE_CODEC(PKCS1_RSA_PUBLIC_KEY);
TLX_DECLARE_CODEC(PKCS1_RSA_PRIVATE_KEY);

namespace tlx {

/// An encoder for private keys: its octets are wiped before they are freed. The codec of a private key makes
/// room for all of it beforehand, so that growing leaves no copy behind.
class SecretEncoder : public Encoder {
  public:
    SecretEncoder() noexcept = default;
    ~SecretEncoder() { buffer().wipe(); }
    SecretEncoder(const SecretEncoder &) = delete;
    SecretEncoder &operator=(const SecretEncoder &) = delete;
};

}  // namespace tlx
