// Object identifiers of CMS. Those of PKCS #7 content types are the same.
#pragma once

#include <string_view>

namespace tlx::cms {

inline constexpr std::string_view kData = "1.2.840.113549.1.7.1";
inline constexpr std::string_view kSignedData = "1.2.840.113549.1.7.2";
inline constexpr std::string_view kDigestedData = "1.2.840.113549.1.7.5";

}  // namespace tlx::cms
