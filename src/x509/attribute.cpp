// Attribute and sets of it (RFC 2986, section 4.1; X.501).
#include "der/list_items.hpp"
#include "x509/certificate_records.hpp"

using namespace tlx;

namespace {

constexpr bool is_node(u32 type) noexcept {
    return (type & kConstructed) != 0;
}

/// A copy of a value that is held as `type` says; null for a null value and when memory runs out.
X509_ATTRIBUTE_DATA *copy_value(u32 type, const void *value) noexcept {
    if (value == nullptr) return nullptr;
    Owned<X509_ATTRIBUTE_DATA> copy(new_X509_ATTRIBUTE_DATA());
    if (!copy) return nullptr;
    copy->type = type;
    if (is_node(type)) {
        copy->value.node = dup_ASN1_UNIT(static_cast<const ASN1_UNIT *>(value));
        if (copy->value.node == nullptr) return nullptr;
    } else {
        copy->value.string = dup_ASN1_STRING(static_cast<const ASN1_STRING *>(value));
        if (copy->value.string == nullptr) return nullptr;
    }
    return copy.release();
}

const void *held_value(const X509_ATTRIBUTE_DATA &data) noexcept {
    if (is_node(data.type)) return data.value.node;
    return data.value.string;
}

// AttributeValue ::= ANY
/// By hand because a constructed value is held as a node, any other as a string.
struct AttributeValue {
    using type = X509_ATTRIBUTE_DATA;
    static constexpr u8 tag = TLX_TAG_ANY_NODE;
    static u32 decode(const Element &element, type **out) noexcept {
        Owned<X509_ATTRIBUTE_DATA> value(new_X509_ATTRIBUTE_DATA());
        if (!value) return kFieldFailed;
        value->type = element.tag;
        if (is_node(element.tag)) {
            value->value.node = make_node(element);
            if (value->value.node == nullptr) return kFieldFailed;
        } else {
            value->value.string = decode_any_string(element);
            if (value->value.string == nullptr) return kFieldFailed;
        }
        *out = value.release();
        return 0;
    }
    static void encode(Encoder &out, const type *value, u8 /*as*/) noexcept {
        if (value == nullptr) return out.fail();
        if (is_node(value->type)) return out.node(value->value.node);
        out.any_value(value->value.string, value->type);
    }
    static type *dup(const type *value) noexcept { return dup_X509_ATTRIBUTE_DATA(value); }
    static void free(type *value) noexcept { free_X509_ATTRIBUTE_DATA(value); }
};

// Attribute ::= SEQUENCE { type OBJECT IDENTIFIER, values SET OF AttributeValue }
constexpr auto kAttribute = record<X509_ATTRIBUTE>(any_count(), field<Oid>(&X509_ATTRIBUTE::type),
                                                   field<SetOf<AttributeValue>>(&X509_ATTRIBUTE::values))
                                .but(OnFailure::unchanged);

bool lacks_an_attribute(const X509_ATTRIBUTES &attributes) noexcept {
    for (u32 i = 0; i < attributes.count; ++i) {
        if (attributes.values[i] == nullptr) return true;
    }
    return attributes.count == 0;
}

}  // namespace

TLX_DEFINE_RECORD_CODEC(X509_ATTRIBUTE, kAttribute)
TLX_DEFINE_LIST_LIFE(X509_ATTRIBUTES, Attributes)

void tlx::encode_attribute_value(Encoder &out, const void *value) noexcept {
    AttributeValue::encode(out, static_cast<const X509_ATTRIBUTE_DATA *>(value), AttributeValue::tag);
}

// By hand because a list that cannot grow has a status of its own.
u32 Attributes::decode(const Element &element, X509_ATTRIBUTES **out) noexcept {
    const u32 count = count_children(element.contents);
    if (count == 0) return 0x4624002B;
    OwnedAttributes attributes(new_X509_ATTRIBUTES());
    if (!attributes) return 0x4624010C;
    Cursor members(element);
    for (u32 i = 0; i < count; ++i) {
        Element member;
        X509_ATTRIBUTE *attribute = nullptr;
        if (!members.next(TLX_TAG_SEQUENCE, member)) return 0x46240104;
        if (Codec<X509_ATTRIBUTE>::decode(member, &attribute) != 0) return 0x46240104;
        if (push_STACK_value(attributes.get(), attribute) != 0) {
            free_X509_ATTRIBUTE(attribute);
            return 0x4624010C;
        }
    }
    *out = attributes.release();
    return 0;
}

// By hand because a missing attribute has a status of its own.
void Attributes::encode(Encoder &out, const X509_ATTRIBUTES *value, u8 as) noexcept {
    const bool complete = value == nullptr || value->count == 0 || !lacks_an_attribute(*value);
    out.blaming(complete ? 0x46210103 : 0x4623002B,
                [&] { SetOf<Nested<X509_ATTRIBUTE>>::encode(out, value, as); });
}

X509_ATTRIBUTE *new_X509_ATTRIBUTE(void) {
    Owned<X509_ATTRIBUTE> attribute(TLX_NEW(X509_ATTRIBUTE));
    if (!attribute) return nullptr;
    attribute->values = new_STACK();
    return attribute->values == nullptr ? nullptr : attribute.release();
}

void clean_X509_ATTRIBUTE(X509_ATTRIBUTE *attribute) {
    if (attribute == nullptr) return;
    free_OBJECT_IDENTIFIER(attribute->type);
    attribute->type = nullptr;
    clean_list<AttributeValue>(attribute->values);
}

void free_X509_ATTRIBUTE(X509_ATTRIBUTE *attribute) {
    free_record(kAttribute, attribute);
}

X509_ATTRIBUTE *dup_X509_ATTRIBUTE(const X509_ATTRIBUTE *attribute) {
    return dup_record(kAttribute, attribute);
}

X509_ATTRIBUTE_DATA *new_X509_ATTRIBUTE_DATA(void) {
    return TLX_NEW(X509_ATTRIBUTE_DATA);
}

void free_X509_ATTRIBUTE_DATA(X509_ATTRIBUTE_DATA *data) {
    if (data == nullptr) return;
    if (is_node(data->type)) {
        free_ASN1_UNIT(data->value.node);
    } else {
        free_ASN1_STRING(data->value.string);
    }
    tlx_free(data);
}

X509_ATTRIBUTE_DATA *dup_X509_ATTRIBUTE_DATA(const X509_ATTRIBUTE_DATA *data) {
    if (data == nullptr) return nullptr;
    if (held_value(*data) != nullptr) return copy_value(data->type, held_value(*data));
    X509_ATTRIBUTE_DATA *copy = new_X509_ATTRIBUTE_DATA();
    if (copy != nullptr) copy->type = data->type;
    return copy;
}

uint32_t get_X509_ATTRIBUTES_count(const X509_ATTRIBUTES *attributes) {
    return get_STACK_count(attributes);
}

X509_ATTRIBUTE *get_X509_ATTRIBUTES_child(const X509_ATTRIBUTES *attributes, int32_t index) {
    return item_at<X509_ATTRIBUTE>(attributes, index);
}

int32_t get_X509_ATTRIBUTES_index_by_OID(const X509_ATTRIBUTES *attributes, const OBJECT_IDENTIFIER *oid,
                                         int32_t lastpos) {
    return index_by_type(attributes, &X509_ATTRIBUTE::type, text_of(oid), lastpos);
}

X509_ATTRIBUTE *remove_X509_ATTRIBUTES_child(X509_ATTRIBUTES *attributes, int32_t index) {
    return take_item<X509_ATTRIBUTE>(attributes, index);
}

OBJECT_IDENTIFIER *get_X509_ATTRIBUTE_OID(const X509_ATTRIBUTE *attribute) {
    return attribute == nullptr ? nullptr : attribute->type;
}

uint32_t get_X509_ATTRIBUTE_count(const X509_ATTRIBUTE *attribute) {
    return attribute == nullptr ? 0 : get_STACK_count(attribute->values);
}

void *get_X509_ATTRIBUTE_data(const X509_ATTRIBUTE *attribute, int32_t index) {
    const auto *data =
        attribute == nullptr ? nullptr : item_at<X509_ATTRIBUTE_DATA>(attribute->values, index);
    if (data == nullptr) return nullptr;
    if (is_node(data->type)) return data->value.node;
    return data->value.string;
}

uint32_t get_X509_ATTRIBUTE_data_type(const X509_ATTRIBUTE *attribute, int32_t index) {
    const auto *data =
        attribute == nullptr ? nullptr : item_at<X509_ATTRIBUTE_DATA>(attribute->values, index);
    return data == nullptr ? 0xFFFFFFFF : data->type;
}

uint32_t set_X509_ATTRIBUTE_OID(X509_ATTRIBUTE *attribute, const OBJECT_IDENTIFIER *oid) {
    if (attribute == nullptr) return 1;
    return replace_by_copy<dup_OBJECT_IDENTIFIER, free_OBJECT_IDENTIFIER>(attribute->type, oid);
}

uint32_t add_X509_ATTRIBUTE_data(X509_ATTRIBUTE *attribute, uint32_t type, const void *value) {
    if (attribute == nullptr) return 1;
    Owned<X509_ATTRIBUTE_DATA> data(copy_value(type, value));
    if (!data || push_STACK_value(attribute->values, data.get()) != 0) return 1;
    static_cast<void>(data.release());
    return 0;
}

uint32_t add_X509_ATTRIBUTE_set(X509_ATTRIBUTE *attribute, ASN1_STRING *string) {
    if (attribute == nullptr || string == nullptr || is_node(static_cast<u32>(string->type))) return 1;
    X509_ATTRIBUTE_DATA *data = new_X509_ATTRIBUTE_DATA();
    if (data == nullptr) return 1;
    data->type = static_cast<u32>(string->type);
    data->value.string = string;
    if (push_STACK_value(attribute->values, data) == 0) return 0;
    tlx_free(data);
    return 1;
}

X509_ATTRIBUTE *create_X509_ATTRIBUTE_OID(X509_ATTRIBUTE **attribute, const OBJECT_IDENTIFIER *oid,
                                          uint32_t type, const void *value) {
    X509_ATTRIBUTE *unnamed = nullptr;
    X509_ATTRIBUTE **place = attribute == nullptr ? &unnamed : attribute;
    OutRecord<X509_ATTRIBUTE> target(place, new_X509_ATTRIBUTE);
    Owned<OBJECT_IDENTIFIER> copy(dup_OBJECT_IDENTIFIER(oid));
    if (!target || !copy || add_X509_ATTRIBUTE_data(target.get(), type, value) != 0) return nullptr;
    free_OBJECT_IDENTIFIER(target->type);
    target->type = copy.release();
    target.commit();
    return *place;
}

X509_ATTRIBUTE *create_X509_ATTRIBUTE_index(X509_ATTRIBUTE **attribute, int32_t oid_index, uint32_t type,
                                            const void *value) {
    return create_X509_ATTRIBUTE_OID(attribute, oid_of_row(oid_index).get(), type, value);
}

uint32_t add_X509_ATTRIBUTES_child(X509_ATTRIBUTES *attributes, const X509_ATTRIBUTE *attribute,
                                   int32_t index) {
    return add_list_child<Nested<X509_ATTRIBUTE>>(attributes, attribute, index);
}

uint32_t add_X509_ATTRIBUTES_child_OID(X509_ATTRIBUTES *attributes, const OBJECT_IDENTIFIER *oid,
                                       uint32_t type, const void *value, int32_t index) {
    if (attributes == nullptr) return 1;
    Owned<X509_ATTRIBUTE> attribute(create_X509_ATTRIBUTE_OID(nullptr, oid, type, value));
    if (!attribute || insert_STACK_value(attributes, attribute.get(), index) != 0) return 1;
    static_cast<void>(attribute.release());
    return 0;
}

uint32_t add_X509_ATTRIBUTES_OID_INDEX(X509_ATTRIBUTES *attributes, int32_t oid_index, uint32_t type,
                                       const void *value, int32_t index) {
    return add_X509_ATTRIBUTES_child_OID(attributes, oid_of_row(oid_index).get(), type, value, index);
}

// On failure *out becomes null even when it held an attribute of the caller's, which stays alive: it is his.
uint32_t Seq_to_X509_ATTRIBUTE(const ASN1_UNIT *node, X509_ATTRIBUTE **out) {
    const u32 status = decode_node(node, out, codes::X509_ATTRIBUTE.decode);
    if (status == 0x46220104) *out = nullptr;
    return status;
}

TLX_DEFINE_RECORD_ENCODER(X509_ATTRIBUTE)

uint32_t Seq_to_X509_ATTRIBUTES(const ASN1_UNIT *node, X509_ATTRIBUTES **out) {
    if (node == nullptr || out == nullptr) return 0x46240049;
    Element element;
    if (!view_container(node, element)) return 0x46240104;
    X509_ATTRIBUTES *attributes = nullptr;
    if (const u32 status = Attributes::decode(element, &attributes); status != 0) return status;
    deliver(OwnedAttributes(attributes), out);
    return 0;
}

uint32_t X509_ATTRIBUTES_to_Seq(const X509_ATTRIBUTES *attributes, ASN1_UNIT **out) {
    if (attributes == nullptr || out == nullptr) return 0x46230049;
    if (lacks_an_attribute(*attributes)) return 0x4623002B;
    Encoder encoder;
    Attributes::encode(encoder, attributes);
    if (!encoder.ok()) return 0x46210103;
    return hand_over(encoder, out) ? 0 : 0x46230103;
}
