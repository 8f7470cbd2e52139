// The checks of one signer.
#pragma once

#include <tlxpki/message_stream.h>

#include "message/certificate_lookup.hpp"
#include "message/running_digests.hpp"
#include "message/signer_path.hpp"
#include "message/signer_view.hpp"
#include "message/strict_path.hpp"
#include "verify/array.hpp"
#include "verify/settings.hpp"

namespace tlx {

/// What signers are verified with besides the content. Paths are by RFC 5280 with a store, by the compatible
/// rules with anchors, and unchecked without either.
struct SignerTrust {
    const X509_CERTIFICATES *pool = nullptr;
    VERIFY_SETTINGS settings = {};
    const VERIFY_STORE *store = nullptr;
    const TRUST_ANCHORS *compatible_anchors = nullptr;
    bool judges_strength = false;  ///< whether the profile of the settings is also that of the signers' own
                                   ///< algorithms
    bool stamps_count = true;      ///< whether the time stamps of signatures are verified
};

/// Content that is gone, and may be given once more.
struct ContentAgain {
    MESSAGE_CONTENT give = nullptr;
    void *context = nullptr;

    /// Without data when it is not available.
    [[nodiscard]] Bytes octets() const noexcept;
};

/// What the signers of one message share.
struct SignerChecks {
    explicit SignerChecks(Bytes octets) noexcept : content(octets), digests(octets) {}
    /// For content that came in pieces.
    SignerChecks() noexcept = default;

    Bytes content;
    bool has_content = true;      ///< false: the content is gone, but for its digests
    bool content_is_set = false;  ///< of content that is gone: it was one SET
    ContentDigests digests;
    const RunningDigests *keyed_digests = nullptr;  ///< of content that is gone: those of KCDSA
    ContentAgain again;                             ///< of content that is gone
    const OBJECT_IDENTIFIER *content_type = nullptr;
    const X509_CERTIFICATES *pool = nullptr;  ///< the certificates of signers
    CertificateLookup<IssuerAndSerialProperty> certificates;
    const StrictPaths *strict = nullptr;      ///< null without a store
    const SignerPaths *compatible = nullptr;  ///< null without anchors for the compatible rules
    const ASN1_TIME *time = nullptr;
    const SignerTrust *stamps = nullptr;  ///< what time stamps are verified with; null for not at all
    Settings strength;                    ///< the profile that algorithms of signers have to pass

    [[nodiscard]] bool has_paths() const noexcept { return strict != nullptr || compatible != nullptr; }
};

void free_signer_report(P7_SIGNER_REPORT *report) noexcept;
using OwnedSignerReport = std::unique_ptr<P7_SIGNER_REPORT, FreeWith<free_signer_report>>;

/// Makes the report of a signer; null when memory runs out.
[[nodiscard]] OwnedSignerReport check_signer(const SignerView &signer, SignerChecks &checks) noexcept;

}  // namespace tlx
