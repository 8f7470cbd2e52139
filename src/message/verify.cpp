// Verifying signatures as verify_PKCS7() does (RFC 2315, sections 9.3 and 9.4).
#include <tlxcrypto/digest.h>
#include <tlxpki/pkcs7_sign.h>

#include <algorithm>

#include "der/list_items.hpp"
#include "message/certificate_lookup.hpp"
#include "message/key_signature.hpp"
#include "message/sign.hpp"

using namespace tlx;

namespace {

constexpr std::string_view kMessageDigestOid = "1.2.840.113549.1.9.4";

/// The octets of the first messageDigest attribute; empty for a constructed value. False when there is no
/// such attribute.
bool find_message_digest(const X509_ATTRIBUTES *attributes, Bytes &digest) noexcept {
    const i32 index = index_by_type(attributes, &X509_ATTRIBUTE::type, kMessageDigestOid, -1);
    if (index < 0) return false;
    const X509_ATTRIBUTE *attribute = get_X509_ATTRIBUTES_child(attributes, index);
    const u32 type = get_X509_ATTRIBUTE_data_type(attribute, 0);
    digest = {};
    if ((type & kConstructed) == 0) {
        digest = octets_of(static_cast<const ASN1_STRING *>(get_X509_ATTRIBUTE_data(attribute, 0)));
    }
    return true;
}

/// Compares the messageDigest attribute with the content, over the length of the digest.
u32 compare_digest(const X509_ATTRIBUTES *attributes, u32 digest_id, const ContentOctets &content) noexcept {
    Bytes claimed;
    u8 digest[TLX_DIGEST_MAX_LENGTH];
    u32 length = 0;
    if (!content.present() || !find_message_digest(attributes, claimed)) return 0;
    const auto size = static_cast<u32>(content.bytes().size());
    if (const u32 status = Digest(digest_id, content.bytes().data(), size, digest, &length); status != 0) {
        return status;
    }
    return claimed.size() >= length && std::equal(digest, digest + length, claimed.begin()) ? 0 : 0x4B21005E;
}

/// Encodes the attributes as they are signed, once their digest is that of the content.
u32 take_attributes(const P7_SIGNER_INFO &signer, u32 digest_id, const ContentOctets &content,
                    Encoder &set) noexcept {
    const u32 status = compare_digest(signer.authenticatedAttributes, digest_id, content);
    if (status != 0) return status;
    return encode_attributes(signer, set) ? 0 : 1;
}

u32 verify_one(const P7_SIGNER_INFO &signer, const X509_CERT *cert, const ContentOctets &content) noexcept {
    const auto key = copy_public_key(cert);
    const SignerAlgorithms algorithms(signer);
    if (!key || algorithms.digest_id == 0 || algorithms.cipher_id == 0) return 1;
    if (!apply_pss_parameters(signer, algorithms, *key)) return 1;
    if (const u32 status = begin_verification(*key, algorithms); status != 0) return status;
    Encoder set;
    const bool has_attributes = signs_attributes(signer, signer.version);
    if (has_attributes) {
        const u32 status = take_attributes(signer, algorithms.digest_id, content, set);
        if (status != 0) return status;
    } else if (!content.present()) {
        return 0x4B210048;
    }
    return verify_octets(*key, algorithms, has_attributes ? set.bytes() : content.bytes(),
                         octets_of(signer.encryptedDigest));
}

bool names(const P7_SIGNER_INFO &signer, const X509_CERT *cert) noexcept {
    return cmp_P7_ISSUER_AND_SERIAL_NUMBER(cert, signer.issuerAndSerialNumber) == 0;
}

/// Verifies the signers that a certificate belongs to.
u32 verify_with(const X509_CERT *cert, const P7_SIGNER_INFOS *signers,
                const ContentOctets &content) noexcept {
    if (get_X509_PUBKEY_key(get_X509_SPKI(cert)) == nullptr) return 1;
    for (u32 i = 0; i < get_STACK_count(signers); ++i) {
        const auto *signer = static_cast<const P7_SIGNER_INFO *>(signers->values[i]);
        if (signer == nullptr || !names(*signer, cert)) continue;
        if (const u32 status = verify_one(*signer, cert, content); status != 0) return status;
    }
    return 0;
}

/// Verifies all signers with the certificates of the message.
u32 verify_all(const X509_CERTIFICATES *certificates, const P7_SIGNER_INFOS *signers,
               const ContentOctets &content) noexcept {
    CertificateLookup<IssuerAndSerialProperty> lookup;
    if (!lookup.build(certificates)) return 1;
    for (u32 i = 0; i < get_STACK_count(signers); ++i) {
        const auto *signer = static_cast<const P7_SIGNER_INFO *>(signers->values[i]);
        if (signer == nullptr || signer->issuerAndSerialNumber == nullptr) return 1;
        const ISSUER_AND_SERIAL_NUMBER &number = *signer->issuerAndSerialNumber;
        bool failed = false;
        const X509_CERT *cert = lookup.find({number.issuer, number.serialNumber}, failed);
        if (cert == nullptr) return 1;
        if (const u32 status = verify_one(*signer, cert, content); status != 0) return status;
    }
    return 0;
}

/// What was signed: the content of the message, or else the caller's.
u32 find_content(const SignedMembers &members, const u8 *data, i32 length, ContentOctets &content) noexcept {
    P7_SIGNED_DATA *signed_data = members.signedData;
    if (signed_data != nullptr && !content.read(signed_data->contentInfo)) return 1;
    if (content.present()) return 0;
    const bool given = data != nullptr && length > 0;
    if (given) content.use({data, static_cast<std::size_t>(length)});
    if (signed_data == nullptr) return 0;
    signed_data->detached = 1;
    return given || length < 0 ? 0 : 1;
}

}  // namespace

uint32_t verify_PKCS7(P7_CONTENT_INFO *info, const X509_CERT *cert, const uint8_t *data, int32_t length) {
    SignedMembers members;
    if (info == nullptr) return 0x4B1B0049;
    // Success without a check, as callers expect of it.
    if (!find_signed_members(info, members) || get_STACK_count(*members.signerInfos) == 0 ||
        get_STACK_count(*members.certificates) == 0) {
        return 0;
    }
    ContentOctets content;
    if (const u32 status = find_content(members, data, length, content); status != 0) return status;
    if (cert != nullptr && cert->tbsCertificate != nullptr) {
        return verify_with(cert, *members.signerInfos, content);
    }
    return verify_all(*members.certificates, *members.signerInfos, content);
}
