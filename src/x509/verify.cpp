// Verifying certificates: signature and validity period.
#include <tlxpki/time.h>
#include <tlxpki/x509.h>
#include <tlxpki/x509_sign.h>

#include "x509/certificate_records.hpp"
#include "x509/octet_signature.hpp"

using namespace tlx;

namespace {

using Time = std::unique_ptr<ASN1_TIME, FreeWith<free_ASN1_TIME>>;

/// A certificate written anew: what was signed, and whether the certificate is what was received.
class Rewritten {
  public:
    /// A status of X509_TBS_CERT_to_Seq.
    u32 write(const X509_CERT &cert) noexcept {
        constexpr std::size_t kUsualSize = 2048;
        der_.buffer().reserve(kUsualSize);
        if (const u32 status = encode_tbs(der_, cert.tbsCertificate); status != 0) return status;
        signed_part_ = der_.bytes();
        altered_ = is_altered(cert);
        return 0;
    }
    [[nodiscard]] SignedOctets octets(const X509_CERT &cert) const noexcept {
        // q of 160 bits, as KCDSA had when certificates took it up.
        constexpr u32 kMostSOctets = 20;
        return {signed_part_, cert.signatureAlgorithm, cert.signatureValue, altered_, kMostSOctets};
    }

  private:
    /// True for a certificate whose signature cannot be the issuer's, whatever it says: somebody altered what
    /// does not come back when the certificate is written.
    [[nodiscard]] bool is_altered(const X509_CERT &cert) noexcept {
        if (cert.signatureValue != nullptr && cert.signatureValue->extra != 0) return true;
        if (text_of(cert.signatureAlgorithm) != text_of(cert.tbsCertificate->signature)) return true;
        return compare_received(cert, signed_part_) != 0;
    }

    Encoder der_;
    Bytes signed_part_;
    bool altered_ = false;
};

}  // namespace

uint32_t verify_RSA_SIG_X509_CERT(const X509_CERT *cert, const RSA_UNIT *key) {
    if (cert == nullptr || cert->tbsCertificate == nullptr || key == nullptr) return 0x46170049;
    Rewritten written;
    if (const u32 status = written.write(*cert); status != 0) return status;
    return verify_octets(written.octets(*cert), key, {0x4617002B, 0});
}

uint32_t verify_KCDSA_SIG_X509_CERT(const X509_CERT *cert, const KCDSA *key) {
    if (cert == nullptr || cert->tbsCertificate == nullptr || key == nullptr) return 0x46180049;
    Rewritten written;
    if (const u32 status = written.write(*cert); status != 0) return status;
    return verify_octets(written.octets(*cert), key, {0x4618002B, 0x46180104});
}

uint32_t verify_SIG_X509_CERT(const X509_CERT *cert, const X509_PUBKEY *issuer_key) {
    if (cert == nullptr || cert->tbsCertificate == nullptr || issuer_key == nullptr ||
        issuer_key->key == nullptr) {
        return 1;
    }
    const ASYMMETRIC_KEY &key = *issuer_key->key;
    if (key.kind == TLX_KEY_RSA) {
        return verify_RSA_SIG_X509_CERT(cert, static_cast<const RSA_UNIT *>(key.key));
    }
    if (key.kind == TLX_KEY_KCDSA) {
        return verify_KCDSA_SIG_X509_CERT(cert, static_cast<const KCDSA *>(key.key));
    }
    return 1;
}

uint32_t verify_X509_validity(const X509_CERT *cert, const ASN1_TIME *time) {
    if (cert == nullptr || cert->tbsCertificate == nullptr || cert->tbsCertificate->validity == nullptr) {
        return 0x462D0049;
    }
    const X509_VALIDITY &validity = *cert->tbsCertificate->validity;
    const Time not_before(X509_TIME_to_ASN1_TIME(&validity.notBefore));
    const Time not_after(X509_TIME_to_ASN1_TIME(&validity.notAfter));
    if (!not_before || !not_after) return 0x462D0104;
    const Time now(time == nullptr ? getCurrentGMTime() : nullptr);
    if (time == nullptr) time = now.get();
    if (time == nullptr) return 0x462D003C;
    const bool within =
        cmp_ASN1_TIME(not_before.get(), time) <= 0 && cmp_ASN1_TIME(time, not_after.get()) <= 0;
    return within ? 0 : 0x462D0113;
}
