// Extension and lists of it (RFC 5280, section 4.1.2.9).
#include "x509/codecs.hpp"
#include "x509/list.hpp"

using namespace tlx;

namespace {

constexpr Codes kExtensionCodes = codes(0x461E0000, 0x461D0000);
constexpr Codes kListCodes = codes(0x46200000, 0x461F0000);

bool is_boolean(u8 tag) noexcept {
    return tag < kContextSpecific && (tag & kTagNumberMask) == TLX_TAG_BOOLEAN;
}

}  // namespace

// Extension ::= SEQUENCE { extnID OBJECT IDENTIFIER, critical BOOLEAN DEFAULT FALSE, extnValue OCTET STRING }
u32 Codec<X509_EXTENSION>::decode(const Element &element, X509_EXTENSION **out) noexcept {
    OutRecord<X509_EXTENSION> record(out, new_X509_EXTENSION);
    if (!record) return 0x461E0104;
    Cursor members(element);
    Element object;
    Element critical;
    Element data;
    if (!members.next(TLX_TAG_OBJECT_IDENTIFIER, object) || members.at_end()) return 0x461E0104;
    const bool flagged = is_boolean(members.peek_tag());
    if (flagged && (!members.next(critical) || critical.contents.size() != 1)) return 0x461E0104;
    if (!members.next(TLX_TAG_OCTET_STRING, data) || !members.at_end()) return 0x461E0104;
    Owned<OBJECT_IDENTIFIER> oid(decode_oid(object.contents));
    Owned<OCTET_STRING> octets(decode_string(TLX_TAG_OCTET_STRING, data.contents));
    if (!oid || !octets) return 0x461E0104;
    clean_X509_EXTENSION(record.get());
    record->object = oid.release();
    record->critical = flagged ? critical.contents[0] : 0;
    record->data = octets.release();
    record.commit();
    return 0;
}

void Codec<X509_EXTENSION>::encode(Encoder &out, const X509_EXTENSION *record, u8 tag) noexcept {
    if (record == nullptr) return out.fail();
    const auto sequence = out.nest(tag);
    out.oid(record->object);
    if (record->critical != 0) out.boolean(true);
    out.string(record->data, TLX_TAG_OCTET_STRING);
}

X509_EXTENSION *new_X509_EXTENSION(void) {
    return TLX_NEW(X509_EXTENSION);
}

void clean_X509_EXTENSION(X509_EXTENSION *extension) {
    if (extension == nullptr) return;
    free_OBJECT_IDENTIFIER(extension->object);
    free_OCTET_STRING(extension->data);
    *extension = {};
}

void free_X509_EXTENSION(X509_EXTENSION *extension) {
    clean_X509_EXTENSION(extension);
    tlx_free(extension);
}

X509_EXTENSION *dup_X509_EXTENSION(const X509_EXTENSION *extension) {
    if (extension == nullptr) return nullptr;
    Owned<X509_EXTENSION> copy(new_X509_EXTENSION());
    if (!copy) return nullptr;
    copy->object = dup_OBJECT_IDENTIFIER(extension->object);
    copy->critical = extension->critical;
    copy->data = dup_ASN1_STRING(extension->data);
    const bool complete = (copy->object == nullptr) == (extension->object == nullptr) &&
                          (copy->data == nullptr) == (extension->data == nullptr);
    return complete ? copy.release() : nullptr;
}

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

uint32_t Seq_to_X509_EXTENSION(const ASN1_UNIT *node, X509_EXTENSION **out) {
    return decode_node(node, out, kExtensionCodes.decode);
}

uint32_t X509_EXTENSION_to_Seq(const X509_EXTENSION *extension, ASN1_UNIT **out) {
    return encode_node(extension, out, kExtensionCodes.encode);
}

X509_EXTENSIONS *new_X509_EXTENSIONS(void) {
    return new_STACK();
}

void clean_X509_EXTENSIONS(X509_EXTENSIONS *extensions) {
    clean_list<Nested<X509_EXTENSION>>(extensions);
}

void free_X509_EXTENSIONS(X509_EXTENSIONS *extensions) {
    Extensions::free(extensions);
}

X509_EXTENSIONS *dup_X509_EXTENSIONS(const X509_EXTENSIONS *extensions) {
    return Extensions::dup(extensions);
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

uint32_t Seq_to_X509_EXTENSIONS(const ASN1_UNIT *node, X509_EXTENSIONS **out) {
    return decode_list_node<Extensions>(node, out, kListCodes.decode);
}

uint32_t X509_EXTENSIONS_to_Seq(const X509_EXTENSIONS *extensions, ASN1_UNIT **out) {
    return encode_list_node<Extensions>(extensions, out, kListCodes.encode);
}
