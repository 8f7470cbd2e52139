// libcrypto behind plain types, in a library context of its own. Its type names would clash with ours in one
// translation unit.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tlx_test::openssl {

using Octets = std::vector<std::uint8_t>;

/// Digest by libcrypto's algorithm name, of SHAKE256 with 64 octets; empty when it does not know the name.
Octets digest(const std::string &name, const Octets &data);

/// What RFC 7292, appendix B.2 derives with that digest for a purpose (the id) from a 16-bit password.
Octets pkcs12_key(const std::string &digest, const Octets &password, const Octets &salt, int id,
                  int iterations, std::size_t length);

/// Big-number arithmetic on upper-case hexadecimal numbers, where operation is one of "+", "-", "*", "/",
/// "%", "<<" and ">>", or the first three and "^" followed by "%", which take the modulus as a third operand.
/// A shift's count is b.
std::string calculate(const std::string &operation, const std::string &a, const std::string &b,
                      const std::string &modulus = "");

/// HMAC with a digest by libcrypto's name.
Octets hmac(const std::string &digest, const Octets &key, const Octets &data);

/// Encrypts or decrypts by libcrypto's name of the cipher; empty on failure. An RC4 key may have any length.
Octets cipher(const std::string &name, bool encrypt, const Octets &key, const Octets &iv, const Octets &data);

/// The secret that octets of a private and of a public key agree on, by libcrypto's name of the curve; and
/// the public key of a private one.
Octets agree(const std::string &curve, const Octets &private_key, const Octets &public_key);
Octets public_key_of(const std::string &curve, const Octets &private_key);
/// Derives octets by libcrypto's name of the function: X963KDF or HKDF.
Octets derive(const std::string &function, const std::string &digest, const Octets &secret,
              const Octets &info, std::size_t length);

/// An RSA key with its numbers, big-endian: n, e, d, p, q, d mod (p - 1), d mod (q - 1), q^-1 mod p.
struct RsaKey {
    std::shared_ptr<void> handle;
    Octets numbers[8];
};
RsaKey generate_rsa(unsigned bits);

struct RsaScheme {
    std::string digest;      // libcrypto's name
    std::string mgf_digest;  // empty: PKCS #1 v1.5; else PSS for signatures, OAEP for encryption
    int salt_length = 0;
};
Octets rsa_sign(const RsaKey &key, const RsaScheme &scheme, const Octets &data);
bool rsa_verify(const RsaKey &key, const RsaScheme &scheme, const Octets &data, const Octets &signature);
/// The same with a key of any kind: the private one of PKCS #8, the public one of a certificate. EdDSA has no
/// digest in its scheme.
Octets sign(const Octets &private_key, const RsaScheme &scheme, const Octets &data);
bool verify(const Octets &certificate, const RsaScheme &scheme, const Octets &data, const Octets &signature);
Octets rsa_encrypt(const RsaKey &key, const RsaScheme &scheme, const Octets &data);
Octets rsa_decrypt(const RsaKey &key, const RsaScheme &scheme, const Octets &data);

/// Whether this thread's libcrypto error queue is empty.
bool error_queue_is_empty();

/// A row of libcrypto's object table; empty texts where the number is unassigned.
struct ObjectRow {
    std::string short_name;
    std::string long_name;
    std::string dotted;
};
ObjectRow object_row(int nid);

}  // namespace tlx_test::openssl
