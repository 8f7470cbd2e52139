// What an authority of time stamps answers (RFC 3161, section 2.4.2).
#include <algorithm>
#include <cstring>

#include "asn1/asn1_time_text.hpp"
#include "keyinfo/digest_identifier.hpp"
#include "message/cms_identifiers.hpp"
#include "message/timestamp.hpp"

using namespace tlx;

namespace {

constexpr std::size_t kSecondsEnd = 14;  // of YYYYMMDDhhmmss

/// A time without its fraction.
class WholeSeconds {
  public:
    explicit WholeSeconds(Bytes time) noexcept {
        std::memcpy(octets_, time.data(), kSecondsEnd);
        octets_[kSecondsEnd] = 'Z';
    }
    [[nodiscard]] const ASN1_STRING *text() const noexcept { return &text_; }

  private:
    u8 octets_[kSecondsEnd + 1];
    ASN1_STRING text_ = {TLX_TAG_GENERALIZED_TIME, octets_, sizeof octets_, 1};
};

bool is_fraction(Bytes text) noexcept {
    const auto is_digit = [](u8 c) { return c >= '0' && c <= '9'; };
    return text.size() > 1 && text.front() == '.' && text.back() != '0' &&
           std::ranges::all_of(text.subspan(1), is_digit);
}

/// The content of a token; null when it is none, or has none.
const CMS_ENCAP_CONTENT_INFO *stamp_content(const CMS_CONTENT_INFO &token) noexcept {
    if (text_of(token.contentType) != cms::kSignedData || token.signedData == nullptr) return nullptr;
    const CMS_ENCAP_CONTENT_INFO *content = token.signedData->encapContentInfo;
    return content != nullptr && text_of(content->eContentType) == cms::kTstInfo ? content : nullptr;
}

bool is_same_imprint(const CMS_MESSAGE_IMPRINT &a, const CMS_MESSAGE_IMPRINT &b) noexcept {
    return text_of(get_X509_ALGO_IDENTIFIER_OID(a.hashAlgorithm)) ==
               text_of(get_X509_ALGO_IDENTIFIER_OID(b.hashAlgorithm)) &&
           std::ranges::equal(octets_of(a.hashedMessage), octets_of(b.hashedMessage));
}

bool is_granted(u32 status) noexcept {
    return status == TLX_TIMESTAMP_GRANTED || status == TLX_TIMESTAMP_GRANTED_WITH_MODS;
}

}  // namespace

bool tlx::is_stamp_time(const GENERALIZED_TIME *text) noexcept {
    const Bytes octets = octets_of(text);
    if (octets.size() <= kSecondsEnd || octets.back() != 'Z') return false;
    const Bytes fraction = octets.subspan(kSecondsEnd, octets.size() - kSecondsEnd - 1);
    WholeSeconds seconds(octets);
    return (fraction.empty() || is_fraction(fraction)) && has_existing_date(seconds.text(), true);
}

std::unique_ptr<ASN1_TIME, FreeWith<free_ASN1_TIME>> tlx::stamp_time(const GENERALIZED_TIME *text) noexcept {
    WholeSeconds seconds(octets_of(text));
    return std::unique_ptr<ASN1_TIME, FreeWith<free_ASN1_TIME>>(generalizedTimeToASN1_TIME(seconds.text()));
}

bool tlx::is_stamped(u32 digest_id) noexcept {
    return digest_id != TLX_DIGEST_MD4 && digest_id != TLX_DIGEST_MD5 && is_known_digest(digest_id);
}

u32 tlx::compare_with_request(const CMS_TST_INFO &info, const CMS_TIMESTAMP_REQUEST &request) noexcept {
    if (!is_same_imprint(*info.messageImprint, *request.messageImprint)) return 0x52C5005E;
    if (request.nonce != nullptr) {
        if (info.nonce == nullptr) return 0x52C50047;
        if (cmp_BIGINT(info.nonce, request.nonce) != 0) return 0x52C50048;
    }
    const bool has_policy =
        request.reqPolicy == nullptr || text_of(request.reqPolicy) == text_of(info.policy);
    return has_policy ? 0 : 0x52C50119;
}

uint32_t decode_CMS_TST_INFO(const CMS_CONTENT_INFO *token, CMS_TST_INFO **out) {
    if (token == nullptr || out == nullptr) return 0x52C40049;
    const CMS_ENCAP_CONTENT_INFO *content = stamp_content(*token);
    if (content == nullptr) return 0x52C40048;
    if (content->eContent == nullptr) return 0x52C4003B;
    const Bytes octets = octets_of(content->eContent);
    Element element;
    CMS_TST_INFO *decoded = nullptr;
    if (!read_element(octets, element) || element.whole.size() != octets.size()) return 0x52C4004F;
    if (const u32 status = Codec<CMS_TST_INFO>::decode(element, &decoded); status != 0) return status;
    Owned<CMS_TST_INFO> info(decoded);
    if (info->version != 1) return 0x52C4001C;
    if (!is_stamp_time(info->genTime)) return 0x52C40104;
    deliver(std::move(info), out);
    return 0;
}

uint32_t check_CMS_TIMESTAMP_RESPONSE(const CMS_TIMESTAMP_RESPONSE *response,
                                      const CMS_TIMESTAMP_REQUEST *request, CMS_TST_INFO **info) {
    if (response == nullptr || response->status == nullptr || request == nullptr ||
        request->messageImprint == nullptr) {
        return 0x52C50049;
    }
    if (!is_granted(response->status->status)) return 0x52C50012;
    if (response->timeStampToken == nullptr) return 0x52C5003B;
    CMS_TST_INFO *decoded = nullptr;
    u32 status = decode_CMS_TST_INFO(response->timeStampToken, &decoded);
    Owned<CMS_TST_INFO> read(decoded);
    if (status == 0) status = compare_with_request(*read, *request);
    if (status == 0 && info != nullptr) deliver(std::move(read), info);
    return status;
}

uint32_t get_CMS_MESSAGE_IMPRINT_digest(const CMS_MESSAGE_IMPRINT *imprint) {
    const u32 digest_id = imprint != nullptr ? digest_of(imprint->hashAlgorithm) : 0;
    return is_stamped(digest_id) ? digest_id : 0;
}

uint32_t match_CMS_MESSAGE_IMPRINT(const CMS_MESSAGE_IMPRINT *imprint, const uint8_t *octets,
                                   uint32_t length) {
    u8 digest[TLX_DIGEST_MAX_LENGTH];
    u32 digest_length = 0;
    if (imprint == nullptr || (octets == nullptr && length != 0)) return 0x52C60049;
    const u32 digest_id = get_CMS_MESSAGE_IMPRINT_digest(imprint);
    if (get_DigestLength(digest_id) == 0) return 0x52C60048;
    if (Digest(digest_id, octets, length, digest, &digest_length) != 0) return 0x52C6003C;
    const Bytes computed(digest, digest_length);
    return std::ranges::equal(octets_of(imprint->hashedMessage), computed) ? 0 : 0x52C6005E;
}
