// Algorithms and keys of records, as verification reads them from octets.
#pragma once

#include "keyinfo/key_records.hpp"
#include "verify/public_key.hpp"

namespace tlx {

/// An algorithm identifier with the octets that it is written with.
class EncodedAlgorithm {
  public:
    /// kNone; kUnknownAlgorithm for a record that cannot be written, kBadParameters for parameters that are
    /// not DER, kNoMemory.
    [[nodiscard]] Rule read(const X509_ALGO_IDENTIFIER *identifier) noexcept;
    [[nodiscard]] const AlgorithmView &view() const noexcept { return view_; }

  private:
    Encoder encoded_;
    AlgorithmView view_;
};

/// Makes the key of a record, and keeps nothing of the record: a rule of make_key() or check_key().
[[nodiscard]] Rule read_public_key(const X509_PUBKEY *pubkey, PublicKey &key) noexcept;

}  // namespace tlx
