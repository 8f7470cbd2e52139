// OCSP requests (RFC 6960, section 4.1).
#include <tlxcrypto/random.h>
#include <tlxpki/ocsp.h>

#include "der/list_items.hpp"
#include "der/received_octets.hpp"
#include "status/ocsp_nonce.hpp"
#include "status/ocsp_records.hpp"
#include "status/ocsp_signature.hpp"

using namespace tlx;

namespace {

/// The status of generate_OCSP_REQUEST() for one of generate_OCSP_CERT_ID().
u32 request_status(u32 id_status) noexcept {
    switch (id_status) {
        case 0x50190049:
            return 0x501E0049;
        case 0x5019002B:
            return 0x501E002B;
        case 0x5019003B:
            return 0x501E003B;
        default:
            return 0x501E003C;
    }
}

/// Replaces the nonce. False when memory runs out; the request is unchanged then.
bool replace_nonce(OCSP_TBS_REQUEST &tbs, Bytes nonce) noexcept {
    OwnedExtensions extensions(tbs.requestExtensions == nullptr ? new_X509_EXTENSIONS()
                                                                : dup_X509_EXTENSIONS(tbs.requestExtensions));
    if (!extensions) return false;
    for (i32 index = find_nonce_index(extensions.get()); index >= 0;
         index = find_nonce_index(extensions.get())) {
        free_X509_EXTENSION(remove_X509_EXTENSION(extensions.get(), index));
    }
    X509_EXTENSIONS *list = extensions.get();
    if (!append_nonce(list, nonce)) return false;
    free_X509_EXTENSIONS(tbs.requestExtensions);
    tbs.requestExtensions = extensions.release();
    forget_received(tbs);
    return true;
}

const OCTET_STRING *nonce_of(const OCSP_REQUEST *request) noexcept {
    const OCSP_TBS_REQUEST *tbs = request != nullptr ? request->tbsRequest : nullptr;
    return tbs != nullptr ? find_nonce(tbs->requestExtensions) : nullptr;
}

/// Makes the subject of a certificate the requestor. False when memory runs out.
bool set_requestor(OCSP_TBS_REQUEST &tbs, const X509_CERT *signer) noexcept {
    GENERAL_NAME *name = create_GENERAL_NAME_directoryName(get_X509_subject(signer));
    if (name == nullptr) return false;
    free_GENERAL_NAME(tbs.requestorName);
    tbs.requestorName = name;
    forget_received(tbs);
    return true;
}

}  // namespace

uint32_t generate_OCSP_REQUEST(OCSP_REQUEST **request, const X509_CERT *cert, const X509_CERT *issuer,
                               uint32_t digestId) {
    if (request == nullptr) return 0x501E0049;
    OCSP_CERT_ID *id = nullptr;
    if (const u32 status = generate_OCSP_CERT_ID(&id, cert, issuer, digestId); status != 0) {
        return request_status(status);
    }
    Owned<OCSP_CERT_ID> made(id);
    Owned<OCSP_SINGLE_REQUEST> single(new_OCSP_SINGLE_REQUEST());
    OutRecord<OCSP_REQUEST> out(request, new_OCSP_REQUEST);
    if (!single || !out) return 0x501E003C;
    single->reqCert = made.release();
    Owned<OCSP_TBS_REQUEST> fresh(out->tbsRequest == nullptr ? new_OCSP_TBS_REQUEST() : nullptr);
    OCSP_TBS_REQUEST *tbs = out->tbsRequest != nullptr ? out->tbsRequest : fresh.get();
    if (tbs == nullptr || !append_owned(tbs->requestList, single)) return 0x501E003C;
    forget_received(*tbs);
    if (fresh) out->tbsRequest = fresh.release();
    out.commit();
    return 0;
}

uint32_t set_OCSP_REQUEST_nonce(OCSP_REQUEST *request, const uint8_t *nonce, uint32_t length) {
    if (request == nullptr || request->tbsRequest == nullptr || nonce == nullptr) return 0x501F0049;
    return replace_nonce(*request->tbsRequest, {nonce, length}) ? 0 : 0x501F003C;
}

uint32_t generate_OCSP_REQUEST_nonce(OCSP_REQUEST *request, uint32_t octets) {
    constexpr u32 kMostOctets = 128;  // RFC 9654, section 2.1
    if (request == nullptr || request->tbsRequest == nullptr) return 0x502B0049;
    if (octets == 0 || octets > kMostOctets) return 0x502B002B;
    u8 random[kMostOctets];
    if (RAND_BYTES(random, octets) != 0) return 0x502B003C;
    Encoder nonce;
    nonce.primitive(TLX_TAG_OCTET_STRING, {random, octets});
    return nonce.ok() && replace_nonce(*request->tbsRequest, nonce.bytes()) ? 0 : 0x502B003C;
}

const uint8_t *get_OCSP_REQUEST_nonce(const OCSP_REQUEST *request) {
    const OCTET_STRING *nonce = nonce_of(request);
    return nonce != nullptr ? nonce->data : nullptr;
}

uint32_t get_OCSP_REQUEST_nonce_length(const OCSP_REQUEST *request) {
    return static_cast<u32>(octets_of(nonce_of(request)).size());
}

uint32_t sign_OCSP_REQUEST(OCSP_REQUEST *request, const X509_CERT *signer, const P8_PRIV_KEY_INFO *key,
                           uint32_t digestId) {
    if (request == nullptr || request->tbsRequest == nullptr || signer == nullptr || key == nullptr) {
        return 0x502C0049;
    }
    Owned<OCSP_SIGNATURE> signature(new_OCSP_SIGNATURE());
    Owned<X509_CERT> copy(dup_X509_CERT(signer));
    if (!signature || !append_owned(signature->certs, copy) || !set_requestor(*request->tbsRequest, signer)) {
        return 0x502C003C;
    }
    Encoder der;
    Codec<OCSP_TBS_REQUEST>::encode(der, request->tbsRequest);
    if (!der.ok()) return 0x50040103;
    MadeSignature made;
    constexpr ResponderStatuses kStatuses = {0x502C002B, 0x502C001C, 0x502C003C};
    if (const u32 status = sign_with(*key, digestId, der.bytes(), made, kStatuses); status != 0) {
        return status;
    }
    signature->signatureAlgorithm = made.algorithm.release();
    signature->signature = made.value.release();
    free_OCSP_SIGNATURE(request->optionalSignature);
    request->optionalSignature = signature.release();
    return 0;
}

uint32_t verify_OCSP_REQUEST(const OCSP_REQUEST *request, const X509_CERT *signer) {
    if (request == nullptr || request->tbsRequest == nullptr) return 0x502D0049;
    const OCSP_SIGNATURE *signature = request->optionalSignature;
    if (signature == nullptr) return 0x502D002B;
    if (signer == nullptr) signer = item_at<X509_CERT>(signature->certs, 0);
    if (signer == nullptr) return 0x502D0047;
    RecordOctets octets;
    if (!octets.read(*request->tbsRequest)) return 0x502D003C;
    switch (verify_with(get_X509_ALGO_IDENTIFIER_OID(signature->signatureAlgorithm), signature->signature,
                        octets.bytes(), get_X509_SPKI(signer))) {
        case SignatureResult::good:
            return 0;
        case SignatureResult::unsupported:
            return 0x502D0048;
        case SignatureResult::no_memory:
            return 0x502D003C;
        default:
            return 0x502D0054;
    }
}
