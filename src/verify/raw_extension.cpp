#include "verify/raw_extension.hpp"

#include "verify/certificate_view.hpp"

namespace tlx {

// DER writes TRUE as FF.
Rule read_boolean(StrictCursor &in, u32 accepted, bool &value) noexcept {
    Bytes octet;
    if (!in.next(id::kBoolean, octet) || octet.size() != 1) return Rule::kBadBoolean;
    value = octet[0] != 0;
    const bool right = octet[0] == 0 || octet[0] == 0xFF || (accepted & kAcceptBoolean) != 0;
    return right ? Rule::kNone : Rule::kBadBoolean;
}

// Extension ::= SEQUENCE { extnID OBJECT IDENTIFIER, critical BOOLEAN DEFAULT FALSE, extnValue OCTET STRING }
Rule read_extension(StrictCursor &in, u32 accepted, RawExtension &extension) noexcept {
    StrictCursor members;
    if (!in.enter(id::kSequence, members) || !members.next(id::kOid, extension.oid) ||
        !is_oid(extension.oid)) {
        return Rule::kBadExtension;
    }
    extension.critical = false;
    if (members.is_next(id::kBoolean)) {
        if (const Rule rule = read_boolean(members, accepted, extension.critical); rule != Rule::kNone) {
            return rule;
        }
        if (!extension.critical && (accepted & kAcceptCriticalFalse) == 0) return Rule::kCriticalFalse;
    }
    const bool complete = members.next(id::kOctetString, extension.value) && members.at_end();
    return complete ? Rule::kNone : Rule::kBadExtension;
}

// AuthorityKeyIdentifier ::= SEQUENCE {
//   keyIdentifier [0] IMPLICIT KeyIdentifier OPTIONAL, authorityCertIssuer [1] IMPLICIT GeneralNames
//   OPTIONAL, authorityCertSerialNumber [2] IMPLICIT CertificateSerialNumber OPTIONAL }
bool read_authority_key_identifier(Bytes value, Bytes &key_identifier) noexcept {
    StrictCursor members;
    Bytes ignored;
    if (!open_whole(value, id::kSequence, members)) return false;
    if (members.is_next(id::context(0)) && !members.next(id::context(0), key_identifier)) return false;
    for (const u8 identifier : {id::context_constructed(1), id::context(2)}) {
        if (members.is_next(identifier) && !members.next(identifier, ignored)) return false;
    }
    return members.at_end();
}

}  // namespace tlx
