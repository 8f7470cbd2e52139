// Password-based encryption as an algorithm identifier names it: the schemes of PKCS #5 (RFC 8018), of PKCS
// #12 (RFC 7292, appendix C), of KISA and of GPKI.
#pragma once

#include <string_view>

#include "keyinfo/content_cipher.hpp"
#include "keys/key_file_records.hpp"
#include "keys/pbe_functions.hpp"

namespace tlx {

/// The derivations that may be done for one file, so that no file makes its reader work for hours.
class WorkBudget {
  public:
    /// Takes the iterations of one derivation. False when they are too many.
    [[nodiscard]] bool take(u64 iterations) noexcept {
        if (iterations > kMostAtOnce || iterations > left_) return false;
        left_ -= iterations;
        return true;
    }

  private:
    static constexpr u64 kMostAtOnce = 10'000'000;
    u64 left_ = 2 * kMostAtOnce;
};

/// A password in both of its forms. They stay the caller's.
struct PbePassword {
    Bytes text;   ///< for all schemes but those of PKCS #12
    Bytes units;  ///< big-endian 16-bit units and two zero octets; none for an absent password
};

/// A password as 16-bit units with two zero octets after them.
class PasswordUnits {
  public:
    enum class From : u8 {
        utf8,   ///< characters beyond 16 bits become surrogates; a text that is not UTF-8 counts as octets
        octets  ///< each becomes a unit
    };
    PasswordUnits(Bytes text, From from) noexcept;
    ~PasswordUnits() { wipe_and_free(data_, room_); }
    PasswordUnits(const PasswordUnits &) = delete;
    PasswordUnits &operator=(const PasswordUnits &) = delete;

    [[nodiscard]] Bytes bytes() const noexcept { return {data_, size_}; }
    /// False when memory ran out.
    explicit operator bool() const noexcept { return data_ != nullptr; }

  private:
    void add(u32 unit) noexcept;
    void add_character(u32 code_point) noexcept;

    std::size_t room_;
    u8 *data_;
    std::size_t size_ = 0;
};

enum class PbeFamily : u8 { kisa, seed_cbc, gpki, pbes1, pkcs12, pkcs12_rc4, pbes2 };

/// A scheme of one identifier. Of PBES2 the parameters name cipher and digest.
struct PbeAlgorithm {
    std::string_view name;
    std::string_view dotted;
    PbeFamily family;
    u32 cipher_id;  ///< of RC4 the octets of its key
    u32 digest_id;
};
[[nodiscard]] std::span<const PbeAlgorithm> pbe_algorithms() noexcept;
/// Null for an unknown identifier.
[[nodiscard]] const PbeAlgorithm *find_pbe_algorithm(std::string_view dotted) noexcept;

/// A pseudorandom function of PBKDF2: HMAC with a digest.
struct Prf {
    std::string_view name;  ///< empty for an identifier that is only read
    std::string_view dotted;
    u32 digest_id;
};
[[nodiscard]] std::span<const Prf> prfs() noexcept;
/// HMAC with SHA-1 without an algorithm; null for an unknown one.
[[nodiscard]] const Prf *find_prf(const X509_ALGO_IDENTIFIER *algorithm) noexcept;

/// What to encrypt by.
struct PbeChoice {
    PbeAlgorithm algorithm;
    ContentCipher cipher = {};   ///< of PBES2
    const Prf *prf = nullptr;    ///< of PBES2
    u32 iterations = 0;          ///< at least 1
    KisaIv iv = KisaIv::hashed;  ///< of the forms of KISA and of bare SEED-CBC
    Bytes salt = {};             ///< empty for 8 random octets
};

/// Encrypts octets. `algorithm`, which is empty, receives identifier and parameters. Null without memory, for
/// a cipher or digest that is not available, and when random octets cannot be had.
[[nodiscard]] Owned<ASN1_STRING> encrypt_pbe(const PbeChoice &choice, const PbePassword &password, Bytes in,
                                             X509_ALGO_IDENTIFIER &algorithm) noexcept;

/// Decrypts octets by an algorithm identifier. `out` has as much room as `in`; nothing is left in it on
/// failure. A scheme without padding, and by chance any other, also decrypts with a wrong password.
[[nodiscard]] PbeOutcome decrypt_pbe(const X509_ALGO_IDENTIFIER *algorithm, const PbePassword &password,
                                     Bytes in, u8 *out, u32 &out_len, WorkBudget &budget) noexcept;
/// The same of an algorithm that is known to the caller, who reads no other parameters than `param`.
[[nodiscard]] PbeOutcome decrypt_pbe(const PbeAlgorithm &algorithm, const P5_PBE_PARAM &param,
                                     const PbePassword &password, Bytes in, u8 *out, u32 &out_len,
                                     WorkBudget &budget) noexcept;
/// What makes a scheme unsupported: its own identifier, or of PBES2 that of the derivation, its function or
/// else the cipher. Null when memory runs out.
[[nodiscard]] Owned<OBJECT_IDENTIFIER> find_unsupported(const X509_ALGO_IDENTIFIER &algorithm) noexcept;

}  // namespace tlx
