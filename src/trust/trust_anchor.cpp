#include "trust/codecs.hpp"

using namespace tlx;

// TrustAnchor ::= SEQUENCE { name Name, publicKey SubjectPublicKeyInfo }
namespace {

/// A name whose failure counts as the anchor's own.
struct AnchorName : Name {
    static u32 decode(const Element &element, type **out) noexcept {
        return Name::decode(element, out) == 0 ? 0 : kFieldFailed;
    }
};

constexpr auto kTrustAnchor =
    record<TRUST_ANCHOR>(codes(0x53040000, 0x53030000), exactly(2), field<AnchorName>(&TRUST_ANCHOR::name),
                         field<Nested<X509_PUBKEY>>(&TRUST_ANCHOR::publicKey));

bool equal(const TRUST_ANCHOR &anchor, const X509_NAME *name, const X509_PUBKEY *key) noexcept {
    return cmp_X509_NAME(anchor.name, name) == 0 && cmp_X509_PUBKEY(anchor.publicKey, key) == 0;
}

}  // namespace

tlx::u32 tlx::Codec<TRUST_ANCHOR>::decode(const Element &element, TRUST_ANCHOR **out) noexcept {
    return kTrustAnchor.decode(element, out, new_TRUST_ANCHOR);
}

void tlx::Codec<TRUST_ANCHOR>::encode(Encoder &out, const TRUST_ANCHOR *anchor, u8 tag) noexcept {
    kTrustAnchor.encode(out, anchor, tag);
}

extern "C" {

TRUST_ANCHOR *new_TRUST_ANCHOR(void) {
    return TLX_NEW(TRUST_ANCHOR);
}

void clean_TRUST_ANCHOR(TRUST_ANCHOR *anchor) {
    kTrustAnchor.clean(anchor);
    if (anchor != nullptr) anchor->kind = 0;
}

void free_TRUST_ANCHOR(TRUST_ANCHOR *anchor) {
    kTrustAnchor.free(anchor);
}

TRUST_ANCHOR *dup_TRUST_ANCHOR(const TRUST_ANCHOR *anchor) {
    TRUST_ANCHOR *copy = kTrustAnchor.dup(anchor, new_TRUST_ANCHOR);
    if (copy != nullptr) copy->kind = anchor->kind;
    return copy;
}

TRUST_ANCHOR *create_TRUST_ANCHOR_from_X509_CERT(const X509_CERT *cert) {
    Owned<TRUST_ANCHOR> anchor(new_TRUST_ANCHOR());
    if (!anchor) return nullptr;
    anchor->name = dup_X509_NAME(get_X509_subject(cert));
    anchor->publicKey = dup_X509_PUBKEY(get_X509_SPKI(cert));
    return anchor->name != nullptr && anchor->publicKey != nullptr ? anchor.release() : nullptr;
}

uint32_t Seq_to_TRUST_ANCHOR(const ASN1_UNIT *node, TRUST_ANCHOR **out) {
    return decode_node(node, out, statuses(0x53040000));
}

uint32_t TRUST_ANCHOR_to_Seq(const TRUST_ANCHOR *anchor, ASN1_UNIT **out) {
    if (anchor == nullptr || anchor->name == nullptr || anchor->publicKey == nullptr) return 0x53030049;
    return encode_node(anchor, out, statuses(0x53030000));
}

TRUST_ANCHORS *new_TRUST_ANCHORS(void) {
    return new_STACK();
}

void free_TRUST_ANCHORS(TRUST_ANCHORS *anchors) {
    free_list<Nested<TRUST_ANCHOR>>(anchors);
}

uint32_t add_TRUST_ANCHORS(TRUST_ANCHORS *anchors, const TRUST_ANCHOR *anchor) {
    if (anchors == nullptr) return 1;
    Owned<TRUST_ANCHOR> copy(dup_TRUST_ANCHOR(anchor));
    if (!copy || push_STACK_value(anchors, copy.get()) != 0) return 1;
    static_cast<void>(copy.release());
    return 0;
}

uint32_t get_TRUST_ANCHORS_count(const TRUST_ANCHORS *anchors) {
    return get_STACK_count(anchors);
}

TRUST_ANCHOR *get_TRUST_ANCHORS_child(const TRUST_ANCHORS *anchors, int32_t index) {
    if (index < 0) return nullptr;
    return static_cast<TRUST_ANCHOR *>(get_STACK_value(anchors, static_cast<u32>(index)));
}

int32_t get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(const TRUST_ANCHORS *anchors, const TRUST_ANCHOR *anchor) {
    if (anchor == nullptr) return -1;
    const u32 count = get_STACK_count(anchors);
    for (u32 i = 0; i < count; ++i) {
        const auto *candidate = static_cast<const TRUST_ANCHOR *>(get_STACK_value(anchors, i));
        if (equal(*candidate, anchor->name, anchor->publicKey)) return static_cast<i32>(i);
    }
    return -1;
}

}  // extern "C"
