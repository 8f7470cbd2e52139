// Every record and list type behind one shape, so that one test and one fuzz target serve them all.
#pragma once

#include <tlxpki.h>
#include <tlxpki/ocsp.h>
#include <tlxpki/ocsp_respond.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace tlx_test {

/// The statuses of a decoder or of an encoder; 0 is one that it never returns.
struct RecordStatuses {
    std::uint32_t null_argument, wrong_count, other;
};

/// What a list has besides; all null for a record.
struct ListOperations {
    std::uint32_t (*count)(const void *);
    void *(*child)(const void *, std::int32_t);
    std::uint32_t (*add)(void *, const void *, std::int32_t);
    void *(*remove)(void *, std::int32_t);
    void (*free_item)(void *);
};

struct RecordType {
    std::string_view name;
    ASN1_DECODER decode;
    RecordStatuses decoding;
    ASN1_ENCODER encode;
    RecordStatuses encoding;
    void *(*make)();
    void (*clean)(void *);
    void (*free)(void *);
    void *(*dup)(const void *);
    ListOperations list;
};

// clang-format off
#define NONE 0
#define TLX_RECORD(type, decoder, null_in, count_in, other_in, encoder, null_out, count_out, other_out)  \
    #type, TLX_DECODER(decoder), {null_in, count_in, other_in},                                          \
    TLX_ENCODER(encoder), {null_out, count_out, other_out},                                              \
    [] { return static_cast<void *>(new_##type()); },                                                    \
    [](void *record) { clean_##type(static_cast<type *>(record)); },                                     \
    [](void *record) { free_##type(static_cast<type *>(record)); },                                      \
    [](const void *record) { return static_cast<void *>(dup_##type(static_cast<const type *>(record))); }
#define RECORD(type, ...) {TLX_RECORD(type, __VA_ARGS__), {}},
#define TLX_LIST(type, item, count, child_of, add, remove) {                                             \
    [](const void *list) { return count(static_cast<const type *>(list)); },                             \
    [](const void *list, std::int32_t index) {                                                           \
        return static_cast<void *>(child_of(static_cast<const type *>(list), index)); },                 \
    [](void *list, const void *child, std::int32_t index) {                                              \
        return add(static_cast<type *>(list), static_cast<const item *>(child), index); },               \
    [](void *list, std::int32_t index) {                                                                 \
        return static_cast<void *>(remove(static_cast<type *>(list), index)); },                         \
    [](void *child) { free_##item(static_cast<item *>(child)); }}
#define LIST(type, item, ...) {TLX_RECORD(type, __VA_ARGS__), TLX_LIST(type, item,                       \
    get_##type##_count, get_##type##_child, add_##type##_child, remove_##type##_child)},

/// Lists whose functions have other names.
struct NamedList {
    std::string_view type;
    ListOperations operations;
};
inline const NamedList kNamedLists[] = {
    {"X509_NAME", TLX_LIST(X509_NAME, X509_NAME_CHILD, get_X509_NAME_count, get_X509_NAME_CHILD,
                           add_X509_NAME_child, remove_X509_NAME_child)},
    {"X509_EXTENSIONS", TLX_LIST(X509_EXTENSIONS, X509_EXTENSION, get_X509_EXTENSION_count, get_X509_EXTENSION,
                                 add_X509_EXTENSION, remove_X509_EXTENSION)},
    {"X509_ATTRIBUTES", TLX_LIST(X509_ATTRIBUTES, X509_ATTRIBUTE, get_X509_ATTRIBUTES_count,
                                 get_X509_ATTRIBUTES_child, add_X509_ATTRIBUTES_child,
                                 remove_X509_ATTRIBUTES_child)},
};

inline const RecordType kRecordTypes[] = {
#include "records.inc"
};
#undef LIST
#undef TLX_LIST
#undef RECORD
#undef TLX_RECORD
#undef NONE
// clang-format on

/// What becomes of the caller's record when decoding fails.
enum class OnFailure {
    filled_partly,
    unchanged,
    cleaned,
    freed,     // the caller's pointer becomes null
    released,  // the record is unchanged, the caller's pointer becomes null
};

/// How a type departs from the rules that x509v3.h gives.
struct Departure {
    std::string_view type;
    OnFailure on_failure = OnFailure::filled_partly;
    std::uint32_t decoding = 0;   // a further status of a decoder that runs out of memory
    std::uint32_t encoding = 0;   // and of an encoder
    bool fills_only = false;      // a null *out stays null
    bool writes_less = false;     // it writes records without members that it requires when it reads
    bool fills_node = false;      // it encodes into the caller's node
    bool passes_up = false;       // any status of another record is one of its own
    bool gives_nothing = false;   // it may succeed without a record, and fill a caller's partly
    bool chooses_by_tag = false;  // an element without children is not as good as a node without a tag
};

/// The records of CMS that are a CHOICE.
constexpr std::string_view kCmsChoices[] = {"CMS_CERT_IDENTIFIER", "CMS_CERT_CHOICE",
                                            "CMS_REVOCATION_INFO", "CMS_RECIPIENT_INFO",
                                            "CMS_ORIGINATOR",      "CMS_KEY_AGREE_IDENTIFIER"};

inline Departure departure_of(const RecordType &type) {
    using enum OnFailure;
    static const Departure kDepartures[] = {
        {.type = "X509_CERT", .decoding = 0x46110104, .encoding = 0x4610003C},
        {.type = "X509_TBS_CERT", .on_failure = freed},
        {.type = "X509_PUBKEY", .on_failure = unchanged},
        {.type = "X509_NAME", .on_failure = unchanged, .fills_node = true},
        {.type = "X509_EXTENSIONS", .on_failure = unchanged},
        {.type = "X509_ATTRIBUTE", .on_failure = released},
        {.type = "X509_ATTRIBUTES", .on_failure = unchanged, .decoding = 0x4624010C, .encoding = 0x46210103},
        {.type = "AUTHORITY_KEYID", .decoding = 0x470D0104, .writes_less = true},
        {.type = "PKCS1_RSA_PRIVATE_KEY", .on_failure = cleaned},
        {.type = "PKCS1_RSA_PUBLIC_KEY", .on_failure = cleaned},
        {.type = "RSASSA_PSS_PARAM",
         .on_failure = cleaned,
         .decoding = 0x49110104,
         .fills_only = true,
         .writes_less = true},
        {.type = "RSAES_OAEP_PARAM", .on_failure = cleaned, .fills_only = true, .writes_less = true},
        {.type = "P8_PRIV_KEY_INFO", .decoding = 1},
        {.type = "PKCS8", .encoding = 0x46250103},
        {.type = "X509_CRL", .on_failure = unchanged},
        {.type = "OCSP_CERT_STATUS", .on_failure = unchanged},
        {.type = "OCSP_RESPONDER_ID", .on_failure = unchanged},
        {.type = "P7_ISSUER_AND_SERIAL_NUMBER", .passes_up = true},
        {.type = "P7_SIGNER_INFO", .writes_less = true, .passes_up = true},
        {.type = "P7_SIGNER_INFOS", .on_failure = unchanged, .writes_less = true, .passes_up = true},
        {.type = "P7_DIGEST_INFO", .passes_up = true},
        {.type = "P7_SIGNED_DATA", .writes_less = true, .passes_up = true, .gives_nothing = true},
        {.type = "P7_RECIPIENT_INFO", .passes_up = true},
        {.type = "P7_RECIPIENT_INFOS", .on_failure = unchanged, .passes_up = true},
        {.type = "P7_ENCRYPTED_CONTENT_INFO", .passes_up = true},
        {.type = "P7_ENVELOPED_DATA", .passes_up = true},
        {.type = "P7_SIGNED_AND_ENVELOPED_DATA",
         .writes_less = true,
         .passes_up = true,
         .gives_nothing = true},
        {.type = "P7_DIGESTED_DATA", .writes_less = true, .passes_up = true},
        {.type = "P7_ENCRYPTED_DATA", .passes_up = true},
        {.type = "P7_CONTENT_INFO", .decoding = 1, .writes_less = true, .passes_up = true},
        {.type = "P12_PFX", .writes_less = true, .passes_up = true},
        {.type = "P12_AUTHENTICATED_SAFE", .on_failure = unchanged, .writes_less = true, .passes_up = true}};
    for (const Departure &each : kDepartures)
        if (each.type == type.name) return each;
    const bool is_choice = std::ranges::find(kCmsChoices, type.name) != std::end(kCmsChoices);
    return {.type = type.name,
            .on_failure = type.list.count != nullptr || is_choice ? unchanged : filled_partly,
            .passes_up = type.name.starts_with("CMS_"),
            .chooses_by_tag = is_choice};
}

/// Whether a failure of decoding, or of encoding, that no argument of the caller causes may have this status.
inline bool may_fail_with(const RecordType &type, std::uint32_t status, bool decodes) {
    const auto own = [&](const RecordType &each) {
        const Departure departure = departure_of(each);
        const std::uint32_t statuses[] = {decodes ? each.decoding.other : each.encoding.other,
                                          decodes ? departure.decoding : departure.encoding};
        return status == statuses[0] || status == statuses[1];
    };
    if (!departure_of(type).passes_up) return own(type);
    for (const RecordType &each : kRecordTypes)
        if (own(each)) return true;
    return false;
}

/// Null operations for a record that is no list.
inline ListOperations list_of(const RecordType &type) {
    for (const NamedList &each : kNamedLists)
        if (each.type == type.name) return each.operations;
    return type.list;
}

/// The octet before a fuzz seed chooses the types with this function octet in the statuses of their decoders:
/// a place in the list would change with the list.
inline std::uint8_t selector_of(const RecordType &type) {
    return static_cast<std::uint8_t>(type.decoding.null_argument >> 16);
}

}  // namespace tlx_test
