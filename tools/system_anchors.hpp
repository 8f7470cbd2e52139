// The certificates that the system trusts.
#pragma once

#include <string>
#include <vector>

#include "input.hpp"

namespace tool {

/// Those of Debian's bundle, or of the store ROOT of the user on Windows. Throws Failure when there are none.
[[nodiscard]] std::vector<ReceivedCertificate> system_anchors(std::vector<std::string> &warnings);

}  // namespace tool
