// Ownership and codecs of the records of path validation.
#pragma once

#include <tlxpki/cpv.h>

#include "x509/certificate_records.hpp"

TLX_DECLARE_CODEC(TRUST_ANCHOR);
TLX_OWNS(VALID_POLICY_DATA);
TLX_OWNS(VALID_POLICY_NODE);
TLX_OWNS(node_LIST);

namespace tlx {

using OwnedNodes = std::unique_ptr<VALID_POLICY_NODES, FreeWith<free_VALID_POLICY_NODES>>;
using OwnedCertificates = std::unique_ptr<X509_CERTIFICATES, FreeWith<free_X509_CERTIFICATES>>;

}  // namespace tlx
