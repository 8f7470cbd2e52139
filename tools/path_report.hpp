// A certification path as JSON and as a tree.
#pragma once

#include "document.hpp"
#include "owned.hpp"
#include "terminal.hpp"

namespace tool {

/// A certificate of a path: subject, serial number, validity, key, algorithm, and the mark as "state". For
/// null, a certificate that cannot be decoded, the subject is null, and all but the state is missing.
[[nodiscard]] Json describe_path_certificate(const X509_CERT *cert, Mark mark);

/// A subject of a description, for people.
[[nodiscard]] std::string shown_subject(const Json &subject);

/// Whether the revocation of a certificate of a path was looked up.
[[nodiscard]] bool is_revocation_known(const Json &certificate);

/// A finding on one line: its sentence, and its section of RFC 5280.
[[nodiscard]] std::string finding_line(const Json &finding);

/// Prints "path" of a description as a tree, anchor first. Each of "findings", if there are such, stands
/// below its certificate.
void print_path(std::ostream &out, const Json &description);

}  // namespace tool
