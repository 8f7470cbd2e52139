// Answering OCSP requests (RFC 6960, section 4.2).
#include <tlxpki/objects.h>
#include <tlxpki/ocsp_respond.h>
#include <tlxpki/time.h>
#include <tlxpki/x509v3_key.h>

#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"
#include "status/ocsp_nonce.hpp"
#include "status/ocsp_records.hpp"
#include "status/ocsp_signature.hpp"
#include "trust/extension.hpp"

using namespace tlx;

namespace {

using OwnedTime = std::unique_ptr<ASN1_TIME, FreeWith<free_ASN1_TIME>>;

/// The present with seconds and "Z"; null when it is not known and when memory runs out.
Owned<GENERALIZED_TIME> present_time() noexcept {
    constexpr u32 kSecondsAndZ = 2;
    const OwnedTime now(getCurrentGMTime());
    return Owned<GENERALIZED_TIME>(asn1TimeToGENERALIZED_TIME(now.get(), kSecondsAndZ));
}

/// The functions that make a responder ID return null when memory runs out.
Owned<OCSP_RESPONDER_ID> by_name(const X509_NAME *name) noexcept {
    Owned<OCSP_RESPONDER_ID> id(new_OCSP_RESPONDER_ID());
    if (!id) return nullptr;
    id->value.name = dup_X509_NAME(name);
    return id->value.name != nullptr ? std::move(id) : nullptr;
}

Owned<OCSP_RESPONDER_ID> by_key(u32 type, OCTET_STRING *hash) noexcept {
    Owned<OCTET_STRING> owned(hash);
    Owned<OCSP_RESPONDER_ID> id(new_OCSP_RESPONDER_ID());
    if (!id || !owned) return nullptr;
    id->type = type;
    id->value.keyHash = owned.release();
    return id;
}

/// The contents of subjectKeyIdentifier. False when there is none, and for anything but an OCTET STRING.
bool find_key_identifier(const X509_CERT *cert, Bytes &identifier) noexcept {
    const X509_EXTENSION *extension = find_extension(cert, extension_id::kSubjectKeyIdentifier);
    Element element;
    if (!read_extension(extension, element) || element.tag != TLX_TAG_OCTET_STRING ||
        element.whole.size() != octets_of(extension->data).size()) {
        return false;
    }
    identifier = element.contents;
    return true;
}

/// Fills the caller's record, or a new one. False when memory runs out; the caller's record stays then.
bool begin_data(OCSP_RESPONSE_DATA **data, Owned<OCSP_RESPONDER_ID> id, u32 version, const u8 *nonce,
                u32 nonce_length) noexcept {
    auto produced_at = present_time();
    OutRecord<OCSP_RESPONSE_DATA> out(data, new_OCSP_RESPONSE_DATA);
    if (!id || !produced_at || !out) return false;
    Owned<STACK> responses(out->responses == nullptr ? new_STACK() : nullptr);
    if (out->responses == nullptr && !responses) return false;
    if (nonce != nullptr && !append_nonce(out->responseExtensions, {nonce, nonce_length})) return false;
    if (responses) out->responses = responses.release();
    out->version = version;
    free_OCSP_RESPONDER_ID(out->responderID);
    out->responderID = id.release();
    free_ASN1_STRING(out->producedAt);
    out->producedAt = produced_at.release();
    forget_received(*out.get());
    out.commit();
    return true;
}

/// Makes the answer about one certificate; null when memory runs out.
Owned<OCSP_SINGLE_RESPONSE> make_single(const OCSP_CERT_ID *id, u32 status, const OCSP_REVOKED_INFO *info,
                                        const GENERALIZED_TIME *this_update,
                                        const GENERALIZED_TIME *next_update) noexcept {
    Owned<OCSP_SINGLE_RESPONSE> single(new_OCSP_SINGLE_RESPONSE());
    Owned<OCSP_CERT_STATUS> cert_status(new_OCSP_CERT_STATUS());
    if (!single || !cert_status) return nullptr;
    cert_status->status = status;
    if (status == TLX_OCSP_REVOKED) cert_status->revokedInfo = dup_OCSP_REVOKED_INFO(info);
    single->certID = dup_OCSP_CERT_ID(id);
    single->thisUpdate = dup_ASN1_STRING(this_update);
    single->nextUpdate = dup_ASN1_STRING(next_update);
    const bool made = (status != TLX_OCSP_REVOKED || cert_status->revokedInfo != nullptr) &&
                      single->certID != nullptr && single->thisUpdate != nullptr &&
                      (next_update == nullptr || single->nextUpdate != nullptr);
    single->certStatus = cert_status.release();
    return made ? std::move(single) : nullptr;
}

/// Makes the data and their signature the response's. False when memory runs out; the response is unchanged
/// then.
bool complete(BASIC_OCSP_RESPONSE **basic, OCSP_RESPONSE_DATA *data, const X509_CERT *responder,
              MadeSignature &made) noexcept {
    OutRecord<BASIC_OCSP_RESPONSE> out(basic, new_BASIC_OCSP_RESPONSE);
    Owned<X509_CERT> copy(dup_X509_CERT(responder));
    if (!out || !append_owned(out->certs, copy)) return false;
    if (out->tbsResponseData != data) free_OCSP_RESPONSE_DATA(out->tbsResponseData);
    out->tbsResponseData = data;
    forget_received(*data);
    free_X509_ALGO_IDENTIFIER(std::exchange(out->signatureAlgorithm, made.algorithm.release()));
    free_ASN1_STRING(std::exchange(out->signature, made.value.release()));
    out.commit();
    return true;
}

/// Signs the data. On failure the response is unchanged.
u32 sign_data(BASIC_OCSP_RESPONSE **basic, OCSP_RESPONSE_DATA *data, const X509_CERT *responder,
              const P8_PRIV_KEY_INFO &key, u32 digest_id) noexcept {
    Encoder der;
    Codec<OCSP_RESPONSE_DATA>::encode(der, data);
    if (!der.ok()) return 0x50140103;
    MadeSignature made;
    constexpr ResponderStatuses kStatuses = {0x5018002B, 0x5018001C, 0x5018003C};
    if (const u32 status = sign_with(key, digest_id, der.bytes(), made, kStatuses); status != 0) {
        return status;
    }
    return complete(basic, data, responder, made) ? 0 : 0x5018003C;
}

/// Takes a signature over the data, when it is one of the responder's key.
u32 take_signature(const OCSP_RESPONSE_DATA *data, const X509_CERT *responder, u32 digest_id, Bytes octets,
                   MadeSignature &made) noexcept {
    const X509_PUBKEY *key = get_X509_SPKI(responder);
    const u32 row = algorithm_row(get_X509_PUBKEY_key(key), digest_id);
    if (row == 0) return 0x5030002B;
    Encoder der;
    Codec<OCSP_RESPONSE_DATA>::encode(der, data);
    if (!der.ok()) return 0x50140103;
    made.algorithm = algorithm_with_null(row);
    made.value.reset(new_string(TLX_TAG_BIT_STRING, octets));
    if (!made.algorithm || !made.value) return 0x5030003C;
    switch (verify_with(made.algorithm->algorithm, made.value.get(), der.bytes(), key)) {
        case SignatureResult::good:
            return 0;
        case SignatureResult::no_memory:
            return 0x5030003C;
        default:
            return 0x50300054;
    }
}

}  // namespace

uint32_t generate_OCSP_RESPONSE_DATA(OCSP_RESPONSE_DATA **data, const X509_CERT *responder,
                                     uint32_t responderIdType, uint32_t version, const uint8_t *nonce,
                                     uint32_t nonceLength) {
    if (data == nullptr || responder == nullptr || responderIdType > 2 || nonceLength > kMaxLength) {
        return 0x5015002B;
    }
    if (responderIdType == TLX_OCSP_BY_NAME) {
        auto id = by_name(get_X509_subject(responder));
        return begin_data(data, std::move(id), version, nonce, nonceLength) ? 0 : 0x5015003C;
    }
    Bytes hash;
    if (!find_key_identifier(responder, hash)) {
        free_OCSP_RESPONSE_DATA(*data);
        *data = nullptr;
        return 0x5015001C;
    }
    auto id = by_key(responderIdType, new_string(TLX_TAG_OCTET_STRING, hash));
    return begin_data(data, std::move(id), version, nonce, nonceLength) ? 0 : 0x5015003C;
}

uint32_t generate_OCSP_RESPONSE_DATA_withKeyHash(OCSP_RESPONSE_DATA **data, const X509_CERT *responder,
                                                 uint32_t version, const uint8_t *nonce,
                                                 uint32_t nonceLength) {
    if (data == nullptr || responder == nullptr || nonceLength > kMaxLength) return 0x5016002B;
    const X509_PUBKEY *key = get_X509_SPKI(responder);
    if (key == nullptr || octets_of(key->subjectPublicKey).empty()) return 0x5016001C;
    auto id = by_key(TLX_OCSP_BY_KEY, create_SUBJECT_KEYID(key));
    return begin_data(data, std::move(id), version, nonce, nonceLength) ? 0 : 0x5016003C;
}

uint32_t add_single_OCSP_RESPONSE(OCSP_RESPONSE_DATA *data, OCSP_CERT_ID **certId, uint32_t status,
                                  const OCSP_REVOKED_INFO *info, const GENERALIZED_TIME *thisUpdate,
                                  const GENERALIZED_TIME *nextUpdate) {
    if (data == nullptr || certId == nullptr || *certId == nullptr || status > TLX_OCSP_UNKNOWN ||
        thisUpdate == nullptr || (status == TLX_OCSP_REVOKED && info == nullptr)) {
        return 0x5017002B;
    }
    auto single = make_single(*certId, status, info, thisUpdate, nextUpdate);
    if (!append_owned(data->responses, single)) return 0x5017003C;
    forget_received(*data);
    return 0;
}

uint32_t generate_BASIC_OCSP_RESPONSE_ex(BASIC_OCSP_RESPONSE **basic, OCSP_RESPONSE_DATA *data,
                                         const X509_CERT *responder, const P8_PRIV_KEY_INFO *key,
                                         uint32_t digestId) {
    if (basic == nullptr || data == nullptr || responder == nullptr || key == nullptr) return 0x5018002B;
    const u32 status = sign_data(basic, data, responder, *key, digestId);
    if (status != 0) {
        free_BASIC_OCSP_RESPONSE(*basic);
        *basic = nullptr;
    }
    return status;
}

uint32_t generate_BASIC_OCSP_RESPONSE(BASIC_OCSP_RESPONSE **basic, OCSP_RESPONSE_DATA *data,
                                      const X509_CERT *responder, const P8_PRIV_KEY_INFO *key) {
    return generate_BASIC_OCSP_RESPONSE_ex(basic, data, responder, key, TLX_DIGEST_SHA1);
}

uint32_t get_OCSP_RESPONSE_DATA_input(const OCSP_RESPONSE_DATA *data, uint32_t digestId,
                                      RSA_SIGNATURE_INPUT *input) {
    if (data == nullptr || input == nullptr) return 0x502F0049;
    if (rsa_algorithm_row(digestId) == 0) return 0x502F002B;
    Encoder der;
    Codec<OCSP_RESPONSE_DATA>::encode(der, data);
    if (!der.ok()) return 0x50140103;
    const u32 status = get_RSA_SIGNATURE_INPUT(nullptr, digestId, TLX_RSA_MODE_PKCS1, der.bytes().data(),
                                               static_cast<u32>(der.bytes().size()), input);
    return status == 0 ? 0 : 0x502F003C;
}

uint32_t set_BASIC_OCSP_RESPONSE_signature(BASIC_OCSP_RESPONSE **basic, OCSP_RESPONSE_DATA *data,
                                           const X509_CERT *responder, uint32_t digestId,
                                           const uint8_t *signature, uint32_t len) {
    if (basic == nullptr || data == nullptr || responder == nullptr || signature == nullptr || len == 0) {
        return 0x50300049;
    }
    MadeSignature made;
    const u32 status = take_signature(data, responder, digestId, {signature, len}, made);
    if (status != 0) return status;
    return complete(basic, data, responder, made) ? 0 : 0x5030003C;
}

uint32_t generate_OCSP_RESPONSE_BYTES(OCSP_RESPONSE_BYTES **bytes, const BASIC_OCSP_RESPONSE *basic) {
    if (bytes == nullptr || basic == nullptr) return 0x5020002B;
    Encoder der;
    Codec<BASIC_OCSP_RESPONSE>::encode(der, basic);
    if (!der.ok()) return 0x50120103;
    auto type = oid_of_row(oid::kBasicOcspResponse);
    Owned<OCTET_STRING> octets(new_string(TLX_TAG_OCTET_STRING, der.bytes()));
    OutRecord<OCSP_RESPONSE_BYTES> out(bytes, new_OCSP_RESPONSE_BYTES);
    if (!type || !octets || !out) return 0x5020001C;
    clean_OCSP_RESPONSE_BYTES(out.get());
    out->responseType = type.release();
    out->response = octets.release();
    out.commit();
    return 0;
}

uint32_t generate_OCSP_RESPONSE(OCSP_RESPONSE **response, OCSP_RESPONSE_BYTES *bytes, int32_t status) {
    if (response == nullptr || status < TLX_OCSP_SUCCESSFUL || status > TLX_OCSP_UNAUTHORIZED) {
        return 0x501A002B;
    }
    OutRecord<OCSP_RESPONSE> out(response, new_OCSP_RESPONSE);
    if (!out) return 0x501A003A;
    if (out->responseBytes != bytes) free_OCSP_RESPONSE_BYTES(out->responseBytes);
    out->responseBytes = bytes;
    out->responseStatus = static_cast<u32>(status);
    out.commit();
    return 0;
}
