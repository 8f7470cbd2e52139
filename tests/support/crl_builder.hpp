// Makes revocation lists.
#pragma once

#include "support/chain_builder.hpp"

namespace tlx_test {

using Crl = Held<free_X509_CRL>;

/// The name of which this is the only common name.
Held<free_X509_NAME> name_of(const std::string &common_name);
/// Midnight of a day, as "2024-01-31".
Held<free_ASN1_TIME> time_of(const std::string &day);

/// An entry: "05", "05:1" with a reason, "05@Name" with a certificateIssuer, "05@?" with one that is no name,
/// "05!" with a critical extension that nobody knows.
Held<free_X509_REVOKED> entry_of(const std::string &text);

/// A signed list by words: entries as "+05:1", and "issuer=", "key=", "from=", "until=", "number=", "delta=",
/// "aki=", "idp=", "algorithm=", "unknown". "_" stands for a space. By itself it is of "Root" with key 0,
/// from 2024-01-01 to 2024-12-31.
Crl make_crl(const std::string &text);

}  // namespace tlx_test
