// EncryptedPrivateKeyInfo (RFC 5208, section 6), and the parameters of password-based encryption (RFC 8018,
// appendix A).
#include <tlxpki/objects.h>

#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"
#include "keys/key_file_records.hpp"

using namespace tlx;

namespace {

/// The algorithm identifier of an encrypted key: a failure to write it goes up, one to read it does not.
struct EncryptionAlgorithm : Nested<X509_ALGO_IDENTIFIER> {
    static void encode(Encoder &out, const type *value, u8 as) noexcept {
        Passing<X509_ALGO_IDENTIFIER>::encode(out, value, as);
    }
};

// EncryptedPrivateKeyInfo ::= SEQUENCE {
//     encryptionAlgorithm  EncryptionAlgorithmIdentifier,
//     encryptedData        EncryptedData }
constexpr auto kEncryptedKey = record<PKCS8>(any_count(), kept_word(&PKCS8::scheme),
                                             optional<EncryptionAlgorithm>(&PKCS8::encryptionAlgorithm),
                                             field<Joined>(&PKCS8::encryptedData));

/// The identifier of PBKDF2, which has no member of its own.
struct Pbkdf2Identifier {
    static void clear(P5_PBE_PARAM & /*record*/) noexcept {}
    static bool copy(P5_PBE_PARAM & /*to*/, const P5_PBE_PARAM & /*from*/) noexcept { return true; }
    static bool absent(const P5_PBE_PARAM & /*record*/) noexcept { return false; }
    static u32 read(Cursor &children, P5_PBE_PARAM & /*record*/) noexcept {
        Element element;
        if (!children.next(TLX_TAG_OBJECT_IDENTIFIER, element)) return kFieldFailed;
        const Owned<OBJECT_IDENTIFIER> identifier(decode_oid(element.contents));
        return oid_index(text_of(identifier.get())) == oid::kPbkdf2 ? 0 : kFieldFailed;
    }
    static void write(Encoder &out, const P5_PBE_PARAM & /*record*/) noexcept {
        out.oid(OID_LIST(oid::kPbkdf2)->dotted);
    }
};

using Param = P5_PBE_PARAM;
using Algorithm = Nested<X509_ALGO_IDENTIFIER>;

// PBEParameter ::= SEQUENCE { salt OCTET STRING, iterationCount INTEGER }
constexpr auto kPbes1Param =
    record<Param>(any_count(), field<Joined>(&Param::salt), field<Integer>(&Param::iterationCount),
                  kept<Algorithm>(&Param::encryptionScheme), kept<Integer>(&Param::keyLength),
                  kept<Algorithm>(&Param::prf));

// PBES2-params ::= SEQUENCE {
//     keyDerivationFunc  SEQUENCE {
//         algorithm          OBJECT IDENTIFIER,  -- id-PBKDF2
//         parameters         SEQUENCE {
//             salt               OCTET STRING,
//             iterationCount     INTEGER,
//             keyLength          INTEGER OPTIONAL,
//             prf                AlgorithmIdentifier DEFAULT algid-hmacWithSHA1 } },
//     encryptionScheme   AlgorithmIdentifier }
constexpr auto kPbes2Param =
    record<Param>(any_count(),
                  group(kSequence, Pbkdf2Identifier{},
                        group(kSequence, field<Joined>(&Param::salt), field<Integer>(&Param::iterationCount),
                              optional<Integer>(&Param::keyLength), trailing<Algorithm>(&Param::prf))),
                  field<Algorithm>(&Param::encryptionScheme));

}  // namespace

TLX_DEFINE_RECORD_NEW(PKCS8)
TLX_DEFINE_RECORD_LIFE(PKCS8, kEncryptedKey)
TLX_DEFINE_RECORD_CODEC(PKCS8, kEncryptedKey)

uint32_t Seq_to_P8_ENCRYPTED_KEY(const ASN1_UNIT *node, P8_ENCRYPTED_KEY **out) {
    return decode_node(node, out, codes::PKCS8.decode);
}
uint32_t P8_ENCRYPTED_KEY_to_Seq(const P8_ENCRYPTED_KEY *container, ASN1_UNIT **out) {
    return encode_node(container, out, codes::PKCS8.encode);
}

TLX_DEFINE_RECORD_NEW(P5_PBE_PARAM)
TLX_DEFINE_RECORD_LIFE(P5_PBE_PARAM, kPbes2Param)
TLX_DEFINE_RECORD_DECODER(P5_PBE_PARAM)
TLX_DEFINE_RECORD_ENCODER(P5_PBE_PARAM)

// By hand because the first child tells which of the two it is.
u32 Codec<P5_PBE_PARAM>::decode(const Element &element, P5_PBE_PARAM **out) noexcept {
    Element first;
    const bool is_pbes2 = Cursor(element).next(first) && first.tag == kSequence;
    return is_pbes2 ? decode_record(kPbes2Param, element, out, codes::P5_PBE_PARAM.decode)
                    : decode_record(kPbes1Param, element, out, codes::P5_PBE_PARAM.decode);
}

void Codec<P5_PBE_PARAM>::encode(Encoder &out, const P5_PBE_PARAM *param, u8 tag) noexcept {
    if (param == nullptr) return out.fail();
    if (param->encryptionScheme != nullptr) return kPbes2Param.write(out, *param, tag);
    kPbes1Param.write(out, *param, tag);
}

uint32_t set_OID_PKCS8(PKCS8 *container, const OBJECT_IDENTIFIER *oid) {
    if (container == nullptr || oid == nullptr) return 1;
    if (container->encryptionAlgorithm != nullptr) {
        return set_X509_ALGO_IDENTIFIER_OID(container->encryptionAlgorithm, oid);
    }
    Owned<X509_ALGO_IDENTIFIER> algorithm(new_X509_ALGO_IDENTIFIER());
    if (!algorithm || set_X509_ALGO_IDENTIFIER_OID(algorithm.get(), oid) != 0) return 1;
    container->encryptionAlgorithm = algorithm.release();
    return 0;
}

OBJECT_IDENTIFIER *get_OID_PKCS8(const PKCS8 *container) {
    return container == nullptr ? nullptr : get_X509_ALGO_IDENTIFIER_OID(container->encryptionAlgorithm);
}

uint32_t set_encryptedData_PKCS8(PKCS8 *container, const OCTET_STRING *data) {
    if (container == nullptr) return 1;
    return replace_by_copy<dup_ASN1_STRING, free_ASN1_STRING>(container->encryptedData, data);
}

OCTET_STRING *get_encryptedData_PKCS8(const PKCS8 *container) {
    return container == nullptr ? nullptr : container->encryptedData;
}

uint32_t set_P5_PBE_PARAM(P5_PBE_PARAM *param, const uint8_t *salt, uint32_t salt_len, uint32_t iterations,
                          const X509_ALGO_IDENTIFIER *scheme) {
    if (param == nullptr || salt == nullptr || salt_len > kMaxLength) return 1;
    Owned<ASN1_STRING> octets(new_string(TLX_TAG_OCTET_STRING, {salt, salt_len}));
    Owned<BIGINT> count(new_BIGINT());
    Owned<X509_ALGO_IDENTIFIER> copy(dup_X509_ALGO_IDENTIFIER(scheme));
    if (!octets || !count || set_BIGINT_word(count.get(), iterations) != 0 || (scheme != nullptr && !copy)) {
        return 1;
    }
    free_ASN1_STRING(std::exchange(param->salt, octets.release()));
    free_BIGINT(std::exchange(param->iterationCount, count.release()));
    free_X509_ALGO_IDENTIFIER(std::exchange(param->encryptionScheme, copy.release()));
    return 0;
}

uint32_t set_PKCS8_P5_PBE_PARAM(PKCS8 *container, const P5_PBE_PARAM *param) {
    if (container == nullptr) return 0x4C080049;
    ASN1_UNIT *made = nullptr;
    if (const u32 status = P5_PBE_PARAM_to_Seq(param, &made); status != 0) return status;
    const Owned<ASN1_UNIT> node(made);
    if (container->encryptionAlgorithm == nullptr) {
        container->encryptionAlgorithm = new_X509_ALGO_IDENTIFIER();
    }
    return set_X509_ALGO_IDENTIFIER_parameters(container->encryptionAlgorithm, made) == 0 ? 0 : 0x4C08003C;
}

P5_PBE_PARAM *get_PKCS8_P5_PBE_PARAM(const PKCS8 *container) {
    return container == nullptr ? nullptr
                                : get_P5_PBE_PARAM_from_X509_ALGO_IDENTIFIER(container->encryptionAlgorithm);
}

P5_PBE_PARAM *get_P5_PBE_PARAM_from_X509_ALGO_IDENTIFIER(const X509_ALGO_IDENTIFIER *algorithm) {
    P5_PBE_PARAM *param = nullptr;
    if (algorithm == nullptr || Seq_to_P5_PBE_PARAM(algorithm->parameters, &param) != 0) return nullptr;
    return param;
}
