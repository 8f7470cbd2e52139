// The encryption functions of password-based encryption: a key and an IV from a password, and a cipher under
// them.
#pragma once

#include <tlxcrypto/cipher.h>

#include "der/types.hpp"

namespace tlx {

/// The bit that makes a cipher identifier one in CBC mode.
constexpr u32 kCbc = TLX_CIPHER_MODE_CBC;

enum class Direction : u8 { decrypt = 0, encrypt = 1 };

/// What a key is derived from.
struct PbeInput {
    Bytes password;
    Bytes salt;
    u32 iterations;  ///< at least 1
};

/// Octets to encrypt or decrypt. The output has room for the input, and for one block more when encrypting.
struct CipherJob {
    Direction direction;
    Bytes in;
    u8 *out;
    u32 &out_len;
};

/// How the KISA forms make their IV.
enum class KisaIv : u8 {
    constant,       ///< the front of "5820463917582046"
    hashed,         ///< from the derived octets that the key leaves
    in_circulation  ///< "0123456789012345", which other programs take with the identifier of SEED-CBC
};

enum class PbeOutcome : u8 {
    done,
    wrong_password,  ///< the padding is wrong
    bad_length,      ///< the ciphertext is not whole blocks
    unsupported,     ///< the cipher or digest is unknown or does not fit the scheme
    no_memory,       ///< or the cipher fails for another reason
    broken,          ///< the parameters cannot be read
    too_much_work    ///< the derivation would take more than the budget
};

/// The first octets of T(iterations), where T1 = Hash (password || salt) and Ti = Hash (T(i-1)) (RFC 8018,
/// section 5.1). `out` is no longer than the digest.
[[nodiscard]] bool derive_pbkdf1(const PbeInput &input, u32 digest_id, std::span<u8> out) noexcept;

/// PBES1 (RFC 8018, section 6.1): the key is octets 0 to 7 of PBKDF1, the IV octets 8 to 15.
[[nodiscard]] PbeOutcome run_pbes1(const PbeInput &input, u32 cipher_id, u32 digest_id,
                                   CipherJob job) noexcept;
/// PBES2 (RFC 8018, section 6.2) with PBKDF2. `iv` has the length that the cipher wants.
[[nodiscard]] PbeOutcome run_pbes2(const PbeInput &input, u32 cipher_id, u32 prf_digest_id, const u8 *iv,
                                   CipherJob job) noexcept;
/// What scrypt derives a key from. `cost` is a power of 2 above 1, the other numbers are at least 1.
struct ScryptInput {
    Bytes password;
    Bytes salt;
    u64 cost;
    u32 block_size;
    u32 parallelization;
};
/// PBES2 with scrypt (RFC 7914) within so many octets of memory.
[[nodiscard]] PbeOutcome run_scrypt(const ScryptInput &input, u64 most_memory, u32 cipher_id, const u8 *iv,
                                    CipherJob job) noexcept;
/// The forms of KISA: the key is the first octets of PBKDF1, a block long.
[[nodiscard]] PbeOutcome run_kisa(const PbeInput &input, u32 cipher_id, u32 digest_id, KisaIv iv,
                                  CipherJob job) noexcept;
/// Key and IV derived in the manner of PKCS #12 (RFC 7292, appendix B); the password is 16-bit units.
[[nodiscard]] PbeOutcome run_pkcs12(const PbeInput &input, u32 cipher_id, u32 digest_id,
                                    CipherJob job) noexcept;

}  // namespace tlx
