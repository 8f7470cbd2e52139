// Objects over the tracking allocator.
#pragma once

#include <memory>
#include <new>

#include "der/memory.hpp"
#include "der/owned.hpp"

namespace tlx {

template <typename T>
struct Destroy {
    void operator()(T *object) const noexcept {
        if (object == nullptr) return;
        object->~T();
        tlx_free(object);
    }
};

template <typename T>
using OwnedObject = std::unique_ptr<T, Destroy<T>>;

/// Null when memory runs out.
template <typename T, typename... Arguments>
[[nodiscard]] OwnedObject<T> make_object(const Arguments &...arguments) noexcept {
    void *memory = TLX_ALLOCATE(sizeof(T));
    return OwnedObject<T>(memory == nullptr ? nullptr : new (memory) T(arguments...));
}

/// A copy of octets that an owner frees; empty when memory runs out.
[[nodiscard]] inline Bytes copy_to(OwnedOctets<u8> &owner, Bytes octets) noexcept {
    owner.reset(copy_terminated(octets));
    return owner ? Bytes(owner.get(), octets.size()) : Bytes();
}

}  // namespace tlx
