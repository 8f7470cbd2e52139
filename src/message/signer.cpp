// Adding signers to a message.
#include <tlxpki/pkcs7_sign.h>

#include <algorithm>
#include <iterator>

#include "der/list_items.hpp"
#include "message/signed_members.hpp"
#include "message/signer_algorithms.hpp"

using namespace tlx;

namespace {

/// A digest, and what PKCS #1 v1.5 calls a signature with it.
struct NamedSignature {
    u32 digest;
    u32 signature;
};
constexpr NamedSignature kRsaSignatures[] = {
    {oid::kMd2, oid::kMd2WithRsa},       {oid::kMd4, oid::kMd4WithRsa},
    {oid::kMd5, oid::kMd5WithRsa},       {oid::kSha, oid::kShaWithRsa},
    {oid::kSha1, oid::kSha1WithRsa},     {oid::kSha224, oid::kSha224WithRsa},
    {oid::kSha256, oid::kSha256WithRsa}, {oid::kSha384, oid::kSha384WithRsa},
    {oid::kSha512, oid::kSha512WithRsa}};

u32 rsa_signature_with(u32 digest) noexcept {
    const auto *named = std::ranges::find(kRsaSignatures, digest, &NamedSignature::digest);
    return named != std::end(kRsaSignatures) ? named->signature : u32{oid::kRsaEncryption};
}

/// The members that every new signer has; null when memory runs out.
Owned<P7_SIGNER_INFO> make_signer(const X509_CERT *cert, const ASYMMETRIC_KEY *key) noexcept {
    Owned<P7_SIGNER_INFO> signer(new_P7_SIGNER_INFO());
    if (!signer) return nullptr;
    signer->version = new_BIGINT();
    signer->issuerAndSerialNumber = issuer_and_serial_of(cert).release();
    if (signer->issuerAndSerialNumber == nullptr || set_BIGINT_word(signer->version, 1) != 0) return nullptr;
    if (key != nullptr) signer->key = dup_ASYMMETRIC_KEY(key);
    return signer->key != nullptr || key == nullptr ? std::move(signer) : nullptr;
}

/// Gives a signer the members of another one, and leaves its attributes and signature as they are.
void take_members(P7_SIGNER_INFO &signer, P7_SIGNER_INFO &from) noexcept {
    std::swap(signer.version, from.version);
    std::swap(signer.issuerAndSerialNumber, from.issuerAndSerialNumber);
    std::swap(signer.digestAlgorithm, from.digestAlgorithm);
    std::swap(signer.digestEncryptionAlgorithm, from.digestEncryptionAlgorithm);
    std::swap(signer.key, from.key);
}

}  // namespace

uint32_t set_PKCS7_P7_SIGNER_INFO(P7_SIGNER_INFO *signer, const X509_CERT *cert, const ASYMMETRIC_KEY *key,
                                  int32_t digest_index, uint32_t scheme,
                                  const RSASSA_PSS_PARAM * /*pss_params*/) {
    if (signer == nullptr || get_X509_issuer(cert) == nullptr || get_X509_serial(cert) == nullptr ||
        (scheme != TLX_P7_RSA_PKCS1 && scheme != TLX_P7_RSA_PSS)) {
        return 0x4B1E0049;
    }
    if (key != nullptr && key->kind != TLX_KEY_RSA && key->kind != TLX_KEY_KCDSA) return 0x4B1E0048;
    if (oid_index(OID_LIST(digest_index)->dotted) == 0) return 0x4B1E0048;
    const auto digest = static_cast<u32>(digest_index);
    const u32 signature = scheme == TLX_P7_RSA_PSS ? u32{oid::kRsassaPss} : rsa_signature_with(digest);
    const auto made = make_signer(cert, key);
    if (!made) return 1;
    made->digestAlgorithm = algorithm_with_null(digest).release();
    made->digestEncryptionAlgorithm = algorithm_with_null(signature).release();
    if (made->digestAlgorithm == nullptr || made->digestEncryptionAlgorithm == nullptr) return 1;
    take_members(*signer, *made);
    return 0;
}

uint32_t add_PKCS7_Signer(P7_CONTENT_INFO *info, P7_SIGNER_INFO *signer) {
    SignedMembers members;
    if (signer == nullptr || !find_signed_members(info, members)) return 1;
    Owned<X509_ALGO_IDENTIFIER> digest(dup_X509_ALGO_IDENTIFIER(signer->digestAlgorithm));
    if (!digest || !append_value(*members.digestAlgorithms, digest.get())) return 1;
    if (append_value(*members.signerInfos, signer)) {
        static_cast<void>(digest.release());
        return 0;
    }
    STACK *digests = *members.digestAlgorithms;
    static_cast<void>(remove_STACK_value(digests, get_STACK_count(digests) - 1));
    return 1;
}

P7_SIGNER_INFO *add_PKCS7_Signature(P7_CONTENT_INFO *info, const X509_CERT *cert, const ASYMMETRIC_KEY *key,
                                    int32_t digest_index) {
    return add_PKCS7_Signature_withEncryptedAlgorithm(info, cert, key, digest_index, TLX_P7_RSA_PKCS1,
                                                      nullptr);
}

P7_SIGNER_INFO *add_PKCS7_Signature_withEncryptedAlgorithm(P7_CONTENT_INFO *info, const X509_CERT *cert,
                                                           const ASYMMETRIC_KEY *key, int32_t digest_index,
                                                           uint32_t scheme,
                                                           const RSASSA_PSS_PARAM *pss_params) {
    Owned<P7_SIGNER_INFO> signer(new_P7_SIGNER_INFO());
    if (!signer || set_PKCS7_P7_SIGNER_INFO(signer.get(), cert, key, digest_index, scheme, pss_params) != 0 ||
        add_PKCS7_Signer(info, signer.get()) != 0) {
        return nullptr;
    }
    return signer.release();
}
