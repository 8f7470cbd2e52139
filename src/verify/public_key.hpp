// Public keys of certificates, ready to verify with.
#pragma once

#include <tlxcrypto/dsa.h>
#include <tlxcrypto/ecdsa.h>
#include <tlxcrypto/eddsa.h>
#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>

#include "der/encoder.hpp"
#include "der/owned.hpp"
#include "verify/certificate_view.hpp"

namespace tlx {

enum class KeyKind : u8 { none, rsa, ecdsa, eddsa, dsa, kcdsa };

/// A signature algorithm with its parameters.
struct SignatureAlgorithm {
    KeyKind kind = KeyKind::none;
    u32 digest_id = 0;  ///< 0 for EdDSA
    u32 curve = 0;      ///< of EdDSA
    bool is_pss = false;
    u32 mgf_digest_id = 0;
    u32 salt_length = 0;
};

/// A key of one kind. What it computes for verifying it computes once, and several threads may use it.
struct PublicKey {
    KeyKind kind = KeyKind::none;
    u32 bits = 0;              ///< of the modulus or of the curve's field
    bool is_pss_only = false;  ///< an RSA key that says so, and may limit the parameters
    bool has_pss_limits = false;
    SignatureAlgorithm pss_limits;

    std::unique_ptr<RSA_UNIT, FreeWith<free_RSA_UNIT>> rsa;
    std::unique_ptr<ECDSA_KEY, FreeWith<free_ECDSA_KEY>> ecdsa;
    std::unique_ptr<EDDSA_KEY, FreeWith<free_EDDSA_KEY>> eddsa;
    std::unique_ptr<DSA_KEY, FreeWith<free_DSA_KEY>> dsa;  ///< null in a DSA key without parameters
    std::unique_ptr<KCDSA, FreeWith<free_KCDSA>> kcdsa;
    Owned<BIGINT> dsa_public;  ///< of a DSA key without parameters
};

/// Makes the key of a certificate: kNone, kUnknownKey, kBadPublicKey or kNoMemory. The numbers are not
/// checked.
[[nodiscard]] Rule make_key(const AlgorithmView &algorithm, Bytes octets, PublicKey &key) noexcept;

/// Completes a DSA key without parameters by those of another key (RFC 5280, section 6.1.4 (d)). kBrokenKey
/// when that has none.
[[nodiscard]] Rule inherit_parameters(const PublicKey &from, PublicKey &key) noexcept;

/// Checks the numbers of other keys as far as that is cheap: kNone, kBrokenKey or kNoMemory.
[[nodiscard]] Rule check_key(const PublicKey &key) noexcept;

/// Reads the identifier of a digest, with NULL or no parameters. False for one that is not known.
[[nodiscard]] bool read_digest(const AlgorithmView &view, u32 &digest_id) noexcept;

/// Reads an element with the parameters of RSASSA-PSS. False for any other.
[[nodiscard]] bool read_pss_parameters(Bytes element, SignatureAlgorithm &algorithm) noexcept;

/// kNone, kUnknownAlgorithm or kBadParameters.
[[nodiscard]] Rule read_signature_algorithm(const AlgorithmView &view,
                                            SignatureAlgorithm &algorithm) noexcept;

/// Whether a key verifies signatures of the algorithm, within the limits of a key of RSASSA-PSS.
[[nodiscard]] bool is_algorithm_of(const PublicKey &key, const SignatureAlgorithm &algorithm) noexcept;

/// Writes the identifier of a digest, with NULL parameters unless it is one of SHA-3. Fails for one that
/// read_digest() does not know.
void write_digest(Encoder &out, u32 digest_id) noexcept;

/// Writes an algorithm. Fails for one that no identifier of read_signature_algorithm() is for.
void write_signature_algorithm(Encoder &out, const SignatureAlgorithm &algorithm) noexcept;

/// Verifies a signature of the octets: kNone, kAlgorithmNotOfKey, kSignatureWrong, kBrokenKey or kNoMemory.
[[nodiscard]] Rule verify_signature(const PublicKey &key, const SignatureAlgorithm &algorithm, Bytes octets,
                                    Bytes signature) noexcept;

/// The same of octets whose digest, that of the algorithm and for KCDSA that of init_KCDSA_digest(), is
/// known. kAlgorithmNotOfKey for EdDSA.
[[nodiscard]] Rule verify_signature_of_digest(const PublicKey &key, const SignatureAlgorithm &algorithm,
                                              Bytes digest, Bytes signature) noexcept;

}  // namespace tlx
