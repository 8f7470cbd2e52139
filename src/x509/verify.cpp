// Verifying certificates: signature and validity period.
#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>
#include <tlxpki/time.h>
#include <tlxpki/x509.h>
#include <tlxpki/x509_sign.h>

#include <algorithm>

#include "x509/certificate_records.hpp"
#include "x509/signature_scheme.hpp"
#include "x509/signature_value.hpp"

using namespace tlx;

namespace {

/// What certificates take for s: q of 160 bits, as KCDSA had when certificates took it up.
constexpr u32 kMostSOctets = 20;

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
    [[nodiscard]] Bytes signed_part() const noexcept { return signed_part_; }
    /// True for a certificate whose signature cannot be the issuer's, whatever it says: somebody altered what
    /// does not come back when the certificate is written.
    [[nodiscard]] bool altered() const noexcept { return altered_; }

  private:
    [[nodiscard]] bool is_altered(const X509_CERT &cert) noexcept {
        if (cert.signatureValue != nullptr && cert.signatureValue->extra != 0) return true;
        if (text_of(cert.signatureAlgorithm) != text_of(cert.tbsCertificate->signature)) return true;
        return compare_received(cert, signed_part_) != 0;
    }

    Encoder der_;
    Bytes signed_part_;
    bool altered_ = false;
};

bool read_signature(const BIT_STRING *bits, KcdsaSignature &signature) noexcept {
    Element element;
    return read_element(octets_of(bits), element) && element.tag == kSequence &&
           read_kcdsa_signature(element, signature);
}

}  // namespace

uint32_t verify_RSA_SIG_X509_CERT(const X509_CERT *cert, const RSA_UNIT *key) {
    if (cert == nullptr || cert->tbsCertificate == nullptr || key == nullptr) return 0x46170049;
    Rewritten written;
    if (const u32 status = written.write(*cert); status != 0) return status;
    const SignatureScheme scheme(cert->signatureAlgorithm);
    if (scheme.digest_id == 0 || scheme.cipher_id == 0) return 0x4617002B;
    if (written.altered()) return TLX_RSA_BAD_SIGNATURE;
    const Bytes der = written.signed_part();
    const Bytes signature = octets_of(cert->signatureValue);
    return verify_RSA(key, scheme.digest_id, scheme.padding_mode(), der.data(), static_cast<u32>(der.size()),
                      signature.data(), static_cast<u32>(signature.size()));
}

uint32_t verify_KCDSA_SIG_X509_CERT(const X509_CERT *cert, const KCDSA *key) {
    if (cert == nullptr || cert->tbsCertificate == nullptr || key == nullptr) return 0x46180049;
    Rewritten written;
    if (const u32 status = written.write(*cert); status != 0) return status;
    const SignatureScheme scheme(cert->signatureAlgorithm);
    if (scheme.cipher_id == 0) return 0x4618002B;
    KcdsaSignature signature;
    u8 s[kMostSOctets];
    if (!read_signature(cert->signatureValue, signature) ||
        BIGINT_to_binary(signature.s.get(), s, kMostSOctets) != 0) {
        return 0x46180104;
    }
    if (written.altered()) return TLX_KCDSA_BAD_SIGNATURE;
    const Bytes der = written.signed_part();
    return verify_KCDSA_data(key, scheme.kcdsa_digest(), der.data(), static_cast<u32>(der.size()),
                             signature.r.data(), static_cast<u32>(signature.r.size()), s, kMostSOctets);
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
