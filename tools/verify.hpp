// Builds and validates the paths of certificates by the rules of validate_certpath().
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "commands.hpp"
#include "input.hpp"
#include "issuer_index.hpp"
#include "owned.hpp"
#include "target_report.hpp"
#include "terminal.hpp"

namespace tool {

/// The status of a certificate that is not within its validity period.
constexpr uint32_t kOutsideValidity = 0x462D0113;

/// A certificate of a path, and the finding of validation.
struct Link {
    const X509_CERT *cert;
    Mark mark;
};

/// A pool that belongs to somebody else.
using BorrowedPool = Owned<STACK, free_STACK>;

/// The certificates above a target as they were found, each the issuer of the one before.
struct Chain {
    std::vector<X509_CERT *> issuers;
    bool goes_round = false;  ///< whether the last one has been there before
    BorrowedPool pool;        ///< the same, for building
    BorrowedPool anchors;     ///< those with the name of the last one
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
    std::string reason;                 ///< more exact than that of the status; may be empty
    std::string hint;                   ///< advice for the user; may be empty
    std::vector<std::string> warnings;  ///< of a valid path: what validation ignored in it
};

class Verifier {
  public:
    /// Loads the anchors and the pool, which targets join. They have to outlive the verifier. Throws Failure.
    Verifier(const VerifyOptions &options, const std::vector<LoadedCertificate> &targets);

    /// Verifies a certificate, which has to outlive the verdict.
    [[nodiscard]] Verdict verify(X509_CERT *target) const;

    /// Certificates that were passed over, and likely mistakes of the user in the choice of anchors.
    [[nodiscard]] const std::vector<std::string> &warnings() const { return warnings_; }

  private:
    void trust(std::vector<LoadedCertificate> anchors);
    void load_pool(const VerifyOptions &options, const std::vector<LoadedCertificate> &targets);
    [[nodiscard]] Chain chain_of(X509_CERT *target) const;
    [[nodiscard]] X509_CERT *anchor_above(X509_CERT *cert) const;
    [[nodiscard]] bool leads_to(X509_CERT *cert, X509_CERT *issuer, TRUST_ANCHOR *anchor) const;
    void explain(Verdict &verdict, const Chain &chain) const;
    [[nodiscard]] std::string hint_for(const Verdict &verdict, const Chain &chain) const;
    [[nodiscard]] std::string building_hint(const Verdict &verdict, const Chain &chain) const;
    [[nodiscard]] std::string issuer_hint(const Verdict &verdict) const;
    [[nodiscard]] std::string policy_hint(const Verdict &verdict) const;

    /// A trusted certificate, and what is trusted of it.
    struct Trusted {
        X509_CERT *cert;
        Anchor anchor;
    };

    std::vector<LoadedCertificate> loaded_;
    std::vector<X509_CERT *> pool_;
    IssuerIndex index_;
    std::unordered_multimap<std::string, Trusted> trusted_;  ///< by subject
    Oids policies_;                                          ///< null for any
    Time time_;
    CPV_SETTINGS settings_{};
    std::vector<std::string> warnings_;
};

/// A reason and a hint, either of which may be empty.
struct Explanation {
    std::string reason;
    std::string hint;
};

/// What the rules say of a target, with the tree of valid policies when it is valid.
[[nodiscard]] TargetReport report_verdict(const LoadedCertificate &target, const Verdict &verdict);

/// Why the signature of a certificate counts as wrong; empty when it was computed and is wrong.
[[nodiscard]] Explanation explain_signature(const X509_CERT *cert, const X509_PUBKEY *key);

/// Warnings about what validation ignores in the certificates of a path, target first, each with the subject
/// and the extension: issuers that are no CAs, too many CAs below one, name constraints, policy mappings, and
/// unknown critical extensions.
[[nodiscard]] std::vector<std::string> path_warnings(const X509_CERTIFICATES *path);

/// A time in UTC: YYYY-MM-DD, YYYY-MM-DD,hh:mm:ss or RFC 3339. Null for other texts.
[[nodiscard]] Time parse_time(const std::string &text);

/// The value of --at. Null for "". Throws Failure for a text that is no time.
[[nodiscard]] Time time_of_option(const std::string &text);

/// The values of --policy, by dotted text or registered name. Null for none. Throws Failure.
[[nodiscard]] Oids parse_policies(const std::vector<std::string> &texts);

/// The certificates to trust in files and folders, with warnings about those that were passed over and those
/// that no path can end with. Throws Failure.
[[nodiscard]] std::vector<LoadedCertificate> collect_anchors(const std::vector<std::string> &paths,
                                                             std::vector<std::string> &warnings);

}  // namespace tool
