// Handing out what signers sign, and putting their signatures back.
#include <tlxpki/external_signature.h>
#include <tlxpki/pkcs7_sign.h>

#include "asn1/oid_lookup.hpp"
#include "message/key_scheme.hpp"
#include "message/key_signature.hpp"
#include "message/signer_algorithms.hpp"

using namespace tlx;

namespace {

/// The settings of PSS in a unit without numbers.
bool read_settings(const P7_SIGNER_INFO &signer, const SignerAlgorithms &algorithms,
                   RSA_UNIT *unit) noexcept {
    const ASYMMETRIC_KEY holder = {TLX_KEY_RSA, unit};
    return apply_pss_parameters(signer, algorithms, holder);
}

/// What final_PKCS7_Sign() calls the signature.
bool name_algorithm(P7_SIGNER_INFO &signer, const ASYMMETRIC_KEY &key) noexcept {
    if (key.kind == TLX_KEY_KCDSA) return replace_algorithm(signer.digestEncryptionAlgorithm, oid::kKcdsa1);
    const u32 row = algorithm_row(signer.digestEncryptionAlgorithm);
    const bool keeps = row == oid::kRsassaPss || row == oid::kPss || get_BIGINT_bits(signer.version) != 1;
    return keeps || replace_algorithm(signer.digestEncryptionAlgorithm, oid::kRsaEncryption);
}

u32 check(const P7_SIGNER_INFO &signer, const ASYMMETRIC_KEY &key, Bytes signature) noexcept {
    const SignerAlgorithms algorithms(signer);
    if (algorithms.digest_id == 0 || algorithms.cipher_id == 0) return 0x4B340048;
    if (!apply_pss_parameters(signer, algorithms, key)) return 0x4B340048;
    Encoder set;
    if (!encode_attributes(signer, set)) return 0x4B34005F;
    if (begin_verification(key, algorithms) != 0) return 0x4B340048;
    return verify_octets(key, algorithms, set.bytes(), signature) == 0 ? 0 : 0x4B340054;
}

}  // namespace

uint32_t get_PKCS7_Signer_octets(const P7_SIGNER_INFO *signer, uint8_t **octets, uint32_t *len) {
    if (signer == nullptr || octets == nullptr || len == nullptr) return 0x4B320049;
    Encoder set;
    if (!encode_attributes(*signer, set)) return 0x4B32005F;
    *len = static_cast<u32>(set.bytes().size());
    *octets = set.buffer().release();
    return 0;
}

uint32_t get_PKCS7_Signer_input(const P7_SIGNER_INFO *signer, RSA_SIGNATURE_INPUT *input) {
    if (signer == nullptr || input == nullptr) return 0x4B330049;
    const SignerAlgorithms algorithms(*signer);
    const Owned<RSA_UNIT> settings(new_RSA_UNIT());
    if (!settings) return 0x4B33005F;
    if (!algorithms.is_rsa() || !read_settings(*signer, algorithms, settings.get())) return 0x4B330048;
    Encoder set;
    if (!encode_attributes(*signer, set)) return 0x4B33005F;
    const u32 status =
        get_RSA_SIGNATURE_INPUT(settings.get(), algorithms.digest_id, algorithms.padding_mode(),
                                set.bytes().data(), static_cast<u32>(set.bytes().size()), input);
    return status == 0 ? 0 : 0x4B330048;
}

uint32_t set_PKCS7_Signer_signature(P7_SIGNER_INFO *signer, const X509_CERT *cert, const uint8_t *signature,
                                    uint32_t len) {
    if (signer == nullptr || cert == nullptr || signature == nullptr || len == 0) return 0x4B340049;
    if (signer->encryptedDigest != nullptr) return 0x4B34001C;
    if (cmp_P7_ISSUER_AND_SERIAL_NUMBER(cert, signer->issuerAndSerialNumber) != 0) return 0x4B340047;
    const ASYMMETRIC_KEY *certified = get_X509_PUBKEY_key(get_X509_SPKI(cert));
    if (certified == nullptr || (certified->kind != TLX_KEY_RSA && certified->kind != TLX_KEY_KCDSA)) {
        return 0x4B340048;
    }
    const auto key = copy_public_key(cert);
    Owned<OCTET_STRING> copy(new_string(TLX_TAG_OCTET_STRING, {signature, len}));
    if (!key || !copy) return 0x4B34003B;
    if (const u32 status = check(*signer, *key, {signature, len}); status != 0) return status;
    if (!name_algorithm(*signer, *key)) return 0x4B34003B;
    signer->encryptedDigest = copy.release();
    return 0;
}
