// Nodes and records to and from octets and files.
#include <tlxcrypto/digest.h>
#include <tlxcrypto/file.h>
#include <tlxpki/asn1.h>
#include <tlxpki/asn1_io.h>

#include "der/element.hpp"
#include "der/memory.hpp"
#include "der/owned.hpp"
#include "der/values.hpp"

using namespace tlx;

namespace {

constexpr u32 kNoOctets = 0xFFFFFFFF;

/// For the node of an object that may be a private key.
struct WipeAndFree {
    void operator()(ASN1_UNIT *node) const noexcept {
        Element element;
        if (view_node(node, element)) tlx_wipe(node->value, element.contents.size());
        free_ASN1_UNIT(node);
    }
};
using SecretNode = std::unique_ptr<ASN1_UNIT, WipeAndFree>;

/// The node of an object, or what its encoder made of it when it failed.
u32 encode_object(const void *object, ASN1_ENCODER encoder, SecretNode &node) noexcept {
    ASN1_UNIT *made = nullptr;
    const u32 status = encoder(object, &made);
    node.reset(made);
    return status;
}

}  // namespace

uint32_t ASN1_to_binary(const ASN1_UNIT *node, uint8_t **out) {
    Element element;
    if (out == nullptr || !view_node(node, element)) return kNoOctets;
    const std::size_t header = 1 + element.length_octets.size();
    const std::size_t size = element.contents.size();
    const std::size_t trailer = element.indefinite ? kEndOfContentsSize : 0;
    auto *octets = static_cast<u8 *>(TLX_ALLOCATE(header + size + trailer));
    if (octets == nullptr) return kNoOctets;
    octets[0] = element.tag;
    std::memcpy(octets + 1, element.length_octets.data(), element.length_octets.size());
    if (size > 0) std::memcpy(octets + header, element.contents.data(), size);
    std::memset(octets + header + size, 0, trailer);
    *out = octets;
    return static_cast<u32>(header + size + trailer);
}

uint32_t ASN1_to_FILE(const ASN1_UNIT *node, const char *path) {
    u8 *octets = nullptr;
    const u32 len = ASN1_to_binary(node, &octets);
    if (len == kNoOctets) return kNoOctets;
    const bool written = path != nullptr && binary_to_File(path, octets, len) == 0;
    wipe_and_free(octets, len);
    return written ? len : kNoOctets;
}

uint32_t readDER_from_Binary(void **out, ASN1_DECODER decoder, const uint8_t *der) {
    if (der == nullptr) return 0x4300002B;
    if (decoder == nullptr) return 0x43000049;
    Element element;
    if (!read_trusted_element(der, element)) return 0x4300004F;
    return decode_in_place(element, decoder, out);
}

uint32_t readDER_from_Buffer(void **out, ASN1_DECODER decoder, const uint8_t *der, uint32_t len) {
    if (der == nullptr) return 0x4300002B;
    if (decoder == nullptr) return 0x43000049;
    Element element;
    if (!read_element({der, len}, element)) return 0x4300004F;
    return decode_in_place(element, decoder, out);
}

uint32_t writeDER_to_Binary(const void *object, ASN1_ENCODER encoder, uint8_t **out) {
    if (out == nullptr || encoder == nullptr) return kNoOctets;
    SecretNode node;
    return encode_object(object, encoder, node) == 0 ? ASN1_to_binary(node.get(), out) : kNoOctets;
}

uint32_t readDER_from_File(void **out, ASN1_DECODER decoder, const char *path) {
    u8 *octets = nullptr;
    u32 len = 0;
    if (path == nullptr || File_to_binary(path, &octets, &len) != 0) return 0x4300002B;
    const u32 status = readDER_from_Buffer(out, decoder, octets, len);
    wipe_and_free(octets, len);
    return status;
}

uint32_t writeDER_to_FILE(const void *object, ASN1_ENCODER encoder, const char *path) {
    if (path == nullptr) return kNoOctets;
    SecretNode node;
    if (encoder == nullptr || encode_object(object, encoder, node) != 0) return 1;
    return ASN1_to_FILE(node.get(), path);
}

uint32_t get_ASN1_hash(const void *object, ASN1_ENCODER encoder, uint32_t digest_id, uint8_t *digest) {
    if (object == nullptr || digest == nullptr) return 0;
    u8 *octets = nullptr;
    const u32 len = writeDER_to_Binary(object, encoder, &octets);
    if (len == kNoOctets) return 0;
    u32 digest_len = 0;
    const bool done = Digest(digest_id, octets, len, digest, &digest_len) == 0;
    wipe_and_free(octets, len);
    return done ? digest_len : 0;
}
