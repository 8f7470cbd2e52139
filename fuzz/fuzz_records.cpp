// Every record and list, of the types that the first octet chooses. What decodes is encoded, and that decodes
// to a record with the same encoding; so does its copy. Operations that read a whole record also run on it.

#include "../tests/support/record_types.hpp"
#include "values.hpp"

namespace {

using fuzz::require;
using tlx_test::RecordType;

void look_at(const X509_NAME *name) {
    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    const bool empty = get_X509_NAME_count(name) == 0;
    require(get_X509_NAME_hash(name, TLX_DIGEST_SHA1, digest) == (empty ? 0xFFFFFFFF : 20));
    require(cmp_X509_NAME(name, name) == 0);
    tlx_free(dump_X509_NAME(name));
    const OBJECT_IDENTIFIER *type = empty ? nullptr : get_X509_NAME_CHILD_OID(get_X509_NAME_CHILD(name, 0));
    require(get_X509_NAME_index_by_OID(name, type, -1) == (empty ? -1 : 0));
}

void look_at(const X509_CERT *cert) {
    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    require(X509_CERT_digest(cert, TLX_DIGEST_SHA256, digest) == 32);
    require(cmp_X509_CERT(cert, cert) == 0);
    require(cmp_X509_PUBKEY(get_X509_SPKI(cert), get_X509_SPKI(cert)) == 0);
    free_ASN1_TIME(X509_TIME_to_ASN1_TIME(get_X509_notBefore(cert)));
    look_at(get_X509_subject(cert));
}

void look_at(const X509_ATTRIBUTE *attribute) {
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(get_X509_ATTRIBUTE_count(attribute)); ++i) {
        X509_ATTRIBUTE *copy = nullptr;
        require(create_X509_ATTRIBUTE_OID(&copy, get_X509_ATTRIBUTE_OID(attribute),
                                          get_X509_ATTRIBUTE_data_type(attribute, i),
                                          get_X509_ATTRIBUTE_data(attribute, i)) != nullptr);
        free_X509_ATTRIBUTE(copy);
    }
}

void look_at_identity(const GENERAL_NAMES *names) {
    KISA_IDENTIFY_DATA *data = nullptr;
    require((get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES(names, &data) == 0) == (data != nullptr));
    free_KISA_IDENTIFY_DATA(data);
}

void look_at(const RecordType &type, const void *record) {
    if (type.name == "X509_NAME") look_at(static_cast<const X509_NAME *>(record));
    if (type.name == "X509_CERT") look_at(static_cast<const X509_CERT *>(record));
    if (type.name == "X509_ATTRIBUTE") look_at(static_cast<const X509_ATTRIBUTE *>(record));
    if (type.name == "GENERAL_NAMES") look_at_identity(static_cast<const GENERAL_NAMES *>(record));
}

/// Null when the octets do not decode.
void *decode(const RecordType &type, const std::uint8_t *octets, std::size_t size) {
    const bool fills_only = tlx_test::departure_of(type).fills_only;
    void *const given = fills_only ? type.make() : nullptr;
    void *record = given;
    const std::uint32_t status =
        readDER_from_Buffer(&record, type.decode, octets, static_cast<std::uint32_t>(size));
    if (fills_only && status != 0) type.free(std::exchange(record, nullptr));
    const bool gives_nothing = status == 0 && tlx_test::departure_of(type).gives_nothing;
    require((status == 0) == (record != nullptr) || gives_nothing);
    return record;
}

std::string encode(const RecordType &type, const void *record) {
    std::uint8_t *octets = nullptr;
    const std::uint32_t size = writeDER_to_Binary(record, type.encode, &octets);
    require(size != 0xFFFFFFFF);
    return fuzz::taken(octets, size);
}

void check(const RecordType &type, const std::uint8_t *octets, std::size_t size) {
    void *record = decode(type, octets, size);
    if (record == nullptr) return;
    look_at(type, record);
    const std::string encoding = encode(type, record);
    void *copy = type.dup(record);
    type.free(record);
    require(copy != nullptr && encode(type, copy) == encoding);
    type.free(copy);
    void *again = decode(type, reinterpret_cast<const std::uint8_t *>(encoding.data()), encoding.size());
    require(again != nullptr ? encode(type, again) == encoding : tlx_test::departure_of(type).writes_less);
    type.free(again);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0) return 0;
    for (const RecordType &type : tlx_test::kRecordTypes)
        if (tlx_test::selector_of(type) == data[0]) check(type, data + 1, size - 1);
    return 0;
}
