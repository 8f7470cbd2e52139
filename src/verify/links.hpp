// Signatures of certificates, lists and responses, each verified once in a verification.
#pragma once

#include "verify/settings.hpp"
#include "verify/store.hpp"

namespace tlx {

class Links {
  public:
    explicit Links(u32 budget) noexcept : left_(budget) {}

    /// Verifies what is signed with an issuer's key: kNone, a rule of signatures, or kSignatureBudget. It has
    /// to stay where it is as long as this object.
    [[nodiscard]] Rule verify(const SignedView &what, const StoreEntry &issuer) noexcept;
    /// The same with a key that stands for the issuer's, because that has inherited its parameters.
    [[nodiscard]] Rule verify_with(const SignedView &what, const PublicKey &key) noexcept;

  private:
    struct Known {
        const SignedView *what;
        const StoreEntry *issuer;
        Rule rule;
    };

    Array<Known> known_;
    u32 left_;
};

/// Whether the parameters of an entry's key are those of its issuer's key.
[[nodiscard]] inline bool inherits_parameters(const StoreEntry &entry) noexcept {
    return entry.key.kind == KeyKind::dsa && entry.key.dsa == nullptr;
}

}  // namespace tlx
