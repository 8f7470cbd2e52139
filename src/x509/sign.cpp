// Signing certificates.
#include <tlxpki/ber.h>
#include <tlxpki/objects.h>
#include <tlxpki/x509_sign.h>

#include "x509/certificate_records.hpp"
#include "x509/octet_signature.hpp"

using namespace tlx;

uint32_t gen_RSA_SIG_X509_TBS_CERT(const X509_TBS_CERT *tbs, BIT_STRING **signature,
                                   const OBJECT_IDENTIFIER *algorithm, const RSA_UNIT *key) {
    if (tbs == nullptr || signature == nullptr || key == nullptr) return 0x46150049;
    Encoder der;
    if (const u32 status = encode_tbs(der, tbs); status != 0) return status;
    return sign_octets(der.bytes(), algorithm, key, {0x4615002B, 0x4615003B}, signature);
}

uint32_t gen_KCDSA_SIG_X509_TBS_CERT(const X509_TBS_CERT *tbs, BIT_STRING **signature,
                                     const OBJECT_IDENTIFIER *algorithm, const KCDSA *key) {
    if (tbs == nullptr || signature == nullptr || key == nullptr) return 0x46160049;
    Encoder der;
    if (const u32 status = encode_tbs(der, tbs); status != 0) return status;
    return sign_octets(der.bytes(), algorithm, key, {0x4616002B, 0x4616003B}, signature);
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
