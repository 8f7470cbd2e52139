// How the records of OCSP are read and written inside other records.
#pragma once

#include <tlxpki/ocsp_types.h>

#include "x509/certificate_records.hpp"
#include "x509/extension_records.hpp"

TLX_DECLARE_CODEC(OCSP_CERT_ID);
TLX_DECLARE_CODEC(OCSP_SINGLE_REQUEST);
TLX_DECLARE_CODEC(OCSP_TBS_REQUEST);
TLX_DECLARE_CODEC(OCSP_SIGNATURE);
TLX_DECLARE_CODEC(OCSP_REQUEST);
TLX_DECLARE_CODEC(OCSP_REVOKED_INFO);
TLX_DECLARE_CODEC(OCSP_CERT_STATUS);
TLX_DECLARE_CODEC(OCSP_RESPONDER_ID);
TLX_DECLARE_CODEC(OCSP_SINGLE_RESPONSE);
TLX_DECLARE_CODEC(OCSP_RESPONSE_DATA);
TLX_DECLARE_CODEC(BASIC_OCSP_RESPONSE);
TLX_DECLARE_CODEC(OCSP_RESPONSE_BYTES);
TLX_DECLARE_CODEC(OCSP_RESPONSE);

namespace tlx {

using GeneralizedTime = String<TLX_TAG_GENERALIZED_TIME>;

/// Certificates beside a signature.
using WholeCertificates = List<WholeCertificate>;

/// Drops the octets that a signed part was decoded from: whoever changes it does so.
template <typename R>
void forget_received(R &record) noexcept {
    free_received(record.received);
    record.received = nullptr;
}

}  // namespace tlx
