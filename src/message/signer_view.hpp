// What PKCS #7 and CMS have in common of a signer.
#pragma once

#include "message/cms_records.hpp"

namespace tlx {

/// A signer of either record, which owns what this points to. Any member may be null.
struct SignerView {
    const P7_ISSUER_AND_SERIAL_NUMBER *number = nullptr;
    const OCTET_STRING *key_identifier = nullptr;
    const X509_ALGO_IDENTIFIER *digest_algorithm = nullptr;
    const X509_ALGO_IDENTIFIER *signature_algorithm = nullptr;
    const X509_ATTRIBUTES *signed_attributes = nullptr;
    const ASN1_UNIT *received_attributes = nullptr;  ///< their element as received, if they were
    const OCTET_STRING *signature = nullptr;
    const X509_ATTRIBUTES *unsigned_attributes = nullptr;
};

[[nodiscard]] inline SignerView view_of(const P7_SIGNER_INFO &signer) noexcept {
    return {signer.issuerAndSerialNumber,   nullptr,
            signer.digestAlgorithm,         signer.digestEncryptionAlgorithm,
            signer.authenticatedAttributes, signer.receivedAttributes,
            signer.encryptedDigest,         signer.unauthenticatedAttributes};
}

[[nodiscard]] inline SignerView view_of(const CMS_SIGNER_INFO &signer) noexcept {
    SignerView view = {nullptr,
                       nullptr,
                       signer.digestAlgorithm,
                       signer.signatureAlgorithm,
                       signer.signedAttrs,
                       signer.receivedAttributes,
                       signer.signature,
                       signer.unsignedAttrs};
    if (signer.sid == nullptr) return view;
    if (signer.sid->type == TLX_CMS_BY_KEY_IDENTIFIER) {
        view.key_identifier = signer.sid->value.subjectKeyIdentifier;
    } else {
        view.number = signer.sid->value.issuerAndSerialNumber;
    }
    return view;
}

}  // namespace tlx
