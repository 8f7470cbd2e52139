// Value kinds: what a member of a record, or an item of a list, may be. A kind says how its value is read
// from an element, written under a tag, copied and freed.
#pragma once

#include <tlxcrypto/stack.h>

#include <bit>

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

}  // namespace tlx
