#include <tlxpki/signature.h>

#include "verify/private_key.hpp"
#include "verify/record_view.hpp"

using namespace tlx;

namespace {

constexpr u32 status_of(Rule rule) noexcept {
    return static_cast<u32>(rule);
}

Rule read_identifier(const X509_ALGO_IDENTIFIER *identifier, SignatureAlgorithm &algorithm) noexcept {
    EncodedAlgorithm encoded;
    const Rule rule = encoded.read(identifier);
    return rule != Rule::kNone ? rule : read_signature_algorithm(encoded.view(), algorithm);
}

u32 status_of_signing(u32 status) noexcept {
    switch (status) {
        case kNotOfKey:
            return status_of(Rule::kAlgorithmNotOfKey);
        case TLX_RSA_BAD_KEY:
            return status_of(Rule::kBrokenKey);
        case 1:
            return status_of(Rule::kNoMemory);
        default:
            return status;
    }
}

}  // namespace

uint32_t make_SIGNATURE(const ASYMMETRIC_KEY *key, const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *data,
                        uint32_t len, OCTET_STRING **signature) {
    if (key == nullptr || algorithm == nullptr || (data == nullptr && len > 0) || signature == nullptr) {
        return 0x550D0049;
    }
    SignatureAlgorithm known;
    if (const Rule rule = read_identifier(algorithm, known); rule != Rule::kNone) return status_of(rule);
    Encoder value;
    if (const u32 status = make_signature(*key, known, {data, len}, value); status != 0) {
        return status_of_signing(status);
    }
    OCTET_STRING *made = new_string(TLX_TAG_OCTET_STRING, value.bytes());
    if (made == nullptr) return status_of(Rule::kNoMemory);
    *signature = made;
    return 0;
}

uint32_t verify_SIGNATURE(const X509_PUBKEY *key, const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *data,
                          uint32_t len, const uint8_t *signature, uint32_t signature_len) {
    if (key == nullptr || algorithm == nullptr || (data == nullptr && len > 0) ||
        (signature == nullptr && signature_len > 0)) {
        return 0x550E0049;
    }
    SignatureAlgorithm known;
    PublicKey made;
    if (const Rule rule = read_identifier(algorithm, known); rule != Rule::kNone) return status_of(rule);
    if (const Rule rule = read_public_key(key, made); rule != Rule::kNone) return status_of(rule);
    return status_of(verify_signature(made, known, {data, len}, {signature, signature_len}));
}
