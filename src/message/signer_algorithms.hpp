// The algorithm identifiers of a signer.
#pragma once

#include "message/message_records.hpp"
#include "message/rsa_parameters.hpp"

namespace tlx {

/// Replaces an algorithm by one of the registry with NULL parameters. False when memory runs out.
[[nodiscard]] bool replace_algorithm(X509_ALGO_IDENTIFIER *&algorithm, u32 row) noexcept;

/// The row of the registry; 0 for null and an unknown one.
[[nodiscard]] u32 algorithm_row(const X509_ALGO_IDENTIFIER *algorithm) noexcept;

/// What RSASSA-PSS takes besides a digest of the message.
struct PssSettings {
    RsaDigests digests;  ///< of the message as the parameters name it, and of MGF1
    u32 salt_length = TLX_RSA_PSS_DEFAULT_SALT_LENGTH;
};

/// Reads the parameters of RSASSA-PSS and fills in the defaults of RFC 4055, section 3.1. Without parameters,
/// or with NULL, the digest is the signer's and the others have their defaults. False for parameters that
/// cannot be read, for another mask generation function and for another trailer field.
[[nodiscard]] bool read_pss_parameters(const ASN1_UNIT *parameters, u32 signer_digest_id,
                                       PssSettings &settings) noexcept;

/// The parameters of RSASSA-PSS with a digest, which MGF1 also uses, and a salt as long; null for a digest
/// that RFC 4055 does not have and when memory runs out.
[[nodiscard]] ASN1_UNIT *make_pss_parameters(u32 digest_id) noexcept;

}  // namespace tlx
