// Why a signature in a path counts as wrong.
#include "describe.hpp"
#include "status.hpp"
#include "verify.hpp"

namespace tool {

namespace {

enum : uint32_t {
    kUnsupportedKey = 1,
    kUnknownRsaAlgorithm = 0x4617002B,
    kUnknownKcdsaAlgorithm = 0x4618002B
};

constexpr char kUnchecked[] = "the signature was not checked: ";
constexpr char kChanged[] = "somebody changed the certificate after it was signed";

}  // namespace

Explanation explain_signature(const X509_CERT *cert, const X509_PUBKEY *key) {
    const uint32_t status = verify_SIG_X509_CERT(cert, key);
    const std::string algorithm = algorithm_name(get_X509_sig_alg(cert));
    const std::string inner = algorithm_name(get_X509_signature(cert));
    switch (status) {
        case kUnsupportedKey:
            return {kUnchecked + ("the issuer's key (" + key_line(key) +
                                  ") is no RSA or KCDSA key that can be decoded"),
                    "the library cannot verify what this issuer signs"};
        case kUnknownRsaAlgorithm:
        case kUnknownKcdsaAlgorithm:
            return {kUnchecked + ("the library cannot verify " + algorithm),
                    "it verifies KCDSA, and RSA by PKCS #1 v1.5"};
        case TLX_RSA_BAD_SIGNATURE:  // also that of KCDSA
            break;
        default:
            return {kUnchecked + status_sentence(status), ""};
    }
    if (check_X509_received(cert) != 0) {
        return {
            "the certificate is not encoded as the library writes it, so that its signature counts as wrong",
            std::string(kChanged) +
                ", it is no DER, or an RDN has several attributes; \"tlxpki asn1\" shows its elements"};
    }
    if (algorithm != inner) {
        return {"the signed part names the algorithm " + inner + ", but the certificate " + algorithm,
                kChanged};
    }
    if (get_X509_sig_value(cert)->extra != 0) return {"the signature has unused bits", kChanged};
    return {};
}

}  // namespace tool
