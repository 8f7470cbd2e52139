#include "status/ocsp_verify.hpp"

#include <tlxpki/objects.h>
#include <tlxpki/ocsp.h>
#include <tlxpki/x509_sign.h>
#include <tlxpki/x509v3_key.h>

#include <algorithm>

#include "asn1/asn1_time_text.hpp"
#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"
#include "der/received_octets.hpp"
#include "status/ocsp_signature.hpp"
#include "trust/extension.hpp"

namespace tlx {
namespace {

/// Whether a key hash names the key of a certificate: by RFC 6960 it is its SHA-1; responders also take the
/// certificate's own identifier. False also when memory runs out.
bool is_key_hash(Bytes hash, const X509_CERT *cert) noexcept {
    Bytes identifier;
    const X509_EXTENSION *extension = find_extension(cert, extension_id::kSubjectKeyIdentifier);
    if (read_extension(extension, TLX_TAG_OCTET_STRING, identifier) && std::ranges::equal(identifier, hash)) {
        return true;
    }
    const Owned<OCTET_STRING> digest(create_SUBJECT_KEYID(get_X509_SPKI(cert)));
    return digest != nullptr && std::ranges::equal(octets_of(digest.get()), hash);
}

bool names(const OCSP_RESPONDER_ID &id, const X509_CERT *cert) noexcept {
    if (cert == nullptr) return false;
    if (id.type == TLX_OCSP_BY_NAME) {
        return id.value.name != nullptr && cmp_X509_NAME(id.value.name, get_X509_subject(cert)) == 0;
    }
    return is_key_hash(octets_of(id.value.keyHash), cert);
}

/// RFC 6960, section 4.2.2.2: id-kp-OCSPSigning itself; anyExtendedKeyUsage does not stand for it. RFC 5280,
/// section 4.2.1.12: the key usage has to agree.
bool may_sign_responses(const X509_CERT *cert) noexcept {
    constexpr u8 kDigitalSignatureOrNonRepudiation = 0xC0;
    void *read = nullptr;
    static_cast<void>(decode_X509_EXTENSION_by_OID_index(extensions_of(cert), oid::kExtendedKeyUsage,
                                                         TLX_DECODER(Seq_to_EXTENDED_KEY_USAGE), &read));
    const std::unique_ptr<STACK, FreeWith<free_EXTENDED_KEY_USAGE>> usage(static_cast<STACK *>(read));
    const auto purpose = oid_of_row(oid::kOcspSigning);
    if (get_OBJECT_IDENTIFIERS_index_by_OBJECT_IDENTIFIER(usage.get(), purpose.get()) < 0) return false;

    const X509_EXTENSION *key_usage = find_extension(cert, extension_id::kKeyUsage);
    Bytes bits;  // the unused-bits octet, then the bits
    if (key_usage == nullptr) return true;
    return read_extension(key_usage, TLX_TAG_BIT_STRING, bits) && bits.size() > 1 &&
           (bits[1] & kDigitalSignatureOrNonRepudiation) != 0;
}

/// Whether a CA signed a certificate. A decoded one counts as it was received, because some names are not
/// written back as they were.
bool is_issued(const X509_CERT *cert, const X509_CERT *issuer) noexcept {
    const X509_PUBKEY *key = get_X509_SPKI(issuer);
    const OwnedOctets<u8> received(join_received(cert->received));
    Element whole;
    Element signed_part;
    if (!received) return verify_SIG_X509_CERT(cert, key) == 0;
    if (text_of(get_X509_signature(cert)) != text_of(get_X509_sig_alg(cert))) return false;
    if (!read_element({received.get(), received_size(cert->received)}, whole)) return false;
    return Cursor(whole).next(TLX_TAG_SEQUENCE, signed_part) &&
           verify_with(get_X509_sig_alg(cert), get_X509_sig_value(cert), signed_part.whole, key) ==
               SignatureResult::good;
}

/// Whether the CA lets the owner of a certificate answer for it.
u32 check_delegate(const X509_CERT *cert, const X509_CERT *issuer, const ASN1_TIME *time) noexcept {
    if (cmp_X509_NAME(get_X509_issuer(cert), get_X509_subject(issuer)) != 0) return 0x501B0106;
    if (!is_issued(cert, issuer)) return 0x501B0106;
    if (!may_sign_responses(cert)) return 0x501B0118;
    return verify_X509_validity(cert, time) == 0 ? 0 : 0x501B0113;
}

u32 check_signature(const BASIC_OCSP_RESPONSE &basic, Bytes octets, const X509_CERT *signer) noexcept {
    switch (verify_with(get_X509_ALGO_IDENTIFIER_OID(basic.signatureAlgorithm), basic.signature, octets,
                        get_X509_SPKI(signer))) {
        case SignatureResult::good:
            return 0;
        case SignatureResult::unsupported:
            return 0x501B0048;
        case SignatureResult::no_memory:
            return 0x501B003C;
        default:
            return 0x501B0054;
    }
}

/// The search for the responder's certificate: the first good one ends it, otherwise the first one that has
/// the responder's ID says why.
class ResponderSearch {
  public:
    ResponderSearch(const BASIC_OCSP_RESPONSE &basic, Bytes octets, const X509_CERT *issuer,
                    const ASN1_TIME *time) noexcept
        : basic_(basic), octets_(octets), issuer_(issuer), time_(time) {}

    void look_at(const X509_CERT *cert) noexcept {
        if (status_ == 0 || !names(*basic_.tbsResponseData->responderID, cert)) return;
        u32 status = cert == issuer_ ? 0 : check_delegate(cert, issuer_, time_);
        if (status == 0) status = check_signature(basic_, octets_, cert);
        if (status == 0 || status_ == kNobody) status_ = status;
    }
    void look_at(const X509_CERTIFICATES *certs) noexcept {
        for (u32 i = 0; i < get_STACK_count(certs); ++i) {
            look_at(item_at<X509_CERT>(certs, static_cast<i32>(i)));
        }
    }
    [[nodiscard]] u32 status() const noexcept { return status_; }

  private:
    static constexpr u32 kNobody = 0x501B0047;

    const BASIC_OCSP_RESPONSE &basic_;
    Bytes octets_;
    const X509_CERT *issuer_;
    const ASN1_TIME *time_;
    u32 status_ = kNobody;
};

u32 verify_answers(const OCSP_SINGLE_RESPONSES *answers, const ASN1_TIME *time) noexcept {
    for (u32 i = 0; i < get_STACK_count(answers); ++i) {
        const auto *answer = item_at<OCSP_SINGLE_RESPONSE>(answers, static_cast<i32>(i));
        AnswerTimes times;
        if (answer == nullptr || !times.read(*answer) || has_unknown_critical(answer->singleExtensions)) {
            return 0x501B0104;
        }
        if (!times.hold_at(time)) return 0x501B0113;
    }
    return 0;
}

}  // namespace

bool read_time(const GENERALIZED_TIME *text, ASN1_TIME &time) noexcept {
    constexpr std::size_t kLength = 15;
    const Bytes octets = octets_of(text);
    if (octets.size() != kLength || octets.back() != 'Z' || !has_existing_date(text, true)) return false;
    const OwnedTime read(generalizedTimeToASN1_TIME(text));
    if (!read) return false;
    time = *read;
    return true;
}

bool AnswerTimes::read(const OCSP_SINGLE_RESPONSE &answer) noexcept {
    has_next = answer.nextUpdate != nullptr;
    return read_time(answer.thisUpdate, this_update) &&
           (!has_next || read_time(answer.nextUpdate, next_update));
}

bool AnswerTimes::hold_at(const ASN1_TIME *time) const noexcept {
    return cmp_ASN1_TIME(&this_update, time) <= 0 && (!has_next || cmp_ASN1_TIME(time, &next_update) <= 0);
}

bool has_unknown_critical(const X509_EXTENSIONS *extensions) noexcept {
    // RFC 6960, sections 4.4.1, 4.4.2 and 4.4.4: the nonce, where the answer comes from, how old it may get.
    constexpr std::string_view kKnown[] = {"1.3.6.1.5.5.7.48.1.2", "1.3.6.1.5.5.7.48.1.3",
                                           "1.3.6.1.5.5.7.48.1.6"};
    for (u32 i = 0; i < get_STACK_count(extensions); ++i) {
        const auto *extension = item_at<X509_EXTENSION>(extensions, static_cast<i32>(i));
        if (extension != nullptr && extension->critical != 0 &&
            std::ranges::find(kKnown, text_of(extension->object)) == std::end(kKnown)) {
            return true;
        }
    }
    return false;
}

u32 verify_responder(const BASIC_OCSP_RESPONSE &basic, const X509_CERT *issuer,
                     const X509_CERTIFICATES *certs, const ASN1_TIME *time) noexcept {
    const OCSP_RESPONSE_DATA *data = basic.tbsResponseData;
    if (data == nullptr || data->responderID == nullptr || basic.signatureAlgorithm == nullptr ||
        basic.signature == nullptr) {
        return 0x501B0049;
    }
    RecordOctets octets;
    if (!octets.read(*data)) return 0x501B003C;
    ResponderSearch search(basic, octets.bytes(), issuer, time);
    search.look_at(issuer);
    search.look_at(basic.certs);
    search.look_at(certs);
    if (search.status() != 0) return search.status();
    return has_unknown_critical(data->responseExtensions) ? 0x501B0104 : 0;
}

}  // namespace tlx

using namespace tlx;

uint32_t verify_BASIC_OCSP_RESPONSE(const BASIC_OCSP_RESPONSE *basic, const X509_CERT *issuer,
                                    const X509_CERTIFICATES *certs, const ASN1_TIME *time) {
    if (basic == nullptr || issuer == nullptr) return 0x501B0049;
    const OwnedTime now(time == nullptr ? getCurrentGMTime() : nullptr);
    if (time == nullptr) time = now.get();
    if (time == nullptr) return 0x501B003C;
    const u32 status = verify_responder(*basic, issuer, certs, time);
    return status == 0 ? verify_answers(basic->tbsResponseData->responses, time) : status;
}

uint32_t verfy_BASIC_OCSP_RESPONSE(const BASIC_OCSP_RESPONSE *basic, const X509_CERT *issuer,
                                   const X509_CERTIFICATES *certs, const ASN1_TIME *time) {
    return verify_BASIC_OCSP_RESPONSE(basic, issuer, certs, time);
}
