// The members of revocation lists and of their entries.
#include <tlxpki/objects.h>
#include <tlxpki/time.h>

#include "der/list_items.hpp"
#include "x509/crl_entries.hpp"
#include "x509/crl_extension.hpp"
#include "x509/crl_records.hpp"

using namespace tlx;

namespace {

/// Passes a setter's status on. What was received is not the list any more once it succeeded.
u32 changed(X509_CRL &crl, u32 status) noexcept {
    if (status == 0) forget_received(crl);
    return status;
}

template <auto Dup, auto Free, typename T>
u32 replace_member(X509_CRL *crl, T *X509_CRL::*member, const T *value) noexcept {
    return crl == nullptr ? 1 : changed(*crl, replace_by_copy<Dup, Free>(crl->*member, value));
}

template <auto Free, typename T>
u32 remove_member(X509_CRL *crl, T *X509_CRL::*member) noexcept {
    if (crl == nullptr) return 1;
    Free(crl->*member);
    crl->*member = nullptr;
    return changed(*crl, 0);
}

u32 replace_time(X509_CRL *crl, X509_TIME *X509_CRL::*member, const X509_TIME *value) noexcept {
    if (value == nullptr || !has_existing_date(*value)) return 1;
    return replace_member<dup_X509_TIME, free_X509_TIME>(crl, member, value);
}

template <typename T>
T *member_of(const X509_CRL *crl, T *X509_CRL::*member) noexcept {
    return crl == nullptr ? nullptr : crl->*member;
}

/// Adds an extension with a finished value, or gives it this value.
u32 set_extension(X509_EXTENSIONS *&extensions, i32 oid_index, u8 critical, const Encoder &value) noexcept {
    if (!value.ok()) return 1;
    const Owned<OCTET_STRING> data(new_string(TLX_TAG_OCTET_STRING, value.bytes()));
    OwnedExtensions made(extensions == nullptr ? new_X509_EXTENSIONS() : nullptr);
    X509_EXTENSIONS *list = made ? made.get() : extensions;
    X509_EXTENSION *extension =
        get_X509_EXTENSION(list, get_X509_EXTENSION_index_by_OID_index(list, oid_index, -1));
    const bool is_new = extension == nullptr;
    if (create_X509_EXTENSION_by_OID_index(&extension, oid_index, critical, data.get()) == nullptr) return 1;
    const Owned<X509_EXTENSION> owner(is_new ? extension : nullptr);
    if (is_new && add_X509_EXTENSION(list, extension, -1) != 0) return 1;
    if (made) extensions = made.release();
    return 0;
}

}  // namespace

X509_REVOKED *create_X509_REVOKED(const BIGINT *serial, const ASN1_TIME *time, uint32_t reason) {
    if (serial == nullptr || time == nullptr || reason > TLX_CRL_REASON_AA_COMPROMISE) return nullptr;
    Owned<X509_REVOKED> revoked(new_X509_REVOKED());
    if (!revoked) return nullptr;
    revoked->serialNumber = dup_BIGINT(serial);
    revoked->revocationDate = new_X509_TIME();
    if (revoked->serialNumber == nullptr || set_X509_TIME(revoked->revocationDate, time) != 0) return nullptr;
    if (reason == TLX_CRL_REASON_UNSPECIFIED) return revoked.release();
    Encoder value;
    value.small_integer(static_cast<u8>(reason), TLX_TAG_ENUMERATED);
    return set_extension(revoked->extensions, TLX_OID_CRL_REASON, 0, value) == 0 ? revoked.release()
                                                                                 : nullptr;
}

uint32_t get_X509_REVOKED_reason(const X509_REVOKED *revoked) {
    Element value;
    const bool known = revoked != nullptr &&
                       read_extension(revoked->extensions, TLX_OID_CRL_REASON, TLX_TAG_ENUMERATED, value) &&
                       value.contents.size() == 1 && value.contents[0] < 0x80;
    return known ? value.contents[0] : 0xFFFFFFFF;
}

ASN1_TIME *get_X509_REVOKED_invalidityDate(const X509_REVOKED *revoked) {
    Element value;
    if (revoked == nullptr ||
        !read_extension(revoked->extensions, TLX_OID_INVALIDITY_DATE, TLX_TAG_GENERALIZED_TIME, value)) {
        return nullptr;
    }
    const Owned<ASN1_STRING> text(new_string(TLX_TAG_GENERALIZED_TIME, value.contents));
    const X509_TIME time = {1, text.get()};
    return X509_TIME_to_ASN1_TIME(&time);
}

uint32_t get_X509_CRL_version(const X509_CRL *crl) {
    return crl == nullptr ? 0xFFFFFFFF : crl->version;
}

OBJECT_IDENTIFIER *get_X509_CRL_signature(const X509_CRL *crl) {
    return member_of(crl, &X509_CRL::signature);
}

X509_NAME *get_X509_CRL_issuer(const X509_CRL *crl) {
    return member_of(crl, &X509_CRL::issuer);
}

X509_TIME *get_X509_CRL_thisUpdate(const X509_CRL *crl) {
    return member_of(crl, &X509_CRL::thisUpdate);
}

X509_TIME *get_X509_CRL_nextUpdate(const X509_CRL *crl) {
    return member_of(crl, &X509_CRL::nextUpdate);
}

X509_EXTENSIONS *get_X509_CRL_extensions(const X509_CRL *crl) {
    return member_of(crl, &X509_CRL::extensions);
}

OBJECT_IDENTIFIER *get_X509_CRL_sig_alg(const X509_CRL *crl) {
    return member_of(crl, &X509_CRL::signatureAlgorithm);
}

BIT_STRING *get_X509_CRL_sig_value(const X509_CRL *crl) {
    return member_of(crl, &X509_CRL::signatureValue);
}

uint32_t set_X509_CRL_version(X509_CRL *crl, uint8_t version) {
    if (crl == nullptr) return 1;
    crl->version = version;
    return changed(*crl, 0);
}

uint32_t set_X509_CRL_signature(X509_CRL *crl, const OBJECT_IDENTIFIER *value) {
    return replace_member<dup_OBJECT_IDENTIFIER, free_OBJECT_IDENTIFIER>(crl, &X509_CRL::signature, value);
}

uint32_t set_X509_CRL_issuer(X509_CRL *crl, const X509_NAME *value) {
    return replace_member<dup_X509_NAME, free_X509_NAME>(crl, &X509_CRL::issuer, value);
}

uint32_t set_X509_CRL_thisUpdate(X509_CRL *crl, const X509_TIME *value) {
    return replace_time(crl, &X509_CRL::thisUpdate, value);
}

uint32_t set_X509_CRL_nextUpdate(X509_CRL *crl, const X509_TIME *value) {
    if (value == nullptr) return remove_member<free_X509_TIME>(crl, &X509_CRL::nextUpdate);
    return replace_time(crl, &X509_CRL::nextUpdate, value);
}

uint32_t set_X509_CRL_extensions(X509_CRL *crl, const X509_EXTENSIONS *value) {
    if (value == nullptr) return remove_member<free_X509_EXTENSIONS>(crl, &X509_CRL::extensions);
    return replace_member<dup_X509_EXTENSIONS, free_X509_EXTENSIONS>(crl, &X509_CRL::extensions, value);
}

uint32_t decode_X509_CRL_number(const X509_CRL *crl, int32_t oid_index, BIGINT **out) {
    if (crl == nullptr || out == nullptr) return 0x48100049;
    Element value;
    if (!read_extension(crl->extensions, oid_index, TLX_TAG_INTEGER, value)) return 0x48100104;
    if (value.whole.empty()) return 0x48100047;
    BIGINT *number = decode_integer(value.contents);
    if (number == nullptr) return 0x48100104;
    *out = number;
    return 0;
}

uint32_t set_X509_CRL_number(X509_CRL *crl, int32_t oid_index, const BIGINT *value) {
    if (crl == nullptr || value == nullptr) return 1;
    Encoder encoder;
    encoder.integer(value);
    const u8 critical = oid_index == TLX_OID_DELTA_CRL_INDICATOR ? 0xFF : 0;
    return changed(*crl, set_extension(crl->extensions, oid_index, critical, encoder));
}

uint32_t get_X509_CRL_received(const X509_CRL *crl, uint8_t **out) {
    const Bytes received = crl != nullptr && crl->entries != nullptr ? crl->entries->received() : Bytes();
    if (received.empty() || out == nullptr) return 0;
    auto *octets = static_cast<u8 *>(TLX_ALLOCATE(received.size()));
    if (octets == nullptr) return 0;
    std::memcpy(octets, received.data(), received.size());
    *out = octets;
    return static_cast<u32>(received.size());
}

uint32_t get_X509_CRL_count(const X509_CRL *crl) {
    return crl == nullptr || crl->entries == nullptr ? 0 : crl->entries->count();
}

uint32_t add_X509_CRL_revoked(X509_CRL *crl, const X509_REVOKED *revoked) {
    if (crl == nullptr || revoked == nullptr) return 1;
    Encoder entry;
    Codec<X509_REVOKED>::encode(entry, revoked);
    if (!entry.ok()) return 1;
    if (crl->entries == nullptr) crl->entries = TLX_CRL_ENTRIES::make();
    return crl->entries != nullptr && crl->entries->append(entry.bytes()) ? 0 : 1;
}

uint32_t next_X509_CRL_revoked(const X509_CRL *crl, uint32_t *position, X509_REVOKED **out) {
    if (crl == nullptr || position == nullptr || out == nullptr) return 0x480F0049;
    const Bytes entries = crl->entries != nullptr ? crl->entries->octets() : Bytes();
    Element element;
    if (*position >= entries.size() || !read_element(entries.subspan(*position), element)) return 0x480F0047;
    if (const u32 status = Codec<X509_REVOKED>::decode(element, out); status != 0) return status;
    *position += static_cast<u32>(element.whole.size());
    return 0;
}
