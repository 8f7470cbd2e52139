// Signatures that other programs verify: with the attributes of RFC 2315, section 9.2, in DER order.
#include <tlxcrypto/rsa.h>
#include <tlxpki/external_signature.h>
#include <tlxpki/pkcs7_sign.h>
#include <tlxpki/time.h>

#include "message/attribute_order.hpp"
#include "message/content_digests.hpp"
#include "message/key_signature.hpp"
#include "message/made_attributes.hpp"
#include "message/sign.hpp"
#include "message/signer_algorithms.hpp"

using namespace tlx;

namespace {

/// Replaces the attributes of a signer. False for none.
bool take_attributes(P7_SIGNER_INFO &signer, OwnedAttributes attributes) noexcept {
    if (!attributes) return false;
    free_X509_ATTRIBUTES(std::exchange(signer.authenticatedAttributes, attributes.release()));
    free_ASN1_UNIT(std::exchange(signer.receivedAttributes, nullptr));
    return true;
}

/// Makes a signer of the scheme PSS use its digest in MGF1 too and a salt as long as the digest, and say so.
bool put_pss_parameters(P7_SIGNER_INFO &signer, u32 digest_id) noexcept {
    const bool is_rsa = signer.key == nullptr || signer.key->kind == TLX_KEY_RSA;
    if (algorithm_row(signer.digestEncryptionAlgorithm) != oid::kRsassaPss || !is_rsa) return true;
    ASN1_UNIT *parameters = make_pss_parameters(digest_id);
    if (parameters == nullptr) return false;
    free_ASN1_UNIT(std::exchange(signer.digestEncryptionAlgorithm->parameters, parameters));
    return signer.key == nullptr ||
           set_RSA_UNIT_PSS(rsa_unit(signer.key), digest_id, get_DigestLength(digest_id)) == 0;
}

/// What all signers share.
struct Shared {
    ContentDigests digests;
    const OBJECT_IDENTIFIER *content_type;
    Owned<ASN1_STRING> time;
};

u32 prepare(P7_SIGNER_INFO &signer, Shared &shared) noexcept {
    const u32 digest_id = SignerAlgorithms(signer).digest_id;
    const Bytes octets = shared.digests.get(digest_id);
    if (octets.empty()) return 0x4B31003C;
    const SignedAttributes wanted = {shared.content_type, octets, shared.time.get()};
    const bool put = take_attributes(signer, make_signed_attributes(wanted, signer.authenticatedAttributes));
    return put && put_pss_parameters(signer, digest_id) ? 0 : 0x4B31003C;
}

/// Gives signed data its content, or without octets its content type alone.
u32 place_content(P7_SIGNED_DATA &data, const u8 *octets, i32 length, bool detached) noexcept {
    Owned<P7_CONTENT_INFO> made(detached ? new_P7_CONTENT_INFO()
                                         : gen_PKCS7_DATA_from_Binary(octets, static_cast<u32>(length)));
    if (!made || (detached && set_PKCS7_Type(made.get(), oid::kPkcs7Data) != 0)) return 0x4B31003C;
    free_P7_CONTENT_INFO(std::exchange(data.contentInfo, made.release()));
    return 0;
}

/// What is to be signed: the content of the message, or the caller's.
u32 find_content(P7_SIGNED_DATA &data, const u8 *octets, i32 length, bool detached,
                 ContentOctets &content) noexcept {
    const bool has_type = data.contentInfo != nullptr && data.contentInfo->contentType != nullptr;
    if (!content.read(data.contentInfo)) return 0x4B31003C;
    if (content.present()) return octets == nullptr ? 0 : 0x4B31001C;
    if (octets == nullptr || length < 0) return 0x4B310049;
    if (has_type && content_type(data.contentInfo) != oid::kPkcs7Data) return 0x4B310048;
    content.use({octets, static_cast<std::size_t>(length)});
    return place_content(data, octets, length, detached);
}

/// Finds the signers of a message that attributes can be signed in.
u32 find_attribute_signers(const P7_CONTENT_INFO *info, SignedMembers &members) noexcept {
    if (info == nullptr) return 0x4B1C0049;
    if (!find_signed_members(info, members) || members.signedData == nullptr) return 0x4B310048;
    return members.version == nullptr || is_BIGINT_zero(members.version) != 0 ? 0x4B310048 : 0;
}

/// Gives a signer what final_PKCS7_Sign() gives one before it signs.
u32 prepare_without_key(P7_SIGNER_INFO &signer, const BIGINT *version, Shared &shared) noexcept {
    const SignerAlgorithms algorithms(signer);
    if (algorithms.digest_id == 0 || algorithms.cipher_id == 0) return 0x4B31002B;
    Owned<BIGINT> copy(dup_BIGINT(version));
    if (!copy) return 0x4B31003C;
    if (const u32 status = prepare(signer, shared); status != 0) return status;
    free_BIGINT(std::exchange(signer.version, copy.release()));
    return 0;
}

}  // namespace

u32 tlx::put_signed_attributes(const SignedMembers &members, const ContentDigests &digests,
                               const OBJECT_IDENTIFIER *content_type, const ASN1_TIME *time) noexcept {
    Shared shared{digests, content_type, signing_time(time)};
    if (!shared.time) return 0x4B31003C;
    return for_unsigned(members, [&](P7_SIGNER_INFO &signer) { return prepare(signer, shared); });
}

uint32_t prepare_PKCS7_Signatures(P7_CONTENT_INFO *info, const uint8_t *data, int32_t length,
                                  uint32_t detached, const ASN1_TIME *time) {
    SignedMembers members;
    if (const u32 status = find_attribute_signers(info, members); status != 0) return status;
    P7_SIGNED_DATA &signed_data = *members.signedData;
    ContentOctets content;
    u32 status = find_content(signed_data, data, length, detached != 0, content);
    if (status != 0) return status;
    signed_data.detached = detached;
    Shared shared{ContentDigests(content.bytes()), signed_data.contentInfo->contentType, signing_time(time)};
    if (!shared.time) return 0x4B31003C;
    u32 prepared = 0;
    status = for_unsigned(members, [&](P7_SIGNER_INFO &signer) {
        if (signer.key != nullptr) return 0U;
        ++prepared;
        return prepare_without_key(signer, members.version, shared);
    });
    if (status != 0) return status;
    if (prepared == 0) return 0x4B310047;
    return detached != 0 ? remove_PKCS7_Content(info) : 0;
}

uint32_t sign_PKCS7_withAttributes(P7_CONTENT_INFO *info, const uint8_t *data, int32_t length,
                                   uint32_t detached, const ASN1_TIME *time) {
    SignedMembers members;
    const bool found = find_signed_members(info, members) && members.signedData != nullptr;
    if (found && is_BIGINT_zero(members.version) != 0) return 0x4B310048;
    if (const u32 status = init_PKCS7_Sign(info, detached); status != 0) return status;
    if (!found) return 0x4B310048;
    ContentOctets content;
    u32 status = find_content(*members.signedData, data, length, detached != 0, content);
    if (status != 0) return status;
    status = put_signed_attributes(members, ContentDigests(content.bytes()),
                                   members.signedData->contentInfo->contentType, time);
    if (status != 0) return status;
    status = sign_with_all(members, content);
    return status == 0 && detached != 0 ? remove_PKCS7_Content(info) : status;
}

uint32_t sort_PKCS7_Signed_Attributes(P7_SIGNER_INFO *signer) {
    if (signer == nullptr) return 1;
    if (signer->authenticatedAttributes == nullptr) return 0;
    OwnedAttributes sorted(dup_X509_ATTRIBUTES(signer->authenticatedAttributes));
    if (!sorted || !sort_attributes(sorted.get())) return 1;
    return take_attributes(*signer, std::move(sorted)) ? 0 : 1;
}

uint32_t remove_PKCS7_Content(P7_CONTENT_INFO *info) {
    SignedMembers members;
    if (!find_signed_members(info, members) || members.signedData == nullptr) return 1;
    if (members.signedData->contentInfo != nullptr) free_content(*members.signedData->contentInfo);
    members.signedData->detached = 1;
    return 0;
}
