// How trust lists are read and written inside other records.
#pragma once

#include <tlxpki/trust_list.h>

#include "x509/certificate_records.hpp"

TLX_DECLARE_CODEC(CERT_TRUST_LIST);
TLX_DECLARE_CODEC(TRUSTED_CERTIFICATE);
