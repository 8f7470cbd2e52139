// How the records of extensions are read and written inside other records.
#pragma once

#include <tlxpki/x509v3.h>

#include "der/record.hpp"

TLX_DECLARE_CODEC(OTHERNAME);
TLX_DECLARE_CODEC(EDIPARTYNAME);
TLX_DECLARE_CODEC(GENERAL_NAME);
TLX_DECLARE_CODEC(BASIC_CONSTRAINTS);
TLX_DECLARE_CODEC(POLICY_CONSTRAINTS);
TLX_DECLARE_CODEC(GENERAL_SUBTREE);
TLX_DECLARE_CODEC(NAME_CONSTRAINTS);
TLX_DECLARE_CODEC(AUTHORITY_KEYID);
TLX_DECLARE_CODEC(NOTICE_REFERENCE);
TLX_DECLARE_CODEC(USER_NOTICE);
TLX_DECLARE_CODEC(POLICY_QUALIFIER_INFO);
TLX_DECLARE_CODEC(POLICY_INFO);
TLX_DECLARE_CODEC(POLICY_MAPPING);
TLX_DECLARE_CODEC(DIST_POINT_NAME);
TLX_DECLARE_CODEC(DIST_POINT);
TLX_DECLARE_CODEC(issuing_DIST_POINT);
TLX_DECLARE_CODEC(ACCESS_DESCRIPTION);
TLX_DECLARE_CODEC(VID);
TLX_DECLARE_CODEC(KISA_IDENTIFY_DATA);

namespace tlx {

// GeneralNames ::= SEQUENCE SIZE (1..MAX) OF GeneralName
using GeneralNames = OneOrMore<Choice<GENERAL_NAME>>;

// OBJECT_IDENTIFIERS ::= SEQUENCE OF OBJECT IDENTIFIER
using ObjectIdentifiers = List<Oid>;

/// A text of any universal string type, which the record keeps.
struct Text : Verbatim {
    static u32 decode(const Element &element, type **out) noexcept {
        constexpr u8 kVisibleString = 26;
        constexpr u8 kUniversalString = 28;
        switch (element.tag) {
            case TLX_TAG_UTF8_STRING:
            case TLX_TAG_PRINTABLE_STRING:
            case TLX_TAG_T61_STRING:
            case TLX_TAG_IA5_STRING:
            case kVisibleString:
            case kUniversalString:
            case TLX_TAG_BMP_STRING:
                return Verbatim::decode(element, out);
            default:
                return kFieldFailed;
        }
    }
};

}  // namespace tlx
