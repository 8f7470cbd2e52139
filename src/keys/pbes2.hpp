// The parameters of PBES2 (RFC 8018, appendix A.4) as other programs write them.
#pragma once

#include "keys/pbe.hpp"

namespace tlx {

/// Decrypts with a key of PBKDF2.
[[nodiscard]] PbeOutcome decrypt_pbkdf2(const P5_PBE_PARAM &param, const PbeInput &input,
                                        CipherJob job) noexcept;

/// Decrypts with a key of scrypt (RFC 7914), whose parameters the algorithm identifier holds. Another
/// derivation is unsupported.
[[nodiscard]] PbeOutcome decrypt_scrypt(const X509_ALGO_IDENTIFIER &algorithm, Bytes password, CipherJob job,
                                        WorkBudget &budget) noexcept;

}  // namespace tlx
