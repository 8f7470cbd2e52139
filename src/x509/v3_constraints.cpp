// Extensions that limit a certification path.
#include <tlxpki/x509v3_constraints.h>

#include "x509/extension_records.hpp"

using namespace tlx;

namespace {

// BasicConstraints ::= SEQUENCE { cA BOOLEAN DEFAULT FALSE, pathLenConstraint INTEGER (0..MAX) OPTIONAL }
// cA is asked for, and written, even where DER leaves out a FALSE: see the header. A context-specific element
// is read as the path length, so that nobody's limit is lost.
constexpr auto kBasicConstraints =
    record<BASIC_CONSTRAINTS>(any_count(), boolean(&BASIC_CONSTRAINTS::cA),
                              optional<Integer>(&BASIC_CONSTRAINTS::pathLenConstraint).of_any_class());

/// [n] SkipCerts in the form that the decoder reads back.
struct SkipCerts : Field<POLICY_CONSTRAINTS, Integer> {
    void write(Encoder &out, const POLICY_CONSTRAINTS &record) const noexcept {
        const BIGINT *value = record.*member;
        if (value == nullptr) return;
        if (get_BIGINT_der_length(value) == 1) return out.integer(value, context_primitive(number));
        const auto wrapper = out.nest(context(number));
        out.integer(value);
    }
};

// PolicyConstraints ::= SEQUENCE {
//     requireExplicitPolicy [0] SkipCerts OPTIONAL, inhibitPolicyMapping [1] SkipCerts OPTIONAL }
// SkipCerts ::= INTEGER (0..MAX)
constexpr auto kPolicyConstraints = record<POLICY_CONSTRAINTS>(
    any_count(), SkipCerts{implicit<Integer>(0, &POLICY_CONSTRAINTS::requireExplicitPolicy)},
    SkipCerts{implicit<Integer>(1, &POLICY_CONSTRAINTS::inhibitPolicyMapping)});

/// Contents of one octet are an implicitly tagged number, those of any other length an explicitly tagged one.
/// False only when memory runs out: what cannot be read is passed over.
bool read_skip_certs(const Element &child, BIGINT *&member) noexcept {
    Bytes number = child.contents;
    if (number.size() != 1) {
        Element inner;
        if (!Cursor(child).next(TLX_TAG_INTEGER, inner) || inner.contents.empty()) return true;
        number = inner.contents;
    }
    free_BIGINT(member);
    member = decode_integer(number);
    return member != nullptr;
}

/// BaseDistance, of which 0 is the default and never written.
struct Minimum : Integer {
    static bool is_default(const BIGINT *value) noexcept { return is_BIGINT_zero(value) != 0; }
};

// GeneralSubtree ::= SEQUENCE {
//     base GeneralName, minimum [0] BaseDistance DEFAULT 0, maximum [1] BaseDistance OPTIONAL }
constexpr auto kGeneralSubtree = record<GENERAL_SUBTREE>(
    between(1, 3), field<Choice<GENERAL_NAME>>(&GENERAL_SUBTREE::base),
    implicit<Minimum>(0, &GENERAL_SUBTREE::minimum), implicit<Integer>(1, &GENERAL_SUBTREE::maximum));

// GeneralSubtrees ::= SEQUENCE SIZE (1..MAX) OF GeneralSubtree
using GeneralSubtrees = OneOrMore<Nested<GENERAL_SUBTREE>>;

// NameConstraints ::= SEQUENCE {
//     permittedSubtrees [0] GeneralSubtrees OPTIONAL, excludedSubtrees [1] GeneralSubtrees OPTIONAL }
constexpr auto kNameConstraints = record<NAME_CONSTRAINTS>(
    between(0, 2), implicit<GeneralSubtrees>(0, &NAME_CONSTRAINTS::permittedSubtrees),
    implicit<GeneralSubtrees>(1, &NAME_CONSTRAINTS::excludedSubtrees));

}  // namespace

TLX_DEFINE_RECORD(BASIC_CONSTRAINTS, kBasicConstraints)
TLX_DEFINE_RECORD_NEW(POLICY_CONSTRAINTS)
TLX_DEFINE_RECORD_LIFE(POLICY_CONSTRAINTS, kPolicyConstraints)
TLX_DEFINE_CODEC_ENCODE(POLICY_CONSTRAINTS, kPolicyConstraints)
TLX_DEFINE_RECORD_DECODER(POLICY_CONSTRAINTS)
TLX_DEFINE_RECORD_ENCODER(POLICY_CONSTRAINTS)
TLX_DEFINE_RECORD(GENERAL_SUBTREE, kGeneralSubtree)
TLX_DEFINE_LIST(GENERAL_SUBTREES, GENERAL_SUBTREE, GeneralSubtrees)
TLX_DEFINE_RECORD(NAME_CONSTRAINTS, kNameConstraints)

// By hand because a child goes by its tag number alone and is read in one of two ways, and because it fails
// for nothing but missing memory: policy constraints that others tag differently must not refuse a whole
// path.
u32 Codec<POLICY_CONSTRAINTS>::decode(const Element &element, POLICY_CONSTRAINTS **out) noexcept {
    OutRecord<POLICY_CONSTRAINTS> record(out, new_POLICY_CONSTRAINTS);
    if (!record) return 0x4745003C;
    clean_POLICY_CONSTRAINTS(record.get());
    Cursor children(element);
    Element child;
    while (children.next(child)) {
        bool read = true;
        if (child.number() == 0) read = read_skip_certs(child, record->requireExplicitPolicy);
        if (child.number() == 1) read = read_skip_certs(child, record->inhibitPolicyMapping);
        if (!read) return 0x4745003C;
    }
    record.commit();
    return 0;
}
