#include "verify/revocation.hpp"

#include "verify/purpose.hpp"
#include "verify/strength.hpp"

namespace tlx {
namespace {

/// The callback is asked for a response first, because that is small.
void fetch_and_ask(const StatusQuestion &question, StatusAnswers &answers) noexcept {
    for (const u32 kind : {TLX_FETCH_OCSP, TLX_FETCH_CRL}) {
        if (answers.state.state != TLX_REVOCATION_UNDETERMINED) return;
        if (!question.session.fetcher.ask(kind, question.certificate, &question.issuer().view)) continue;
        answers = {};
        ask_responses(question, answers);
        ask_lists(question, answers);
    }
}

}  // namespace

bool is_signed_by(const SignedView &what, const StoreEntry &signer, const PublicKey &key,
                  const StatusQuestion &question) noexcept {
    if (check_digest(what.algorithm, question.settings) != Rule::kNone) return false;
    Links &links = question.session.links;
    const Rule rule = &key == &signer.key ? links.verify(what, signer) : links.verify_with(what, key);
    if (rule == Rule::kSignatureBudget || rule == Rule::kNoMemory) question.session.fail(rule);
    return rule == Rule::kNone;
}

RevocationState find_revocation(const Path &path, u32 place, const PublicKey &issuer_key,
                                const Settings &settings, Session &session) noexcept {
    const CertificateView &certificate = path[place]->view;
    if (settings.revocation == RevocationMode::off) return {};
    if (certificate.extensions[kOcspNoCheck].present && may_sign_responses(certificate)) {
        return {TLX_REVOCATION_EXEMPT, TLX_REVOCATION_SOURCE_NONE, 0, 0, Rule::kNone};
    }
    const StatusQuestion question = {certificate, path, place - 1, issuer_key, settings, session};
    StatusAnswers answers;
    ask_responses(question, answers);
    ask_lists(question, answers);
    fetch_and_ask(question, answers);
    return answers.state;
}

}  // namespace tlx
