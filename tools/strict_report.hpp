// What a verification by RFC 5280 found, as JSON. It goes by the result alone, whatever was verified.
#pragma once

#include <tlxpki/verify.h>

#include <string>
#include <vector>

#include "document.hpp"
#include "owned.hpp"

namespace tool {

using VerifyResult = Owned<VERIFY_RESULT, free_VERIFY_RESULT>;

/// {"path", "policies", "findings", "candidates", "paths"}. A certificate of the path also has "revocation".
/// A finding has "certificate", its index in the path, "rule", "section", "status" and "text".
[[nodiscard]] Json describe_result(const VERIFY_RESULT *result);

/// The warnings, each with the subject that it is about. The description is that of the result.
[[nodiscard]] std::vector<std::string> result_warnings(const VERIFY_RESULT *result, const Json &description);

/// A certificate in DER; null when it cannot be decoded.
[[nodiscard]] Certificate decode_received(Octets octets);

/// A certificate of the path; null when there is none or it cannot be decoded.
[[nodiscard]] Certificate result_certificate(const VERIFY_RESULT *result, uint32_t index);

/// What may help against the first finding; may be empty. The settings are those of the verification.
[[nodiscard]] std::string result_hint(const VERIFY_RESULT *result, const VERIFY_SETTINGS &settings);

}  // namespace tool
