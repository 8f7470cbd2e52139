// What the list operations share: items by place and by type.
#pragma once

#include <tlxcrypto/stack.h>
#include <tlxpki/ber.h>
#include <tlxpki/objects.h>

#include "der/owned.hpp"
#include "der/values.hpp"

namespace tlx {

/// The item at an index; null when there is none.
template <typename Item>
Item *item_at(const STACK *list, i32 index) noexcept {
    return static_cast<Item *>(get_STACK_value(list, static_cast<u32>(index)));
}

template <typename Item>
Item *take_item(STACK *list, i32 index) noexcept {
    return static_cast<Item *>(remove_STACK_value(list, static_cast<u32>(index)));
}

/// The first item after `last` whose type is the dotted text, -1 when there is none. A negative `last`
/// searches from the first item on.
template <typename Item>
i32 index_by_type(const STACK *list, OBJECT_IDENTIFIER *Item::*type, std::string_view dotted,
                  i32 last) noexcept {
    if (dotted.empty()) return -1;
    for (u32 i = last < 0 ? 0 : static_cast<u32>(last) + 1; i < get_STACK_count(list); ++i) {
        const auto *item = static_cast<const Item *>(list->values[i]);
        if (item != nullptr && text_of(item->*type) == dotted) return static_cast<i32>(i);
    }
    return -1;
}

/// The identifier of a row of the registry; null for a row without one and when memory runs out.
inline Owned<OBJECT_IDENTIFIER> oid_of_row(i32 row) noexcept {
    return Owned<OBJECT_IDENTIFIER>(index_to_OBJECT_IDENTIFIER(row));
}

/// Appends a value to a list, which is made when there is none. False when memory runs out; the list and its
/// absence stay then.
[[nodiscard]] inline bool append_value(STACK *&list, void *value) noexcept {
    if (list != nullptr) return push_STACK_value(list, value) == 0;
    Owned<STACK> made(new_STACK());
    if (!made || push_STACK_value(made.get(), value) != 0) return false;
    list = made.release();
    return true;
}
/// Does so with a value that somebody owns, who gives it to the list on success.
template <typename T, typename Deleter>
[[nodiscard]] bool append_owned(STACK *&list, std::unique_ptr<T, Deleter> &value) noexcept {
    if (!value || !append_value(list, value.get())) return false;
    static_cast<void>(value.release());
    return true;
}

/// Replaces an owned member by a copy of `value`. 0; 1 for null and when memory runs out (the member stays
/// then).
template <auto Dup, auto Free, typename T>
u32 replace_by_copy(T *&member, const T *value) noexcept {
    T *copy = Dup(value);
    if (copy == nullptr) return 1;
    Free(member);
    member = copy;
    return 0;
}

}  // namespace tlx
