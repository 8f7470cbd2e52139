// Signing (RFC 2315, sections 9.3 and 9.4), and digested data (section 12).
#include "message/sign.hpp"

#include <tlxcrypto/digest.h>
#include <tlxpki/objects.h>
#include <tlxpki/pkcs7_sign.h>

#include "message/key_signature.hpp"
#include "message/made_signature.hpp"
#include "message/signer_algorithms.hpp"

using namespace tlx;

namespace {

bool is_rsa(const P7_SIGNER_INFO &signer) noexcept {
    return signer.key != nullptr && signer.key->kind == TLX_KEY_RSA;
}

bool has_version_one(const P7_SIGNER_INFO &signer) noexcept {
    return get_BIGINT_bits(signer.version) == 1;
}

/// The checks that all three steps begin with.
u32 find_signers(const P7_CONTENT_INFO *info, SignedMembers &members) noexcept {
    if (info == nullptr) return 0x4B1C0049;
    if (!find_signed_members(info, members)) return 0x4B1C0048;
    return get_STACK_count(*members.signerInfos) == 0 ? 0x4B1C002B : 0;
}

u32 begin(const P7_SIGNER_INFO &signer) noexcept {
    const SignerAlgorithms algorithms(signer);
    if (algorithms.digest_id == 0 || algorithms.cipher_id == 0) return 0x4B1C002B;
    return begin_signature(signer.key, algorithms);
}

u32 set_version(P7_SIGNER_INFO &signer, const BIGINT *version) noexcept {
    if (version == nullptr) return 0x4B1C0049;
    BIGINT *copy = dup_BIGINT(version);
    if (copy == nullptr) return 0x4B1C003B;
    free_BIGINT(signer.version);
    signer.version = copy;
    return 0;
}

/// Gives a signer that has its version the algorithm that it has once it signs.
u32 name_algorithm(P7_SIGNER_INFO &signer) noexcept {
    const u32 row = algorithm_row(signer.digestEncryptionAlgorithm);
    const bool is_pss = row == oid::kRsassaPss || row == oid::kPss;
    u32 named = oid::kRsaEncryption;
    if (is_rsa(signer)) {
        const bool is_renamed = signs_attributes(signer, signer.version)
                                    ? has_version_one(signer) && !is_pss
                                    : is_BIGINT_zero(signer.version) != 0;
        if (!is_renamed) return 0;
    } else {
        named = oid::kKcdsa1;
    }
    return replace_algorithm(signer.digestEncryptionAlgorithm, named) ? 0 : 0x4B1C003B;
}

u32 take_attributes(const P7_SIGNER_INFO &signer) noexcept {
    Encoder set;
    if (!encode_attributes(signer, set)) return 0x4B1C005F;
    // Without its module, as callers compare it.
    return update_signature(signer.key, set.bytes(), 0x001C0048);
}

u32 take_content(const P7_SIGNER_INFO &signer, const ContentOctets &content) noexcept {
    if (!content.present()) return 0x4B1C0049;
    return update_signature(signer.key, content.bytes(), 0x4B1C0048);
}

/// Takes what the signer signs, and gives it the version and the algorithm that it has then.
u32 take(P7_SIGNER_INFO &signer, const BIGINT *version, const ContentOctets &content) noexcept {
    if (const u32 status = set_version(signer, version); status != 0) return status;
    const u32 status =
        signs_attributes(signer, version) ? take_attributes(signer) : take_content(signer, content);
    return status != 0 ? status : name_algorithm(signer);
}

u32 sign_one(P7_SIGNER_INFO &signer, const BIGINT *version, const ContentOctets &content) noexcept {
    if (const u32 status = take(signer, version, content); status != 0) return status;
    Owned<OCTET_STRING> signature;
    if (const u32 status = finish_signature(signer.key, signature); status != 0) return status;
    signer.encryptedDigest = signature.release();
    return 0;
}

u32 reserve_one(P7_SIGNER_INFO &signer, const BIGINT *version) noexcept {
    if (const u32 status = set_version(signer, version); status != 0) return status;
    if (signs_attributes(signer, version)) {
        Encoder set;
        if (!encode_attributes(signer, set)) return 0x4B1C005F;
    }
    if (const u32 status = name_algorithm(signer); status != 0) return status;
    signer.encryptedDigest = reserve_signature(*signer.key, SignerAlgorithms(signer).digest_id).release();
    return signer.encryptedDigest != nullptr ? 0 : 0x4B1C003B;
}

/// The digest that a signer signs whose attributes are there. 0, or a status of final_PKCS7_Sign().
u32 digest_attributes(const P7_SIGNER_INFO &signer, u32 digest_id, RunningDigests &digests) noexcept {
    Encoder set;
    if (!encode_attributes(signer, set)) return 0x4B1C005F;
    const bool done = digests.start(digest_id, kcdsa_unit(signer.key)) == RunningDigests::Start::done &&
                      digests.update(set.bytes()) && digests.finish();
    return done ? 0 : 0x4B1C003B;
}

u32 sign_in_pieces(P7_SIGNER_INFO &signer, const BIGINT *version, const RunningDigests &content,
                   bool is_reserved) noexcept {
    if (const u32 status = set_version(signer, version); status != 0) return status;
    const SignerAlgorithms algorithms(signer);
    const bool has_attributes = signs_attributes(signer, version);
    RunningDigests attributes;
    if (has_attributes) {
        const u32 status = digest_attributes(signer, algorithms.digest_id, attributes);
        if (status != 0) return status;
    }
    const Bytes digest =
        (has_attributes ? attributes : content).get(algorithms.digest_id, kcdsa_unit(signer.key));
    Owned<OCTET_STRING> room;
    if (is_reserved) {
        room = reserve_signature(*signer.key, algorithms.digest_id);
        if (!room) return 0x4B1C003B;
    }
    Owned<OCTET_STRING> signature;
    const u32 status = sign_to_length(octets_of(room.get()).size(), signature,
                                      [&] { return sign_digest(signer.key, algorithms, digest, signature); });
    if (status != 0) return status;
    signer.encryptedDigest = signature.release();
    return name_algorithm(signer);
}

/// Gives signed data its first content. Content that is there stays.
u32 store_content(P7_SIGNED_DATA &data, const u8 *octets, i32 length) noexcept {
    if (data.contentInfo != nullptr && data.contentInfo->content.any != nullptr) return 0;
    const u32 type = content_type(data.contentInfo);
    const bool has_type = data.contentInfo != nullptr && data.contentInfo->contentType != nullptr;
    if (has_type && type != oid::kPkcs7Data) return 0x4B1C0048;
    P7_CONTENT_INFO *made = gen_PKCS7_DATA_from_Binary(octets, static_cast<u32>(length));
    if (made == nullptr) return 0x4B1C003B;
    free_P7_CONTENT_INFO(data.contentInfo);
    data.contentInfo = made;
    return 0;
}

}  // namespace

u32 tlx::sign_with_all(const SignedMembers &members, const ContentOctets &content) noexcept {
    return for_unsigned(members,
                        [&](P7_SIGNER_INFO &signer) { return sign_one(signer, members.version, content); });
}

u32 tlx::reserve_signatures(const SignedMembers &members) noexcept {
    return for_unsigned(members,
                        [&](P7_SIGNER_INFO &signer) { return reserve_one(signer, members.version); });
}

bool tlx::signs_attributes(const P7_SIGNER_INFO &signer, const BIGINT *version) noexcept {
    return is_BIGINT_zero(version) == 0 && signer.authenticatedAttributes != nullptr;
}

u32 tlx::sign_content_in_pieces(const SignedMembers &members, const RunningDigests &content,
                                bool is_reserved) noexcept {
    return for_unsigned(members, [&](P7_SIGNER_INFO &signer) {
        return sign_in_pieces(signer, members.version, content, is_reserved);
    });
}

uint32_t init_PKCS7_Sign(P7_CONTENT_INFO *info, uint32_t detached) {
    SignedMembers members;
    const u32 status = find_signers(info, members);
    if (status == 0x4B1C0049 || status == 0x4B1C0048) return status;
    if (members.signedData != nullptr) members.signedData->detached = detached;
    if (status != 0) return status;
    return for_unsigned(members, begin);
}

uint32_t update_PKCS7_Sign(P7_CONTENT_INFO *info, const uint8_t *data, int32_t length) {
    SignedMembers members;
    if (const u32 status = find_signers(info, members); status != 0) return status;
    if (members.signedData == nullptr || members.signedData->detached != 0) return 0;
    if (data == nullptr || length <= 0) return 0x4B1C0049;
    return store_content(*members.signedData, data, length);
}

uint32_t final_PKCS7_Sign(P7_CONTENT_INFO *info) {
    SignedMembers members;
    if (const u32 status = find_signers(info, members); status != 0) return status;
    ContentOctets content;
    const P7_SIGNED_DATA *data = members.signedData;
    if (data != nullptr && !content.read(data->contentInfo)) return 0x4B1C003B;
    return sign_with_all(members, content);
}

uint32_t sign_PKCS7(P7_CONTENT_INFO *info, const uint8_t *data, int32_t length, uint32_t detached) {
    u32 status = init_PKCS7_Sign(info, detached);
    if (status == 0) status = update_PKCS7_Sign(info, data, length);
    return status == 0 ? final_PKCS7_Sign(info) : status;
}

uint32_t digest_PKCS7(P7_CONTENT_INFO *info, uint32_t digest_id, const uint8_t *data, int32_t length) {
    if (content_type(info) != oid::kPkcs7DigestData || info->content.digestedData == nullptr || length < 0) {
        return 1;
    }
    P7_DIGESTED_DATA &digested = *info->content.digestedData;
    u8 octets[TLX_DIGEST_MAX_LENGTH];
    u32 digest_length = 0;
    Owned<X509_ALGO_IDENTIFIER> algorithm(new_X509_ALGO_IDENTIFIER());
    if (algorithm) algorithm->algorithm = get_OID_from_DigestID(digest_id);
    Owned<P7_CONTENT_INFO> content(gen_PKCS7_DATA_from_Binary(data, static_cast<u32>(length)));
    if (!algorithm || algorithm->algorithm == nullptr || !content ||
        Digest(digest_id, data, static_cast<u32>(length), octets, &digest_length) != 0) {
        return 1;
    }
    Owned<OCTET_STRING> digest(new_string(TLX_TAG_OCTET_STRING, {octets, digest_length}));
    if (!digest) return 1;
    free_X509_ALGO_IDENTIFIER(std::exchange(digested.digestAlgorithm, algorithm.release()));
    free_P7_CONTENT_INFO(std::exchange(digested.contentInfo, content.release()));
    free_ASN1_STRING(std::exchange(digested.digest, digest.release()));
    return 0;
}
