// The key of the hashes in tables whose contents a stranger chooses.
#pragma once

#include "der/sip_hash.hpp"

namespace tlx {

/// Gives the key of this process, which is drawn at the first use. False when there are no random octets.
[[nodiscard]] bool take_hash_key(SipHash::Key &key) noexcept;

}  // namespace tlx
