#include "message/envelope_members.hpp"

#include <algorithm>

#include "der/encoder.hpp"

using namespace tlx;

namespace {

// 1.2.840.113549.1.9.3 and 1.2.840.113549.1.9.4
constexpr u8 kContentType[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x09, 0x03};
constexpr u8 kMessageDigest[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x09, 0x04};

bool read(Cursor &members, u8 tag, Element &member) noexcept {
    return !members.at_end() && members.peek_tag() == tag && members.next(member);
}

bool read_optional(Cursor &members, u8 tag, Element &member) noexcept {
    return members.at_end() || members.peek_tag() != tag || members.next(member);
}

/// BER may construct it.
bool read_string(Cursor &members, Element &member) noexcept {
    return read(members, TLX_TAG_OCTET_STRING, member) ||
           read(members, TLX_TAG_OCTET_STRING | kConstructed, member);
}

// recipientInfos SET, after originatorInfo [0] OPTIONAL
bool read_recipients(Cursor &members, MembersBefore &before) noexcept {
    Element originator;
    return read_optional(members, context(0), originator) && read(members, kSet, before.recipients);
}

/// Attribute ::= SEQUENCE { attrType OBJECT IDENTIFIER, attrValues SET OF AttributeValue }
bool read_attribute(Cursor &attributes, Element &type, Element &values) noexcept {
    Element attribute;
    if (!read(attributes, kSequence, attribute)) return false;
    Cursor members(attribute);
    return read(members, TLX_TAG_OBJECT_IDENTIFIER, type) && read(members, kSet, values) && members.at_end();
}

}  // namespace

bool tlx::read_members(MessageKind kind, Bytes members, MembersBefore &before) noexcept {
    Cursor cursor(members);
    Element version;
    if (!read(cursor, TLX_TAG_INTEGER, version)) return false;
    switch (kind) {
        case MessageKind::enveloped_data:
        case MessageKind::auth_enveloped_data:
            return read_recipients(cursor, before) && cursor.at_end();
        case MessageKind::authenticated_data:
            return read_recipients(cursor, before) && read(cursor, kSequence, before.mac_algorithm) &&
                   read_optional(cursor, context(1), before.digest_algorithm) && cursor.at_end();
        case MessageKind::digested_data:
            return read(cursor, kSequence, before.digest_algorithm) && cursor.at_end();
        default:
            return cursor.at_end();
    }
}

bool tlx::read_members(MessageKind kind, Bytes members, MembersAfter &after) noexcept {
    Cursor cursor(members);
    Element others;
    switch (kind) {
        case MessageKind::auth_enveloped_data:
            return read_optional(cursor, context(1), after.attributes) && read_string(cursor, after.code) &&
                   read_optional(cursor, context(2), others) && cursor.at_end();
        case MessageKind::authenticated_data:
            return read_optional(cursor, context(2), after.attributes) && read_string(cursor, after.code) &&
                   read_optional(cursor, context(3), others) && cursor.at_end();
        case MessageKind::digested_data:
            return read_string(cursor, after.code) && cursor.at_end();
        default:
            return read_optional(cursor, context(1), others) && cursor.at_end();
    }
}

bool tlx::find_only_value(const Element &attributes, AttributeType type, Element &value) noexcept {
    const Bytes wanted = type == AttributeType::content_type ? Bytes(kContentType) : Bytes(kMessageDigest);
    bool found = false;
    for (Cursor cursor(attributes); !cursor.at_end();) {
        Element own;
        Element values;
        if (!read_attribute(cursor, own, values)) return false;
        if (!std::ranges::equal(own.contents, wanted)) continue;
        Cursor inside(values);
        if (found || !inside.next(value) || !inside.at_end()) return false;
        found = true;
    }
    return found;
}
