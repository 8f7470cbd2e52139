// Handing out what the issuer of a certificate or of a revocation list signs, and putting the signature back.
#include <tlxpki/external_signature.h>
#include <tlxpki/x509_sign.h>

#include "x509/crl_records.hpp"
#include "x509/octet_signature.hpp"
#include "x509/signature_scheme.hpp"

using namespace tlx;

namespace {

bool can_be_signed(const X509_CERT *cert) noexcept {
    return cert != nullptr && cert->tbsCertificate != nullptr && cert->tbsCertificate->signature != nullptr;
}

bool can_be_signed(const X509_CRL *crl) noexcept {
    return crl != nullptr && crl->signature != nullptr;
}

/// The to-be-signed part of a list. 0 or one of the statuses.
u32 write_tbs(const X509_CRL &crl, Encoder &tbs, u32 no_memory, u32 unwritable) noexcept {
    encode_crl_tbs(tbs, crl);
    if (tbs.ok()) return 0;
    return tbs.out_of_memory() ? no_memory : unwritable;
}

bool get_input(const SignatureScheme &scheme, Bytes octets, RSA_SIGNATURE_INPUT *input) noexcept {
    return get_RSA_SIGNATURE_INPUT(nullptr, scheme.digest_id, scheme.padding_mode(), octets.data(),
                                   static_cast<u32>(octets.size()), input) == 0;
}

}  // namespace

uint32_t get_X509_CERT_input(const X509_CERT *cert, RSA_SIGNATURE_INPUT *input) {
    if (!can_be_signed(cert) || input == nullptr) return 0x463A0049;
    const SignatureScheme scheme(cert->tbsCertificate->signature);
    if (!scheme.is_rsa()) return 0x463A0048;
    Encoder der;
    if (const u32 status = encode_tbs(der, cert->tbsCertificate); status != 0) return status;
    return get_input(scheme, der.bytes(), input) ? 0 : 0x463A0048;
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

uint32_t get_X509_CRL_octets(const X509_CRL *crl, uint8_t **octets, uint32_t *len) {
    if (!can_be_signed(crl) || octets == nullptr || len == nullptr) return 0x48110049;
    Encoder tbs;
    if (const u32 status = write_tbs(*crl, tbs, 0x4811003B, 0x48110103); status != 0) return status;
    *len = static_cast<u32>(tbs.bytes().size());
    *octets = tbs.buffer().release();
    return 0;
}

uint32_t get_X509_CRL_input(const X509_CRL *crl, RSA_SIGNATURE_INPUT *input) {
    if (!can_be_signed(crl) || input == nullptr) return 0x48120049;
    const SignatureScheme scheme(crl->signature);
    if (!scheme.is_rsa()) return 0x48120048;
    Encoder tbs;
    if (const u32 status = write_tbs(*crl, tbs, 0x4812003B, 0x48120103); status != 0) return status;
    return get_input(scheme, tbs.bytes(), input) ? 0 : 0x48120048;
}

uint32_t set_X509_CRL_sig_value(X509_CRL *crl, const X509_PUBKEY *issuer_key, const uint8_t *signature,
                                uint32_t len) {
    const ASYMMETRIC_KEY *key = get_X509_PUBKEY_key(issuer_key);
    if (!can_be_signed(crl) || key == nullptr || signature == nullptr || len == 0) return 0x48130049;
    Encoder tbs;
    if (const u32 status = write_tbs(*crl, tbs, 0x4813003B, 0x48130103); status != 0) return status;
    Owned<BIT_STRING> value(new_string(TLX_TAG_BIT_STRING, {signature, len}));
    if (!value) return 0x4813003B;
    constexpr VerifyingStatuses kStatuses = {0x48130054, 0x48130054};
    if (verify_octets({tbs.bytes(), crl->signature, value.get(), false}, *key, kStatuses) != 0) {
        return 0x48130054;
    }
    return put_signature(*crl, std::move(value)) ? 0 : 0x4813003B;
}
