// libcrypto's ciphers and RSA behind plain types, in a library context of their own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tlx_test::openssl {

using Octets = std::vector<std::uint8_t>;

/// Encrypts or decrypts by libcrypto's name of the cipher; empty on failure. An RC4 key may have any length.
Octets cipher(const std::string &name, bool encrypt, const Octets &key, const Octets &iv, const Octets &data);

/// The numbers of an RSA key, big-endian: n, e, d, p, q, d mod (p - 1), d mod (q - 1), q^-1 mod p.
struct RsaNumbers {
    Octets values[8];
};
RsaNumbers generate_rsa(unsigned bits);

struct RsaScheme {
    std::string digest;      // libcrypto's name
    std::string mgf_digest;  // empty: PKCS #1 v1.5; else PSS for signatures, OAEP for encryption
    int salt_length = 0;
};
Octets rsa_sign(const RsaNumbers &key, const RsaScheme &scheme, const Octets &data);
bool rsa_verify(const RsaNumbers &key, const RsaScheme &scheme, const Octets &data, const Octets &signature);
/// What a PKCS #1 v1.5 signature holds inside its padding.
Octets rsa_recover(const RsaNumbers &key, const Octets &signature);
Octets rsa_encrypt(const RsaNumbers &key, const RsaScheme &scheme, const Octets &data);
Octets rsa_decrypt(const RsaNumbers &key, const RsaScheme &scheme, const Octets &data);

}  // namespace tlx_test::openssl
