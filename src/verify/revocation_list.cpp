// What revocation lists say of a certificate (RFC 5280, section 6.3.3).
#include <algorithm>

#include "verify/revocation.hpp"
#include "verify/search.hpp"
#include "verify/strength.hpp"
#include "verify/strict_time.hpp"

namespace tlx {
namespace {

/// Signers whose own paths lead to further lists, at most.
constexpr u32 kMostSigners = 4;

struct Signer {
    const StoreEntry *entry = nullptr;
    const PublicKey *key = nullptr;
};

class ListJudge {
  public:
    ListJudge(const StatusQuestion &question, StatusAnswers &answers) noexcept
        : question_(question), answers_(answers), certificate_(question.certificate), path_(question.path) {}

    void run() noexcept;

  private:
    /// Calls a function with each list of an issuer.
    template <typename Visit>
    void each_list(Bytes issuer, Visit visit) const noexcept {
        question_.session.each_store([&](const Store &store) noexcept {
            const ListEntry *list = store.status().find_list(store.hash_of_name(issuer));
            for (; list != nullptr && question_.session.take_candidate(); list = list->next_of_issuer) {
                if (are_equal_names(list->view.issuer, issuer)) visit(*list);
            }
        });
    }

    void ask_point(const PointView &point) noexcept;
    void ask_issuer(const PointView &point, Bytes issuer) noexcept;
    void ask_list(const PointView &point, const ListEntry &list) noexcept;
    bool is_in_scope(const PointView &point, const CrlView &list) const noexcept;
    bool matches_point(const PointView &point, const CrlView &list) const noexcept;
    Rule check_list(const ListEntry &list, Signer &signer) const noexcept;
    const ListEntry *find_delta(const ListEntry &complete, const Signer &signer) const noexcept;
    bool fits(const CrlView &delta, const CrlView &complete) const noexcept;
    bool is_fresh(const CrlView &list) const noexcept;
    bool take_entry(const ListEntry &list) noexcept;

    bool find_signer(const ListEntry &list, Signer &signer) const noexcept;
    bool find_signer_outside(const ListEntry &list, bool with_key_identifier, Signer &signer) const noexcept;
    bool signed_by(const ListEntry &list, const StoreEntry &entry, const PublicKey &key) const noexcept;
    bool has_path(const StoreEntry &entry) const noexcept;
    bool search_signer(const StoreEntry &entry) const noexcept;
    bool is_in_path(const StoreEntry &entry) const noexcept;
    bool is_being_searched(const StoreEntry &entry) const noexcept;

    const StatusQuestion &question_;
    StatusAnswers &answers_;
    const CertificateView &certificate_;
    const Path &path_;
    u32 reasons_ = 0;  ///< that lists have covered
};

// A certificate without points is looked for in the lists of its issuer, and so is one whose points do not
// cover all reasons.
void ListJudge::run() noexcept {
    StrictCursor points;
    PointView point;
    if (open_whole(certificate_.extensions[kCrlDistributionPoints].value, id::kSequence, points)) {
        for (u32 i = 0; i < kMostPoints && !points.at_end() && next_point(points, point); ++i) {
            ask_point(point);
        }
    }
    if (reasons_ != kAllReasons) ask_point(PointView());
    if (reasons_ == kAllReasons) answers_.take_good(TLX_REVOCATION_SOURCE_CRL);
    if (reasons_ != 0 && reasons_ != kAllReasons) answers_.take_fault(Rule::kStatusNotAllReasons);
}

void ListJudge::ask_point(const PointView &point) noexcept {
    if (point.issuers.empty()) return ask_issuer(point, certificate_.issuer);
    each_directory_name(point.issuers, [&](Bytes issuer) noexcept { ask_issuer(point, issuer); });
}

void ListJudge::ask_issuer(const PointView &point, Bytes issuer) noexcept {
    each_list(issuer, [&](const ListEntry &list) noexcept { ask_list(point, list); });
}

// (b) to (l)
void ListJudge::ask_list(const PointView &point, const ListEntry &list) noexcept {
    if (list.view.is_delta || !is_in_scope(point, list.view)) return;
    Signer signer;
    if (const Rule rule = check_list(list, signer); rule != Rule::kNone) {
        return answers_.take_fault(rule);
    }
    const ListEntry *delta = find_delta(list, signer);
    const bool is_released = delta != nullptr && take_entry(*delta);
    if (!is_released) static_cast<void>(take_entry(list));
    reasons_ |= point.reasons & list.view.point.reasons;
}

/// Takes what an entry for the certificate says. True when it releases the certificate from being on hold.
bool ListJudge::take_entry(const ListEntry &list) noexcept {
    RevokedView entry;
    if (!list.revoked.find(certificate_.issuer, certificate_.serial, entry)) return false;
    if (list.view.is_delta && entry.reason == kRemoveFromCrl) return true;
    answers_.take_revoked(TLX_REVOCATION_SOURCE_CRL, entry.reason, entry.time);
    return false;
}

// (b)
bool ListJudge::is_in_scope(const PointView &point, const CrlView &list) const noexcept {
    const bool is_own = point.issuers.empty();
    if (!is_own && !list.point.is_indirect) return false;
    if (list.point.only_attributes || (certificate_.is_ca ? list.point.only_users : list.point.only_cas)) {
        return false;
    }
    return matches_point(point, list);
}

bool ListJudge::matches_point(const PointView &point, const CrlView &list) const noexcept {
    if (!list.point.name.present) return true;
    const Rule rule = match_points(point, certificate_.issuer, list.point.name, list.issuer);
    if (rule == Rule::kNoMemory) question_.session.fail(rule);
    return rule == Rule::kNone;
}

// (a), (f) and (g)
Rule ListJudge::check_list(const ListEntry &list, Signer &signer) const noexcept {
    const CrlView &view = list.view;
    if (!is_fresh(view)) return Rule::kStatusNotFresh;
    if (view.has_unknown_critical) return Rule::kStatusCritical;
    return find_signer(list, signer) ? Rule::kNone : Rule::kStatusSigner;
}

// (c) and (h): the newest delta that fits, signed with the same key.
const ListEntry *ListJudge::find_delta(const ListEntry &complete, const Signer &signer) const noexcept {
    const ListEntry *newest = nullptr;
    const CrlView &base = complete.view;
    each_list(base.issuer, [&](const ListEntry &list) noexcept {
        if (!fits(list.view, base)) return;
        if (newest != nullptr && is_at_most(list.view.number, newest->view.number)) return;
        if (signed_by(list, *signer.entry, *signer.key)) newest = &list;
    });
    return newest;
}

bool ListJudge::fits(const CrlView &delta, const CrlView &complete) const noexcept {
    return delta.is_delta && delta.has_number && complete.has_number &&
           same(delta.point_octets, complete.point_octets) &&
           same(delta.authority_key, complete.authority_key) &&
           is_at_most(delta.base_number, complete.number) && is_at_most(complete.number, delta.number) &&
           !delta.has_unknown_critical && is_fresh(delta);
}

bool ListJudge::is_fresh(const CrlView &list) const noexcept {
    return list.has_next_update && is_between(question_.settings.time, list.this_update, list.next_update);
}

bool ListJudge::signed_by(const ListEntry &list, const StoreEntry &entry,
                          const PublicKey &key) const noexcept {
    const CertificateView &view = entry.view;
    if (entry.has_certificate && view.extensions[kKeyUsage].present && (view.key_usage & kCrlSign) == 0) {
        return false;
    }
    // A key with inherited parameters is another one below another issuer.
    const bool is_own_key = &key == &entry.key && !inherits_parameters(entry);
    if (is_own_key && list.signer.is(view.key_info)) {
        return check_digest(list.view.algorithm, question_.settings) == Rule::kNone;
    }
    const bool verifies = is_signed_by(list.view, entry, key, question_);
    if (verifies && is_own_key) list.signer.remember(view.key_info);
    return verifies;
}

/// Finds who signed a list: first among the issuers in the path, then elsewhere, those with the key
/// identifier that the list names before others.
bool ListJudge::find_signer(const ListEntry &list, Signer &signer) const noexcept {
    for (u32 place = question_.issuer_place + 1; place-- > 0;) {
        const StoreEntry &entry = *path_[place];
        const PublicKey &key = place == question_.issuer_place ? question_.issuer_key : entry.key;
        if (!are_equal_names(entry.view.subject, list.view.issuer) || !signed_by(list, entry, key)) continue;
        signer = {&entry, &key};
        return true;
    }
    return find_signer_outside(list, true, signer) || find_signer_outside(list, false, signer);
}

bool ListJudge::find_signer_outside(const ListEntry &list, bool with_key_identifier,
                                    Signer &signer) const noexcept {
    Session &session = question_.session;
    Array<const StoreEntry *> entries;
    session.each_store([&](const Store &store) noexcept {
        const StoreEntry *entry = store.find_name(store.hash_of_name(list.view.issuer));
        for (; entry != nullptr && session.take_candidate(); entry = entry->next_of_name) {
            const bool has_identifier =
                !list.view.authority_key.empty() && same(entry->view.subject_key, list.view.authority_key);
            if (has_identifier != with_key_identifier) continue;
            if (!entries.append(entry)) session.fail(Rule::kNoMemory);
        }
    });
    for (const StoreEntry *entry : entries) {
        if (is_in_path(*entry) || !are_equal_names(entry->view.subject, list.view.issuer)) continue;
        if (!signed_by(list, *entry, entry->key) || !has_path(*entry)) continue;
        signer = {entry, &entry->key};
        return true;
    }
    return false;
}

bool ListJudge::is_in_path(const StoreEntry &entry) const noexcept {
    const auto *end = path_.begin() + question_.issuer_place + 1;
    return std::find(path_.begin(), end, &entry) != end;
}

bool ListJudge::is_being_searched(const StoreEntry &entry) const noexcept {
    const auto &signers = question_.session.signers;
    return std::find(signers.begin(), signers.end(), &entry) != signers.end();
}

/// Whether a signer has a path of its own to the same anchor. A list may tell of its own signer, so one whose
/// path is being searched counts.
bool ListJudge::has_path(const StoreEntry &entry) const noexcept {
    Session &session = question_.session;
    if (is_being_searched(entry)) return true;
    if (session.signers.size() == kMostSigners) return false;
    for (const SearchedSigner &known : session.searched) {
        if (known.entry == &entry && known.anchor == path_[0]) return known.has_path;
    }
    if (!session.signers.append(&entry)) return session.fail(Rule::kNoMemory);
    const bool found = search_signer(entry);
    session.signers.shrink(session.signers.size() - 1);
    // Inside another search the answer may rest on that one's signer.
    if (session.signers.empty() && !session.searched.append({&entry, path_[0], found})) {
        return session.fail(Rule::kNoMemory);
    }
    return found;
}

bool ListJudge::search_signer(const StoreEntry &entry) const noexcept {
    const Settings &from = question_.settings;
    Settings settings;
    settings.time = from.time;
    settings.profile = from.profile;
    settings.least_rsa_bits = from.least_rsa_bits;
    settings.anchor_rules = from.anchor_rules;
    settings.budget = from.budget;
    settings.response_age = from.response_age;
    const bool is_required = from.revocation != RevocationMode::present;
    settings.revocation = is_required ? RevocationMode::path : RevocationMode::present;
    SearchResult found;
    search_path(entry, path_[0], settings, question_.session, found);
    return found.verdict.findings.empty() && !found.verdict.out_of_memory;
}

}  // namespace

void ask_lists(const StatusQuestion &question, StatusAnswers &answers) noexcept {
    ListJudge(question, answers).run();
}

}  // namespace tlx
