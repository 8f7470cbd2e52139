// OCSP requests and responses of files.
#pragma once

#include <tlxpki/ocsp.h>
#include <tlxpki/ocsp_respond.h>

#include <map>
#include <string>

#include "document.hpp"
#include "input.hpp"

namespace tool {

using OcspRequest = Owned<OCSP_REQUEST, free_OCSP_REQUEST>;
using OcspResponse = Owned<OCSP_RESPONSE, free_OCSP_RESPONSE>;

/// The record of a block. Throws Failure.
[[nodiscard]] OcspRequest decode_ocsp_request(const Block &block);
[[nodiscard]] OcspResponse decode_ocsp_response(const Block &block);
/// The same of a file that holds nothing else.
[[nodiscard]] OcspRequest load_ocsp_request(const std::string &path);
[[nodiscard]] OcspResponse load_ocsp_response(const std::string &path);

[[nodiscard]] Json describe_ocsp_request(const OCSP_REQUEST *request);
[[nodiscard]] Json describe_ocsp_response(const OCSP_RESPONSE *response);

/// "successful", "tryLater"; the number of one that RFC 6960 does not have.
[[nodiscard]] std::string response_status_name(uint32_t status);
/// "good", "revoked" or "unknown".
[[nodiscard]] std::string certificate_status_name(uint32_t status);

/// What a table says of a certificate.
struct TableEntry {
    uint32_t status = TLX_OCSP_UNKNOWN;
    uint32_t reason = 0;
    std::string time;  ///< YYYYMMDDhhmmssZ; empty unless it is revoked
};
/// By the serial number in hexadecimal.
using StatusTable = std::map<std::string, TableEntry>;

/// Reads lines of the form "SERIAL,good", "SERIAL,unknown" or "SERIAL,revoked[,REASON[,TIME]]"; "#" begins a
/// comment. Throws Failure.
[[nodiscard]] StatusTable load_status_table(const std::string &path);

}  // namespace tool
