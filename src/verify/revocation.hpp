// Revocation of one certificate of a path (RFC 5280, section 6.3; RFC 6960).
#pragma once

#include "verify/validate.hpp"

namespace tlx {

/// What lists, responses and the callback say of a certificate of a path.
/// @param place      not 0
/// @param issuer_key that of the certificate above, with its parameters
[[nodiscard]] RevocationState find_revocation(const Path &path, u32 place, const PublicKey &issuer_key,
                                              const Settings &settings, Session &session) noexcept;

/// A certificate whose status is asked for, and who may answer.
struct StatusQuestion {
    const CertificateView &certificate;
    const Path &path;
    u32 issuer_place;  ///< of the certificate's issuer in the path
    const PublicKey &issuer_key;
    const Settings &settings;
    Session &session;

    [[nodiscard]] const StoreEntry &issuer() const noexcept { return *path[issuer_place]; }
};

/// Gathers what is said. A revocation counts most, then that a certificate is good, then the first reason why
/// nothing answers.
struct StatusAnswers {
    RevocationState state = {TLX_REVOCATION_UNDETERMINED, TLX_REVOCATION_SOURCE_NONE, 0, 0, Rule::kNoStatus};

    void take_good(u32 source) noexcept {
        if (state.state == TLX_REVOCATION_UNDETERMINED) {
            state = {TLX_REVOCATION_GOOD, source, 0, 0, Rule::kNone};
        }
    }
    void take_revoked(u32 source, u32 reason, std::int64_t time) noexcept {
        if (state.state != TLX_REVOCATION_REVOKED) {
            state = {TLX_REVOCATION_REVOKED, source, reason, time, Rule::kNone};
        }
    }
    void take_fault(Rule rule) noexcept {
        if (state.why == Rule::kNoStatus) state.why = rule;
    }
};

/// Asks the lists of all stores (section 6.3.3).
void ask_lists(const StatusQuestion &question, StatusAnswers &answers) noexcept;
/// Asks the responses of all stores (RFC 6960, section 3.2).
void ask_responses(const StatusQuestion &question, StatusAnswers &answers) noexcept;

/// Verifies a signature of a list or a response with a key that its maker may have: whether it verifies, and
/// the algorithm is strong enough.
[[nodiscard]] bool is_signed_by(const SignedView &what, const StoreEntry &signer, const PublicKey &key,
                                const StatusQuestion &question) noexcept;

}  // namespace tlx
