// What a response says of one certificate.
#include <tlxpki/objects.h>
#include <tlxpki/ocsp.h>

#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"
#include "status/ocsp_cert_id.hpp"
#include "status/ocsp_nonce.hpp"
#include "status/ocsp_verify.hpp"

using namespace tlx;

namespace {

/// Finds the answer about a certificate by its ID. A status of check_OCSP_RESPONSE().
u32 find_answer(const OCSP_SINGLE_RESPONSES *answers, const X509_CERT *cert, const X509_CERT *issuer,
                const OCSP_SINGLE_RESPONSE *&found) noexcept {
    const BIGINT *serial = get_X509_serial(cert);
    if (serial == nullptr) return 0x501C0049;
    for (u32 i = 0; i < get_STACK_count(answers); ++i) {
        const auto *answer = item_at<OCSP_SINGLE_RESPONSE>(answers, static_cast<i32>(i));
        const OCSP_CERT_ID *id = answer != nullptr ? answer->certID : nullptr;
        if (id == nullptr || cmp_BIGINT(id->serialNumber, serial) != 0) continue;
        IssuerDigests digests;
        const auto result = digests.compute(digest_of(*id), cert, &X509_TBS_CERT::issuer, issuer);
        if (result == IssuerDigests::Result::no_memory) return 0x501C003C;
        if (result == IssuerDigests::Result::missing_member) return 0x501C0049;
        if (result != IssuerDigests::Result::good || !digests.are_in(*id)) continue;
        found = answer;
        return 0;
    }
    return 0x501C0047;
}

u32 check_nonce(const OCSP_RESPONSE_DATA &data, const u8 *nonce, u32 length) noexcept {
    if (nonce == nullptr) return 0;
    const OCTET_STRING *echo = find_nonce(data.responseExtensions);
    if (echo == nullptr) return 0x501C003B;
    return std::ranges::equal(octets_of(echo), Bytes(nonce, length)) ? 0 : 0x501C005E;
}

/// Whether an answer without nextUpdate, that no nonce proves to be new, is recent.
bool is_recent(ASN1_TIME this_update, const ASN1_TIME *time) noexcept {
    return add_ASN1_TIME_days(&this_update, TLX_OCSP_MOST_DAYS) == 0 &&
           cmp_ASN1_TIME(time, &this_update) <= 0;
}

u32 read_answer(const OCSP_SINGLE_RESPONSE &single, const ASN1_TIME *time, bool has_nonce,
                OCSP_ANSWER &answer) noexcept {
    AnswerTimes times;
    const OCSP_CERT_STATUS *status = single.certStatus;
    if (status == nullptr || !times.read(single) || has_unknown_critical(single.singleExtensions)) {
        return 0x501C0104;
    }
    if (!times.hold_at(time)) return 0x501C0113;
    if (!times.has_next && !has_nonce && !is_recent(times.this_update, time)) return 0x501C0113;
    answer.status = status->status;
    answer.thisUpdate = times.this_update;
    answer.nextUpdate = times.next_update;
    if (status->status != TLX_OCSP_REVOKED) return 0;
    if (status->revokedInfo == nullptr ||
        !read_time(status->revokedInfo->revocationTime, answer.revocationTime)) {
        return 0x501C0104;
    }
    answer.reason = status->revokedInfo->revocationReason;
    return 0;
}

}  // namespace

uint32_t decode_BASIC_OCSP_RESPONSE(const OCSP_RESPONSE *response, BASIC_OCSP_RESPONSE **out) {
    if (response == nullptr || out == nullptr) return 0x502E0049;
    const OCSP_RESPONSE_BYTES *bytes = response->responseBytes;
    if (bytes == nullptr) return 0x502E002B;
    if (oid_index(text_of(bytes->responseType)) != oid::kBasicOcspResponse) return 0x502E0048;
    const Bytes octets = octets_of(bytes->response);
    Element element;
    if (!read_element(octets, element) || element.whole.size() != octets.size()) return 0x502E004F;
    return Codec<BASIC_OCSP_RESPONSE>::decode(element, out);
}

const uint8_t *get_OCSP_RESPONSE_DATA_nonce(const OCSP_RESPONSE_DATA *data) {
    const OCTET_STRING *nonce = data != nullptr ? find_nonce(data->responseExtensions) : nullptr;
    return nonce != nullptr ? nonce->data : nullptr;
}

uint32_t get_OCSP_RESPONSE_DATA_nonce_length(const OCSP_RESPONSE_DATA *data) {
    return data != nullptr ? static_cast<u32>(octets_of(find_nonce(data->responseExtensions)).size()) : 0;
}

uint32_t check_OCSP_RESPONSE(const OCSP_RESPONSE *response, const X509_CERT *cert, const X509_CERT *issuer,
                             const uint8_t *nonce, uint32_t nonceLength, const ASN1_TIME *time,
                             OCSP_ANSWER *answer) {
    if (response == nullptr || cert == nullptr || issuer == nullptr || answer == nullptr) return 0x501C0049;
    if (response->responseStatus != TLX_OCSP_SUCCESSFUL) return 0x501C0012;
    BASIC_OCSP_RESPONSE *decoded = nullptr;
    u32 status = decode_BASIC_OCSP_RESPONSE(response, &decoded);
    if (status != 0) return status;
    const Owned<BASIC_OCSP_RESPONSE> basic(decoded);
    const OCSP_RESPONSE_DATA &data = *basic->tbsResponseData;

    const OwnedTime now(time == nullptr ? getCurrentGMTime() : nullptr);
    if (time == nullptr) time = now.get();
    if (time == nullptr) return 0x501C003C;
    status = verify_responder(*basic, issuer, nullptr, time);
    if (status != 0) return status;

    const OCSP_SINGLE_RESPONSE *single = nullptr;
    OCSP_ANSWER made{};
    status = find_answer(data.responses, cert, issuer, single);
    if (status == 0) status = check_nonce(data, nonce, nonceLength);
    if (status == 0) status = read_answer(*single, time, nonce != nullptr, made);
    if (status == 0 && !read_time(data.producedAt, made.producedAt)) status = 0x501C0104;
    if (status == 0) *answer = made;
    return status;
}
