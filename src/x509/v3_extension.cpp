// From the octets of an extension to its record and back.
#include <tlxpki/asn1_io.h>
#include <tlxpki/objects.h>
#include <tlxpki/x509_extension.h>
#include <tlxpki/x509v3.h>

#include "der/encoder.hpp"
#include "der/owned.hpp"
#include "der/values.hpp"

using namespace tlx;

uint32_t decode_X509_EXTENSION(const X509_EXTENSION *extension, ASN1_DECODER decoder, void **out) {
    if (extension == nullptr || extension->data == nullptr || decoder == nullptr || out == nullptr) {
        return 0x473E0049;
    }
    const Bytes octets = octets_of(extension->data);
    Element element;
    if (!read_element(octets, element) || element.whole.size() != octets.size()) return 0x473E004F;
    const Owned<ASN1_UNIT> node(make_node(element));
    return node ? decoder(node.get(), out) : 0x473E003C;
}

uint32_t decode_X509_EXTENSION_by_OID(const X509_EXTENSIONS *extensions, const OBJECT_IDENTIFIER *oid,
                                      ASN1_DECODER decoder, void **out) {
    if (oid == nullptr || decoder == nullptr || out == nullptr) return 0x473F0049;
    const i32 index = get_X509_EXTENSION_index_by_OID(extensions, oid, -1);
    if (index < 0) return 0x473F0047;
    return decode_X509_EXTENSION(get_X509_EXTENSION(extensions, index), decoder, out);
}

uint32_t decode_X509_EXTENSION_by_OID_index(const X509_EXTENSIONS *extensions, int32_t oid_index,
                                            ASN1_DECODER decoder, void **out) {
    if (decoder == nullptr || out == nullptr) return 0x473F0049;
    const i32 index = get_X509_EXTENSION_index_by_OID_index(extensions, oid_index, -1);
    if (index < 0) return 0x473F0047;
    return decode_X509_EXTENSION(get_X509_EXTENSION(extensions, index), decoder, out);
}

X509_EXTENSION *create_X509_EXTENSION_record_by_OID(X509_EXTENSION **extension, const OBJECT_IDENTIFIER *oid,
                                                    uint8_t critical, const void *record,
                                                    ASN1_ENCODER encoder) {
    if (oid == nullptr || record == nullptr || encoder == nullptr) return nullptr;
    u8 *der = nullptr;
    const u32 len = writeDER_to_Binary(record, encoder, &der);
    const OwnedOctets<u8> owner(der);
    if (len > kMaxLength) return nullptr;
    const OCTET_STRING data = {TLX_TAG_OCTET_STRING, der, static_cast<i32>(len), 0};
    return create_X509_EXTENSION_by_OID(extension, oid, critical, &data);
}

X509_EXTENSION *create_X509_EXTENSION_record_by_OID_index(X509_EXTENSION **extension, int32_t oid_index,
                                                          uint8_t critical, const void *record,
                                                          ASN1_ENCODER encoder) {
    const Owned<OBJECT_IDENTIFIER> oid(index_to_OBJECT_IDENTIFIER(oid_index));
    return create_X509_EXTENSION_record_by_OID(extension, oid.get(), critical, record, encoder);
}
