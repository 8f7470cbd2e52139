// Object identifiers of CMS. Those of PKCS #7 content types are the same.
#pragma once

#include <string_view>

namespace tlx::cms {

inline constexpr std::string_view kData = "1.2.840.113549.1.7.1";
inline constexpr std::string_view kSignedData = "1.2.840.113549.1.7.2";
inline constexpr std::string_view kEnvelopedData = "1.2.840.113549.1.7.3";
inline constexpr std::string_view kDigestedData = "1.2.840.113549.1.7.5";
inline constexpr std::string_view kEncryptedData = "1.2.840.113549.1.7.6";
inline constexpr std::string_view kAuthData = "1.2.840.113549.1.9.16.1.2";
inline constexpr std::string_view kAuthEnvelopedData = "1.2.840.113549.1.9.16.1.23";
inline constexpr std::string_view kTstInfo = "1.2.840.113549.1.9.16.1.4";

}  // namespace tlx::cms
