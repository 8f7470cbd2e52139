// What a block of a file is, by its contents.
#pragma once

#include "input.hpp"

namespace tool {

enum class Kind {
    kCertificate,
    kRequest,
    kRevocationList,
    kPublicKeyInfo,
    kRsaPublic,
    kRsaPrivate,
    kEcPrivate,
    kPkcs8,
    kEncryptedPkcs8,
    kPkcs12,
    kMessage,
    kTrustList,
    kTokenList,
    kOcspRequest,
    kOcspResponse,
    kTimestampRequest,
    kTimestampResponse,
    kOther
};

/// The kind of a block that is no encrypted PEM. A block of the shape of a certificate, request or list that
/// has the inside of none is a certificate.
[[nodiscard]] Kind kind_of(const Block &block);

/// "a certificate", "a PKCS #8 private key"; "" for others.
[[nodiscard]] std::string kind_name(Kind kind);

/// "the PUBLIC KEY", "the file".
[[nodiscard]] std::string block_name(const Block &block);

/// Whether a PEM label stands for another kind (RFC 7468). Labels that are not known contradict nothing.
[[nodiscard]] bool is_wrong_label(const std::string &label, Kind kind);

}  // namespace tool
