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
// A field is a value kind (Integer, String<tag>, Bits, NamedBits, Oid, AnyString, OwnString, Node, Nested<T>,
// Choice<T>, List<kind>), a member that owns the value (null when absent), and how it is tagged: field,
// optional, implicit(n), explicitly(n). BOOLEAN members are single octets: boolean, flag(n). A field of
// another shape is a class with the four functions of Field.
#pragma once

#include <tlxcrypto/stack.h>

#include <bit>
#include <tuple>
#include <utility>

#include "der/element.hpp"
#include "der/encoder.hpp"
#include "der/owned.hpp"
#include "der/values.hpp"

namespace tlx {

/// How a record type is read and written inside other records. Declared with TLX_DECLARE_CODEC, defined by
/// TLX_DEFINE_RECORD or by hand.
template <typename T>
struct Codec;

// NOLINTBEGIN(bugprone-macro-parentheses): types cannot stand in parentheses
#define TLX_DECLARE_CODEC(type)                                                                              \
    TLX_OWNS(type);                                                                                          \
    template <>                                                                                              \
    struct tlx::Codec<type> {                                                                                \
        /* Fills *out, or a new record when it is null. A status; a record made here is freed on failure. */ \
        static tlx::u32 decode(const tlx::Element &element, type **out) noexcept;                            \
        static void encode(tlx::Encoder &out, const type *record, tlx::u8 tag = tlx::kSequence) noexcept;    \
        static type *dup(const type *record) noexcept { return dup_##type(record); }                         \
        static void free(type *record) noexcept { free_##type(record); }                                     \
    }

// NOLINTEND(bugprone-macro-parentheses)

/// What a field answers when the record's own status is to be reported.
constexpr u32 kFieldFailed = 1;

// ---- Value kinds: read from an element, write under a tag, copy, free ----

struct Integer {
    using type = BIGINT;
    static constexpr u8 tag = TLX_TAG_INTEGER;
    static u32 decode(const Element &element, type **out) noexcept {
        *out = decode_integer(element.contents);
        return *out != nullptr ? 0 : kFieldFailed;
    }
    static void encode(Encoder &out, const type *value, u8 as) noexcept { out.integer(value, as); }
    static type *dup(const type *value) noexcept { return dup_BIGINT(value); }
    static void free(type *value) noexcept { free_BIGINT(value); }
};

/// What every string record shares.
struct StringRecord {
    using type = ASN1_STRING;
    static type *dup(const type *value) noexcept { return dup_ASN1_STRING(value); }
    static void free(type *value) noexcept { free_ASN1_STRING(value); }
};

template <u8 Tag>
struct String : StringRecord {
    static constexpr u8 tag = Tag;
    static u32 decode(const Element &element, type **out) noexcept {
        *out = Tag == TLX_TAG_UTC_TIME || Tag == TLX_TAG_GENERALIZED_TIME
                   ? decode_time(Tag, element.contents)
                   : decode_string(Tag, element.contents);
        return *out != nullptr ? 0 : kFieldFailed;
    }
    static void encode(Encoder &out, const type *value, u8 as) noexcept { out.string(value, as); }
};
using Octets = String<TLX_TAG_OCTET_STRING>;

struct Bits : StringRecord {
    static constexpr u8 tag = TLX_TAG_BIT_STRING;
    static u32 decode(const Element &element, type **out) noexcept {
        *out = decode_bit_string(element.contents);
        return *out != nullptr ? 0 : kFieldFailed;
    }
    static void encode(Encoder &out, const type *value, u8 as) noexcept { out.bit_string(value, as); }
};

/// A view of a named bit list that ends with its last one bit; empty when it has none.
inline BIT_STRING without_trailing_zero_bits(const BIT_STRING &bits) noexcept {
    const Bytes octets = octets_of(&bits);
    const bool counted = bits.extra > 0 && bits.extra < 8;
    const auto used = static_cast<u8>(0xFFU << (counted ? bits.extra : 0));
    std::size_t size = octets.size();
    const auto last = [&] { return size == octets.size() ? octets[size - 1] & used : octets[size - 1]; };
    while (size > 0 && last() == 0) {
        --size;
    }
    BIT_STRING trimmed = bits;
    trimmed.length = static_cast<i32>(size);
    trimmed.extra = size > 0 ? std::countr_zero(static_cast<unsigned>(last())) : 0;
    return trimmed;
}

/// A named bit list: a BIT STRING written without trailing zero bits, as DER wants it.
struct NamedBits : Bits {
    static void encode(Encoder &out, const type *value, u8 as) noexcept {
        if (value == nullptr || value->length < 0) return out.fail();
        const BIT_STRING trimmed = without_trailing_zero_bits(*value);
        out.bit_string(&trimmed, as);
    }
};

struct Oid : StringRecord {
    static constexpr u8 tag = TLX_TAG_OBJECT_IDENTIFIER;
    static u32 decode(const Element &element, type **out) noexcept {
        *out = decode_oid(element.contents);
        return *out != nullptr ? 0 : kFieldFailed;
    }
    static void encode(Encoder &out, const type *value, u8 as) noexcept { out.oid(value, as); }
};

/// A string of whatever type, which the record keeps. It has no tag of its own to be replaced.
struct AnyString : StringRecord {
    static constexpr u8 tag = TLX_TAG_ANY_STRING;
    static u32 decode(const Element &element, type **out) noexcept {
        *out = decode_any_string(element);
        return *out != nullptr ? 0 : kFieldFailed;
    }
    static void encode(Encoder &out, const type *value, u8 /*as*/) noexcept { out.any_string(value); }
};

/// Any element as a string record: the type is the identifier octet, the data the contents as they are.
struct OwnString : StringRecord {
    static constexpr u8 tag = TLX_TAG_ANY_STRING;
    static u32 decode(const Element &element, type **out) noexcept {
        // An identifier octet of 0 stands for end-of-contents octets.
        if (element.tag == 0) return kFieldFailed;
        *out = new_string(element.tag, element.contents);
        return *out != nullptr ? 0 : kFieldFailed;
    }
    static void encode(Encoder &out, const type *value, u8 /*as*/) noexcept {
        if (value == nullptr || value->type <= 0 || value->type > 0xFF) return out.fail();
        out.string(value, static_cast<u8>(value->type));
    }
};

/// Any element, kept whole.
struct Node {
    using type = ASN1_UNIT;
    static constexpr u8 tag = TLX_TAG_ANY_NODE;
    static u32 decode(const Element &element, type **out) noexcept {
        *out = make_node(element);
        return *out != nullptr ? 0 : kFieldFailed;
    }
    static void encode(Encoder &out, const type *value, u8 /*as*/) noexcept { out.node(value); }
    static type *dup(const type *value) noexcept { return dup_ASN1_UNIT(value); }
    static void free(type *value) noexcept { free_ASN1_UNIT(value); }
};

/// Another record. Its failure counts as this record's own.
template <typename T>
struct Nested {
    using type = T;
    static constexpr u8 tag = kSequence;
    static u32 decode(const Element &element, type **out) noexcept {
        return Codec<T>::decode(element, out) == 0 ? 0 : kFieldFailed;
    }
    static void encode(Encoder &out, const type *value, u8 as) noexcept { Codec<T>::encode(out, value, as); }
    static type *dup(const type *value) noexcept { return Codec<T>::dup(value); }
    static void free(type *value) noexcept { Codec<T>::free(value); }
};

/// A record that stands for a CHOICE: it is told by tags of its own, none of which can be replaced.
template <typename T>
struct Choice : Nested<T> {
    static constexpr u8 tag = TLX_TAG_ANY_NODE;
};

/// Another record whose status is reported unchanged.
template <typename T>
struct NestedWithStatus : Nested<T> {
    static u32 decode(const Element &element, T **out) noexcept { return Codec<T>::decode(element, out); }
};

// ---- Lists: a STACK of values of one kind ----

template <typename Kind>
void clean_list(STACK *list) noexcept {
    using T = typename Kind::type;
    clean_STACK_values(list, [](void *value) { Kind::free(static_cast<T *>(value)); });
}

template <typename Kind>
void free_list(STACK *list) noexcept {
    clean_list<Kind>(list);
    free_STACK(list);
}

template <typename Kind>
STACK *dup_list(const STACK *list) noexcept {
    using T = typename Kind::type;
    return dup_STACK_values(
        list, [](const void *value) -> void * { return Kind::dup(static_cast<const T *>(value)); },
        [](void *value) { Kind::free(static_cast<T *>(value)); });
}

/// True for an element that may stand for a value of this kind; kinds that take any type take it.
template <typename Kind>
bool fits(const Element &element) noexcept {
    if (Kind::tag == TLX_TAG_ANY_STRING || Kind::tag == TLX_TAG_ANY_NODE) return true;
    return element.matches(Kind::tag);
}

/// The one element that a wrapper holds. False for none, for more, and for a broken one.
inline bool only_child(const Element &wrapper, Element &child) noexcept {
    Cursor children(wrapper);
    return children.next(child) && children.at_end();
}

/// Appends the children of `contents` to `list`. A status as Kind::decode gives it.
template <typename Kind>
u32 decode_list_items(Bytes contents, STACK *list) noexcept {
    using T = typename Kind::type;
    Cursor children(contents);
    while (!children.at_end()) {
        Element child;
        if (!children.next(child) || !fits<Kind>(child)) return kFieldFailed;
        T *value = nullptr;
        if (const u32 status = Kind::decode(child, &value); status != 0) return status;
        if (push_STACK_value(list, value) != 0) {
            Kind::free(value);
            return kFieldFailed;
        }
    }
    return 0;
}

template <typename Kind>
void encode_list_items(Encoder &out, const STACK *list) noexcept {
    using T = typename Kind::type;
    for (u32 i = 0; i < get_STACK_count(list); ++i) {
        Kind::encode(out, static_cast<const T *>(get_STACK_value(list, i)), Kind::tag);
    }
}

/// SEQUENCE OF (or SET OF, with kSet) values of one kind, of which there are at least `Least`.
template <typename Kind, u8 Tag = kSequence, u32 Least = 0>
struct List {
    using type = STACK;
    using Item = Kind;
    static constexpr u8 tag = Tag;
    static constexpr u32 least = Least;
    static u32 decode(const Element &element, type **out) noexcept {
        if (Least > 0 && element.contents.empty()) return kFieldFailed;
        *out = new_STACK();
        if (*out == nullptr) return kFieldFailed;
        const u32 status = decode_list_items<Kind>(element.contents, *out);
        if (status != 0) {
            free_list<Kind>(*out);
            *out = nullptr;
        }
        return status;
    }
    static void encode(Encoder &out, const type *value, u8 as) noexcept {
        if (value == nullptr || get_STACK_count(value) < Least) return out.fail();
        const auto list = out.nest(as);
        encode_list_items<Kind>(out, value);
    }
    static type *dup(const type *value) noexcept { return dup_list<Kind>(value); }
    static void free(type *value) noexcept { free_list<Kind>(value); }
};
/// SEQUENCE SIZE (1..MAX) OF
template <typename Kind>
using OneOrMore = List<Kind, kSequence, 1>;

// ---- Fields ----

enum class Tagging : u8 { none, implicit, explicitly };

template <typename R, typename Kind>
struct Field {
    using T = typename Kind::type;
    T *R::*member;
    Tagging tagging;
    u8 number;
    bool is_optional;

    /// The same field, mandatory; for those that are optional by themselves.
    [[nodiscard]] constexpr Field required() const noexcept { return {member, tagging, number, false}; }

    void clear(R &record) const noexcept {
        if (record.*member != nullptr) Kind::free(record.*member);
        record.*member = nullptr;
    }
    [[nodiscard]] bool copy(R &to, const R &from) const noexcept {
        if (from.*member == nullptr) return true;
        to.*member = Kind::dup(from.*member);
        return to.*member != nullptr;
    }
    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        Element child;
        Cursor ahead = children;
        const bool present = ahead.next(child) && accepts(child);
        clear(record);
        if (!present) return is_optional ? 0 : kFieldFailed;
        children = ahead;
        if (tagging == Tagging::explicitly) {
            Element inner;
            if (!only_child(child, inner) || !fits<Kind>(inner)) return kFieldFailed;
            child = inner;
        }
        return Kind::decode(child, &(record.*member));
    }
    void write(Encoder &out, const R &record) const noexcept {
        const T *value = record.*member;
        if (value == nullptr) {
            if (!is_optional) out.fail();
            return;
        }
        if constexpr (requires { Kind::is_default(value); }) {
            if (Kind::is_default(value)) return;
        }
        if (tagging == Tagging::explicitly) {
            const auto wrapper = out.nest(context(number));
            Kind::encode(out, value, Kind::tag);
        } else if (tagging == Tagging::implicit) {
            Kind::encode(out, value, static_cast<u8>(kContextSpecific | (Kind::tag & kConstructed) | number));
        } else {
            Kind::encode(out, value, Kind::tag);
        }
    }

  private:
    [[nodiscard]] bool accepts(const Element &child) const noexcept {
        if (tagging == Tagging::explicitly) return child.tag == context(number);
        if (tagging == Tagging::implicit) return child.context_specific() && child.number() == number;
        // An optional member without a tag of its own is told apart by its universal tag.
        if (is_optional && child.tag >= kContextSpecific) return false;
        return fits<Kind>(child);
    }
};

template <typename Kind, typename R>
constexpr Field<R, Kind> field(typename Kind::type *R::*member) noexcept {
    return {member, Tagging::none, 0, false};
}
template <typename Kind, typename R>
constexpr Field<R, Kind> optional(typename Kind::type *R::*member) noexcept {
    return {member, Tagging::none, 0, true};
}
/// [number] IMPLICIT ... OPTIONAL
template <typename Kind, typename R>
constexpr Field<R, Kind> implicit(u8 number, typename Kind::type *R::*member) noexcept {
    return {member, Tagging::implicit, number, true};
}
/// [number] EXPLICIT ... OPTIONAL
template <typename Kind, typename R>
constexpr Field<R, Kind> explicitly(u8 number, typename Kind::type *R::*member) noexcept {
    return {member, Tagging::explicitly, number, true};
}

/// BOOLEAN held as its contents octet. With `number` it is a [number] IMPLICIT BOOLEAN DEFAULT FALSE, which
/// is written only when true; without it is mandatory, and written always.
template <typename R>
struct BooleanField {
    static constexpr u8 kUntagged = 0xFF;
    u8 R::*member;
    u8 number;

    void clear(R &record) const noexcept { record.*member = 0; }
    [[nodiscard]] bool copy(R &to, const R &from) const noexcept {
        to.*member = from.*member;
        return true;
    }
    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        Element child;
        Cursor ahead = children;
        const bool tagged = number != kUntagged;
        const bool present = ahead.next(child) && (tagged ? child.tag == context_primitive(number)
                                                          : child.matches(TLX_TAG_BOOLEAN));
        clear(record);
        if (!present) return tagged ? 0 : kFieldFailed;
        if (child.contents.size() != 1) return kFieldFailed;
        children = ahead;
        record.*member = child.contents[0];
        return 0;
    }
    void write(Encoder &out, const R &record) const noexcept {
        const bool value = record.*member != 0;
        if (number == kUntagged) {
            out.boolean(value);
        } else if (value) {
            out.boolean(value, context_primitive(number));
        }
    }
};
template <typename R>
constexpr BooleanField<R> boolean(u8 R::*member) noexcept {
    return {member, BooleanField<R>::kUntagged};
}
/// [number] IMPLICIT BOOLEAN DEFAULT FALSE
template <typename R>
constexpr BooleanField<R> flag(u8 number, u8 R::*member) noexcept {
    return {member, number};
}

// ---- Records ----

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
