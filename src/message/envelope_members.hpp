// Views of the members of enveloped, encrypted, authenticated and digested data, which make no records
// however many attributes or recipients there are.
#pragma once

#include "message/message_kind.hpp"

#include "der/element.hpp"

namespace tlx {

/// The tag of a member that is absent is 0.
struct MembersBefore {
    Element recipients;
    Element mac_algorithm;
    Element digest_algorithm;
};
/// What stands before the content. False when a member does not belong there, or is missing.
[[nodiscard]] bool read_members(MessageKind kind, Bytes members, MembersBefore &before) noexcept;

struct MembersAfter {
    Element attributes;  ///< that are authenticated
    Element code;        ///< that authenticates, or the digest
};
/// What stands after the content. False when a member does not belong there, or is missing.
[[nodiscard]] bool read_members(MessageKind kind, Bytes members, MembersAfter &after) noexcept;

enum class AttributeType : u8 { content_type, message_digest };
/// The one value of the one attribute of a type among attributes. False when there is none, or several.
[[nodiscard]] bool find_only_value(const Element &attributes, AttributeType type, Element &value) noexcept;

}  // namespace tlx
