// Extension and lists of it (RFC 5280, section 4.1.2.9).
#include "der/list_items.hpp"
#include "x509/certificate_records.hpp"

using namespace tlx;

namespace {

// Extension ::= SEQUENCE { extnID OBJECT IDENTIFIER, critical BOOLEAN DEFAULT FALSE, extnValue OCTET STRING }
constexpr auto kExtension =
    record<X509_EXTENSION>(as_described(), field<Oid>(&X509_EXTENSION::object),
                           default_false(&X509_EXTENSION::critical), field<Octets>(&X509_EXTENSION::data))
        .but(OnFailure::unchanged);

}  // namespace

TLX_DEFINE_RECORD(X509_EXTENSION, kExtension)
TLX_DEFINE_LIST_LIFE(X509_EXTENSIONS, Extensions)
TLX_DEFINE_LIST_DECODER(X509_EXTENSIONS, Extensions)
TLX_DEFINE_LIST_ENCODER(X509_EXTENSIONS, Extensions)

OBJECT_IDENTIFIER *get_X509_EXTENSION_object(const X509_EXTENSION *extension) {
    return extension == nullptr ? nullptr : extension->object;
}

uint8_t get_X509_EXTENSION_critical(const X509_EXTENSION *extension) {
    return extension == nullptr ? 0 : extension->critical;
}

OCTET_STRING *get_X509_EXTENSION_data(const X509_EXTENSION *extension) {
    return extension == nullptr ? nullptr : extension->data;
}

uint32_t set_X509_EXTENSION_object(X509_EXTENSION *extension, const OBJECT_IDENTIFIER *oid) {
    if (extension == nullptr) return 1;
    return replace_by_copy<dup_OBJECT_IDENTIFIER, free_OBJECT_IDENTIFIER>(extension->object, oid);
}

uint32_t set_X509_EXTENSION_critical(X509_EXTENSION *extension, uint8_t critical) {
    if (extension == nullptr) return 1;
    extension->critical = critical;
    return 0;
}

uint32_t set_X509_EXTENSION_data(X509_EXTENSION *extension, const OCTET_STRING *data) {
    if (extension == nullptr) return 1;
    return replace_by_copy<dup_ASN1_STRING, free_ASN1_STRING>(extension->data, data);
}

X509_EXTENSION *create_X509_EXTENSION_by_OID(X509_EXTENSION **extension, const OBJECT_IDENTIFIER *oid,
                                             uint8_t critical, const OCTET_STRING *data) {
    if (oid == nullptr || data == nullptr) return nullptr;
    Owned<X509_EXTENSION> made(new_X509_EXTENSION());
    if (!made || set_X509_EXTENSION_object(made.get(), oid) != 0 ||
        set_X509_EXTENSION_data(made.get(), data) != 0) {
        return nullptr;
    }
    made->critical = critical;
    if (extension == nullptr) return made.release();
    if (*extension == nullptr) return *extension = made.release();
    std::swap(**extension, *made);
    return *extension;
}

X509_EXTENSION *create_X509_EXTENSION_by_OID_index(X509_EXTENSION **extension, int32_t oid_index,
                                                   uint8_t critical, const OCTET_STRING *data) {
    return create_X509_EXTENSION_by_OID(extension, oid_of_row(oid_index).get(), critical, data);
}

uint32_t get_X509_EXTENSION_count(const X509_EXTENSIONS *extensions) {
    return get_STACK_count(extensions);
}

X509_EXTENSION *get_X509_EXTENSION(const X509_EXTENSIONS *extensions, int32_t index) {
    return item_at<X509_EXTENSION>(extensions, index);
}

int32_t get_X509_EXTENSION_index_by_OID(const X509_EXTENSIONS *extensions, const OBJECT_IDENTIFIER *oid,
                                        int32_t lastpos) {
    return index_by_type(extensions, &X509_EXTENSION::object, text_of(oid), lastpos);
}

int32_t get_X509_EXTENSION_index_by_OID_index(const X509_EXTENSIONS *extensions, int32_t oid_index,
                                              int32_t lastpos) {
    if (oid_index <= 0 || oid_index >= TLX_OID_COUNT) return -1;
    return index_by_type(extensions, &X509_EXTENSION::object, OID_LIST(oid_index)->dotted, lastpos);
}

uint32_t add_X509_EXTENSION(X509_EXTENSIONS *extensions, const X509_EXTENSION *extension, int32_t index) {
    return add_list_child<Nested<X509_EXTENSION>>(extensions, extension, index);
}

X509_EXTENSION *remove_X509_EXTENSION(X509_EXTENSIONS *extensions, int32_t index) {
    return take_item<X509_EXTENSION>(extensions, index);
}
