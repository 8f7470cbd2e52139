// Files of PKCS #12.
#pragma once

#include <tlxpki/pkcs12_file.h>

#include "document.hpp"
#include "password.hpp"

namespace tool {

using Pfx = Owned<P12_PFX, free_P12_PFX>;
using Entries = Owned<P12_ENTRIES, free_P12_ENTRIES>;

/// What open_pfx() returns when the code of the file differs: a wrong password or an altered file.
constexpr uint32_t kCodeDiffers = 0x4D300012;

/// The file that octets are. Throws Failure.
[[nodiscard]] Pfx decode_pfx(Octets octets, const std::string &source);
[[nodiscard]] Pfx read_pfx(const std::string &path);

/// Opens a file with the password of a file, without one, or with what is typed; `mac` is one of the code for
/// itself. Returns 0 or kCodeDiffers. Throws Failure when there is no password or the file cannot be opened.
[[nodiscard]] uint32_t open_pfx(const P12_PFX *pfx, const std::string &source, Password &password,
                                const Password &mac, Entries &entries);

[[nodiscard]] const P12_ENTRY &entry_at(const Entries &entries, uint32_t index);

/// The code that protects a file; null for none.
[[nodiscard]] Json describe_code(const P12_PFX *pfx);

/// What a file shows of itself without a password: its parts, how each is encrypted, and the bags of those
/// that are not. Throws Failure when it cannot be decoded.
[[nodiscard]] Json describe_parts(const P12_PFX *pfx, const std::string &source);

/// What was read of a file, which counts from 1.
[[nodiscard]] Json describe_entry(const P12_ENTRY &entry, uint32_t number);

/// "private key", "certificate", "revocation list", "secret" or "unread".
[[nodiscard]] std::string kind_name(const P12_ENTRY &entry);

}  // namespace tool
