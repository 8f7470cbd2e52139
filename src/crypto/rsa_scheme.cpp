// RSASSA-PKCS1-v1_5 and RSASSA-PSS (RFC 8017, section 8).
#include <openssl/rsa.h>

#include <cstring>

#include "crypto/backend.hpp"
#include "crypto/memory.hpp"
#include "crypto/rsa.hpp"

using namespace tlx;

namespace {

// Object identifiers of digests, as the contents octets of their encoding.
struct DigestName {
    u32 digest_id;
    u8 length;
    u8 octets[9];
};

constexpr DigestName kDigestNames[] = {
    // 1.2.840.113549.2.5
    {TLX_DIGEST_MD5, 8, {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x02, 0x05}},
    // 1.3.14.3.2.26
    {TLX_DIGEST_SHA1, 5, {0x2B, 0x0E, 0x03, 0x02, 0x1A}},
    // 2.16.840.1.101.3.4.2.4, .1, .2, .3, .5 and .6
    {TLX_DIGEST_SHA224, 9, {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x04}},
    {TLX_DIGEST_SHA256, 9, {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x01}},
    {TLX_DIGEST_SHA384, 9, {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x02}},
    {TLX_DIGEST_SHA512, 9, {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x03}},
    {TLX_DIGEST_SHA512_224, 9, {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x05}},
    {TLX_DIGEST_SHA512_256, 9, {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x06}},
    // 2.16.840.1.101.3.4.2.7 to .10
    {TLX_DIGEST_SHA3_224, 9, {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x07}},
    {TLX_DIGEST_SHA3_256, 9, {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x08}},
    {TLX_DIGEST_SHA3_384, 9, {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x09}},
    {TLX_DIGEST_SHA3_512, 9, {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x0A}},
    // 1.2.410.200004.1.2
    {TLX_DIGEST_HAS160, 8, {0x2A, 0x83, 0x1A, 0x8C, 0x9A, 0x44, 0x01, 0x02}},
};

const DigestName *find_digest_name(u32 digest_id) noexcept {
    for (const DigestName &name : kDigestNames) {
        if (name.digest_id == digest_id) return &name;
    }
    return nullptr;
}

bool is_available(u32 digest_id, u32 mode) noexcept {
    switch (mode) {
        case TLX_RSA_MODE_NONE_GIVEN:
        case TLX_RSA_MODE_PKCS1:
            return find_digest_name(digest_id) != nullptr && get_DigestLength(digest_id) != 0;
        case TLX_RSA_MODE_PSS:
            return backend_digest(digest_id) != nullptr;
        default:
            return false;
    }
}

// DigestInfo ::= SEQUENCE {
//   digestAlgorithm AlgorithmIdentifier, digest OCTET STRING }
// with NULL parameters in the AlgorithmIdentifier.
class DigestInfo {
  public:
    DigestInfo(u32 digest_id, Bytes hash) noexcept {
        const DigestName &name = *find_digest_name(digest_id);
        const auto hash_length = static_cast<u8>(hash.size());
        const auto algorithm_length = static_cast<u8>(2 + name.length + 2);
        put_header(0x30, static_cast<u8>(2 + algorithm_length + 2 + hash_length));
        put_header(0x30, algorithm_length);
        put_header(0x06, name.length);
        put({name.octets, name.length});
        put_header(0x05, 0);
        put_header(0x04, hash_length);
        put(hash);
    }
    Bytes bytes() const noexcept { return {octets_, length_}; }

  private:
    void put_header(u8 tag, u8 length) noexcept {
        octets_[length_++] = tag;
        octets_[length_++] = length;
    }
    void put(Bytes bytes) noexcept {
        std::memcpy(octets_ + length_, bytes.data(), bytes.size());
        length_ += bytes.size();
    }

    u8 octets_[TLX_RSA_DIGEST_INFO_MAX_LENGTH];
    std::size_t length_ = 0;
};

KeyContext make_signer(EVP_PKEY *key, int padding) noexcept {
    KeyContext context(EVP_PKEY_CTX_new_from_pkey(backend(), key, nullptr));
    if (context == nullptr || EVP_PKEY_sign_init(context.get()) != 1 ||
        EVP_PKEY_CTX_set_rsa_padding(context.get(), padding) != 1) {
        return nullptr;
    }
    return context;
}

bool set_pss_parameters(EVP_PKEY_CTX *context, const RSA_UNIT &unit, u32 digest_id) noexcept {
    return EVP_PKEY_CTX_set_signature_md(context, backend_digest(digest_id)) == 1 &&
           EVP_PKEY_CTX_set_rsa_mgf1_md(context, backend_digest(unit.pss_mgf_digest_id)) == 1 &&
           EVP_PKEY_CTX_set_rsa_pss_saltlen(context, static_cast<int>(unit.pss_salt_length)) == 1;
}

// Signs a hash with PSS, or a whole DigestInfo with PKCS #1 v1.5, because libcrypto knows no HAS-160.
// Preparing a context takes a while, so the cache keeps the last one for PKCS #1 v1.5.
bool sign_octets(const RSA_UNIT &unit, EVP_PKEY *key, u32 digest_id, u32 mode, Bytes octets,
                 u8 *sig) noexcept {
    std::size_t length = get_RSA_length(&unit);
    if (mode == TLX_RSA_MODE_PSS) {
        const KeyContext context = make_signer(key, RSA_PKCS1_PSS_PADDING);
        return context != nullptr && set_pss_parameters(context.get(), unit, digest_id) &&
               EVP_PKEY_sign(context.get(), sig, &length, octets.data(), octets.size()) == 1;
    }
    KeyContext context(unit.cache->signer.exchange(nullptr, std::memory_order_acq_rel));
    if (context == nullptr) context = make_signer(key, RSA_PKCS1_PADDING);
    if (context == nullptr) return false;
    const int result = EVP_PKEY_sign(context.get(), sig, &length, octets.data(), octets.size());
    context.reset(unit.cache->signer.exchange(context.release(), std::memory_order_acq_rel));
    return result == 1;
}

u32 verify_hash(const RSA_UNIT &unit, u32 digest_id, u32 mode, Bytes hash, Bytes signature) noexcept {
    const ErrorScope errors;
    if (mode == TLX_RSA_MODE_PSS) return verify_pss(unit, digest_id, hash, signature);
    return verify_pkcs1(unit, DigestInfo(digest_id, hash).bytes(), signature);
}

// 0, TLX_RSA_BAD_KEY, 1 or the status of an external function.
u32 make_signature(const RSA_UNIT &unit, u32 digest_id, u32 mode, Bytes hash, u8 *sig) noexcept {
    RSA_SIGNATURE_INPUT input;
    prepare_signature(unit, digest_id, mode, hash, input);
    if (unit.external != nullptr) return sign_externally(unit, input, sig);
    EVP_PKEY *key = nullptr;
    if (const u32 status = get_backend_key(unit, &key); status != 0) return status;
    const Bytes octets = mode == TLX_RSA_MODE_PSS ? hash : Bytes(input.digest_info, input.digest_info_length);
    return sign_octets(unit, key, digest_id, mode, octets, sig) ? 0 : 1;
}

// A signature that does not verify, made with numbers that do not belong together or in a fault of the
// machine, could give the private key away, so the caller never receives it.
u32 sign_hash(const RSA_UNIT &unit, u32 digest_id, u32 mode, Bytes hash, u8 *sig, u32 *sig_len) noexcept {
    const ErrorScope errors;
    if (const u32 status = make_signature(unit, digest_id, mode, hash, sig); status != 0) return status;
    const u32 length = get_RSA_length(&unit);
    if (const u32 status = verify_hash(unit, digest_id, mode, hash, {sig, length}); status != 0) {
        tlx_wipe(sig, length);
        return status == TLX_RSA_BAD_SIGNATURE ? TLX_RSA_BAD_KEY : status;
    }
    *sig_len = length;
    return 0;
}

}  // namespace

void tlx::prepare_signature(const RSA_UNIT &unit, u32 digest_id, u32 mode, Bytes hash,
                            RSA_SIGNATURE_INPUT &input) noexcept {
    input = {};
    input.digest_id = digest_id;
    input.digest_length = static_cast<u32>(hash.size());
    std::memcpy(input.digest, hash.data(), hash.size());
    if (mode == TLX_RSA_MODE_PSS) {
        input.mode = TLX_RSA_MODE_PSS;
        input.mgf_digest_id = unit.pss_mgf_digest_id;
        input.salt_length = unit.pss_salt_length;
        return;
    }
    input.mode = TLX_RSA_MODE_PKCS1;
    const DigestInfo info(digest_id, hash);
    input.digest_info_length = static_cast<u32>(info.bytes().size());
    std::memcpy(input.digest_info, info.bytes().data(), info.bytes().size());
}

extern "C" {

uint32_t get_RSA_SIGNATURE_INPUT(const RSA_UNIT *unit, uint32_t digest_id, uint32_t mode, const uint8_t *data,
                                 uint32_t len, RSA_SIGNATURE_INPUT *input) {
    if (input == nullptr || !is_available(digest_id, mode)) return 1;
    u8 hash[TLX_DIGEST_MAX_LENGTH];
    u32 hash_len = 0;
    if (Digest(digest_id, data, len, hash, &hash_len) != 0) return 1;
    const RSA_UNIT defaults;
    prepare_signature(unit == nullptr ? defaults : *unit, digest_id, mode, {hash, hash_len}, *input);
    return 0;
}

uint32_t init_RSASSA(RSA_UNIT *unit, uint32_t digest_id, uint32_t mode, uint32_t direction) {
    if (unit == nullptr) return 1;
    unit->signature = RsaTask::none;
    if (direction > 1 || !is_available(digest_id, mode)) return 1;
    if (direction == 1 && unit->kind == TLX_RSA_PUBLIC) return 1;
    if (init_Digest(&unit->digest, digest_id) != 0) return 1;
    unit->signature = direction == 1 ? RsaTask::sign : RsaTask::verify;
    unit->signature_mode = mode;
    return 0;
}

uint32_t update_RSASSA(RSA_UNIT *unit, const uint8_t *data, uint32_t len) {
    if (unit == nullptr || unit->signature == RsaTask::none) return 1;
    return update_Digest(&unit->digest, data, len);
}

uint32_t final_RSASSA(RSA_UNIT *unit, uint8_t *sig, uint32_t *sig_len) {
    if (unit == nullptr || sig == nullptr || sig_len == nullptr) return 1;
    if (unit->signature == RsaTask::verify) return verify_RSASSA(unit, sig, *sig_len);
    *sig_len = 0;
    if (unit->signature == RsaTask::none) return 1;
    unit->signature = RsaTask::none;
    u8 hash[TLX_DIGEST_MAX_LENGTH];
    u32 hash_len = 0;
    if (final_Digest(&unit->digest, hash, &hash_len) != 0) return 1;
    return sign_hash(*unit, unit->digest.id, unit->signature_mode, {hash, hash_len}, sig, sig_len);
}

uint32_t verify_RSASSA(RSA_UNIT *unit, const uint8_t *sig, uint32_t sig_len) {
    if (unit == nullptr || sig == nullptr || unit->signature != RsaTask::verify) return 1;
    unit->signature = RsaTask::none;
    u8 hash[TLX_DIGEST_MAX_LENGTH];
    u32 hash_len = 0;
    if (final_Digest(&unit->digest, hash, &hash_len) != 0) return 1;
    return verify_hash(*unit, unit->digest.id, unit->signature_mode, {hash, hash_len}, {sig, sig_len});
}

uint32_t sign_RSA(const RSA_UNIT *unit, uint32_t digest_id, uint32_t mode, const uint8_t *data, uint32_t len,
                  uint8_t *sig, uint32_t *sig_len) {
    u8 hash[TLX_DIGEST_MAX_LENGTH];
    u32 hash_len = 0;
    if (sig_len == nullptr) return 1;
    *sig_len = 0;
    if (!is_available(digest_id, mode) || Digest(digest_id, data, len, hash, &hash_len) != 0) return 1;
    return sign_RSA_digest(unit, digest_id, mode, hash, hash_len, sig, sig_len);
}

uint32_t sign_RSA_digest(const RSA_UNIT *unit, uint32_t digest_id, uint32_t mode, const uint8_t *digest,
                         uint32_t digest_len, uint8_t *sig, uint32_t *sig_len) {
    if (sig_len == nullptr) return 1;
    *sig_len = 0;
    if (unit == nullptr || unit->kind == TLX_RSA_PUBLIC || digest == nullptr || sig == nullptr) return 1;
    if (!is_available(digest_id, mode) || digest_len != get_DigestLength(digest_id)) return 1;
    return sign_hash(*unit, digest_id, mode, {digest, digest_len}, sig, sig_len);
}

uint32_t verify_RSA(const RSA_UNIT *unit, uint32_t digest_id, uint32_t mode, const uint8_t *data,
                    uint32_t len, const uint8_t *sig, uint32_t sig_len) {
    if (unit == nullptr || (sig == nullptr && sig_len > 0) || !is_available(digest_id, mode)) return 1;
    if (sig_len == 0) return TLX_RSA_BAD_SIGNATURE;
    u8 hash[TLX_DIGEST_MAX_LENGTH];
    u32 hash_len = 0;
    if (Digest(digest_id, data, len, hash, &hash_len) != 0) return 1;
    return verify_hash(*unit, digest_id, mode, {hash, hash_len}, {sig, sig_len});
}

uint32_t verify_RSA_digest(const RSA_UNIT *unit, uint32_t digest_id, uint32_t mode, const uint8_t *digest,
                           uint32_t digest_len, const uint8_t *sig, uint32_t sig_len) {
    if (unit == nullptr || digest == nullptr || (sig == nullptr && sig_len > 0)) return 1;
    if (!is_available(digest_id, mode) || digest_len != get_DigestLength(digest_id)) return 1;
    if (sig_len == 0) return TLX_RSA_BAD_SIGNATURE;
    return verify_hash(*unit, digest_id, mode, {digest, digest_len}, {sig, sig_len});
}

}  // extern "C"
