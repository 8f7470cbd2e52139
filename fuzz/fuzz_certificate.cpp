// Certificates, and the same octets as lists of them and as each of their parts.
#include "reencode.hpp"

namespace {

void look_at(const X509_CERT *cert) {
    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    fuzz::require(X509_CERT_digest(cert, TLX_DIGEST_SHA256, digest) == 32);
    fuzz::require(cmp_X509_CERT(cert, cert) == 0);
    fuzz::require(cmp_X509_PUBKEY(get_X509_SPKI(cert), get_X509_SPKI(cert)) == 0);
    for (const X509_TIME *time : {get_X509_notBefore(cert), get_X509_notAfter(cert)})
        free_ASN1_TIME(X509_TIME_to_ASN1_TIME(time));
    for (const X509_NAME *name : {get_X509_issuer(cert), get_X509_subject(cert)})
        tlx_free(dump_X509_NAME(name));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    TLX_FUZZ_LOOK(X509_CERT, look_at)
    TLX_FUZZ(X509_CERTIFICATES)
    TLX_FUZZ(X509_TBS_CERT)
    TLX_FUZZ(X509_VALIDITY)
    TLX_FUZZ(X509_TIME)
    TLX_FUZZ(X509_PUBKEY)
    TLX_FUZZ(X509_EXTENSIONS)
    TLX_FUZZ(X509_EXTENSION)
    TLX_FUZZ(TRUST_ANCHOR)
    return 0;
}
