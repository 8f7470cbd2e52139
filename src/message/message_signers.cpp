#include "message/message_signers.hpp"

#include <tlxpki/cms.h>

#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"
#include "der/memory.hpp"
#include "message/cms_identifiers.hpp"
#include "message/made_attributes.hpp"
#include "message/made_signature.hpp"
#include "message/signer_algorithms.hpp"
#include "message/signer_attributes.hpp"
#include "message/signer_scheme.hpp"
#include "trust/extension.hpp"

namespace tlx {
namespace {

Owned<OBJECT_IDENTIFIER> oid_of(std::string_view dotted) noexcept {
    return Owned<OBJECT_IDENTIFIER>(
        new_string(TLX_TAG_OBJECT_IDENTIFIER, {reinterpret_cast<const u8 *>(dotted.data()), dotted.size()}));
}

/// The identifier of a signer: 0; 0x52830047 for a certificate without it, 0x5283003C when memory runs out.
u32 name_signer(const MESSAGE_SIGNER &wanted, CMS_SIGNER_INFO &signer) noexcept {
    Owned<CMS_CERT_IDENTIFIER> sid(new_CMS_CERT_IDENTIFIER());
    if (!sid) return 0x5283003C;
    if (wanted.by_key_identifier != 0) {
        Bytes octets;
        const X509_EXTENSION *extension =
            find_extension(wanted.certificate, extension_id::kSubjectKeyIdentifier);
        if (!read_extension(extension, TLX_TAG_OCTET_STRING, octets)) return 0x52830047;
        sid->type = TLX_CMS_BY_KEY_IDENTIFIER;
        sid->value.subjectKeyIdentifier = new_string(TLX_TAG_OCTET_STRING, octets);
    } else {
        const X509_NAME *issuer = get_X509_issuer(wanted.certificate);
        const BIGINT *serial = get_X509_serial(wanted.certificate);
        if (issuer == nullptr || serial == nullptr) return 0x52830047;
        Owned<P7_ISSUER_AND_SERIAL_NUMBER> number(new_P7_ISSUER_AND_SERIAL_NUMBER());
        if (!number) return 0x5283003C;
        number->issuer = dup_X509_NAME(issuer);
        number->serialNumber = dup_BIGINT(serial);
        if (number->issuer == nullptr || number->serialNumber == nullptr) return 0x5283003C;
        sid->type = TLX_CMS_BY_ISSUER_AND_SERIAL;
        sid->value.issuerAndSerialNumber = number.release();
    }
    if (sid->value.any == nullptr) return 0x5283003C;
    signer.sid = sid.release();
    return 0;
}

/// Whether somebody signs without attributes: over the digest of data, with a key that is at hand.
bool may_be_bare(const MESSAGE_SIGNER &wanted, const PublicKey &key, bool is_data) noexcept {
    const bool takes_digest =
        key.kind == KeyKind::rsa || key.kind == KeyKind::ecdsa || key.kind == KeyKind::kcdsa;
    return is_data && takes_digest && wanted.key != nullptr;
}

/// What the digest of the content begins with for a signer; null for nothing.
const KCDSA *digested_key(const MESSAGE_SIGNER &wanted) noexcept {
    return wanted.bare != 0 ? kcdsa_key_of(wanted.certificate) : nullptr;
}

/// Whether attributes of the caller have the type of one that the writer makes.
bool has_own_attribute(const MESSAGE_SIGNER &wanted) noexcept {
    const std::string_view own[] = {
        attribute_id::kContentType, attribute_id::kMessageDigest, attribute_id::kSigningTime,
        wanted.signing_certificate != 0 ? attribute_id::kSigningCertificateV2 : std::string_view(),
        wanted.algorithm_protection != 0 ? attribute_id::kAlgorithmProtection : std::string_view()};
    return std::ranges::any_of(own, [&](std::string_view type) {
        return index_by_type(wanted.attributes, &X509_ATTRIBUTE::type, type, -1) >= 0;
    });
}

}  // namespace

template <typename Act>
u32 MessageSigners::for_each(Act act) noexcept {
    for (u32 i = 0; i < settings_->signer_count; ++i) {
        auto *signer = static_cast<CMS_SIGNER_INFO *>(info_->signedData->signerInfos->values[i]);
        if (const u32 status = act(settings_->signers[i], *signer); status != 0) return status;
    }
    return 0;
}

u32 MessageSigners::begin(const SIGNED_MESSAGE_WRITER_SETTINGS &settings) noexcept {
    settings_ = &settings;
    if (const u32 status = begin_body(); status != 0) return status;
    const MemoryWatch memory;
    for (u32 i = 0; i < settings.signer_count; ++i) {
        const u32 status = add(settings.signers[i]);
        if (status != 0) return memory.ran_out() ? 0x5283003C : status;
    }
    if (settings.format == TLX_MESSAGE_FORMAT_PKCS7 && !is_of_pkcs7()) return 0x52830106;
    return set_CMS_versions(info_.get()) == 0 ? 0 : 0x5283003C;
}

u32 MessageSigners::begin_body() noexcept {
    info_.reset(new_CMS_CONTENT_INFO());
    if (!info_) return 0x5283003C;
    info_->contentType = oid_of(cms::kSignedData).release();
    info_->signedData = new_CMS_SIGNED_DATA();
    if (info_->contentType == nullptr || info_->signedData == nullptr) return 0x5283003C;
    CMS_SIGNED_DATA &body = *info_->signedData;
    body.encapContentInfo = new_CMS_ENCAP_CONTENT_INFO();
    body.digestAlgorithms = new_X509_ALGO_IDENTIFIERS();
    if (body.encapContentInfo == nullptr || body.digestAlgorithms == nullptr) return 0x5283003C;
    const OBJECT_IDENTIFIER *type = settings_->content_type;
    body.encapContentInfo->eContentType =
        type != nullptr ? dup_ASN1_STRING(type) : oid_of(cms::kData).release();
    if (body.encapContentInfo->eContentType == nullptr) return 0x5283003C;
    if (settings_->revocation != nullptr) {
        body.crls = dup_CMS_REVOCATION_INFOS(settings_->revocation);
        if (body.crls == nullptr) return 0x5283003C;
    }
    return carry_certificates();
}

u32 MessageSigners::carry_certificates() noexcept {
    for (u32 i = 0; i < get_STACK_count(settings_->certificates); ++i) {
        Owned<CMS_CERT_CHOICE> choice(new_CMS_CERT_CHOICE());
        if (!choice) return 0x5283003C;
        choice->type = TLX_CMS_CERTIFICATE;
        choice->value.certificate =
            dup_X509_CERT(static_cast<const X509_CERT *>(settings_->certificates->values[i]));
        if (choice->value.certificate == nullptr) return 0x5283003C;
        if (!append_owned(info_->signedData->certificates, choice)) return 0x5283003C;
    }
    return 0;
}

u32 MessageSigners::add(const MESSAGE_SIGNER &wanted) noexcept {
    PublicKey key;
    SignerScheme scheme;
    if (wanted.certificate == nullptr || (wanted.key == nullptr) == (wanted.sign == nullptr)) {
        return 0x52830048;
    }
    const Rule rule = read_signer_key(*wanted.certificate, key);
    if (rule != Rule::kNone) return rule == Rule::kNoMemory ? 0x5283003C : 0x52830048;
    CMS_SIGNED_DATA &body = *info_->signedData;
    const bool is_data = text_of(body.encapContentInfo->eContentType) == cms::kData;
    if (wanted.bare != 0 && !may_be_bare(wanted, key, is_data)) return 0x52830048;
    if (has_own_attribute(wanted)) return 0x52830048;
    const u32 digest_id = wanted.digest_id != 0 ? wanted.digest_id : default_digest(key);
    Owned<CMS_SIGNER_INFO> signer(new_CMS_SIGNER_INFO());
    if (!signer) return 0x5283003C;
    if (const u32 status = name_signer(wanted, *signer); status != 0) return status;
    signer->digestAlgorithm = make_digest_algorithm(digest_id).release();
    signer->signatureAlgorithm = make_signature_algorithm(key, digest_id, wanted.pss != 0).release();
    if (!scheme.read(view_of(*signer))) return 0x5283003C;
    if (!can_verify(key, scheme)) return 0x52830048;
    Owned<X509_ALGO_IDENTIFIER> listed(dup_X509_ALGO_IDENTIFIER(signer->digestAlgorithm));
    using Start = RunningDigests::Start;
    const Start started = digests_.start(scheme.digest_id, digested_key(wanted));
    if (started == Start::too_many || started == Start::bad_key) return 0x52830048;
    if (started != Start::done || !append_owned(body.digestAlgorithms, listed)) return 0x5283003C;
    return append_owned(body.signerInfos, signer) ? 0 : 0x5283003C;
}

/// PKCS #7 has signers of RSA with PKCS #1 v1.5 and of KCDSA, by issuer and serial number, with digests of
/// its time.
bool MessageSigners::is_of_pkcs7() const noexcept {
    const CMS_SIGNED_DATA &body = *info_->signedData;
    if (text_of(body.encapContentInfo->eContentType) != cms::kData) return false;
    for (u32 i = 0; i < get_STACK_count(body.crls); ++i) {
        const auto *info = static_cast<const CMS_REVOCATION_INFO *>(body.crls->values[i]);
        if (info != nullptr && info->type != TLX_CMS_CRL) return false;
    }
    for (u32 i = 0; i < get_STACK_count(body.signerInfos); ++i) {
        const auto &signer = *static_cast<const CMS_SIGNER_INFO *>(body.signerInfos->values[i]);
        const u32 row = algorithm_row(signer.signatureAlgorithm);
        if (row != oid::kRsaEncryption && row != oid::kKcdsa1) return false;
        if (signer.sid->type != TLX_CMS_BY_ISSUER_AND_SERIAL) return false;
    }
    return true;
}

bool MessageSigners::put_attributes(const MESSAGE_SIGNER &wanted, CMS_SIGNER_INFO &signer,
                                    Bytes digest) const noexcept {
    const Owned<ASN1_STRING> time = signing_time(settings_->time);
    if (!time) return false;
    const SignedAttributes claims = {info_->signedData->encapContentInfo->eContentType, digest, time.get(),
                                     wanted.signing_certificate != 0 ? wanted.certificate : nullptr,
                                     wanted.algorithm_protection != 0 ? &signer : nullptr};
    OwnedAttributes attributes = make_signed_attributes(claims, wanted.attributes);
    if (!attributes) return false;
    free_X509_ATTRIBUTES(std::exchange(signer.signedAttrs, attributes.release()));
    return true;
}

u32 MessageSigners::reserve() noexcept {
    const bool is_der = settings_->form == TLX_MESSAGE_DER;
    return for_each([&](const MESSAGE_SIGNER &wanted, CMS_SIGNER_INFO &signer) {
        constexpr u8 kZeros[TLX_DIGEST_MAX_LENGTH] = {};
        PublicKey key;
        SignerScheme scheme;
        if (is_der && wanted.unsigned_attributes != nullptr) return 0x52830012U;
        if (!scheme.read(view_of(signer)) || read_signer_key(*wanted.certificate, key) != Rule::kNone) {
            return 0x5283003CU;
        }
        const Bytes zeros = {kZeros, get_DigestLength(scheme.digest_id)};
        if (wanted.bare == 0 && !put_attributes(wanted, signer, zeros)) return 0x5283003CU;
        signer.signature = reserve_signature(holder_of(key), scheme.digest_id).release();
        return signer.signature != nullptr ? 0U : 0x5283003CU;
    });
}

u32 MessageSigners::sign() noexcept {
    if (!digests_.finish()) return 0x5284003C;
    return for_each([&](const MESSAGE_SIGNER &wanted, CMS_SIGNER_INFO &signer) {
        SignerScheme scheme;
        if (!scheme.read(view_of(signer))) return 0x5284003CU;
        return sign_one(wanted, signer, digests_.get(scheme.digest_id, digested_key(wanted)));
    });
}

u32 MessageSigners::sign_one(const MESSAGE_SIGNER &wanted, CMS_SIGNER_INFO &signer, Bytes digest) noexcept {
    Encoder octets;
    if (wanted.bare == 0) {
        if (!put_attributes(wanted, signer, digest)) return 0x5284003C;
        Attributes::encode(octets, signer.signedAttrs, kSet);
        if (!octets.ok()) return 0x5284003C;
    }
    const Owned<OCTET_STRING> room(std::exchange(signer.signature, nullptr));
    const SignedInput input = {wanted, signer.signatureAlgorithm, wanted.bare != 0 ? digest : octets.bytes()};
    Owned<OCTET_STRING> signature;
    const std::size_t length = settings_->form == TLX_MESSAGE_DER ? octets_of(room.get()).size() : 0;
    const u32 status = sign_and_verify(input, view_of(signer), length, signature);
    if (status != 0) return status;
    signer.signature = signature.release();
    if (wanted.unsigned_attributes == nullptr) return 0;
    const Bytes value = octets_of(signer.signature);
    return wanted.unsigned_attributes(wanted.unsigned_attributes_context, value.data(), size_of(value),
                                      &signer.unsignedAttrs);
}

}  // namespace tlx
