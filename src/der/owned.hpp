// One owner for every record: Owned<T> frees its T with the matching free_ function.
#pragma once

#include <tlxcrypto/bigint.h>
#include <tlxcrypto/memory.h>
#include <tlxpki/asn1.h>
#include <tlxpki/string.h>

#include <memory>
#include <type_traits>
#include <utility>

namespace tlx {

template <auto Free>
struct FreeWith {
    template <typename T>
    void operator()(T *object) const noexcept {
        Free(object);
    }
};

/// The free function of each record type. A module that brings a type adds it with TLX_OWNS.
template <typename T>
struct FreeOf;

#define TLX_OWNS(type)                              \
    template <>                                     \
    struct tlx::FreeOf<type> {                      \
        using deleter = tlx::FreeWith<free_##type>; \
    }

template <typename T>
using Owned = std::unique_ptr<T, typename FreeOf<T>::deleter>;

/// Plain octets from the tracking allocator.
template <typename T>
using OwnedOctets = std::unique_ptr<T, FreeWith<tlx_free>>;

/// Hands a decoded record out: as a new one, or in place of what the caller's holds, which is freed.
template <typename T, typename Deleter>
void deliver(std::unique_ptr<T, Deleter> made, T **out) noexcept {
    if (*out == nullptr) {
        *out = made.release();
    } else {
        std::swap(**out, *made);
    }
}

/// Works on the caller's record at *out, or on a new one, which `commit` hands over and a decoder that fails
/// frees.
template <typename T>
class OutRecord {
  public:
    /// `make` is the type's new_ function.
    template <typename Make>
    OutRecord(T **out, Make make) noexcept : out_(out) {
        if (*out == nullptr) made_.reset(make());
    }
    /// Null when memory for a new record ran out.
    T *get() const noexcept { return made_ ? made_.get() : *out_; }
    T *operator->() const noexcept { return get(); }
    explicit operator bool() const noexcept { return get() != nullptr; }
    void commit() noexcept {
        if (made_) *out_ = made_.release();
    }

  private:
    T **out_;
    Owned<T> made_;
};

}  // namespace tlx

TLX_OWNS(ASN1_UNIT);
TLX_OWNS(ASN1_STRING);
TLX_OWNS(BIGINT);
TLX_OWNS(STACK);
