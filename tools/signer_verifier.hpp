// Verifies the signers of messages by the rules of the options.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "commands.hpp"
#include "input.hpp"
#include "strict_store.hpp"

namespace tool {

using SignerReports = Owned<P7_SIGNER_REPORTS, free_P7_SIGNER_REPORTS>;

/// Anchors, and certificates to find signers and issuers among.
class SignerVerifier {
  public:
    /// Throws Failure for files that cannot be read, and for options that are wrong. The options have to
    /// outlive the verifier.
    explicit SignerVerifier(const VerifyMessageOptions &options);

    /// Without anchors the paths of signers are not verified.
    [[nodiscard]] bool has_anchors() const { return has_anchors_; }
    /// Verifies every signer. Reports are null when none was checked.
    [[nodiscard]] uint32_t verify(const P7_CONTENT_INFO *message, Octets content, SignerReports &reports);
    /// Sets how a reader verifies signers by the strict rules. The verifier has to outlive the reader.
    void set(SIGNED_MESSAGE_READER_SETTINGS &settings) const;
    /// What was passed over, and could not be fetched since the last call.
    [[nodiscard]] std::vector<std::string> take_warnings();
    /// What may help against a finding about a path; may be empty.
    [[nodiscard]] std::string hint(const VERIFY_RESULT *path) const;

  private:
    void join_pool(const std::vector<std::string> &paths, std::vector<std::string> &warnings);

    bool has_anchors_;
    Certificates pool_;
    std::optional<StrictSettings> settings_;  ///< of the strict rules, as the next
    std::optional<StrictStore> store_;
    Anchors anchors_;  ///< of the compatible rules, as the next
    Time time_;
    std::vector<std::string> warnings_;
};

}  // namespace tool
