// Status codes in words.
#pragma once

#include <string>

#include "document.hpp"

namespace tool {

/// What a status code means.
struct StatusMeaning {
    bool known = false;     ///< whether its module is known, or it is one of the plain values
    std::string module;     ///< the module that reports; empty for plain values
    std::string operation;  ///< the operations that return the code, or that share its module and function
    std::string reason;     ///< the meaning of its reason
    std::string detail;  ///< when the operation returns it; empty when no more than the reason is documented
};

[[nodiscard]] StatusMeaning status_meaning(uint32_t status);

/// {"code", "module", "operation", "reason", "detail"}, without those that are empty.
[[nodiscard]] Json status_json(uint32_t status);

/// The code with its meaning in brackets.
[[nodiscard]] std::string status_sentence(uint32_t status);

/// status_json() with the detail in place of the reason, where there is one.
[[nodiscard]] Json exact_status_json(uint32_t status);

/// The code and this reason: "0x4B300054, the signature of a signer does not verify".
[[nodiscard]] std::string exact_status_sentence(uint32_t status);

}  // namespace tool
