// What OCSP responses say of a certificate (RFC 6960, sections 3.2 and 4.2.2.2).
#include <tlxcrypto/digest.h>

#include "der/encoder.hpp"
#include "verify/purpose.hpp"
#include "verify/revocation.hpp"
#include "verify/strength.hpp"
#include "verify/strict_time.hpp"

namespace tlx {
namespace {

class ResponseJudge {
  public:
    ResponseJudge(const StatusQuestion &question, StatusAnswers &answers) noexcept
        : question_(question), answers_(answers), issuer_(question.issuer()) {}

    void run() noexcept;

  private:
    void ask(const AnswerEntry &answer) noexcept;
    void take(const AnswerView &answer) noexcept;
    bool is_for(const AnswerView &answer) const noexcept;
    bool is_digest(u32 digest_id, Bytes octets, Bytes digest) const noexcept;
    bool is_fresh(const AnswerView &answer) const noexcept;
    bool has_signer(const ResponseEntry &response) const noexcept;
    bool is_responder(const ResponseView &response, const StoreEntry &entry) const noexcept;
    bool signed_by_delegate(const ResponseView &response, const StoreEntry &entry) const noexcept;
    bool may_answer(const StoreEntry &delegate) const noexcept;

    const StatusQuestion &question_;
    StatusAnswers &answers_;
    const StoreEntry &issuer_;
};

void ResponseJudge::run() noexcept {
    question_.session.each_store([this](const Store &store) noexcept {
        const AnswerEntry *answer = store.status().find_answer(question_.certificate.serial);
        for (; answer != nullptr && question_.session.take_candidate(); answer = answer->next_of_serial) {
            ask(*answer);
        }
    });
}

void ResponseJudge::ask(const AnswerEntry &answer) noexcept {
    if (!is_for(answer.view)) return;
    if (!is_fresh(answer.view)) return answers_.take_fault(Rule::kStatusNotFresh);
    if (answer.view.has_unknown_critical || answer.response->view.has_unknown_critical) {
        return answers_.take_fault(Rule::kStatusCritical);
    }
    if (!has_signer(*answer.response)) return answers_.take_fault(Rule::kStatusSigner);
    take(answer.view);
}

void ResponseJudge::take(const AnswerView &answer) noexcept {
    switch (answer.status) {
        case AnswerView::Status::good:
            return answers_.take_good(TLX_REVOCATION_SOURCE_OCSP);
        case AnswerView::Status::revoked:
            return answers_.take_revoked(TLX_REVOCATION_SOURCE_OCSP, answer.reason, answer.revoked_at);
        default:
            return answers_.take_fault(Rule::kStatusUnknown);
    }
}

bool ResponseJudge::is_digest(u32 digest_id, Bytes octets, Bytes digest) const noexcept {
    u8 computed[TLX_DIGEST_MAX_LENGTH];
    u32 length = 0;
    const bool done =
        Digest(digest_id, octets.data(), static_cast<u32>(octets.size()), computed, &length) == 0;
    if (!done) question_.session.fail(Rule::kNoMemory);
    return done && same({computed, length}, digest);
}

bool ResponseJudge::is_for(const AnswerView &answer) const noexcept {
    u32 digest_id = 0;
    if (!same(answer.serial, question_.certificate.serial) || !read_digest(answer.digest, digest_id)) {
        return false;
    }
    Encoder name;
    name.primitive(id::kSequence, question_.certificate.issuer);
    if (!name.ok()) return question_.session.fail(Rule::kNoMemory);
    return is_digest(digest_id, name.bytes(), answer.name_digest) &&
           is_digest(digest_id, issuer_.view.key, answer.key_digest);
}

bool ResponseJudge::is_fresh(const AnswerView &answer) const noexcept {
    const Settings &settings = question_.settings;
    const std::int64_t until =
        answer.has_next_update ? answer.next_update : answer.this_update + settings.response_age;
    return is_between(settings.time, answer.this_update, until);
}

/// Whether the issuer signed a response, or one whom it lets answer: his certificate came with the response,
/// or has the responder's name.
bool ResponseJudge::has_signer(const ResponseEntry &response) const noexcept {
    const ResponseView &view = response.view;
    if (is_responder(view, issuer_) && is_signed_by(view, issuer_, question_.issuer_key, question_)) {
        return true;
    }
    for (const StoreEntry *entry : response.certificates) {
        if (signed_by_delegate(view, *entry)) return true;
    }
    bool found = false;
    if (view.responder_name.empty()) return false;
    question_.session.each_store([&](const Store &store) noexcept {
        const StoreEntry *entry = store.find_name(store.hash_of_name(view.responder_name));
        for (; !found && entry != nullptr && question_.session.take_candidate();
             entry = entry->next_of_name) {
            found = signed_by_delegate(view, *entry);
        }
    });
    return found;
}

// KeyHash ::= OCTET STRING, the SHA-1 digest of the public key; some write the key identifier
bool ResponseJudge::is_responder(const ResponseView &response, const StoreEntry &entry) const noexcept {
    if (!response.responder_name.empty()) {
        return are_equal_names(response.responder_name, entry.view.subject);
    }
    return same(response.responder_key, entry.view.subject_key) ||
           is_digest(TLX_DIGEST_SHA1, entry.view.key, response.responder_key);
}

bool ResponseJudge::signed_by_delegate(const ResponseView &response, const StoreEntry &entry) const noexcept {
    return entry.has_certificate && is_responder(response, entry) && may_answer(entry) &&
           is_signed_by(response, entry, entry.key, question_);
}

/// Whether the issuer itself issued a certificate for OCSP signing that is valid and, as far as lists say,
/// not revoked.
bool ResponseJudge::may_answer(const StoreEntry &delegate) const noexcept {
    const CertificateView &view = delegate.view;
    const Settings &settings = question_.settings;
    if (!may_sign_responses(view) || !view.unknown_critical.empty() ||
        !is_between(settings.time, view.not_before, view.not_after) ||
        !are_equal_names(view.issuer, issuer_.view.subject) ||
        check_strength(delegate.key, settings) != Rule::kNone ||
        !is_signed_by(view, issuer_, question_.issuer_key, question_)) {
        return false;
    }
    if (view.extensions[kOcspNoCheck].present) return true;
    const StatusQuestion own = {view,     question_.path,   question_.issuer_place, question_.issuer_key,
                                settings, question_.session};
    StatusAnswers answers;
    ask_lists(own, answers);
    return answers.state.state != TLX_REVOCATION_REVOKED;
}

}  // namespace

void ask_responses(const StatusQuestion &question, StatusAnswers &answers) noexcept {
    ResponseJudge(question, answers).run();
}

}  // namespace tlx
