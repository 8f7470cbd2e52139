// What PKCS #12 files hold.
#pragma once

#include <tlxpki/pkcs12_file.h>

#include "containers/pkcs12_records.hpp"
#include "keys/pbe.hpp"

TLX_OWNS(P12_ENTRY);

namespace tlx {

using OwnedEntries = std::unique_ptr<P12_ENTRIES, FreeWith<free_P12_ENTRIES>>;

inline constexpr std::string_view kKeyBag = "1.2.840.113549.1.12.10.1.1";
inline constexpr std::string_view kShroudedKeyBag = "1.2.840.113549.1.12.10.1.2";
inline constexpr std::string_view kCertBag = "1.2.840.113549.1.12.10.1.3";
inline constexpr std::string_view kCrlBag = "1.2.840.113549.1.12.10.1.4";
inline constexpr std::string_view kSecretBag = "1.2.840.113549.1.12.10.1.5";
inline constexpr std::string_view kSafeContentsBag = "1.2.840.113549.1.12.10.1.6";
inline constexpr std::string_view kX509Certificate = "1.2.840.113549.1.9.22.1";
inline constexpr std::string_view kX509Crl = "1.2.840.113549.1.9.23.1";
inline constexpr std::string_view kFriendlyName = "1.2.840.113549.1.9.20";
inline constexpr std::string_view kLocalKeyId = "1.2.840.113549.1.9.21";

/// Says of each certificate which private key it belongs to. False when memory runs out.
[[nodiscard]] bool find_owners(P12_ENTRIES &entries, WorkBudget &budget) noexcept;

}  // namespace tlx
