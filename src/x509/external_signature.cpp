// Handing out what the issuer of a certificate signs, and putting the signature back.
#include <tlxpki/external_signature.h>
#include <tlxpki/x509_sign.h>

#include "x509/certificate_records.hpp"
#include "x509/signature_scheme.hpp"

using namespace tlx;

namespace {

bool can_be_signed(const X509_CERT *cert) noexcept {
    return cert != nullptr && cert->tbsCertificate != nullptr && cert->tbsCertificate->signature != nullptr;
}

}  // namespace

uint32_t get_X509_CERT_input(const X509_CERT *cert, RSA_SIGNATURE_INPUT *input) {
    if (!can_be_signed(cert) || input == nullptr) return 0x463A0049;
    const SignatureScheme scheme(cert->tbsCertificate->signature);
    if (!scheme.is_rsa()) return 0x463A0048;
    Encoder der;
    if (const u32 status = encode_tbs(der, cert->tbsCertificate); status != 0) return status;
    const u32 status =
        get_RSA_SIGNATURE_INPUT(nullptr, scheme.digest_id, scheme.padding_mode(), der.bytes().data(),
                                static_cast<u32>(der.bytes().size()), input);
    return status == 0 ? 0 : 0x463A0048;
}

uint32_t set_X509_CERT_signature(X509_CERT *cert, const X509_PUBKEY *issuer_key, const uint8_t *signature,
                                 uint32_t len) {
    if (!can_be_signed(cert) || issuer_key == nullptr || signature == nullptr || len == 0) return 0x463B0049;
    Owned<ASN1_STRING> algorithm(dup_OBJECT_IDENTIFIER(cert->tbsCertificate->signature));
    Owned<ASN1_STRING> value(new_string(TLX_TAG_BIT_STRING, {signature, len}));
    if (!algorithm || !value) return 0x463B003B;
    const X509_CERT candidate = {cert->tbsCertificate, algorithm.get(), value.get(), nullptr};
    if (verify_SIG_X509_CERT(&candidate, issuer_key) != 0) return 0x463B0054;
    free_ASN1_STRING(std::exchange(cert->signatureAlgorithm, algorithm.release()));
    free_ASN1_STRING(std::exchange(cert->signatureValue, value.release()));
    forget_received(*cert);
    return 0;
}
