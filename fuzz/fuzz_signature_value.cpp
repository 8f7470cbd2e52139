// Signature values from hostile octets, alone and as the signature of a certificate. What decodes is written,
// and what was written decodes to the same again.
#include "values.hpp"

namespace {

using Decoder = decltype(&decode_KCDSASignatureValue);

struct Value {
    fuzz::Octets r;
    fuzz::Octets s;

    bool operator==(const Value &) const = default;
};

bool decode(Decoder decoder, const ASN1_UNIT *node, Value &value) {
    std::uint8_t *r = nullptr;
    std::uint8_t *s = nullptr;
    std::uint32_t r_len = 0;
    std::uint32_t s_len = 0;
    if (decoder(&r, &r_len, &s, &s_len, node) != 0) return false;
    const tlx::OwnedOctets<std::uint8_t> r_owner(r), s_owner(s);
    value = {{r, r + r_len}, {s, s + s_len}};
    return true;
}

std::string encode(Decoder decoder, const Value &value) {
    const auto r_len = static_cast<std::int32_t>(value.r.size());
    const auto s_len = static_cast<std::int32_t>(value.s.size());
    std::uint8_t *out = nullptr;
    std::uint32_t len = 0;
    if (decoder == decode_KCDSASignatureValue) {
        len = encode_KCDSASignatureValue(&out, value.r.data(), r_len, value.s.data(), s_len);
    } else {
        fuzz::require(encode_ECDSASignatureValue(&out, &len, value.r.data(), r_len, value.s.data(), s_len) ==
                      0);
    }
    fuzz::require(out != nullptr);
    return fuzz::taken(out, len);
}

void check(Decoder decoder, const ASN1_UNIT *node) {
    Value value;
    if (!decode(decoder, node, value) || value.r.empty()) return;
    const std::string der = encode(decoder, value);
    Value same;
    fuzz::require(decode(decoder, fuzz::node_of(der.data(), der.size()).get(), same) && same == value);
}

/// A certificate with the least that is encoded.
X509_CERT *make_certificate() {
    // KCDSA1, names without attributes, twice the same second, a key and a signature of one octet.
    const fuzz::Octets der = fuzz::hex(
        "30573045020101300A06082A831A8C9A4401153000301E170D3236313132323032313832325A170D3236313132323032"
        "313832325A30003010300A06082A831A8C9A44011503020079300A06082A831A8C9A44011503020078");
    void *cert = nullptr;
    fuzz::require(readDER_from_Buffer(&cert, TLX_DECODER(Seq_to_X509_CERT), der.data(), 89) == 0);
    return static_cast<X509_CERT *>(cert);
}

/// A key without numbers: the signature is read, and then found wanting.
void check_certificate(const std::uint8_t *data, std::size_t size) {
    static X509_CERT *const cert = make_certificate();
    static KCDSA *const key = new_KCDSA();
    const fuzz::String bits(binaryToBIT_STRING(data, static_cast<std::uint32_t>(size)));
    if (bits == nullptr) return;
    fuzz::require(set_X509_sig_value(cert, bits.get()) == 0);
    const std::uint32_t status = verify_KCDSA_SIG_X509_CERT(cert, key);
    fuzz::require(status == 0x46180104 || status == 1 || status == TLX_KCDSA_BAD_KEY);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    check_certificate(data, size);
    const fuzz::Node node = fuzz::node_of(data, size);
    if (!node) return 0;
    check(decode_ECDSASignatureValue, node.get());
    check(decode_KCDSASignatureValue, node.get());
    return 0;
}
