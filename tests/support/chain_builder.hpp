// Makes certificates and chains of them; a test can change every member and every extension.
#pragma once

#include <tlxpki/cpv.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/held.hpp"
#include "support/octets.hpp"
#include "support/policy_tree.hpp"

namespace tlx_test {

using Cert = Held<free_X509_CERT>;
using Certificates = Held<free_X509_CERTIFICATES>;
using Anchors = Held<free_TRUST_ANCHORS>;
using Policies = Held<free_OBJECT_IDENTIFIERS>;
using Kcdsa = Held<free_KCDSA>;
using Tree = Held<free_node_LIST>;

/// A key of the published vectors, by its section in data/kcdsa.txt.
Kcdsa kcdsa_key(const std::string &section);

/// Keys to sign with: RSA-1024 by number, and one KCDSA key. Each is made once and never freed.
constexpr unsigned kRsaKeys = 4;
constexpr unsigned kKcdsaKey = kRsaKeys;
const ASYMMETRIC_KEY *signing_key(unsigned number);

struct ExtensionSpec {
    std::string name;   ///< in the registry
    std::string value;  ///< elements in the notation of der_text.hpp
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
    std::string from = "2020-01-01,00:00:00";
    std::string until = "2099-12-31,23:59:59";
    std::optional<std::vector<ExtensionSpec>> extensions = std::vector<ExtensionSpec>();

    /// Adds an extension, or gives it another value.
    CertSpec &with(const std::string &name, std::string_view value, bool critical = false);
    CertSpec &with(const AuthorityKeyId &authority);
    /// Of dotted texts with spaces between them.
    CertSpec &policies(const std::string &dotted);
    CertSpec &without(const std::string &name);

    [[nodiscard]] Cert make() const;
};
using Chain = std::vector<CertSpec>;

/// A path of this many certificates that is valid under the default settings: "User", "CA 2", "CA 1", "Root".
/// Key identifiers are the numbers from 01 at the root on, with serial numbers likewise. The policy
/// is 1.2.3.1.
Chain valid_chain(unsigned length);

/// A valid chain after edits, and what they set besides: "0 signer=3; 1 -keyUsage; * policies=1.1 1.2;
/// most=5". A certificate's place, or "*" for all, stands before a member of CertSpec, "self-issued",
/// "authority=key, name,serial" or the name of an extension, with "!" for a critical one and "-" to take it
/// away. "take=0 1 1 2" puts certificates of the chain in a new order. Settings: "explicit", "inhibit",
/// "most", "time"; anything else is for the test.
struct EditedChain {
    EditedChain(unsigned length, const std::string &edits);
    [[nodiscard]] CPV_SETTINGS settings() const;

    Chain chain;
    std::map<std::string, std::string> values = {
        {"explicit", "255"}, {"inhibit", "0"}, {"most", "3"}, {"anchors", "last"}};
    Held<free_ASN1_TIME> time;
};

/// The parts of a text between separators, without spaces around them.
std::vector<std::string> split(const std::string &text, char separator);

Certificates make(const Chain &chain);
/// Anchors for the given certificates.
Anchors anchors_of(const Chain &certificates);
Policies policy_list(const std::string &dotted);

/// "User CA Root"
std::string subjects_of(const X509_CERTIFICATES *path);

}  // namespace tlx_test
