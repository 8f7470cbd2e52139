// Private keys under a password, by a row of the registry.
#include <tlxcrypto/digest.h>
#include <tlxpki/objects.h>
#include <tlxpki/pkcs5.h>

#include "asn1/oid_lookup.hpp"
#include "keys/key_encryption.hpp"

using namespace tlx;

namespace {

// Classes of get_AlgorType_from_OID().
constexpr u32 kDigest = 1;
constexpr u32 kPasswordBased = 4;

constexpr bool is_des(u32 cipher_id) noexcept {
    return (cipher_id & ~TLX_CIPHER_MODE_MASK) == TLX_CIPHER_DES;
}

/// The scheme that an identifier stands for here. False when it is none.
bool find_scheme(const OBJECT_IDENTIFIER *identifier, PbeAlgorithm &algorithm) noexcept {
    const std::string_view dotted = text_of(identifier);
    const u32 cipher_id = get_CipherID_from_OID(identifier);
    if (is_des(cipher_id)) {
        const u32 digest_id = get_DigestID_from_OID(identifier);
        algorithm = {"", dotted, PbeFamily::pbes1, cipher_id, digest_id == 0 ? TLX_DIGEST_SHA1 : digest_id};
        return true;
    }
    const PbeAlgorithm *known = find_pbe_algorithm(dotted);
    if (known == nullptr || (known->family > PbeFamily::gpki && known->family != PbeFamily::pbes2)) {
        return false;
    }
    algorithm = *known;
    return true;
}

/// PBES2 with the cipher of an identifier. False for one that is no symmetric cipher.
bool choose_pbes2(const OBJECT_IDENTIFIER *identifier, PbeChoice &choice) noexcept {
    const u32 cipher_id = get_CipherID_from_OID(identifier);
    if (get_KeyLength(cipher_id) == 0 || get_AlgorType_from_OID(identifier) == kPasswordBased) return false;
    choice.algorithm = pbe_algorithms().front();
    choice.cipher = {"", text_of(identifier), cipher_id};
    return true;
}

/// The pseudorandom function with the digest of a row, of row 0 HMAC with SHA-1; null when there is none.
const Prf *find_prf_of_row(u32 index) noexcept {
    if (index == 0) return prfs().data();
    const Owned<OBJECT_IDENTIFIER> identifier(index_to_OBJECT_IDENTIFIER(static_cast<i32>(index)));
    if (get_AlgorType_from_OID(identifier.get()) != kDigest) return nullptr;
    u32 digest_id = get_DigestID_from_OID(identifier.get());
    if (digest_id == TLX_HMAC_SHA1) digest_id = TLX_DIGEST_SHA1;
    for (const Prf &prf : prfs()) {
        if (prf.digest_id == digest_id) return &prf;
    }
    return nullptr;
}

u32 seal(const P8_PRIV_KEY_INFO &info, const PbeChoice &choice, Bytes password,
         P8_ENCRYPTED_KEY **out) noexcept {
    switch (encrypt_key_info(info, choice, {password, {}}, out)) {
        case SealOutcome::done:
            return 0;
        case SealOutcome::not_encoded:
            return 0x4A060030;
        default:
            return 0x4A06003C;
    }
}

}  // namespace

uint32_t encrypt_PKCS5(const P8_PRIV_KEY_INFO *info, P8_ENCRYPTED_KEY **out, const char *password,
                       uint32_t password_len, const uint8_t *salt, uint32_t salt_len, uint32_t iterations,
                       uint32_t oid_index) {
    const Owned<OBJECT_IDENTIFIER> identifier(index_to_OBJECT_IDENTIFIER(static_cast<i32>(oid_index)));
    PbeChoice choice = {};
    if (!find_scheme(identifier.get(), choice.algorithm)) {
        return encrypt_PKCS5_ex(info, out, password, password_len, salt, salt_len, iterations, oid_index, 0);
    }
    if (info == nullptr || out == nullptr || password == nullptr || password_len == 0 || iterations == 0) {
        return 0x4A060049;
    }
    if (choice.algorithm.family == PbeFamily::pbes2) return 0x4A060047;
    choice.iterations = iterations;
    choice.iv = KisaIv::constant;
    if (salt != nullptr) choice.salt = {salt, salt_len};
    return seal(*info, choice, {reinterpret_cast<const u8 *>(password), password_len}, out);
}

uint32_t encrypt_PKCS5_ex(const P8_PRIV_KEY_INFO *info, P8_ENCRYPTED_KEY **out, const char *password,
                          uint32_t password_len, const uint8_t *salt, uint32_t salt_len, uint32_t iterations,
                          uint32_t oid_index, uint32_t prf_index) {
    if (info == nullptr || out == nullptr || password == nullptr || password_len == 0 || iterations == 0) {
        return 0x4A060049;
    }
    const Owned<OBJECT_IDENTIFIER> identifier(index_to_OBJECT_IDENTIFIER(static_cast<i32>(oid_index)));
    PbeChoice choice = {};
    choice.prf = find_prf_of_row(prf_index);
    if (choice.prf == nullptr || !choose_pbes2(identifier.get(), choice)) return 0x4A060047;
    choice.iterations = iterations;
    if (salt != nullptr) choice.salt = {salt, salt_len};
    return seal(*info, choice, {reinterpret_cast<const u8 *>(password), password_len}, out);
}

uint32_t decrypt_PKCS5(const P8_ENCRYPTED_KEY *container, P8_PRIV_KEY_INFO **out, const char *password,
                       uint32_t password_len) {
    if (container == nullptr || out == nullptr || password == nullptr || password_len == 0) return 0x4A070049;
    const Owned<P5_PBE_PARAM> param(get_PKCS8_P5_PBE_PARAM(container));
    if (!param) return 0x4A07003B;
    PbeAlgorithm algorithm = {};
    if (!find_scheme(get_OID_PKCS8(container), algorithm)) return 0x4A070047;
    const Bytes in = octets_of(container->encryptedData);
    const Bytes text(reinterpret_cast<const u8 *>(password), password_len);
    SecretBytes plain(in.size());
    if (!plain) return 0x4A07003C;
    u32 len = 0;
    WorkBudget budget;
    switch (decrypt_pbe(algorithm, *param, {text, {}}, in, plain.data(), len, budget)) {
        case PbeOutcome::done:
            break;
        case PbeOutcome::wrong_password:
        case PbeOutcome::bad_length:
            return TLX_CIPHER_BAD_PADDING;
        case PbeOutcome::broken:
            return 0x4A07003B;
        case PbeOutcome::no_memory:
            return 0x4A07003C;
        default:
            return 0x4A070047;
    }
    Element element;
    const bool begins_well = len > 1 && plain.data()[0] == kSequence && plain.data()[1] == 0x82;
    if (!begins_well || !read_element({plain.data(), len}, element)) return 0x4A070012;
    return Codec<P8_PRIV_KEY_INFO>::decode(element, out) == 0 ? 0 : 0x4A070012;
}
