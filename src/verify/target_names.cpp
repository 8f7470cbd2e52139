// Names that the target has to have: hosts (RFC 9525), IP addresses and mailboxes.
#include <algorithm>

#include "verify/general_names.hpp"
#include "verify/name_match.hpp"
#include "verify/purpose.hpp"

namespace tlx {
namespace {

/// Letters, digits, hyphens and underscores in labels of 1 to 63 octets; an A-label for any other character.
bool is_host_name(Bytes host) noexcept {
    constexpr std::size_t kLongestHost = 253;
    constexpr std::size_t kLongestLabel = 63;
    if (host.empty() || host.size() > kLongestHost) return false;
    std::size_t label = 0;
    for (const u8 octet : host) {
        const u8 letter = octet | 0x20;
        const bool right = (letter >= 'a' && letter <= 'z') || (octet >= '0' && octet <= '9') ||
                           octet == '-' || octet == '_';
        if (octet == '.' ? label == 0 : !right || label == kLongestLabel) return false;
        label = octet == '.' ? 0 : label + 1;
    }
    return label > 0;
}

/// A presented name matches when it is equal, or its first label is "*" and stands for one label (RFC 9525,
/// section 6.3). At least two labels follow the asterisk.
bool matches_host(Bytes presented, Bytes host) noexcept {
    if (presented.empty() || presented.front() != '*') return same_ignoring_case(presented, host);
    const Bytes tail = presented.subspan(1);
    const auto dot = std::find(host.begin(), host.end(), '.');
    const Bytes below(dot, host.end());
    const bool has_two_labels = std::count(tail.begin(), tail.end(), '.') >= 2;
    return has_two_labels && tail.front() == '.' && dot != host.begin() && same_ignoring_case(tail, below);
}

/// The local part is compared as it is, the host without regard to case.
bool is_same_mailbox(Bytes a, Bytes b) noexcept {
    const auto at = std::find(a.begin(), a.end(), '@');
    const auto place = static_cast<std::size_t>(at - a.begin());
    return a.size() == b.size() && same(a.first(place), b.first(place)) &&
           same_ignoring_case(a.subspan(place), b.subspan(place));
}

/// Whether a certificate has an alternative name of a form for which a condition holds. Says also whether it
/// has any of the form.
template <typename Condition>
bool has_name(const CertificateView &certificate, NameForm form, Condition condition,
              bool &has_form) noexcept {
    constexpr std::size_t kAddressLength = 4;
    StrictCursor names;
    GeneralNameView name;
    if (!open_whole(certificate.extensions[kSubjectAltName].value, id::kSequence, names)) return false;
    bool found = false;
    while (!names.at_end() && next_general_name(names, kAddressLength, name)) {
        if (name.form != form) continue;
        has_form = true;
        found |= condition(name.value);
    }
    return found;
}

/// In an emailAddress of the subject.
bool has_subject_mailbox(Bytes subject, Bytes mailbox) noexcept {
    return has_address(subject, [&](Bytes address) noexcept { return is_same_mailbox(address, mailbox); });
}

}  // namespace

void judge_target_names(const Path &path, const Settings &settings, Verdict &verdict) noexcept {
    const u32 last = path.size() - 1;
    const CertificateView &target = path[last]->view;
    bool has_form = false;
    if (!settings.host.empty()) {
        const auto matches = [&](Bytes name) noexcept { return matches_host(name, settings.host); };
        const bool right = is_host_name(settings.host);
        if (!right) verdict.note(last, Rule::kBadHost);
        if (right && !has_name(target, NameForm::dns, matches, has_form)) {
            verdict.note(last, Rule::kOtherHost);
        }
    }
    if (!settings.address.empty()) {
        const auto matches = [&](Bytes address) noexcept { return same(address, settings.address); };
        if (!has_name(target, NameForm::ip, matches, has_form)) verdict.note(last, Rule::kOtherAddress);
    }
    if (!settings.mailbox.empty()) {
        has_form = false;
        const auto matches = [&](Bytes mailbox) noexcept {
            return is_same_mailbox(mailbox, settings.mailbox);
        };
        const bool found = has_name(target, NameForm::rfc822, matches, has_form) ||
                           (!has_form && has_subject_mailbox(target.subject, settings.mailbox));
        if (!found) verdict.note(last, Rule::kOtherMailbox);
    }
}

}  // namespace tlx
