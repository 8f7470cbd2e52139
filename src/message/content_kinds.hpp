// What each content type holds.
#pragma once

#include "asn1/oid_lookup.hpp"
#include "message/message_records.hpp"
#include "x509/trust_list_records.hpp"

namespace tlx {

/// Calls use(kind) with the value kind of the content of a type. False for a type that has none.
template <typename Use>
bool with_content_kind(u32 type, Use use) noexcept {
    switch (type) {
        case oid::kPkcs7Data:
            use(Joined{});
            return true;
        case oid::kPkcs7SignedData:
            use(Passing<P7_SIGNED_DATA>{});
            return true;
        case oid::kPkcs7EnvelopedData:
            use(Passing<P7_ENVELOPED_DATA>{});
            return true;
        case oid::kPkcs7SignedAndEnvelopedData:
            use(Passing<P7_SIGNED_AND_ENVELOPED_DATA>{});
            return true;
        case oid::kPkcs7DigestData:
            use(Passing<P7_DIGESTED_DATA>{});
            return true;
        case oid::kPkcs7EncryptedData:
            use(Passing<P7_ENCRYPTED_DATA>{});
            return true;
        case oid::kKisaCtl:
            use(Passing<CERT_TRUST_LIST>{});
            return true;
        default:
            return false;
    }
}

/// The row of a content type in the registry; 0 for null and for a type that has none.
inline u32 content_type(const P7_CONTENT_INFO *info) noexcept {
    return info == nullptr ? 0 : oid_index(text_of(info->contentType));
}

/// Frees the content by its type, and what was received of it.
void free_content(P7_CONTENT_INFO &info) noexcept;

}  // namespace tlx
