// Signing certificates.
#include <tlxpki/ber.h>
#include <tlxpki/objects.h>
#include <tlxpki/x509_sign.h>

#include "x509/certificate_records.hpp"
#include "x509/signature_scheme.hpp"
#include "x509/signature_value.hpp"

using namespace tlx;

uint32_t gen_RSA_SIG_X509_TBS_CERT(const X509_TBS_CERT *tbs, BIT_STRING **signature,
                                   const OBJECT_IDENTIFIER *algorithm, const RSA_UNIT *key) {
    if (tbs == nullptr || signature == nullptr || key == nullptr) return 0x46150049;
    Encoder der;
    if (const u32 status = encode_tbs(der, tbs); status != 0) return status;
    const SignatureScheme scheme(algorithm);
    if (scheme.digest_id == 0 || scheme.cipher_id == 0) return 0x4615002B;
    const std::size_t room = std::size_t{get_RSA_length(key)} + 1;
    const OwnedOctets<u8> octets(static_cast<u8 *>(TLX_ALLOCATE(room)));
    if (!octets) return 0x4615003B;
    u32 len = 0;
    const u32 status = sign_RSA(key, scheme.digest_id, scheme.padding_mode(), der.bytes().data(),
                                static_cast<u32>(der.bytes().size()), octets.get(), &len);
    if (status != 0) return status;
    BIT_STRING *bits = new_string(TLX_TAG_BIT_STRING, {octets.get(), len});
    if (bits == nullptr) return 0x4615003B;
    *signature = bits;
    return 0;
}

uint32_t gen_KCDSA_SIG_X509_TBS_CERT(const X509_TBS_CERT *tbs, BIT_STRING **signature,
                                     const OBJECT_IDENTIFIER *algorithm, const KCDSA *key) {
    if (tbs == nullptr || signature == nullptr || key == nullptr) return 0x46160049;
    Encoder der;
    if (const u32 status = encode_tbs(der, tbs); status != 0) return status;
    const SignatureScheme scheme(algorithm);
    if (scheme.cipher_id == 0) return 0x4616002B;
    u8 r[TLX_KCDSA_MAX_LENGTH];
    u8 s[TLX_KCDSA_MAX_LENGTH];
    u32 r_len = 0;
    u32 s_len = 0;
    const u32 status = sign_KCDSA_data(key, scheme.kcdsa_digest(), der.bytes().data(),
                                       static_cast<u32>(der.bytes().size()), r, &r_len, s, &s_len);
    if (status != 0) return status;
    const Owned<BIGINT> s_number(binary_to_BIGINT(s, s_len));
    Encoder value;
    encode_kcdsa_signature(value, {r, r_len}, s_number.get());
    BIT_STRING *bits = value.ok() ? new_string(TLX_TAG_BIT_STRING, value.bytes()) : nullptr;
    if (bits == nullptr) return 0x4616003B;
    *signature = bits;
    return 0;
}

uint32_t gen_SIG_X509_Cert(X509_CERT *cert, const ASYMMETRIC_KEY *private_key) {
    if (cert == nullptr || cert->tbsCertificate == nullptr || cert->tbsCertificate->signature == nullptr ||
        private_key == nullptr || private_key->key == nullptr) {
        return 1;
    }
    const X509_TBS_CERT *tbs = cert->tbsCertificate;
    Owned<OBJECT_IDENTIFIER> algorithm(dup_OBJECT_IDENTIFIER(tbs->signature));
    if (!algorithm) return 1;
    BIT_STRING *signature = nullptr;
    u32 status = 1;
    if (private_key->kind == TLX_KEY_RSA) {
        status = gen_RSA_SIG_X509_TBS_CERT(tbs, &signature, tbs->signature,
                                           static_cast<const RSA_UNIT *>(private_key->key));
    } else if (private_key->kind == TLX_KEY_KCDSA) {
        status = gen_KCDSA_SIG_X509_TBS_CERT(tbs, &signature, tbs->signature,
                                             static_cast<const KCDSA *>(private_key->key));
    }
    if (status != 0) return status;
    free_OBJECT_IDENTIFIER(cert->signatureAlgorithm);
    cert->signatureAlgorithm = algorithm.release();
    free_BIT_STRING(cert->signatureValue);
    cert->signatureValue = signature;
    forget_received(*cert);
    return 0;
}
