// The exported operations of described types: one line defines all of them. A type whose operations differ
// takes the parts that remain and defines the others itself.
#pragma once

// NOLINTBEGIN(bugprone-macro-parentheses): a type cannot stand in parentheses

#define TLX_DEFINE_RECORD(type, description)   \
    TLX_DEFINE_RECORD_NEW(type)                \
    TLX_DEFINE_RECORD_LIFE(type, description)  \
    TLX_DEFINE_RECORD_CODEC(type, description) \
    TLX_DEFINE_RECORD_DECODER(type)            \
    TLX_DEFINE_RECORD_ENCODER(type)

#define TLX_DEFINE_RECORD_NEW(type) \
    type *new_##type(void) {        \
        return TLX_NEW(type);       \
    }

#define TLX_DEFINE_RECORD_LIFE(type, description)    \
    void clean_##type(type *record) {                \
        tlx::clean_record(description, record);      \
    }                                                \
    void free_##type(type *record) {                 \
        tlx::free_record(description, record);       \
    }                                                \
    type *dup_##type(const type *record) {           \
        return tlx::dup_record(description, record); \
    }

#define TLX_DEFINE_RECORD_CODEC(type, description) \
    TLX_DEFINE_CODEC_DECODE(type, description)     \
    TLX_DEFINE_CODEC_ENCODE(type, description)

#define TLX_DEFINE_CODEC_DECODE(type, description)                                        \
    tlx::u32 tlx::Codec<type>::decode(const tlx::Element &element, type **out) noexcept { \
        return tlx::decode_record(description, element, out, tlx::codes::type.decode);    \
    }

#define TLX_DEFINE_CODEC_ENCODE(type, description)                                               \
    void tlx::Codec<type>::encode(tlx::Encoder &out, const type *record, tlx::u8 tag) noexcept { \
        if (record == nullptr) return out.fail();                                                \
        description.write(out, *record, tag);                                                    \
    }

#define TLX_DEFINE_RECORD_DECODER(type)                              \
    uint32_t Seq_to_##type(const ASN1_UNIT *node, type **out) {      \
        return tlx::decode_node(node, out, tlx::codes::type.decode); \
    }

#define TLX_DEFINE_RECORD_ENCODER(type)                                \
    uint32_t type##_to_Seq(const type *record, ASN1_UNIT **out) {      \
        return tlx::encode_node(record, out, tlx::codes::type.encode); \
    }

/// A list type: `kind` is its List.
#define TLX_DEFINE_LIST(list_type, item_type, kind)                                              \
    TLX_DEFINE_LIST_LIFE(list_type, kind)                                                        \
    TLX_DEFINE_LIST_DECODER(list_type, kind)                                                     \
    TLX_DEFINE_LIST_ENCODER(list_type, kind)                                                     \
    uint32_t get_##list_type##_count(const list_type *list) {                                    \
        return get_STACK_count(list);                                                            \
    }                                                                                            \
    item_type *get_##list_type##_child(const list_type *list, int32_t index) {                   \
        return static_cast<item_type *>(get_STACK_value(list, static_cast<tlx::u32>(index)));    \
    }                                                                                            \
    uint32_t add_##list_type##_child(list_type *list, const item_type *item, int32_t index) {    \
        return tlx::add_list_child<kind::Item>(list, item, index);                               \
    }                                                                                            \
    item_type *remove_##list_type##_child(list_type *list, int32_t index) {                      \
        return static_cast<item_type *>(remove_STACK_value(list, static_cast<tlx::u32>(index))); \
    }

#define TLX_DEFINE_LIST_LIFE(list_type, kind)           \
    list_type *new_##list_type(void) {                  \
        return new_STACK();                             \
    }                                                   \
    void clean_##list_type(list_type *list) {           \
        tlx::clean_list<kind::Item>(list);              \
    }                                                   \
    void free_##list_type(list_type *list) {            \
        kind::free(list);                               \
    }                                                   \
    list_type *dup_##list_type(const list_type *list) { \
        return kind::dup(list);                         \
    }

#define TLX_DEFINE_LIST_DECODER(list_type, kind)                                     \
    uint32_t Seq_to_##list_type(const ASN1_UNIT *node, list_type **out) {            \
        return tlx::decode_list_node<kind>(node, out, tlx::codes::list_type.decode); \
    }

#define TLX_DEFINE_LIST_ENCODER(list_type, kind)                                     \
    uint32_t list_type##_to_Seq(const list_type *list, ASN1_UNIT **out) {            \
        return tlx::encode_list_node<kind>(list, out, tlx::codes::list_type.encode); \
    }

/// A type that is one string.
#define TLX_DEFINE_STRING_RECORD(type, kind)                                        \
    type *new_##type(void) {                                                        \
        return tlx::new_string(kind::tag, {});                                      \
    }                                                                               \
    void clean_##type(type *record) {                                               \
        clean_ASN1_STRING(record);                                                  \
    }                                                                               \
    void free_##type(type *record) {                                                \
        free_ASN1_STRING(record);                                                   \
    }                                                                               \
    type *dup_##type(const type *record) {                                          \
        return dup_ASN1_STRING(record);                                             \
    }                                                                               \
    uint32_t Seq_to_##type(const ASN1_UNIT *node, type **out) {                     \
        return tlx::decode_string_node<kind>(node, out, tlx::codes::type.decode);   \
    }                                                                               \
    uint32_t type##_to_Seq(const type *record, ASN1_UNIT **out) {                   \
        return tlx::encode_string_node<kind>(record, out, tlx::codes::type.encode); \
    }

// NOLINTEND(bugprone-macro-parentheses)
