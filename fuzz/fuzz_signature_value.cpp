// Signature values from hostile octets, alone and as the signature of a certificate. A value that decodes is
// written, and the written octets decode to the same value.
#include <tlxpki.h>

#include <cstdlib>
#include <string>

#include "der/owned.hpp"

namespace {

using Node = tlx::Owned<ASN1_UNIT>;
using Decoder = decltype(&decode_KCDSASignatureValue);

void require(bool condition) {
    if (!condition) std::abort();
}

std::string taken(std::uint8_t *octets, std::uint32_t size) {
    const std::string copy(reinterpret_cast<const char *>(octets), size);
    tlx_free(octets);
    return copy;
}

struct Value {
    std::string r;
    std::string s;

    bool operator==(const Value &) const = default;
};

bool decode(Decoder decoder, const ASN1_UNIT *node, Value &value) {
    std::uint8_t *r = nullptr;
    std::uint8_t *s = nullptr;
    std::uint32_t r_len = 0;
    std::uint32_t s_len = 0;
    if (decoder(&r, &r_len, &s, &s_len, node) != 0) return false;
    value = {taken(r, r_len), taken(s, s_len)};
    return true;
}

std::string encode(Decoder decoder, const Value &value) {
    const auto *r = reinterpret_cast<const std::uint8_t *>(value.r.data());
    const auto *s = reinterpret_cast<const std::uint8_t *>(value.s.data());
    const auto r_len = static_cast<std::int32_t>(value.r.size());
    const auto s_len = static_cast<std::int32_t>(value.s.size());
    std::uint8_t *out = nullptr;
    std::uint32_t len = 0;
    if (decoder == decode_KCDSASignatureValue) {
        len = encode_KCDSASignatureValue(&out, r, r_len, s, s_len);
    } else {
        require(encode_ECDSASignatureValue(&out, &len, r, r_len, s, s_len) == 0);
    }
    require(out != nullptr);
    return taken(out, len);
}

void check(Decoder decoder, const ASN1_UNIT *node) {
    Value value;
    if (!decode(decoder, node, value) || value.r.empty()) return;
    const std::string der = encode(decoder, value);
    const Node again(decodeToDERSequence_n(reinterpret_cast<const std::uint8_t *>(der.data()),
                                           static_cast<std::uint32_t>(der.size())));
    Value same;
    require(decode(decoder, again.get(), same) && same == value);
}

/// A certificate with no more than the encoder requires.
X509_CERT *make_certificate() {
    X509_CERT *cert = new_X509_CERT();
    X509_NAME *name = new_X509_NAME();
    OBJECT_IDENTIFIER *algorithm = get_OBJECT_IDENTIFIER("KCDSA1", 0);
    X509_PUBKEY *key = new_X509_PUBKEY();
    BIGINT *one = hex_to_BIGINT("01");
    X509_TIME *time = new_X509_TIME();
    ASN1_TIME *now = getCurrentGMTime();
    key->algorithm = get_OBJECT_IDENTIFIER("KCDSA1", 0);
    key->subjectPublicKey = binaryToBIT_STRING(reinterpret_cast<const std::uint8_t *>("y"), 1);
    require(set_X509_TIME(time, now) == 0 && set_X509_serial(cert, one) == 0 &&
            set_X509_signature(cert, algorithm) == 0 && set_X509_sig_alg(cert, algorithm) == 0 &&
            set_X509_issuer(cert, name) == 0 && set_X509_subject(cert, name) == 0 &&
            set_X509_notBefore(cert, time) == 0 && set_X509_notAfter(cert, time) == 0 &&
            set_X509_pub_key(cert, key) == 0);
    free_ASN1_TIME(now);
    free_X509_TIME(time);
    free_BIGINT(one);
    free_X509_PUBKEY(key);
    free_OBJECT_IDENTIFIER(algorithm);
    free_X509_NAME(name);
    return cert;
}

/// A key without numbers: verification reads the signature and then refuses it.
void check_certificate(const std::uint8_t *data, std::size_t size) {
    static X509_CERT *const cert = make_certificate();
    static KCDSA *const key = new_KCDSA();
    BIT_STRING *bits = binaryToBIT_STRING(data, static_cast<std::uint32_t>(size));
    if (bits == nullptr) return;
    require(set_X509_sig_value(cert, bits) == 0);
    free_BIT_STRING(bits);
    const std::uint32_t status = verify_KCDSA_SIG_X509_CERT(cert, key);
    require(status == 0x46180104 || status == 1 || status == TLX_KCDSA_BAD_KEY);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    check_certificate(data, size);
    const Node node(decodeToDERSequence_n(data, static_cast<std::uint32_t>(size)));
    if (!node) return 0;
    check(decode_ECDSASignatureValue, node.get());
    check(decode_KCDSASignatureValue, node.get());
    return 0;
}
