// Certificates, and the same octets as a list of certificates, a public key and extensions.
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
    if (X509_CERT *cert = fuzz::decode(data, size, Seq_to_X509_CERT); cert != nullptr) {
        look_at(cert);
        fuzz::check_reencoding(cert, Seq_to_X509_CERT, X509_CERT_to_Seq, dup_X509_CERT, free_X509_CERT);
    }
    if (X509_CERTIFICATES *list = fuzz::decode(data, size, Seq_to_X509_CERTIFICATES); list != nullptr) {
        fuzz::check_reencoding(list, Seq_to_X509_CERTIFICATES, X509_CERTIFICATES_to_Seq,
                               dup_X509_CERTIFICATES, free_X509_CERTIFICATES);
    }
    if (X509_PUBKEY *key = fuzz::decode(data, size, Seq_to_X509_PUBKEY); key != nullptr) {
        fuzz::check_reencoding(key, Seq_to_X509_PUBKEY, X509_PUBKEY_to_Seq, dup_X509_PUBKEY,
                               free_X509_PUBKEY);
    }
    if (X509_EXTENSIONS *list = fuzz::decode(data, size, Seq_to_X509_EXTENSIONS); list != nullptr) {
        fuzz::check_reencoding(list, Seq_to_X509_EXTENSIONS, X509_EXTENSIONS_to_Seq, dup_X509_EXTENSIONS,
                               free_X509_EXTENSIONS);
    }
    return 0;
}
