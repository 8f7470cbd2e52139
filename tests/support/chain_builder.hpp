// Makes certificates and chains of them; a test can change every member and every extension.
#pragma once

#include <tlxpki/cpv.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/octets.hpp"
#include "trust/trust_records.hpp"

namespace tlx_test {

using Cert = tlx::Owned<X509_CERT>;
using Certificates = tlx::OwnedCertificates;
using Anchors = std::unique_ptr<TRUST_ANCHORS, tlx::FreeWith<free_TRUST_ANCHORS>>;
using Policies = std::unique_ptr<OBJECT_IDENTIFIERS, tlx::FreeWith<free_OBJECT_IDENTIFIERS>>;
using Kcdsa = std::unique_ptr<KCDSA, tlx::FreeWith<free_KCDSA>>;
using Tree = tlx::Owned<node_LIST>;

namespace extension {
constexpr const char *kSubjectKeyId = "2.5.29.14";
constexpr const char *kKeyUsage = "2.5.29.15";
constexpr const char *kBasicConstraints = "2.5.29.19";
constexpr const char *kPolicies = "2.5.29.32";
constexpr const char *kAuthorityKeyId = "2.5.29.35";
constexpr const char *kPolicyConstraints = "2.5.29.36";
constexpr const char *kInhibitAnyPolicy = "2.5.29.54";
}  // namespace extension

constexpr const char *kAnyPolicy = "2.5.29.32.0";
/// The policy that the certificates of valid_chain() have.
constexpr const char *kPolicy = "1.2.3.1";

/// A key of the published vectors, by its section in data/kcdsa.txt.
Kcdsa kcdsa_key(const std::string &section);

/// Keys to sign with: RSA-1024 by number, and one KCDSA key. Each is made once and never freed.
constexpr unsigned kRsaKeys = 4;
constexpr unsigned kKcdsaKey = kRsaKeys;
const ASYMMETRIC_KEY *signing_key(unsigned number);

struct ExtensionSpec {
    std::string id;
    Octets value;
    bool critical = false;
};

/// The members of an authority key identifier; empty ones are omitted.
struct AuthorityKeyId {
    std::string key_id;  ///< hexadecimal; a space for one without octets
    std::string issuer;  ///< common name of the directoryName
    std::string serial;  ///< hexadecimal
};

/// The members of a certificate.
struct CertSpec {
    std::string subject;  ///< common names
    std::string issuer;
    std::string serial = "01";
    std::uint8_t version = 2;
    unsigned key = 0;  ///< of signing_key()
    unsigned signer = 0;
    bool is_signed = true;
    std::string not_before = "2020-01-01,00:00:00";
    std::string not_after = "2099-12-31,23:59:59";
    std::optional<std::vector<ExtensionSpec>> extensions = std::vector<ExtensionSpec>();

    /// Adds an extension, or gives it another value: elements as text (der_text.hpp).
    CertSpec &with(const char *id, std::string_view value, bool critical = false);
    CertSpec &with(const AuthorityKeyId &authority);
    CertSpec &policies(const std::vector<const char *> &dotted, bool critical = false);
    CertSpec &without(const char *id);

    [[nodiscard]] Cert make() const;

  private:
    CertSpec &set(const char *id, Octets value, bool critical);
};
using Chain = std::vector<CertSpec>;

/// A path of this many certificates that is valid under the default settings: "User", "CA 2", "CA 1", "Root".
/// Key identifiers are the numbers from 01 at the root on, with serial numbers likewise.
Chain valid_chain(unsigned length);

Certificates make(const Chain &chain);
/// Anchors for the given certificates.
Anchors anchors_of(const Chain &certificates);
Policies policy_list(const std::vector<const char *> &dotted);

/// "User CA Root"
std::string subjects_of(const X509_CERTIFICATES *path);
/// The policies of a list: "1.2.3.1 1.2.3.2"; "null" without one.
std::string text_of_policies(const OBJECT_IDENTIFIERS *list);
/// The tree in one line, each level after its depth: "0: 2.5.29.32.0; 1: 1.2.3.1! 1.2.3.2". "!" means
/// critical. The line also shows a level without its marker, a wrong count of children and a foreign parent.
std::string text_of_tree(const node_LIST *tree);

}  // namespace tlx_test
