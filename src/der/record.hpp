// Records are described, not hand-coded: from one description of a SEQUENCE follow its six operations (new_,
// clean_, free_, dup_, Seq_to_ and _to_Seq).
//
//     // PolicyMapping ::= SEQUENCE { issuerDomainPolicy OBJECT IDENTIFIER, subjectDomainPolicy OBJECT
//     IDENTIFIER } constexpr auto kPolicyMapping = record<POLICY_MAPPING>(
//         codes(0x47110000, 0x47120000), exactly(2),
//         field<Oid>(&POLICY_MAPPING::issuerDomainPolicy),
//         field<Oid>(&POLICY_MAPPING::subjectDomainPolicy));
//     TLX_DEFINE_RECORD(POLICY_MAPPING, kPolicyMapping)
//
// A field is a value kind (Integer, String<tag>, Bits, Oid, AnyString, Node, Nested<T>, List<kind>), a member
// that owns the value (null when absent), and how it is tagged: field, optional, implicit(n), explicitly(n).
#pragma once

#include <tlxcrypto/stack.h>

#include <tuple>

#include "der/element.hpp"
#include "der/encoder.hpp"
#include "der/owned.hpp"
#include "der/values.hpp"

namespace tlx {

/// How a record type is read and written inside other records. Declared with TLX_DECLARE_CODEC, defined by
/// TLX_DEFINE_RECORD or by hand.
template <typename T>
struct Codec;

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

/// Another record whose status is reported unchanged.
template <typename T>
struct NestedWithStatus : Nested<T> {
    static u32 decode(const Element &element, T **out) noexcept { return Codec<T>::decode(element, out); }
};

// ---- Lists: a STACK of values of one kind ----

template <typename Kind>
void free_list(STACK *list) noexcept {
    using T = typename Kind::type;
    free_STACK_values(list, [](void *value) { Kind::free(static_cast<T *>(value)); });
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

/// SEQUENCE OF (or SET OF, with kSet) values of one kind.
template <typename Kind, u8 Tag = kSequence>
struct List {
    using type = STACK;
    static constexpr u8 tag = Tag;
    static u32 decode(const Element &element, type **out) noexcept {
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
        if (value == nullptr) return out.fail();
        const auto list = out.nest(as);
        encode_list_items<Kind>(out, value);
    }
    static type *dup(const type *value) noexcept { return dup_list<Kind>(value); }
    static void free(type *value) noexcept { free_list<Kind>(value); }
};

// ---- Fields ----

enum class Tagging : u8 { none, implicit, explicitly };

template <typename R, typename Kind>
struct Field {
    using T = typename Kind::type;
    T *R::*member;
    Tagging tagging;
    u8 number;
    bool is_optional;

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
        if (!present) return is_optional ? 0 : kFieldFailed;
        children = ahead;
        if (tagging == Tagging::explicitly) {
            Element inner;
            if (!Cursor(child).next(inner) || !fits<Kind>(inner)) return kFieldFailed;
            child = inner;
        }
        clear(record);
        return Kind::decode(child, &(record.*member));
    }
    void write(Encoder &out, const R &record) const noexcept {
        const T *value = record.*member;
        if (value == nullptr) {
            if (!is_optional) out.fail();
            return;
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
        if (tagging != Tagging::none) return child.context_specific() && child.number() == number;
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

// ---- Records ----

/// Group and function bytes of the decoder's and the encoder's status codes; the reason is added.
struct Codes {
    u32 decode;
    u32 encode;
};
constexpr Codes codes(u32 decode, u32 encode) noexcept {
    return {decode, encode};
}

constexpr u32 kMissingArgument = 0x0049;
constexpr u32 kWrongCount = 0x002B;
constexpr u32 kNotEncoded = 0x0103;
constexpr u32 kNotDecoded = 0x0104;

/// How many children the SEQUENCE must have.
struct Count {
    u32 least;
    u32 most;
};
constexpr Count exactly(u32 count) noexcept {
    return {count, count};
}
constexpr Count between(u32 least, u32 most) noexcept {
    return {least, most};
}
constexpr Count any_count() noexcept {
    return {0, 0xFFFFFFFF};
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
        if (std::apply([&](const auto &...each) { return (each.copy(*copy, *record) && ...); }, fields))
            return copy;
        free(copy);
        return nullptr;
    }
    u32 decode(const Element &element, R **out, R *(*make)()) const noexcept {
        if (count.least > 0 || count.most != any_count().most) {
            const u32 children = count_children(element.contents);
            if (children < count.least || children > count.most) return codes.decode | kWrongCount;
        }
        OutRecord<R> record(out, make);
        if (!record) return codes.decode | kNotDecoded;
        Cursor children(element);
        u32 status = 0;
        const auto read = [&](const auto &each) {
            status = each.read(children, *record.get());
            return status == 0;
        };
        if (!std::apply([&](const auto &...each) { return (read(each) && ...); }, fields)) {
            return status == kFieldFailed ? codes.decode | kNotDecoded : status;
        }
        record.commit();
        return 0;
    }
    void encode(Encoder &out, const R *record, u8 tag) const noexcept {
        if (record == nullptr) return out.fail();
        const auto sequence = out.nest(tag);
        std::apply([&](const auto &...each) { (each.write(out, *record), ...); }, fields);
    }
};

template <typename R, typename... Fields>
constexpr Record<R, Fields...> record(Codes codes, Count count, Fields... fields) noexcept {
    return {codes, count, {fields...}};
}

/// Seq_to_<TYPE>: the checks of its arguments, then the decoder over a view of the node.
template <typename T>
u32 decode_node(const ASN1_UNIT *node, T **out, u32 code) noexcept {
    if (node == nullptr || out == nullptr) return code | kMissingArgument;
    Element element;
    if (!view_node(node, element)) return code | kNotDecoded;
    return Codec<T>::decode(element, out);
}

/// <TYPE>_to_Seq: the checks of its arguments, then the encoding as a node.
template <typename T>
u32 encode_node(const T *object, ASN1_UNIT **out, u32 code) noexcept {
    if (object == nullptr || out == nullptr) return code | kMissingArgument;
    Encoder encoder;
    Codec<T>::encode(encoder, object);
    return hand_over(encoder, out) ? 0 : code | kNotEncoded;
}

/// The exported operations of a described record, and its Codec. new_<type> is defined here too; a record
/// whose new_ makes members uses TLX_DEFINE_RECORD_WITHOUT_NEW.
#define TLX_DEFINE_RECORD(type, description) \
    type *new_##type(void) {                 \
        return TLX_NEW(type);                \
    }                                        \
    TLX_DEFINE_RECORD_WITHOUT_NEW(type, description)

#define TLX_DEFINE_RECORD_WITHOUT_NEW(type, description)                                         \
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
    tlx::u32 tlx::Codec<type>::decode(const tlx::Element &element, type **out) noexcept {        \
        return description.decode(element, out, new_##type);                                     \
    }                                                                                            \
    void tlx::Codec<type>::encode(tlx::Encoder &out, const type *record, tlx::u8 tag) noexcept { \
        description.encode(out, record, tag);                                                    \
    }

}  // namespace tlx
