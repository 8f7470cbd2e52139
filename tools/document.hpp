// The output of a command: one JSON document, printed as JSON or as indented text.
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "text.hpp"

namespace tool {

using Json = nlohmann::ordered_json;

/// Prints a document as JSON. Octets that are no UTF-8 become U+FFFD.
void print_json(std::ostream &out, const Json &document);

/// Prints the members of an object as lines of label and value. Keys become labels ("public_key": "Public
/// key"), an object {"oid", "name"} becomes one value, and the value of a key "hex" a dump with offsets.
void print_text(std::ostream &out, const Json &object, std::size_t indent);

/// Prints a document with a source and a kind to standard output: as JSON, or its source and kind on a line
/// and the rest below.
void print_document(Json document, bool as_json);

/// Prints any value as print_text() does, each line at the given column.
void print_value(std::ostream &out, const Json &value, std::size_t indent);

/// Prints octets given as hexadecimal digits: offset, sixteen octets, and the ASCII characters among them.
void print_dump(std::ostream &out, const std::string &digits, std::size_t indent);

/// {"oid": "2.5.4.3", "name": "CN"}, without a name when it is not registered.
[[nodiscard]] Json oid_json(const OBJECT_IDENTIFIER *oid);

/// An object of oid_json() on one line: "CN (2.5.4.3)".
[[nodiscard]] std::string oid_line(const Json &oid);

/// The values of an object on one line, with commas between them.
[[nodiscard]] std::string values_line(const Json &object);

/// A number as "0x" and hexadecimal digits.
[[nodiscard]] std::string number_hex(const BIGINT *number);

/// A number in decimal digits, or as number_hex() when it is longer than 256 bits.
[[nodiscard]] std::string number_text(const BIGINT *number);

}  // namespace tool
