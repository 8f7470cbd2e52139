// RSASSA-PSS-params and RSAES-OAEP-params (RFC 4055).
#include <tlxpki/objects.h>
#include <tlxpki/pkcs1_param.h>

#include "asn1/oid_lookup.hpp"
#include "keyinfo/key_records.hpp"

TLX_DECLARE_CODEC(RSASSA_PSS_PARAM);
TLX_DECLARE_CODEC(RSAES_OAEP_PARAM);

using namespace tlx;

namespace {

using Pss = RSASSA_PSS_PARAM;
using Oaep = RSAES_OAEP_PARAM;
using Algorithm = Nested<X509_ALGO_IDENTIFIER>;

// RSASSA-PSS-params ::= SEQUENCE {
//     hashAlgorithm      [0] HashAlgorithm DEFAULT sha1Identifier,
//     maskGenAlgorithm   [1] MaskGenAlgorithm DEFAULT mgf1SHA1Identifier,
//     saltLength         [2] INTEGER DEFAULT 20,
//     trailerField       [3] INTEGER DEFAULT 1  -- never read or written
// }
constexpr auto kPss =
    record<Pss>(exactly(3), explicitly<Algorithm>(0, &Pss::hashAlgorithm),
                explicitly<Algorithm>(1, &Pss::maskGenAlgorithm), explicitly<Integer>(2, &Pss::saltLength));

// RSAES-OAEP-params ::= SEQUENCE {
//     hashFunc      [0] AlgorithmIdentifier DEFAULT sha1Identifier,
//     maskGenFunc   [1] AlgorithmIdentifier DEFAULT mgf1SHA1Identifier,
//     pSourceFunc   [2] AlgorithmIdentifier DEFAULT pSpecifiedEmptyIdentifier }
constexpr auto kOaep = record<Oaep>(exactly(3), explicitly<Algorithm>(0, &Oaep::hashAlgorithm),
                                    explicitly<Algorithm>(1, &Oaep::maskGenAlgorithm),
                                    explicitly<Algorithm>(2, &Oaep::pSourceAlgorithm));

// Decoding is by hand because each failure has a status of its own, a child without a context tag is passed
// over, and without a caller's record nothing is handed out.

/// Reads the next child when it carries a context tag, which has to be [number]; any other is passed over.
template <typename Kind, typename Param>
u32 read_field(Cursor &children, u8 number, Param &param, typename Kind::type *Param::*member,
               u32 undecodable) noexcept {
    Element child;
    Element value;
    if (!children.next(child)) return 0x49110104;
    if (!child.context_specific()) return 0;
    if (child.number() != number || !Cursor(child).next(Kind::tag, value)) return 0x49110104;
    return Kind::decode(value, &(param.*member)) == 0 ? 0 : undecodable;
}

u32 read_last(Cursor &children, Pss &param) noexcept {
    return read_field<Integer>(children, 2, param, &Pss::saltLength, 0x49110104);
}

u32 read_last(Cursor &children, Oaep &param) noexcept {
    return read_field<Algorithm>(children, 2, param, &Oaep::pSourceAlgorithm, 0x49160104);
}

template <typename Param>
u32 read_fields(Cursor children, Param &param) noexcept {
    u32 status = read_field<Algorithm>(children, 0, param, &Param::hashAlgorithm, 0x49160104);
    if (status == 0) status = read_field<Algorithm>(children, 1, param, &Param::maskGenAlgorithm, 0x49160104);
    return status == 0 ? read_last(children, param) : status;
}

/// Fills the caller's record, cleaned before and after a failure. When there is none the parameters are only
/// checked: callers rely on nothing being handed out that they would have to free.
template <typename Param>
u32 read_params(const Element &element, Param *out, void (*clean)(Param *)) noexcept {
    clean(out);
    if (count_children(element.contents) != 3) return 0x4916002B;
    Param param{};
    const u32 status = read_fields(Cursor(element), param);
    if (status == 0 && out != nullptr) {
        *out = param;
    } else {
        clean(&param);
    }
    return status;
}

/// An algorithm identifier with a copy of the algorithm, and with what the encoder holds as parameters.
X509_ALGO_IDENTIFIER *make_algorithm(const OBJECT_IDENTIFIER *oid, Encoder &parameters) noexcept {
    Owned<X509_ALGO_IDENTIFIER> algorithm(new_X509_ALGO_IDENTIFIER());
    if (!algorithm) return nullptr;
    algorithm->algorithm = dup_OBJECT_IDENTIFIER(oid);
    algorithm->parameters = parameters.to_node();
    const bool complete = algorithm->algorithm != nullptr && algorithm->parameters != nullptr;
    return complete ? algorithm.release() : nullptr;
}

/// False when there is no replacement; the member is unchanged then.
bool replace(X509_ALGO_IDENTIFIER *&member, X509_ALGO_IDENTIFIER *replacement) noexcept {
    if (replacement == nullptr) return false;
    free_X509_ALGO_IDENTIFIER(member);
    member = replacement;
    return true;
}

/// What both kinds of parameters return when an argument is missing, and when memory runs out.
struct SetterCodes {
    u32 missing_argument;
    u32 not_made;
};

template <typename Param>
u32 set_hash(Param *param, const OBJECT_IDENTIFIER *oid, SetterCodes codes) noexcept {
    if (param == nullptr || oid == nullptr) return codes.missing_argument;
    Encoder parameters;
    parameters.null();
    return replace(param->hashAlgorithm, make_algorithm(oid, parameters)) ? 0 : codes.not_made;
}

/// MGF1 with SHA-1, whatever the message digest: what programs of this field expect of each other.
template <typename Param>
u32 set_mask_generation(Param *param, const OBJECT_IDENTIFIER *oid, u32 missing_argument) noexcept {
    if (param == nullptr || oid == nullptr) return missing_argument;
    const Owned<OBJECT_IDENTIFIER> mgf1(index_to_OBJECT_IDENTIFIER(oid::kMgf1));
    if (!mgf1) return 0x4913003C;
    if (cmp_OBJECT_IDENTIFIER(oid, mgf1.get()) != 0) return 0x49130048;
    Encoder parameters;
    {
        const auto sha1 = parameters.sequence();
        parameters.oid(OID_LIST(oid::kSha1)->dotted);
        parameters.null();
    }
    return replace(param->maskGenAlgorithm, make_algorithm(oid, parameters)) ? 0 : 0x49130103;
}

template <typename Description, typename Param>
u32 set_parameters(X509_ALGO_IDENTIFIER *algorithm, const Description &description,
                   const Param *param) noexcept {
    if (algorithm == nullptr || param == nullptr) return 0x490F0049;
    Encoder encoder;
    description.write(encoder, *param);
    ASN1_UNIT *parameters = encoder.to_node();
    if (parameters == nullptr) return 0x490F0103;
    free_ASN1_UNIT(algorithm->parameters);
    algorithm->parameters = parameters;
    return 0;
}

/// Null for an index that the registry lacks, which the setters refuse as a missing argument.
Owned<OBJECT_IDENTIFIER> registered(int32_t index) noexcept {
    return Owned<OBJECT_IDENTIFIER>(index_to_OBJECT_IDENTIFIER(index));
}

}  // namespace

// ---- RSASSA-PSS ----

TLX_DEFINE_RECORD_NEW(RSASSA_PSS_PARAM)
TLX_DEFINE_RECORD_LIFE(RSASSA_PSS_PARAM, kPss)
TLX_DEFINE_CODEC_ENCODE(RSASSA_PSS_PARAM, kPss)
TLX_DEFINE_RECORD_DECODER(RSASSA_PSS_PARAM)
TLX_DEFINE_RECORD_ENCODER(RSASSA_PSS_PARAM)

u32 Codec<RSASSA_PSS_PARAM>::decode(const Element &element, RSASSA_PSS_PARAM **out) noexcept {
    return read_params(element, *out, clean_RSASSA_PSS_PARAM);
}

uint32_t set_RSASSA_PSS_PARAM_hashAlgorithm_OID(RSASSA_PSS_PARAM *param, const OBJECT_IDENTIFIER *oid) {
    return set_hash(param, oid, {0x49120049, 0x49120103});
}

uint32_t set_RSASSA_PSS_PARAM_hashAlgorithm(RSASSA_PSS_PARAM *param, int32_t index) {
    return set_RSASSA_PSS_PARAM_hashAlgorithm_OID(param, registered(index).get());
}

uint32_t set_RSASSA_PSS_PARAM_maskGenAlgorithm_OID(RSASSA_PSS_PARAM *param, const OBJECT_IDENTIFIER *oid) {
    return set_mask_generation(param, oid, 0x49130049);
}

uint32_t set_RSASSA_PSS_PARAM_maskGenAlgorithm(RSASSA_PSS_PARAM *param, int32_t index) {
    return set_RSASSA_PSS_PARAM_maskGenAlgorithm_OID(param, registered(index).get());
}

// The name says trailer field, but the salt length is what it sets: programs pass it their salt's octets.
uint32_t set_RSASSA_PSS_PARAM_trailerField(RSASSA_PSS_PARAM *param, uint8_t value) {
    if (param == nullptr || value == 0) return 0x49140049;
    BIGINT *number = binary_to_BIGINT(&value, 1);
    if (number == nullptr) return 0x49140049;
    free_BIGINT(param->saltLength);
    param->saltLength = number;
    return 0;
}

uint32_t set_X509_ALGO_IDENTIFIER_with_RSASSA_PSS_PARAM(X509_ALGO_IDENTIFIER *algorithm,
                                                        const RSASSA_PSS_PARAM *param) {
    return set_parameters(algorithm, kPss, param);
}

// ---- RSAES-OAEP ----

TLX_DEFINE_RECORD_NEW(RSAES_OAEP_PARAM)
TLX_DEFINE_RECORD_LIFE(RSAES_OAEP_PARAM, kOaep)
TLX_DEFINE_CODEC_ENCODE(RSAES_OAEP_PARAM, kOaep)
TLX_DEFINE_RECORD_DECODER(RSAES_OAEP_PARAM)
TLX_DEFINE_RECORD_ENCODER(RSAES_OAEP_PARAM)

u32 Codec<RSAES_OAEP_PARAM>::decode(const Element &element, RSAES_OAEP_PARAM **out) noexcept {
    return read_params(element, *out, clean_RSAES_OAEP_PARAM);
}

uint32_t set_RSAES_OAEP_PARAM_hashAlgorithm_OID(RSAES_OAEP_PARAM *param, const OBJECT_IDENTIFIER *oid) {
    return set_hash(param, oid, {0x490F0049, 0x490F0103});
}

uint32_t set_RSAES_OAEP_PARAM_hashAlgorithm(RSAES_OAEP_PARAM *param, int32_t index) {
    return set_RSAES_OAEP_PARAM_hashAlgorithm_OID(param, registered(index).get());
}

uint32_t set_RSAES_OAEP_PARAM_maskGenAlgorithm_OID(RSAES_OAEP_PARAM *param, const OBJECT_IDENTIFIER *oid) {
    return set_mask_generation(param, oid, 0x490F0049);
}

uint32_t set_RSAES_OAEP_PARAM_maskGenAlgorithm(RSAES_OAEP_PARAM *param, int32_t index) {
    return set_RSAES_OAEP_PARAM_maskGenAlgorithm_OID(param, registered(index).get());
}

// The mask generation function has to be there first: callers see a forgotten one here.
uint32_t set_RSAES_OAEP_PARAM_pSourceAlgorithm_OID(RSAES_OAEP_PARAM *param, const OBJECT_IDENTIFIER *oid,
                                                   const uint8_t *label, int32_t label_len) {
    if (param == nullptr || oid == nullptr) return 0x490F0049;
    if (param->maskGenAlgorithm == nullptr || (label != nullptr && label_len < 0)) return 0x490D0103;
    Encoder parameters;
    if (label != nullptr) {
        parameters.primitive(TLX_TAG_OCTET_STRING, {label, static_cast<std::size_t>(label_len)});
    } else {
        parameters.null();
    }
    return replace(param->pSourceAlgorithm, make_algorithm(oid, parameters)) ? 0 : 0x490D0103;
}

uint32_t set_RSAES_OAEP_PARAM_pSourceAlgorithm(RSAES_OAEP_PARAM *param, int32_t index, const uint8_t *label,
                                               int32_t label_len) {
    return set_RSAES_OAEP_PARAM_pSourceAlgorithm_OID(param, registered(index).get(), label, label_len);
}

uint32_t set_X509_ALGO_IDENTIFIER_with_RSAES_OAEP_PARAM(X509_ALGO_IDENTIFIER *algorithm,
                                                        const RSAES_OAEP_PARAM *param) {
    return set_parameters(algorithm, kOaep, param);
}
