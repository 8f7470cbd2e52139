// How the records of PKCS #8 are read and written inside other records.
#pragma once

#include <tlxpki/pkcs8.h>

#include "x509/certificate_records.hpp"

TLX_DECLARE_CODEC(P8_PRIV_KEY_INFO);
TLX_DECLARE_CODEC(PKCS8);
TLX_DECLARE_CODEC(P5_PBE_PARAM);
