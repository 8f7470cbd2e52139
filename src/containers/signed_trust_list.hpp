// What the functions on signed trust lists share.
#pragma once

#include <tlxpki/signed_trust_list.h>

namespace tlx {

/// The signed data of a message; null for other content and for none.
[[nodiscard]] const P7_SIGNED_DATA *signed_data_of(const P7_CONTENT_INFO *info) noexcept;

}  // namespace tlx
