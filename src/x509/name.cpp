// Name (RFC 5280, section 4.1.2.4), held as a flat list of types and values.
#include "der/list_items.hpp"
#include "x509/certificate_records.hpp"

#include <tlxcrypto/digest.h>

#include <cstring>

using namespace tlx;

namespace {

constexpr auto kNameChild = type_and_value(beginning());

/// Two or more arcs of few digits, which can be encoded for certain.
bool is_plain_type(std::string_view dotted) noexcept {
    constexpr u32 kMostDigits = 9;
    u32 dots = 0;
    u32 digits = 0;
    for (const char c : dotted) {
        const bool is_dot = c == '.';
        if (!is_dot && (c < '0' || c > '9')) return false;
        if (is_dot && digits == 0) return false;
        dots += is_dot ? 1U : 0U;
        digits = is_dot ? 0 : digits + 1;
        if (digits > kMostDigits) return false;
    }
    return dots > 0 && digits > 0;
}

/// A type whose octets are encoded as they are.
bool is_plain_value(const ASN1_STRING &value) noexcept {
    constexpr TagSet kOthers = {TLX_TAG_BIT_STRING, TLX_TAG_OBJECT_IDENTIFIER, TLX_TAG_SEQUENCE, TLX_TAG_SET};
    const bool is_universal = value.type > 0 && value.type < kContextSpecific;
    return is_universal && value.length >= 0 && !kOthers.has(static_cast<u32>(value.type) & kTagNumberMask);
}

enum class Likeness : u8 { same, different, undecided };

/// Compares two entries as their encodings would be, without encoding them; most can be told apart like that.
Likeness compare(const X509_NAME_CHILD *a, const X509_NAME_CHILD *b) noexcept {
    if (a == nullptr || b == nullptr || a->data == nullptr || b->data == nullptr) return Likeness::undecided;
    if (text_of(a->type) != text_of(b->type) || !is_plain_type(text_of(a->type))) return Likeness::undecided;
    if (!is_plain_value(*a->data) || !is_plain_value(*b->data)) return Likeness::undecided;
    const bool same =
        a->data->type == b->data->type && std::ranges::equal(octets_of(a->data), octets_of(b->data));
    return same ? Likeness::same : Likeness::different;
}

Likeness compare(const X509_NAME &a, const X509_NAME &b) noexcept {
    Likeness likeness = Likeness::same;
    for (u32 i = 0; i < a.count; ++i) {
        const Likeness each = compare(static_cast<const X509_NAME_CHILD *>(a.values[i]),
                                      static_cast<const X509_NAME_CHILD *>(b.values[i]));
        if (each == Likeness::undecided) return each;
        if (each == Likeness::different) likeness = each;
    }
    return likeness;
}

bool lacks_a_child(const X509_NAME &name) noexcept {
    for (u32 i = 0; i < name.count; ++i) {
        if (name.values[i] == nullptr) return true;
    }
    return false;
}

}  // namespace

TLX_DEFINE_LIST_LIFE(X509_NAME, Name)
TLX_DEFINE_LIST_DECODER(X509_NAME, Name)

X509_NAME_CHILD *new_X509_NAME_CHILD(void) {
    return TLX_NEW(X509_NAME_CHILD);
}

void free_X509_NAME_CHILD(X509_NAME_CHILD *child) {
    free_record(kNameChild, child);
}

X509_NAME_CHILD *dup_X509_NAME_CHILD(const X509_NAME_CHILD *child) {
    return dup_record(kNameChild, child);
}

uint32_t get_X509_NAME_count(const X509_NAME *name) {
    return get_STACK_count(name);
}

X509_NAME_CHILD *get_X509_NAME_CHILD(const X509_NAME *name, int32_t index) {
    return item_at<X509_NAME_CHILD>(name, index);
}

OBJECT_IDENTIFIER *get_X509_NAME_CHILD_OID(const X509_NAME_CHILD *child) {
    return child == nullptr ? nullptr : child->type;
}

ASN1_STRING *get_X509_NAME_CHILD_data(const X509_NAME_CHILD *child) {
    return child == nullptr ? nullptr : child->data;
}

int32_t get_X509_NAME_index_by_OID(const X509_NAME *name, const OBJECT_IDENTIFIER *oid, int32_t lastpos) {
    return index_by_type(name, &X509_NAME_CHILD::type, text_of(oid), lastpos);
}

uint32_t add_X509_NAME_child(X509_NAME *name, const X509_NAME_CHILD *child, int32_t index) {
    return add_list_child<FirstOfRdn>(name, child, index);
}

uint32_t add_X509_NAME_child_OID(X509_NAME *name, const OBJECT_IDENTIFIER *oid, int32_t type,
                                 const void *data, int32_t length, int32_t index) {
    if (name == nullptr || oid == nullptr || data == nullptr) return 1;
    const auto *octets = static_cast<const u8 *>(data);
    const std::size_t size =
        length < 0 ? std::strlen(static_cast<const char *>(data)) : static_cast<u32>(length);
    Owned<X509_NAME_CHILD> child(new_X509_NAME_CHILD());
    if (!child) return 1;
    child->type = dup_OBJECT_IDENTIFIER(oid);
    child->data = new_string(type, {octets, size});
    if (child->type == nullptr || child->data == nullptr) return 1;
    if (insert_STACK_value(name, child.get(), index) != 0) return 1;
    static_cast<void>(child.release());
    return 0;
}

uint32_t add_X509_NAME_child_OID_index(X509_NAME *name, int32_t oid_index, int32_t type, const void *data,
                                       int32_t length, int32_t index) {
    return add_X509_NAME_child_OID(name, oid_of_row(oid_index).get(), type, data, length, index);
}

X509_NAME_CHILD *remove_X509_NAME_child(X509_NAME *name, int32_t index) {
    return take_item<X509_NAME_CHILD>(name, index);
}

int32_t cmp_X509_NAME(const X509_NAME *a, const X509_NAME *b) {
    if (a == nullptr || b == nullptr) return 1;
    if (a->count != b->count) return -1;
    const Likeness likeness = compare(*a, *b);
    if (likeness != Likeness::undecided) return likeness == Likeness::same ? 0 : -1;
    Encoder first;
    Encoder second;
    Name::encode(first, a);
    Name::encode(second, b);
    if (!first.ok() || !second.ok()) return 1;
    return std::ranges::equal(first.bytes(), second.bytes()) ? 0 : -1;
}

uint32_t get_X509_NAME_hash(const X509_NAME *name, uint32_t digest_id, uint8_t *out) {
    if (get_STACK_count(name) == 0 || out == nullptr) return 0xFFFFFFFF;
    Encoder encoder;
    Name::encode(encoder, name);
    const Bytes der = encoder.bytes();
    u32 length = 0;
    if (!encoder.ok() || Digest(digest_id, der.data(), static_cast<u32>(der.size()), out, &length) != 0) {
        return 0xFFFFFFFF;
    }
    return length;
}

// By hand because a node that the caller gave is filled, and does not survive a failure.
uint32_t X509_NAME_to_Seq(const X509_NAME *name, ASN1_UNIT **out) {
    if (name == nullptr || out == nullptr) return 0x461B0049;
    const bool complete = !lacks_a_child(*name);
    Encoder encoder;
    if (complete) Name::encode(encoder, name);
    Owned<ASN1_UNIT> node(complete ? encoder.to_node() : nullptr);
    if (node) {
        deliver(std::move(node), out);
        return 0;
    }
    free_ASN1_UNIT(*out);
    *out = nullptr;
    return complete ? 0x461B0103 : 0x461B002B;
}
