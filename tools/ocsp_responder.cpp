#include "ocsp_responder.hpp"

#include "choice.hpp"
#include "failure.hpp"
#include "status.hpp"

namespace tool {

namespace {

using ResponseBytes = Owned<OCSP_RESPONSE_BYTES, free_OCSP_RESPONSE_BYTES>;
using RevokedInfo = Owned<OCSP_REVOKED_INFO, free_OCSP_REVOKED_INFO>;

constexpr Choice kDigests[] = {{"sha256", TLX_DIGEST_SHA256},
                               {"sha384", TLX_DIGEST_SHA384},
                               {"sha512", TLX_DIGEST_SHA512},
                               {"sha224", TLX_DIGEST_SHA224},
                               {"sha1", TLX_DIGEST_SHA1}};

void must_be_made(uint32_t status) {
    if (status != 0) throw Failure("the response cannot be made: " + exact_status_sentence(status));
}

RevokedInfo info_of(const TableEntry &entry) {
    auto info = made<RevokedInfo>(new_OCSP_REVOKED_INFO());
    info->revocationTime = made<String>(new_ASN1_STRING()).release();
    must(set_ASN1_STRING_value(info->revocationTime, TLX_TAG_GENERALIZED_TIME, entry.time.data(),
                               static_cast<uint32_t>(entry.time.size())));
    info->revocationReason = entry.reason;
    return info;
}

/// A time as OCSP writes it.
String generalized(const X509_TIME *time) {
    const Time calendar(X509_TIME_to_ASN1_TIME(time));
    if (calendar == nullptr) throw Failure("a time of the list cannot be read");
    return made<String>(asn1TimeToGENERALIZED_TIME(calendar.get(), 2));
}

/// From when on and until when answers hold.
struct Updates {
    String from;
    String until;  ///< null when it is not said

    Updates(const X509_CRL *crl, uint32_t days) {
        const auto now = made<Time>(getCurrentGMTime());
        from = crl != nullptr ? generalized(get_X509_CRL_thisUpdate(crl))
                              : made<String>(asn1TimeToGENERALIZED_TIME(now.get(), 2));
        const X509_TIME *next = crl != nullptr ? get_X509_CRL_nextUpdate(crl) : nullptr;
        if (days != 0) {
            must(add_ASN1_TIME_days(now.get(), static_cast<int32_t>(days)));
            until = made<String>(asn1TimeToGENERALIZED_TIME(now.get(), 2));
        } else if (next != nullptr) {
            until = generalized(next);
        }
    }
};

OcspResponse wrap(const BASIC_OCSP_RESPONSE *basic) {
    OCSP_RESPONSE_BYTES *bytes = nullptr;
    OCSP_RESPONSE *response = nullptr;
    must_be_made(generate_OCSP_RESPONSE_BYTES(&bytes, basic));
    ResponseBytes owner(bytes);
    must_be_made(generate_OCSP_RESPONSE(&response, bytes, TLX_OCSP_SUCCESSFUL));
    (void)owner.release();
    return OcspResponse(response);
}

}  // namespace

OcspStatuses::OcspStatuses(const OcspRespondOptions &options, const X509_CERT *issuer) {
    if (options.table.empty() == options.crl.empty()) throw Failure("one of --crl and --table is needed");
    if (options.crl.empty()) {
        table_ = load_status_table(options.table);
        return;
    }
    crl_ = load_crl(options.crl);
    const X509_EXTENSIONS *extensions = get_X509_CRL_extensions(crl_.get());
    for (const int32_t row : {TLX_OID_DELTA_CRL_INDICATOR, TLX_OID_ISSUING_DISTRIBUTION_POINT}) {
        if (get_X509_EXTENSION_index_by_OID_index(extensions, row, -1) < 0) continue;
        throw Failure(source_of(options.crl) + ": does not cover all certificates of the CA");
    }
    if (const uint32_t status = verify_X509_CRL(crl_.get(), issuer, nullptr); status != 0) {
        throw Failure(source_of(options.crl) + ": cannot be relied on: " + exact_status_sentence(status));
    }
}

TableEntry OcspStatuses::look_up(const BIGINT *serial) const {
    constexpr uint32_t kNoEntry = 0x480B0047;
    constexpr uint32_t kMostReason = 10;  // RFC 5280, section 5.3.1
    if (crl_ == nullptr) {
        const auto found = table_.find(number_hex(serial));
        return found == table_.end() ? TableEntry{} : found->second;
    }
    X509_REVOKED *out = nullptr;
    const uint32_t status = find_X509_CRL_revoked(crl_.get(), nullptr, serial, &out);
    const Revoked revoked(out);
    if (status == kNoEntry) return {TLX_OCSP_GOOD, 0, ""};
    must_be_made(status);
    const uint32_t reason = get_X509_REVOKED_reason(out);
    return {TLX_OCSP_REVOKED, reason > kMostReason ? 0 : reason,
            text_of(generalized(out->revocationDate).get())};
}

OcspResponder::OcspResponder(const OcspRespondOptions &options)
    : tokens_(options.pin_file),
      issuer_(std::move(load_certificates(options.issuer).front().cert)),
      cert_(load_certificate(options.responder, tokens_).cert),
      key_(made<KeyInfo>(new_P8_PRIV_KEY_INFO())),
      statuses_(options, issuer_.get()),
      digest_(value_of(kDigests, options.digest)),
      days_(options.days),
      by_key_(options.by_key),
      is_on_token_(is_token_uri(options.key)) {
    Password password(options.password_file);
    const Key key = load_private_key(options.key, password, tokens_, KeyUse::kSign);
    must(set_PRIV_KEY_KeyParams(key_.get(), key.get()));
}

OcspResponse OcspResponder::answer(const OCSP_REQUEST *request) const {
    ResponseData data = begin(request);
    const Updates updates(statuses_.list(), days_);
    const OCSP_SINGLE_REQUESTS *questions = request->tbsRequest->requestList;
    for (uint32_t i = 0; i < get_OCSP_SINGLE_REQUESTS_count(questions); ++i) {
        OCSP_CERT_ID *id = get_OCSP_SINGLE_REQUESTS_child(questions, static_cast<int32_t>(i))->reqCert;
        const TableEntry entry = look_up(id);
        const RevokedInfo info = info_of(entry);
        must_be_made(add_single_OCSP_RESPONSE(data.get(), &id, entry.status, info.get(), updates.from.get(),
                                              updates.until.get()));
    }
    return wrap(sign(std::move(data)).get());
}

TableEntry OcspResponder::look_up(const OCSP_CERT_ID *id) const {
    if (match_OCSP_CERT_ID(id, issuer_.get()) != 0) return {};
    return statuses_.look_up(id->serialNumber);
}

OcspResponder::ResponseData OcspResponder::begin(const OCSP_REQUEST *request) const {
    const uint8_t *nonce = get_OCSP_REQUEST_nonce(request);
    const uint32_t length = get_OCSP_REQUEST_nonce_length(request);
    OCSP_RESPONSE_DATA *data = nullptr;
    must_be_made(by_key_
                     ? generate_OCSP_RESPONSE_DATA_withKeyHash(&data, cert_.get(), 0, nonce, length)
                     : generate_OCSP_RESPONSE_DATA(&data, cert_.get(), TLX_OCSP_BY_NAME, 0, nonce, length));
    return ResponseData(data);
}

OcspResponder::BasicResponse OcspResponder::sign(ResponseData data) const {
    constexpr uint32_t kOtherKey = 0x501B0054;
    BASIC_OCSP_RESPONSE *basic = nullptr;
    std::unique_lock<std::mutex> lock(token_use_, std::defer_lock);
    if (is_on_token_) lock.lock();
    must_be_made(generate_BASIC_OCSP_RESPONSE_ex(&basic, data.get(), cert_.get(), key_.get(), digest_));
    if (is_on_token_) lock.unlock();
    (void)data.release();
    BasicResponse owner(basic);
    const uint32_t status = verify_BASIC_OCSP_RESPONSE(basic, issuer_.get(), nullptr, nullptr);
    if (status == kOtherKey) throw Failure("the key is not that of the responder's certificate");
    if (status != 0) throw Failure("nobody would rely on the response: " + exact_status_sentence(status));
    return owner;
}

}  // namespace tool
