#include "keys/pbes2.hpp"

#include <tlxpki/objects.h>

#include <bit>

using namespace tlx;

namespace {

constexpr std::string_view kScrypt = "1.3.6.1.4.1.11591.4.11";

/// The identifier of an AlgorithmIdentifier; null when there is none.
Owned<OBJECT_IDENTIFIER> identifier_of(const Element &algorithm) noexcept {
    Element identifier;
    if (!Cursor(algorithm).next(TLX_TAG_OBJECT_IDENTIFIER, identifier)) return nullptr;
    return Owned<OBJECT_IDENTIFIER>(decode_oid(identifier.contents));
}

/// What the parameters of PBES2 say of its cipher. `iv` stays the algorithm's.
bool read_cipher(const X509_ALGO_IDENTIFIER *algorithm, u32 &cipher_id, const u8 *&iv) noexcept {
    if (read_content_algorithm(algorithm, cipher_id, iv)) return true;
    // Ciphers that only the registry has: other modes than CBC.
    Element parameters;
    cipher_id = get_CipherID_from_OID(get_X509_ALGO_IDENTIFIER_OID(algorithm));
    if (!view_node(get_X509_ALGO_IDENTIFIER_parameters(algorithm), parameters)) return false;
    iv = parameters.contents.data();
    return get_KeyLength(cipher_id) != 0 && parameters.tag == TLX_TAG_OCTET_STRING &&
           parameters.contents.size() == get_IVLength(cipher_id);
}

/// Whether a keyLength, which may be absent, is what the cipher has.
bool fits_key_length(const BIGINT *key_length, u32 cipher_id) noexcept {
    return key_length == nullptr || get_BIGINT_word(key_length) == get_KeyLength(cipher_id);
}

/// What scrypt takes besides the password, and the cipher under the key that it gives.
struct ScryptParam {
    OCTET_STRING *salt;
    BIGINT *cost;
    BIGINT *block_size;
    BIGINT *parallelization;
    BIGINT *key_length;
    X509_ALGO_IDENTIFIER *scheme;
    OBJECT_IDENTIFIER *function;
};

// PBES2-params ::= SEQUENCE {
//     keyDerivationFunc  SEQUENCE {
//         algorithm          OBJECT IDENTIFIER,  -- id-scrypt (RFC 7914, section 7.1)
//         parameters         SEQUENCE {
//             salt                      OCTET STRING,
//             costParameter             INTEGER,
//             blockSize                 INTEGER,
//             parallelizationParameter  INTEGER,
//             keyLength                 INTEGER OPTIONAL } },
//     encryptionScheme   AlgorithmIdentifier }
constexpr auto kScryptParam = record<ScryptParam>(
    any_count(),
    group(kSequence, field<Oid>(&ScryptParam::function),
          group(kSequence, field<Joined>(&ScryptParam::salt), field<Integer>(&ScryptParam::cost),
                field<Integer>(&ScryptParam::block_size), field<Integer>(&ScryptParam::parallelization),
                optional<Integer>(&ScryptParam::key_length))),
    field<Nested<X509_ALGO_IDENTIFIER>>(&ScryptParam::scheme));

/// At most 256 MB of memory, and as many passes over it as an iteration count allows.
PbeOutcome derive_and_run(const ScryptParam &param, Bytes password, CipherJob job,
                          WorkBudget &budget) noexcept {
    constexpr u64 kMostMemory = u64{256} << 20;
    constexpr u64 kMostBlocks = kMostMemory / 128;
    const u64 cost = get_BIGINT_word(param.cost);
    const u64 block_size = get_BIGINT_word(param.block_size);
    const u64 lanes = get_BIGINT_word(param.parallelization);
    if (cost > kMostBlocks || block_size > kMostBlocks || lanes > kMostBlocks) {
        return PbeOutcome::too_much_work;
    }
    if (cost < 2 || !std::has_single_bit(cost) || block_size == 0 || lanes == 0) return PbeOutcome::broken;
    if ((cost + lanes) * block_size > kMostBlocks) return PbeOutcome::too_much_work;
    if (!budget.take(2 * cost * block_size * lanes)) return PbeOutcome::too_much_work;
    u32 cipher_id = 0;
    const u8 *iv = nullptr;
    if (!read_cipher(param.scheme, cipher_id, iv) || !fits_key_length(param.key_length, cipher_id)) {
        return PbeOutcome::unsupported;
    }
    const ScryptInput input = {password, octets_of(param.salt), cost, static_cast<u32>(block_size),
                               static_cast<u32>(lanes)};
    return run_scrypt(input, 2 * kMostMemory, cipher_id, iv, job);
}

}  // namespace

PbeOutcome tlx::decrypt_pbkdf2(const P5_PBE_PARAM &param, const PbeInput &input, CipherJob job) noexcept {
    u32 cipher_id = 0;
    const u8 *iv = nullptr;
    const Prf *prf = find_prf(param.prf);
    if (prf == nullptr || !read_cipher(param.encryptionScheme, cipher_id, iv) ||
        !fits_key_length(param.keyLength, cipher_id)) {
        return PbeOutcome::unsupported;
    }
    return run_pbes2(input, cipher_id, prf->digest_id, iv, job);
}

PbeOutcome tlx::decrypt_scrypt(const X509_ALGO_IDENTIFIER &algorithm, Bytes password, CipherJob job,
                               WorkBudget &budget) noexcept {
    Element element;
    ScryptParam param = {};
    ScryptParam *out = &param;
    const bool read = view_node(algorithm.parameters, element) && element.tag == kSequence &&
                      read_record(kScryptParam, element, &out) == 0;
    const bool other = param.function != nullptr && text_of(param.function) != kScrypt;
    PbeOutcome outcome = other ? PbeOutcome::unsupported : PbeOutcome::broken;
    if (read && !other) outcome = derive_and_run(param, password, job, budget);
    clean_record(kScryptParam, &param);
    return outcome;
}

Owned<OBJECT_IDENTIFIER> tlx::find_unsupported(const X509_ALGO_IDENTIFIER &algorithm) noexcept {
    Element parameters;
    Element derivation;
    Element cipher;
    const PbeAlgorithm *known = find_pbe_algorithm(text_of(algorithm.algorithm));
    if (known == nullptr || known->family != PbeFamily::pbes2 ||
        !view_node(algorithm.parameters, parameters)) {
        return Owned<OBJECT_IDENTIFIER>(dup_OBJECT_IDENTIFIER(algorithm.algorithm));
    }
    Cursor members(parameters);
    const bool read = members.next(TLX_TAG_SEQUENCE, derivation) && members.next(TLX_TAG_SEQUENCE, cipher);
    if (!read) return Owned<OBJECT_IDENTIFIER>(dup_OBJECT_IDENTIFIER(algorithm.algorithm));
    const Owned<P5_PBE_PARAM> param(get_P5_PBE_PARAM_from_X509_ALGO_IDENTIFIER(&algorithm));
    if (param && find_prf(param->prf) == nullptr) {
        return Owned<OBJECT_IDENTIFIER>(dup_OBJECT_IDENTIFIER(param->prf->algorithm));
    }
    Owned<OBJECT_IDENTIFIER> function = identifier_of(derivation);
    return !param && text_of(function.get()) != kScrypt ? std::move(function) : identifier_of(cipher);
}
