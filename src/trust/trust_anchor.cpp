#include "trust/trust_records.hpp"

using namespace tlx;

// TrustAnchor ::= SEQUENCE { name Name, publicKey SubjectPublicKeyInfo }
namespace {

constexpr auto kTrustAnchor = record<TRUST_ANCHOR>(exactly(2), field<Name>(&TRUST_ANCHOR::name),
                                                   field<Nested<X509_PUBKEY>>(&TRUST_ANCHOR::publicKey),
                                                   kept_word(&TRUST_ANCHOR::kind));

bool equal(const TRUST_ANCHOR &anchor, const X509_NAME *name, const X509_PUBKEY *key) noexcept {
    return cmp_X509_NAME(anchor.name, name) == 0 && cmp_X509_PUBKEY(anchor.publicKey, key) == 0;
}

}  // namespace

TLX_DEFINE_RECORD_NEW(TRUST_ANCHOR)
TLX_DEFINE_RECORD_LIFE(TRUST_ANCHOR, kTrustAnchor)
TLX_DEFINE_RECORD_CODEC(TRUST_ANCHOR, kTrustAnchor)
TLX_DEFINE_RECORD_DECODER(TRUST_ANCHOR)

// A missing member is a missing argument here.
uint32_t TRUST_ANCHOR_to_Seq(const TRUST_ANCHOR *anchor, ASN1_UNIT **out) {
    if (anchor == nullptr || anchor->name == nullptr || anchor->publicKey == nullptr) return 0x53030049;
    return encode_node(anchor, out, codes::TRUST_ANCHOR.encode);
}

TRUST_ANCHOR *create_TRUST_ANCHOR_from_X509_CERT(const X509_CERT *cert) {
    Owned<TRUST_ANCHOR> anchor(new_TRUST_ANCHOR());
    if (!anchor) return nullptr;
    anchor->name = dup_X509_NAME(get_X509_subject(cert));
    anchor->publicKey = dup_X509_PUBKEY(get_X509_SPKI(cert));
    return anchor->name != nullptr && anchor->publicKey != nullptr ? anchor.release() : nullptr;
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
