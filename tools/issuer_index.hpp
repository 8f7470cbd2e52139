// Finds the issuers of certificates in a pool.
#pragma once

#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "owned.hpp"

namespace tool {

/// A name's encoding, for comparisons; "" when it has none.
[[nodiscard]] std::string key_of(const X509_NAME *name);

/// Puts certificates before their issuers. Building takes the first certificate that fits, and the issuer's
/// own issuer also fits: Korean certificates name it beside the key identifier.
void put_lower_first(std::vector<X509_CERT *> &certificates);

/// The place of a certificate that is in no pool.
constexpr std::size_t kNoPlace = static_cast<std::size_t>(-1);

/// An index of a pool, made in one pass for any number of targets. It refers to the certificates only.
class IssuerIndex {
  public:
    void build(const std::vector<X509_CERT *> &pool);

    /// The place in the pool of the certificate that build_certPath() takes as issuer, which is the first
    /// that fits the authority key identifier in one of three ways; kNoPlace when there is none.
    [[nodiscard]] std::size_t issuer_of(const X509_CERT *cert) const;

    /// Whether a certificate of the pool has this subject.
    [[nodiscard]] bool has_subject(const X509_NAME *name) const;

  private:
    /// The first certificate with each value.
    using Places = std::unordered_map<std::string, std::size_t>;

    [[nodiscard]] std::size_t by_key_prefix(const OCTET_STRING *wanted) const;

    Places by_key_;
    std::set<std::size_t> key_lengths_;  ///< of the identifiers in by_key_
    Places by_serial_;
    Places by_subject_;
};

}  // namespace tool
