// How the records of PKCS #12 files are read and written inside other records.
#pragma once

#include <tlxpki/pkcs12_types.h>

#include "message/message_records.hpp"

TLX_DECLARE_CODEC(P12_MAC_DATA);
TLX_DECLARE_CODEC(P12_PFX);
TLX_DECLARE_CODEC(P12_SAFE_BAG);
TLX_DECLARE_CODEC(P12_CERT_BAG);
TLX_DECLARE_CODEC(P12_CRL_BAG);
TLX_DECLARE_CODEC(P12_SECRET_BAG);

namespace tlx {

// AuthenticatedSafe ::= SEQUENCE OF ContentInfo
using AuthenticatedSafe = List<Nested<P7_CONTENT_INFO>>;
using OwnedAuthenticatedSafe = std::unique_ptr<P12_AUTHENTICATED_SAFE, FreeWith<free_P12_AUTHENTICATED_SAFE>>;

// SafeContents ::= SEQUENCE OF SafeBag
using SafeContents = List<Nested<P12_SAFE_BAG>>;
using OwnedSafeContents = std::unique_ptr<P12_SAFE_CONTENTS, FreeWith<free_P12_SAFE_CONTENTS>>;

/// Any element, kept whole and wiped before it is freed.
struct SecretNode : Node {
    static void free(type *node) noexcept;
};

}  // namespace tlx
