// Builds and validates the paths of certificates.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "commands.hpp"
#include "input.hpp"
#include "owned.hpp"

namespace tool {

/// The status of a certificate that is not within its validity period.
constexpr uint32_t kOutsideValidity = 0x462D0113;

enum class Mark { kGood, kFailed, kUnchecked };

/// A certificate of a path, and the finding of validation.
struct Link {
    const X509_CERT *cert;
    Mark mark;
};

/// The result of one target.
class Verdict {
  public:
    [[nodiscard]] bool is_valid() const { return status == 0; }
    /// The certificates from the anchor's, or the one where building stopped, down to the target.
    [[nodiscard]] std::vector<Link> links() const;

    uint32_t status = 0;
    bool built = false;
    Certificates path;       ///< as far as it was built, target first
    int32_t failed_at = -1;  ///< index in the path of the certificate that validation failed at
    const X509_CERT *stopped_at =
        nullptr;  ///< the certificate that building failed at, which is not in the path
    PolicyTree policies;
    std::string hint;                   ///< advice for the user; may be empty
    std::vector<std::string> warnings;  ///< of a valid path: what validation ignored in it
};

class Verifier {
  public:
    /// Loads the anchors and the pool. Throws Failure.
    explicit Verifier(const VerifyOptions &options);

    /// Verifies a certificate, which has to outlive the verdict. An explanation also finds where building
    /// stopped, which takes a pass over the pool.
    [[nodiscard]] Verdict verify(const X509_CERT *target, bool explain) const;

    /// Likely mistakes of the user in the choice of anchors.
    [[nodiscard]] const std::vector<std::string> &warnings() const { return warnings_; }

  private:
    void trust(const LoadedCertificate &loaded);
    void load_pool(const VerifyOptions &options);
    void load_policies(const std::vector<std::string> &texts);
    [[nodiscard]] const X509_CERT *issuer_of(const X509_CERT *cert) const;
    [[nodiscard]] std::string hint_for(const Verdict &verdict) const;
    [[nodiscard]] std::string building_hint(const Verdict &verdict) const;
    [[nodiscard]] std::string issuer_hint(const Verdict &verdict) const;
    [[nodiscard]] std::string policy_hint(const Verdict &verdict) const;
    [[nodiscard]] bool goes_round(const X509_CERT *target) const;
    [[nodiscard]] bool trusts_name(const X509_NAME *name) const;

    Certificates pool_;
    Anchors anchors_;
    Oids policies_;  ///< null for any
    Time time_;
    CPV_SETTINGS settings_{};
    std::vector<std::string> warnings_;
};

/// Puts certificates before their issuers. Building takes the first certificate that fits, and the issuer's
/// own issuer also fits: Korean certificates name it beside the key identifier.
void put_lower_first(std::vector<LoadedCertificate> &certificates);

/// Warnings about what validation ignores in the certificates of a path, target first, each with the subject
/// and the extension: issuers that are no CAs, too many CAs below one, name constraints, policy mappings, and
/// unknown critical extensions.
[[nodiscard]] std::vector<std::string> path_warnings(const X509_CERTIFICATES *path);

/// A point in time as the command line writes it, in UTC: YYYY-MM-DD, YYYY-MM-DD,hh:mm:ss or RFC 3339. Null
/// for other texts.
[[nodiscard]] Time parse_time(const std::string &text);

}  // namespace tool
