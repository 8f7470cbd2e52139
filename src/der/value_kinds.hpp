// Value kinds: what a member of a record, or an item of a list, may be. A kind says how its value is read
// from an element, written under a tag, copied and freed.
#pragma once

#include <bit>

#include "der/element.hpp"
#include "der/encoder.hpp"
#include "der/owned.hpp"
#include "der/record_codes.hpp"
#include "der/values.hpp"

namespace tlx {

/// How a record type is read and written inside other records. TLX_DECLARE_CODEC declares it;
/// TLX_DEFINE_RECORD, or a definition by hand, defines it.
template <typename T>
struct Codec;

// NOLINTBEGIN(bugprone-macro-parentheses): a type cannot stand in parentheses
#define TLX_DECLARE_CODEC(type)                                                                              \
    TLX_OWNS(type);                                                                                          \
    template <>                                                                                              \
    struct tlx::Codec<type> {                                                                                \
        static constexpr tlx::u32 unencodable = tlx::codes::type.encode.not_converted;                       \
        /* Fills *out, or a new record when it is null. A status; a record made here is freed on failure. */ \
        static tlx::u32 decode(const tlx::Element &element, type **out) noexcept;                            \
        static void encode(tlx::Encoder &out, const type *record, tlx::u8 tag = tlx::kSequence) noexcept;    \
        static type *dup(const type *record) noexcept { return dup_##type(record); }                         \
        static void free(type *record) noexcept { free_##type(record); }                                     \
    }

// NOLINTEND(bugprone-macro-parentheses)

/// A kind, a field or a description answers this when the record around it has to report its own status. No
/// function of the library returns it.
constexpr u32 kFieldFailed = 0xFFFFFFFE;
/// A description answers this for a number of children that its record does not have. No function returns it.
constexpr u32 kWrongCount = 0xFFFFFFFD;

/// What a kind answers once it stored `value`, or null.
inline u32 stored(const void *value) noexcept {
    return value != nullptr ? 0 : kFieldFailed;
}

struct Integer {
    using type = BIGINT;
    static constexpr u8 tag = TLX_TAG_INTEGER;
    static u32 decode(const Element &element, type **out) noexcept {
        return stored(*out = decode_integer(element.contents));
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
        constexpr bool is_time = Tag == TLX_TAG_UTC_TIME || Tag == TLX_TAG_GENERALIZED_TIME;
        return stored(*out = is_time ? decode_time(Tag, element.contents)
                                     : decode_string(Tag, element.contents));
    }
    static void encode(Encoder &out, const type *value, u8 as) noexcept { out.string(value, as); }
};
using Octets = String<TLX_TAG_OCTET_STRING>;

/// An OCTET STRING that BER may cut into segments: reading joins them, writing makes one.
struct Joined : Octets {
    static u32 decode(const Element &element, type **out) noexcept {
        return stored(*out = decode_joined(TLX_TAG_OCTET_STRING, element));
    }
};

struct Bits : StringRecord {
    static constexpr u8 tag = TLX_TAG_BIT_STRING;
    static u32 decode(const Element &element, type **out) noexcept {
        return stored(*out = decode_bit_string(element.contents));
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
        return stored(*out = decode_oid(element.contents));
    }
    static void encode(Encoder &out, const type *value, u8 as) noexcept { out.oid(value, as); }
};

/// A value of any type, held as a string record with its identifier octet: an OBJECT IDENTIFIER as dotted
/// text, a BIT STRING with its unused bits counted, an element with a tag of its own whole.
struct AnyValue : StringRecord {
    static constexpr u8 tag = TLX_TAG_ANY_STRING;
    static u32 decode(const Element &element, type **out) noexcept {
        return stored(*out = decode_any_string(element));
    }
    static void encode(Encoder &out, const type *value, u8 /*as*/) noexcept {
        if (value == nullptr) return out.fail();
        out.any_value(value, static_cast<u32>(value->type));
    }
};

/// A value of any type, held as a string record with its identifier octet and its contents as received.
struct Verbatim : StringRecord {
    static constexpr u8 tag = TLX_TAG_ANY_STRING;
    static u32 decode(const Element &element, type **out) noexcept {
        // End-of-contents octets are no value.
        return stored(*out = element.tag == 0 ? nullptr : new_string(element.tag, element.contents));
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
        return stored(*out = make_node(element));
    }
    static void encode(Encoder &out, const type *value, u8 /*as*/) noexcept { out.node(value); }
    static type *dup(const type *value) noexcept { return dup_ASN1_UNIT(value); }
    static void free(type *value) noexcept { free_ASN1_UNIT(value); }
};

/// Another record, whose failure is the failure of the record around it.
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

/// Another record, whose statuses go up unchanged.
template <typename T>
struct Passing : Nested<T> {
    static u32 decode(const Element &element, T **out) noexcept { return Codec<T>::decode(element, out); }
    static void encode(Encoder &out, const T *value, u8 as) noexcept {
        if (value == nullptr) return out.fail();
        out.blaming(Codec<T>::unencodable, [&] { Codec<T>::encode(out, value, as); });
    }
};

/// A record that is a CHOICE: its own tags tell it, and no other takes their place.
template <typename T>
struct Choice : Nested<T> {
    static constexpr u8 tag = TLX_TAG_ANY_NODE;
};

/// A string record whose octets are wiped before they are freed.
template <typename Kind>
struct Secret : Kind {
    using type = typename Kind::type;
    static void free(type *value) noexcept {
        if (value != nullptr && value->data != nullptr) tlx_wipe(value->data, octets_of(value).size());
        Kind::free(value);
    }
};

/// True for an element that may hold a value of this kind; kinds that take any type take it.
template <typename Kind>
bool may_hold(const Element &element) noexcept {
    if (Kind::tag == TLX_TAG_ANY_STRING || Kind::tag == TLX_TAG_ANY_NODE) return true;
    return element.matches(Kind::tag);
}

/// The one element inside a wrapper. False for none, for several, and for a broken one.
inline bool only_child(const Element &wrapper, Element &child) noexcept {
    Cursor children(wrapper);
    return children.next(child) && children.at_end();
}

/// [n] EXPLICIT around a value of another kind, for the alternatives of a CHOICE.
template <typename Kind>
struct Explicit {
    using type = typename Kind::type;
    static constexpr u8 tag = kSequence;
    static u32 decode(const Element &element, type **out) noexcept {
        Element inner;
        if (!only_child(element, inner) || !may_hold<Kind>(inner)) return kFieldFailed;
        return Kind::decode(inner, out);
    }
    static void encode(Encoder &out, const type *value, u8 as) noexcept {
        const auto wrapper = out.nest(as);
        Kind::encode(out, value, Kind::tag);
    }
    static type *dup(const type *value) noexcept { return Kind::dup(value); }
    static void free(type *value) noexcept { Kind::free(value); }
};

}  // namespace tlx
