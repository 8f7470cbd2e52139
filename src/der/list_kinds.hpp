// Lists: a STACK of values of one kind, as a value kind itself.
#pragma once

#include <tlxcrypto/stack.h>

#include "der/record_codes.hpp"
#include "der/value_kinds.hpp"

namespace tlx {

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

/// Appends the children of `contents` to `list`. A status as Kind::decode gives it.
template <typename Kind>
u32 decode_list_items(Bytes contents, STACK *list) noexcept {
    using T = typename Kind::type;
    Cursor children(contents);
    while (!children.at_end()) {
        Element child;
        if (!children.next(child) || !may_hold<Kind>(child)) return kFieldFailed;
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

/// SEQUENCE OF (or SET OF, with kSet) values of one kind, at least `Least` of them.
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
    static void encode(Encoder &out, const type *value, u8 as = Tag) noexcept {
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
template <typename Kind>
using SetOf = List<Kind, kSet>;

/// Decodes a list of its own into *out: a caller's list is emptied and filled anew, and stays as it was on
/// failure. A status of the list, or one that an item passes up.
template <typename List>
u32 decode_list(const Element &element, STACK **out, const Statuses &statuses) noexcept {
    if (List::least > 0 && element.contents.empty()) return statuses.wrong_count;
    STACK *list = nullptr;
    const u32 status = List::decode(element, &list);
    if (status != 0) return status == kFieldFailed ? statuses.not_converted : status;
    deliver(std::unique_ptr<STACK, FreeWith<List::free>>(list), out);
    return 0;
}

/// A list whose own statuses go up unchanged.
template <typename List, const Codes &ListCodes>
struct PassingList : List {
    static u32 decode(const Element &element, STACK **out) noexcept {
        return decode_list<List>(element, out, ListCodes.decode);
    }
    static void encode(Encoder &out, const STACK *value, u8 as) noexcept {
        out.blaming(ListCodes.encode.not_converted, [&] { List::encode(out, value, as); });
    }
};

}  // namespace tlx
