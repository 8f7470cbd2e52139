// PKCS #7 messages in files.
#pragma once

#include <string>

#include "input.hpp"

namespace tool {

using Message = Owned<P7_CONTENT_INFO, free_P7_CONTENT_INFO>;

/// A new message of a content type, a row of the registry.
[[nodiscard]] Message new_message(int32_t type);

/// The message of a file. Throws Failure.
[[nodiscard]] Message read_message(const std::string &path);

/// The same of the first block of what was read.
[[nodiscard]] Message decode_message(const Input &input);

/// Writes a message as DER, or as PEM under the label of RFC 7468. Throws Failure.
void write_message(const std::string &path, const P7_CONTENT_INFO *message, bool as_der);

/// The content type of a message, a row of the registry.
[[nodiscard]] int32_t type_of(const P7_CONTENT_INFO *message);

/// A content type in words: "signed data"; its name for others than those of PKCS #7 and
/// CMS.
[[nodiscard]] std::string type_name(const OBJECT_IDENTIFIER *type);

}  // namespace tool
