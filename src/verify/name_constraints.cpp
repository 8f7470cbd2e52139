#include "verify/name_constraints.hpp"

#include "verify/general_names.hpp"
#include "verify/name_match.hpp"

namespace tlx {
namespace {

constexpr std::size_t kAddressLength = 4;
constexpr std::size_t kAddressAndMaskLength = 8;

/// The subtrees of an extension.
struct Subtrees {
    Bytes permitted;
    Bytes excluded;
};

/// Ones, then zeros.
bool is_prefix_mask(Bytes mask) noexcept {
    bool ended = false;
    for (const u8 octet : mask) {
        for (u32 bit = 0x80; bit != 0; bit >>= 1) {
            const bool set = (octet & bit) != 0;
            if (set && ended) return false;
            ended = !set;
        }
    }
    return true;
}

// GeneralSubtree ::= SEQUENCE {
//   base GeneralName, minimum [0] IMPLICIT BaseDistance DEFAULT 0, maximum [1] IMPLICIT BaseDistance OPTIONAL
//   }
// RFC 5280 has no minimum but 0, and no maximum.
bool next_subtree(StrictCursor &in, GeneralNameView &base) noexcept {
    StrictCursor members;
    if (!in.enter(id::kSequence, members) || !next_general_name(members, kAddressAndMaskLength, base)) {
        return false;
    }
    if (base.form == NameForm::ip && !is_prefix_mask(base.value.subspan(base.value.size() / 2))) return false;
    return members.at_end();
}

bool are_subtrees(Bytes subtrees) noexcept {
    StrictCursor in(subtrees);
    GeneralNameView base;
    while (!in.at_end()) {
        if (!next_subtree(in, base)) return false;
    }
    return true;
}

// NameConstraints ::= SEQUENCE {
//   permittedSubtrees [0] IMPLICIT GeneralSubtrees OPTIONAL, excludedSubtrees [1] IMPLICIT GeneralSubtrees
//   OPTIONAL }
// GeneralSubtrees ::= SEQUENCE SIZE (1..MAX) OF GeneralSubtree
bool read_subtrees(Bytes value, Subtrees &subtrees) noexcept {
    StrictCursor members;
    if (!open_whole(value, id::kSequence, members) || members.at_end()) return false;
    Bytes *const lists[] = {&subtrees.permitted, &subtrees.excluded};
    for (u8 i = 0; i < 2; ++i) {
        if (!members.is_next(id::context_constructed(i))) continue;
        if (!members.next(id::context_constructed(i), *lists[i]) || lists[i]->empty()) return false;
    }
    return members.at_end();
}

/// One issuer's constraints, applied to one name after the other.
class Constraints {
  public:
    Constraints(const Subtrees &subtrees, bool critical, u32 &budget) noexcept
        : subtrees_(subtrees), critical_(critical), budget_(budget) {}

    Rule check(const GeneralNameView &name) noexcept {
        const Found permitted = search(subtrees_.permitted, name, Side::permitted);
        const Found excluded = search(subtrees_.excluded, name, Side::excluded);
        if (permitted == Found::too_many || excluded == Found::too_many) return Rule::kNameBudget;
        const bool is_constrained = permitted != Found::no_base || excluded != Found::no_base;
        if (!is_comparable(name.form)) {
            return is_constrained && critical_ ? Rule::kNameFormUnknown : Rule::kNone;
        }
        if (excluded == Found::within) return Rule::kNameExcluded;
        return permitted == Found::outside ? Rule::kNameNotPermitted : Rule::kNone;
    }

  private:
    enum class Found : u8 { no_base, outside, within, too_many };

    Found search(Bytes subtrees, const GeneralNameView &name, Side side) noexcept {
        Found found = Found::no_base;
        StrictCursor in(subtrees);
        GeneralNameView base;
        while (!in.at_end() && next_subtree(in, base)) {
            if (budget_ == 0) return Found::too_many;
            --budget_;
            if (base.form != name.form) continue;
            if (is_within(name, base.value, side)) return Found::within;
            found = Found::outside;
        }
        return found;
    }

    const Subtrees &subtrees_;
    bool critical_;
    u32 &budget_;
};

// emailAddress in the subject counts when there is no rfc822Name.
Rule check_subject_addresses(Constraints &constraints, Bytes subject) noexcept {
    Rule rule = Rule::kNone;
    static_cast<void>(has_address(subject, [&](Bytes address) noexcept {
        rule = constraints.check({NameForm::rfc822, address});
        return rule != Rule::kNone;
    }));
    return rule;
}

}  // namespace

Rule check_name_constraints(const CertificateView &issuer) noexcept {
    const ExtensionView &extension = issuer.extensions[kNameConstraints];
    Subtrees subtrees;
    if (!extension.present) return Rule::kNone;
    const bool right = read_subtrees(extension.value, subtrees) && are_subtrees(subtrees.permitted) &&
                       are_subtrees(subtrees.excluded);
    return right ? Rule::kNone : Rule::kBadNameConstraints;
}

// SubjectAltName ::= GeneralNames
// GeneralNames ::= SEQUENCE SIZE (1..MAX) OF GeneralName
Rule check_alternative_names(const CertificateView &certificate) noexcept {
    const ExtensionView &extension = certificate.extensions[kSubjectAltName];
    if (!extension.present) return Rule::kNone;
    StrictCursor names;
    if (!open_whole(extension.value, id::kSequence, names) || names.at_end()) {
        return Rule::kBadAlternativeNames;
    }
    GeneralNameView name;
    while (!names.at_end()) {
        if (!next_general_name(names, kAddressLength, name)) return Rule::kBadAlternativeNames;
    }
    return Rule::kNone;
}

Rule check_names(const CertificateView &issuer, const CertificateView &certificate, u32 &budget) noexcept {
    const ExtensionView &extension = issuer.extensions[kNameConstraints];
    Subtrees subtrees;
    if (!extension.present || !read_subtrees(extension.value, subtrees)) return Rule::kNone;
    Constraints constraints(subtrees, extension.critical, budget);
    if (!certificate.subject.empty()) {
        const Rule rule = constraints.check({NameForm::directory, certificate.subject});
        if (rule != Rule::kNone) return rule;
    }
    bool has_address = false;
    StrictCursor names;
    if (certificate.extensions[kSubjectAltName].present &&
        !open_whole(certificate.extensions[kSubjectAltName].value, id::kSequence, names)) {
        return Rule::kBadAlternativeNames;
    }
    GeneralNameView name;
    while (!names.at_end() && next_general_name(names, kAddressLength, name)) {
        has_address |= name.form == NameForm::rfc822;
        if (const Rule rule = constraints.check(name); rule != Rule::kNone) return rule;
    }
    return has_address ? Rule::kNone : check_subject_addresses(constraints, certificate.subject);
}

}  // namespace tlx
