// Opening and making the recipients of CMS messages by their kind.
#include "message/cms_keys.hpp"

#include <algorithm>

#include "x509/crl_extension.hpp"

using namespace tlx;

namespace {

u32 make_recipient(const CMS_RECIPIENT_SETTINGS &settings, Bytes key, CMS_RECIPIENT_INFO &out) noexcept {
    if (settings.kek != nullptr) return make_kek(settings, key, out);
    if (settings.password != nullptr) return make_password(settings, key, out);
    const bool is_rsa = rsa_unit(get_X509_PUBKEY_key(get_X509_SPKI(settings.certificate))) != nullptr;
    return is_rsa ? make_key_transport(settings, key, out) : make_key_agreement(settings, key, out);
}

}  // namespace

bool tlx::find_key_identifier(const X509_CERT *cert, Bytes &identifier) noexcept {
    Element element;
    if (!read_extension(get_X509_extensions(cert), TLX_OID_SUBJECT_KEY_IDENTIFIER, TLX_TAG_OCTET_STRING,
                        element)) {
        return false;
    }
    identifier = element.contents;
    return element.tag == TLX_TAG_OCTET_STRING;
}

bool tlx::can_be_named(const X509_CERT *cert, bool by_key_identifier) noexcept {
    Bytes identifier;
    if (by_key_identifier) return find_key_identifier(cert, identifier);
    return get_X509_issuer(cert) != nullptr && get_X509_serial(cert) != nullptr;
}

bool tlx::is_named(const X509_CERT *cert, const P7_ISSUER_AND_SERIAL_NUMBER *number) noexcept {
    return cert == nullptr || cmp_P7_ISSUER_AND_SERIAL_NUMBER(cert, number) == 0;
}

bool tlx::is_named(const X509_CERT *cert, const OCTET_STRING *key_identifier) noexcept {
    Bytes own;
    if (cert == nullptr) return true;
    return find_key_identifier(cert, own) && std::ranges::equal(own, octets_of(key_identifier));
}

bool tlx::lacks_parameters(const X509_ALGO_IDENTIFIER &algorithm) noexcept {
    Element element;
    if (algorithm.parameters == nullptr) return true;
    return view_node(algorithm.parameters, element) && element.tag == TLX_TAG_NULL;
}

Owned<X509_ALGO_IDENTIFIER> tlx::make_algorithm(std::string_view dotted, ASN1_UNIT *parameters) noexcept {
    Owned<ASN1_UNIT> node(parameters);
    Owned<X509_ALGO_IDENTIFIER> made(new_X509_ALGO_IDENTIFIER());
    if (!made) return nullptr;
    made->parameters = node.release();
    made->algorithm =
        new_string(TLX_TAG_OBJECT_IDENTIFIER, {reinterpret_cast<const u8 *>(dotted.data()), dotted.size()});
    return made->algorithm != nullptr ? std::move(made) : nullptr;
}

u32 tlx::open_recipient(const CMS_RECIPIENT_INFO &recipient, const CMS_KEY_HOLDER &holder, u32 expected_len,
                        OpenedKey &key, WorkBudget &budget) noexcept {
    if (recipient.value.any == nullptr) return 0x52B10049;
    u32 status = 0x52B10047;
    switch (recipient.type) {
        case TLX_CMS_KEY_TRANSPORT:
            status = open_key_transport(*recipient.value.ktri, holder, expected_len, key);
            break;
        case TLX_CMS_KEY_AGREEMENT:
            status = open_key_agreement(*recipient.value.kari, holder, key);
            break;
        case TLX_CMS_KEY_ENCRYPTION_KEY:
            status = open_kek(*recipient.value.kekri, holder, key);
            break;
        case TLX_CMS_PASSWORD:
            status = open_password(*recipient.value.pwri, holder, key, budget);
            break;
        default:
            break;
    }
    if (status != 0) return status;
    return key.is_of_length(expected_len) ? 0 : 0x52B10012;
}

uint32_t open_CMS_RECIPIENT_INFO(const CMS_RECIPIENT_INFO *recipient, const CMS_KEY_HOLDER *holder,
                                 uint32_t expected_len, uint8_t *key, uint32_t *key_len) {
    if (key_len == nullptr) return 0x52B10049;
    const u32 room = std::exchange(*key_len, 0);
    if (recipient == nullptr || holder == nullptr || key == nullptr) return 0x52B10049;
    OpenedKey opened;
    WorkBudget budget;
    const u32 status = open_recipient(*recipient, *holder, expected_len, opened, budget);
    if (status != 0) return status;
    if (opened.len > room) return 0x52B1001C;
    if (opened.len > 0) std::memcpy(key, opened.octets, opened.len);
    *key_len = opened.len;
    return 0;
}

uint32_t make_CMS_RECIPIENT_INFO(const CMS_RECIPIENT_SETTINGS *settings, const uint8_t *content_key,
                                 uint32_t len, CMS_RECIPIENT_INFO **out) {
    if (settings == nullptr || content_key == nullptr || out == nullptr) return 0x52B00049;
    const u32 kinds = (settings->certificate != nullptr ? 1U : 0U) + (settings->kek != nullptr ? 1U : 0U) +
                      (settings->password != nullptr ? 1U : 0U);
    if (kinds != 1) return 0x52B00049;
    if (len == 0 || len > TLX_CMS_KEY_MAX_LENGTH) return 0x52B0001C;
    const Bytes key(content_key, len);
    Owned<CMS_RECIPIENT_INFO> made(new_CMS_RECIPIENT_INFO());
    if (!made) return 0x52B0003C;
    const u32 status = make_recipient(*settings, key, *made);
    if (status == 0) *out = made.release();
    return status;
}
