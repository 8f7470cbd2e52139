// Values as text for people, always in UTF-8.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "owned.hpp"

namespace tool {

using Octets = std::span<const uint8_t>;

/// Text that is safe to print: control characters, marks that reorder text and octets that are not UTF-8
/// become \u{..} or \x.. escapes. Line breaks and all spaces but the plain one also count as control
/// characters here.
[[nodiscard]] std::string printable(std::string_view utf8);

/// Upper-case digits without anything between them.
[[nodiscard]] std::string hex(Octets octets);

/// "0x" and eight digits.
[[nodiscard]] std::string code_text(uint32_t code);

/// Whether octets are UTF-8.
[[nodiscard]] bool is_utf8(std::string_view text);

/// The characters of a value of a string type, as ASN1_STRING_to_UTF8_STRING() reads them. False for null,
/// other types and contents that are no text.
[[nodiscard]] bool string_text(const ASN1_STRING *string, std::string &utf8);

/// The text of a string record; one that is not text becomes "#" and hexadecimal digits.
[[nodiscard]] std::string text_of(const ASN1_STRING *string);

/// The contents of a string record; empty for null.
[[nodiscard]] Octets octets_of(const ASN1_STRING *string);

/// The dotted text of an identifier, "" for null.
[[nodiscard]] std::string dotted_text(const OBJECT_IDENTIFIER *oid);

/// The short name of an identifier, "" when it has none.
[[nodiscard]] std::string short_name(const std::string &dotted);

/// The long name of an algorithm, or its dotted text.
[[nodiscard]] std::string algorithm_name(const OBJECT_IDENTIFIER *oid);

/// A name by RFC 4514; "" for an empty one.
[[nodiscard]] std::string name_text(const X509_NAME *name);

/// The same for messages and trees, where an empty name is "(empty name)".
[[nodiscard]] std::string shown_name(const X509_NAME *name);

/// A point in time by RFC 3339, in UTC: "2020-01-31T12:00:00Z"; or the text as it is when it is no time.
[[nodiscard]] std::string time_text(const X509_TIME *time);
[[nodiscard]] std::string time_text(const ASN1_TIME &time);

}  // namespace tool
