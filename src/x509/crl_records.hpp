// How revocation lists are read and written inside other records.
#pragma once

#include <tlxpki/x509_crl.h>

#include "der/record.hpp"

TLX_DECLARE_CODEC(X509_CRL);

namespace tlx {

using Crls = List<Nested<X509_CRL>>;
/// SET OF CertificateList; the statuses of X509_CRLS.
using CrlSet = PassingList<SetOf<Nested<X509_CRL>>, codes::X509_CRLS>;

}  // namespace tlx
