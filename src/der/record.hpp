// Records are described, not hand-coded: from one description of a SEQUENCE follow its six operations (new_,
// clean_, free_, dup_, Seq_to_ and _to_Seq).
//
//     // PolicyMapping ::= SEQUENCE {
//     //     issuerDomainPolicy OBJECT IDENTIFIER, subjectDomainPolicy OBJECT IDENTIFIER }
//     constexpr auto kPolicyMapping = record<POLICY_MAPPING>(
//         codes(0x47270000, 0x47280000), exactly(2),
//         field<Oid>(&POLICY_MAPPING::issuerDomainPolicy),
//         field<Oid>(&POLICY_MAPPING::subjectDomainPolicy));
//     TLX_DEFINE_RECORD(POLICY_MAPPING, kPolicyMapping)
//
// A field (der/fields.hpp) is a value kind (der/value_kinds.hpp: Integer, String<tag>, Bits, NamedBits, Oid,
// AnyString, OwnString, Node, Nested<T>, Choice<T>, List<kind>), a member that owns the value (null when
// absent), and how it is tagged: field, optional, implicit(n), explicitly(n). BOOLEAN members are single
// octets: boolean, flag(n). A field of another shape is a class with the four functions of Field.
#pragma once

#include <tuple>

#include "der/fields.hpp"
#include "der/value_kinds.hpp"

namespace tlx {

/// What one operation answers, whole: when compiled, the octets of its group and its function meet every
/// reason.
struct Statuses {
    u32 missing_argument;
    u32 wrong_count;
    u32 not_encoded;
    u32 not_decoded;
};
consteval Statuses statuses(u32 function) noexcept {
    return {function | 0x0049, function | 0x002B, function | 0x0103, function | 0x0104};
}

/// The statuses of a decoder and of an encoder.
struct Codes {
    Statuses decode;
    Statuses encode;
};
consteval Codes codes(u32 decode, u32 encode) noexcept {
    return {statuses(decode), statuses(encode)};
}

/// How many children the SEQUENCE must have, and whether those that no field took are passed over.
struct Count {
    u32 least;
    u32 most;
    bool others_allowed;
};
constexpr Count exactly(u32 count) noexcept {
    return {count, count, false};
}
constexpr Count between(u32 least, u32 most) noexcept {
    return {least, most, false};
}
/// Any number of children; those that no field took are passed over.
constexpr Count any_count() noexcept {
    return {0, 0xFFFFFFFF, true};
}

template <typename R, typename... Fields>
struct Record {
    Codes codes;
    Count count;
    std::tuple<Fields...> fields;

    void clean(R *record) const noexcept {
        if (record == nullptr) return;
        std::apply([&](const auto &...each) { (each.clear(*record), ...); }, fields);
    }
    void free(R *record) const noexcept {
        clean(record);
        tlx_free(record);
    }
    R *dup(const R *record, R *(*make)()) const noexcept {
        if (record == nullptr) return nullptr;
        R *copy = make();
        if (copy == nullptr) return nullptr;
        clean(copy);
        if (std::apply([&](const auto &...each) { return (each.copy(*copy, *record) && ...); }, fields)) {
            return copy;
        }
        free(copy);
        return nullptr;
    }
    u32 decode(const Element &element, R **out, R *(*make)()) const noexcept {
        if (count.least > 0 || count.most != any_count().most) {
            const u32 children = count_children(element.contents);
            if (children < count.least || children > count.most) return codes.decode.wrong_count;
        }
        OutRecord<R> record(out, make);
        if (!record) return codes.decode.not_decoded;
        Cursor children(element);
        u32 status = 0;
        const auto read = [&](const auto &each) {
            status = each.read(children, *record.get());
            return status == 0;
        };
        if (!std::apply([&](const auto &...each) { return (read(each) && ...); }, fields)) {
            return status == kFieldFailed ? codes.decode.not_decoded : status;
        }
        if (!ends_well(children)) return codes.decode.not_decoded;
        record.commit();
        return 0;
    }
    void encode(Encoder &out, const R *record, u8 tag) const noexcept {
        if (record == nullptr) return out.fail();
        const auto sequence = out.nest(tag);
        std::apply([&](const auto &...each) { (each.write(out, *record), ...); }, fields);
    }

  private:
    /// Children that no field took are refused or passed over; broken ones are refused always.
    [[nodiscard]] bool ends_well(Cursor children) const noexcept {
        Element other;
        while (count.others_allowed && children.next(other)) {
        }
        return children.at_end();
    }
};

template <typename R, typename... Fields>
constexpr Record<R, Fields...> record(Codes codes, Count count, Fields... fields) noexcept {
    return {codes, count, {fields...}};
}

/// Seq_to_<TYPE>: the checks of its arguments, then the decoder over a view of the node.
template <typename T>
u32 decode_node(const ASN1_UNIT *node, T **out, const Statuses &failed) noexcept {
    if (node == nullptr || out == nullptr) return failed.missing_argument;
    Element element;
    if (!view_container(node, element)) return failed.not_decoded;
    return Codec<T>::decode(element, out);
}

/// <TYPE>_to_Seq: the checks of its arguments, then the encoding as a node.
template <typename T>
u32 encode_node(const T *object, ASN1_UNIT **out, const Statuses &failed) noexcept {
    if (object == nullptr || out == nullptr) return failed.missing_argument;
    Encoder encoder;
    Codec<T>::encode(encoder, object);
    return hand_over(encoder, out) ? 0 : failed.not_encoded;
}

/// Decodes a list of its own into *out: a caller's list is emptied and filled anew, and stays as it was on
/// failure.
template <typename List>
u32 decode_list(const Element &element, STACK **out, const Statuses &failed) noexcept {
    if (List::least > 0 && element.contents.empty()) return failed.wrong_count;
    STACK *list = nullptr;
    if (List::decode(element, &list) != 0) return failed.not_decoded;
    deliver(std::unique_ptr<STACK, FreeWith<List::free>>(list), out);
    return 0;
}

/// Seq_to_<LIST>.
template <typename List>
u32 decode_list_node(const ASN1_UNIT *node, STACK **out, const Statuses &failed) noexcept {
    if (node == nullptr || out == nullptr) return failed.missing_argument;
    Element element;
    if (!view_container(node, element)) return failed.not_decoded;
    return decode_list<List>(element, out, failed);
}

/// <LIST>_to_Seq.
template <typename List>
u32 encode_list_node(const STACK *list, ASN1_UNIT **out, const Statuses &failed) noexcept {
    if (list == nullptr || out == nullptr) return failed.missing_argument;
    if (get_STACK_count(list) < List::least) return failed.wrong_count;
    Encoder encoder;
    List::encode(encoder, list, List::tag);
    return hand_over(encoder, out) ? 0 : failed.not_encoded;
}

/// add_<LIST>_child: inserts a copy.
template <typename Kind>
u32 add_list_child(STACK *list, const typename Kind::type *value, i32 index) noexcept {
    if (list == nullptr || value == nullptr) return 1;
    auto *copy = Kind::dup(value);
    if (copy == nullptr) return 1;
    if (insert_STACK_value(list, copy, index) == 0) return 0;
    Kind::free(copy);
    return 1;
}

// NOLINTBEGIN(bugprone-macro-parentheses): types cannot stand in parentheses

/// The exported operations of a described record, and its Codec. A record whose new_ makes members defines
/// new_<type> itself, one whose decoder no description can say Codec<type>::decode; it then takes the parts
/// that remain.
#define TLX_DEFINE_RECORD(type, description)    \
    TLX_DEFINE_RECORD_NEW(type)                 \
    TLX_DEFINE_RECORD_DECODE(type, description) \
    TLX_DEFINE_RECORD_OTHERS(type, description)

#define TLX_DEFINE_RECORD_WITHOUT_NEW(type, description) \
    TLX_DEFINE_RECORD_DECODE(type, description)          \
    TLX_DEFINE_RECORD_OTHERS(type, description)

#define TLX_DEFINE_RECORD_WITHOUT_DECODE(type, description) \
    TLX_DEFINE_RECORD_NEW(type)                             \
    TLX_DEFINE_RECORD_OTHERS(type, description)

#define TLX_DEFINE_RECORD_NEW(type) \
    type *new_##type(void) {        \
        return TLX_NEW(type);       \
    }

#define TLX_DEFINE_RECORD_DECODE(type, description)                                       \
    tlx::u32 tlx::Codec<type>::decode(const tlx::Element &element, type **out) noexcept { \
        return description.decode(element, out, new_##type);                              \
    }

#define TLX_DEFINE_RECORD_OTHERS(type, description)                                              \
    void clean_##type(type *record) {                                                            \
        description.clean(record);                                                               \
    }                                                                                            \
    void free_##type(type *record) {                                                             \
        description.free(record);                                                                \
    }                                                                                            \
    type *dup_##type(const type *record) {                                                       \
        return description.dup(record, new_##type);                                              \
    }                                                                                            \
    uint32_t Seq_to_##type(const ASN1_UNIT *node, type **out) {                                  \
        return tlx::decode_node(node, out, description.codes.decode);                            \
    }                                                                                            \
    uint32_t type##_to_Seq(const type *record, ASN1_UNIT **out) {                                \
        return tlx::encode_node(record, out, description.codes.encode);                          \
    }                                                                                            \
    void tlx::Codec<type>::encode(tlx::Encoder &out, const type *record, tlx::u8 tag) noexcept { \
        description.encode(out, record, tag);                                                    \
    }

/// The exported operations of a list type: `kind` is its List, `list_codes` the Codes of its two directions.
#define TLX_DEFINE_LIST(list_type, item_type, kind, list_codes)                                  \
    list_type *new_##list_type(void) {                                                           \
        return new_STACK();                                                                      \
    }                                                                                            \
    void clean_##list_type(list_type *list) {                                                    \
        tlx::clean_list<kind::Item>(list);                                                       \
    }                                                                                            \
    void free_##list_type(list_type *list) {                                                     \
        kind::free(list);                                                                        \
    }                                                                                            \
    list_type *dup_##list_type(const list_type *list) {                                          \
        return kind::dup(list);                                                                  \
    }                                                                                            \
    uint32_t Seq_to_##list_type(const ASN1_UNIT *node, list_type **out) {                        \
        return tlx::decode_list_node<kind>(node, out, (list_codes).decode);                      \
    }                                                                                            \
    uint32_t list_type##_to_Seq(const list_type *list, ASN1_UNIT **out) {                        \
        return tlx::encode_list_node<kind>(list, out, (list_codes).encode);                      \
    }                                                                                            \
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

// NOLINTEND(bugprone-macro-parentheses)

}  // namespace tlx
