// How revocation lists are read and written inside other records.
#pragma once

#include <tlxpki/x509_crl.h>

#include "x509/certificate_records.hpp"

TLX_DECLARE_CODEC(X509_REVOKED);
TLX_DECLARE_CODEC(X509_CRL);

namespace tlx {

using Crls = List<Nested<X509_CRL>>;
/// SET OF CertificateList; the statuses of X509_CRLS.
using CrlSet = PassingList<SetOf<Nested<X509_CRL>>, codes::X509_CRLS>;

/// A Time, which no other element stands for.
struct TimeChoice : Choice<X509_TIME> {
    static u32 decode(const Element &element, X509_TIME **out) noexcept {
        const bool is_time = element.tag == TLX_TAG_UTC_TIME || element.tag == TLX_TAG_GENERALIZED_TIME;
        return is_time ? Choice::decode(element, out) : kFieldFailed;
    }
};

/// Writes the to-be-signed part from the members.
void encode_crl_tbs(Encoder &out, const X509_CRL &crl) noexcept;

/// Gives the list a signature under the algorithm inside its to-be-signed part. False when memory runs out.
[[nodiscard]] bool put_signature(X509_CRL &crl, Owned<BIT_STRING> signature) noexcept;

/// What was received is not the list any more.
void forget_received(X509_CRL &crl) noexcept;

}  // namespace tlx
