#include "message/made_signature.hpp"

#include <tlxcrypto/digest.h>

#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "der/received_octets.hpp"
#include "verify/private_key.hpp"
#include "x509/signature_value.hpp"

namespace tlx {
namespace {

Owned<X509_ALGO_IDENTIFIER> read_back(const Encoder &written) noexcept {
    Element element;
    X509_ALGO_IDENTIFIER *made = nullptr;
    if (!written.ok() || !read_element(written.bytes(), element)) return nullptr;
    static_cast<void>(Codec<X509_ALGO_IDENTIFIER>::decode(element, &made));
    return Owned<X509_ALGO_IDENTIFIER>(made);
}

bool is_sha3(u32 digest_id) noexcept {
    constexpr u32 kFamily = TLX_DIGEST_SHA3_256 >> 16;
    return digest_id >> 16 == kFamily;
}

/// An unsigned number of so many octets from the first two on.
Owned<BIGINT> number_of(u8 first, u32 length) noexcept {
    u8 octets[TLX_ECDSA_MAX_LENGTH] = {first};
    return Owned<BIGINT>(binary_to_BIGINT(octets, length));
}

// ECDSA-Sig-Value ::= SEQUENCE { r INTEGER, s INTEGER }
/// Of each number about half begin with a zero octet because their first bit is set, but hardly any on P-521.
void write_ecdsa_zeros(Encoder &out, u32 bits) noexcept {
    const u32 length = (bits + 7) / 8;
    const bool is_whole = bits % 8 == 0;
    const auto sequence = out.sequence();
    out.integer(number_of(is_whole ? 0x80 : 1, length).get());
    out.integer(number_of(is_whole ? 0x40 : 1, length).get());
}

void write_zeros(Encoder &out, u32 length) noexcept {
    u8 *room = out.buffer().reserve(length);
    if (room == nullptr) return out.fail();
    std::fill_n(room, length, u8{0});
    out.buffer().advance(length);
}

void write_kcdsa_zeros(Encoder &out, const KCDSA *key, u32 digest_id) noexcept {
    constexpr u8 kZeros[TLX_KCDSA_MAX_LENGTH] = {};
    const u32 length = get_KCDSA_length(key);
    encode_kcdsa_signature(out, {kZeros, std::min(length, get_DigestLength(digest_id))},
                           number_of(0x40, length).get());
}

u32 status_of_signing(u32 status) noexcept {
    switch (status) {
        case kNotOfKey:
        case TLX_RSA_BAD_KEY:
            return 0x52840048;
        case 1:
            return 0x5284003C;
        default:
            return status;
    }
}

u32 sign_with_key(const SignedInput &input, const SignatureAlgorithm &algorithm,
                  Owned<OCTET_STRING> &signature) noexcept {
    Encoder value;
    const auto sign = input.signer.bare != 0 ? make_signature_of_digest : make_signature;
    const u32 status = sign(*input.signer.key, algorithm, input.octets, value);
    if (status != 0) return status_of_signing(status);
    signature.reset(new_string(TLX_TAG_OCTET_STRING, value.bytes()));
    return signature ? 0 : 0x5284003C;
}

u32 sign_elsewhere(const SignedInput &input, Owned<OCTET_STRING> &signature) noexcept {
    OCTET_STRING *made = nullptr;
    const MESSAGE_SIGNER &signer = input.signer;
    const u32 status =
        signer.sign(signer.sign_context, input.algorithm, input.octets.data(), size_of(input.octets), &made);
    signature.reset(made);
    if (status != 0) return status;
    return made != nullptr ? 0 : 0x52840054;
}

}  // namespace

u32 default_digest(const PublicKey &key) noexcept {
    if (key.kind == KeyKind::eddsa) {
        return get_EDDSA_KEY_curve(key.eddsa.get()) == TLX_CURVE_ED25519 ? TLX_DIGEST_SHA512
                                                                         : TLX_DIGEST_SHAKE256;
    }
    if (key.kind != KeyKind::ecdsa || key.bits == TLX_CURVE_P256) return TLX_DIGEST_SHA256;
    return key.bits == TLX_CURVE_P384 ? TLX_DIGEST_SHA384 : TLX_DIGEST_SHA512;
}

Owned<X509_ALGO_IDENTIFIER> make_digest_algorithm(u32 digest_id) noexcept {
    Encoder out;
    if (digest_id == TLX_DIGEST_HAS160) return algorithm_with_null(oid::kHas160);
    if (digest_id != TLX_DIGEST_SHAKE256) {
        write_digest(out, digest_id);
        return read_back(out);
    }
    constexpr u8 kBits[] = {2, 0};
    {
        const auto algorithm = out.sequence();
        out.oid("2.16.840.1.101.3.4.2.18");  // id-shake256-len (RFC 8419, section 2.3)
        out.primitive(TLX_TAG_INTEGER, kBits);
    }
    return read_back(out);
}

Owned<X509_ALGO_IDENTIFIER> make_signature_algorithm(const PublicKey &key, u32 digest_id, bool pss) noexcept {
    SignatureAlgorithm algorithm;
    algorithm.kind = key.kind;
    algorithm.is_pss = pss || key.is_pss_only;
    if (key.kind == KeyKind::kcdsa && !pss) return algorithm_with_null(oid::kKcdsa1);
    // As PKCS #7 calls it. The digest is the signer's.
    const bool is_named = algorithm.is_pss || is_sha3(digest_id);
    if (key.kind == KeyKind::rsa && !is_named) return algorithm_with_null(oid::kRsaEncryption);
    if (key.kind == KeyKind::eddsa) {
        algorithm.curve = get_EDDSA_KEY_curve(key.eddsa.get());
    } else {
        algorithm.digest_id = digest_id;
    }
    if (algorithm.is_pss) {
        algorithm.mgf_digest_id = digest_id;
        algorithm.salt_length = get_DigestLength(digest_id);
    }
    Encoder out;
    write_signature_algorithm(out, algorithm);
    return read_back(out);
}

Owned<OCTET_STRING> reserve_signature(const ASYMMETRIC_KEY &key, u32 digest_id) noexcept {
    Encoder out;
    switch (key.kind) {
        case TLX_KEY_RSA:
            write_zeros(out, get_RSA_length(static_cast<const RSA_UNIT *>(key.key)));
            break;
        case TLX_KEY_EDDSA:
            write_zeros(out, 2 * get_EDDSA_KEY_length(static_cast<const EDDSA_KEY *>(key.key)));
            break;
        case TLX_KEY_ECDSA:
            write_ecdsa_zeros(out, get_ECDSA_KEY_curve(static_cast<const ECDSA_KEY *>(key.key)));
            break;
        case TLX_KEY_KCDSA:
            write_kcdsa_zeros(out, static_cast<const KCDSA *>(key.key), digest_id);
            break;
        default:
            return nullptr;
    }
    return Owned<OCTET_STRING>(out.ok() ? new_string(TLX_TAG_OCTET_STRING, out.bytes()) : nullptr);
}

ASYMMETRIC_KEY holder_of(const PublicKey &key) noexcept {
    switch (key.kind) {
        case KeyKind::rsa:
            return {TLX_KEY_RSA, key.rsa.get()};
        case KeyKind::ecdsa:
            return {TLX_KEY_ECDSA, key.ecdsa.get()};
        case KeyKind::eddsa:
            return {TLX_KEY_EDDSA, key.eddsa.get()};
        case KeyKind::kcdsa:
            return {TLX_KEY_KCDSA, key.kcdsa.get()};
        default:
            return {};
    }
}

u32 sign_and_verify(const SignedInput &input, const SignerView &view, std::size_t length,
                    Owned<OCTET_STRING> &signature) noexcept {
    SignerScheme scheme;
    PublicKey key;
    if (!scheme.read(view) || read_signer_key(*input.signer.certificate, key) != Rule::kNone) {
        return 0x5284003C;
    }
    const u32 status = sign_to_length(length, signature, [&] {
        return input.signer.sign != nullptr ? sign_elsewhere(input, signature)
                                            : sign_with_key(input, scheme.signature, signature);
    });
    if (status != 0) return status;
    const auto verify = input.signer.bare != 0 ? verify_signature_of_digest : verify_signature;
    const Rule rule = verify(key, scheme.signature, input.octets, octets_of(signature.get()));
    if (rule == Rule::kNoMemory) return 0x5284003C;
    return rule == Rule::kNone ? 0 : 0x52840054;
}

}  // namespace tlx
