// Signed messages that are verified while they are read.
#pragma once

#include "message_pieces.hpp"
#include "signer_verifier.hpp"

namespace tool {

/// The signatures hold, and nothing proves whose they are.
constexpr uint32_t kUnproven = 0x4B300116;

/// What verification found.
struct Findings {
    uint32_t status = 0;           ///< kUnproven without anchors when the signatures hold
    SignerReports reports;         ///< null when no signer was checked
    Json signers = Json::array();  ///< those with a report, as describe_signer() describes them

    [[nodiscard]] bool is_proven() const { return status == 0; }
    /// Takes the status of the library.
    void settle(uint32_t verified, const SignerVerifier &verifier) {
        status = verified == 0 && !verifier.has_anchors() ? kUnproven : verified;
    }
};

/// Verifies signed data by the strict rules, and writes its content where the options say. Throws Failure.
[[nodiscard]] Findings verify_in_pieces(const VerifyMessageOptions &options, Source &message,
                                        SignerVerifier &verifier, Waiting &waiting);

}  // namespace tool
