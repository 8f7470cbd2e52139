// An index of a pool of certificates by one property.
#pragma once

#include <tlxpki/x509.h>

#include <bit>

#include "der/encoder.hpp"
#include "der/owned.hpp"
#include "der/sip_hash.hpp"

namespace tlx {

/// The place of a certificate in a pool: its index plus 1, so that 0 means none.
using Place = u32;
constexpr Place kNoPlace = 0;

inline const X509_CERT *certificate_at(const X509_CERTIFICATES *pool, Place place) noexcept {
    return static_cast<const X509_CERT *>(get_STACK_value(pool, place - 1));
}

/// `Property` has
///     using Value = ...;
///     static bool get(const X509_CERT *cert, Value &value);    // false when the certificate has none
///     static bool equal(Value a, Value b);
///     static void encode(Encoder &out, Value value);           // equal values encode to the same octets
template <typename Property>
class PoolIndex {
  public:
    using Value = typename Property::Value;

    /// Indexes a pool, once. False when memory runs out.
    [[nodiscard]] bool build(const X509_CERTIFICATES *pool, const SipHash::Key &key) noexcept {
        if (slots_) return true;
        pool_ = pool;
        const u32 count = get_STACK_count(pool);
        const std::size_t size = std::bit_ceil(std::size_t{count} * 2);
        slots_.reset(static_cast<Slot *>(TLX_ALLOCATE_ZEROED(size, sizeof(Slot))));
        mask_ = size - 1;
        for (Place place = 1; slots_ && place <= count; ++place) {
            Value value{};
            if (!Property::get(certificate_at(pool, place), value)) continue;
            Encoder encoder;
            Property::encode(encoder, value);
            if (encoder.out_of_memory()) slots_.reset();
            if (!encoder.ok()) continue;  // equal to nothing
            SipHash hash(key);
            hash.add(encoder.bytes());
            insert({hash.value(), place}, value);
        }
        return slots_ != nullptr;
    }

    /// The first certificate with this value, whose hash is `hash`.
    [[nodiscard]] Place find(u64 hash, Value value) const noexcept { return slot(hash, value).place; }

  private:
    struct Slot {
        u64 hash;
        Place place;  ///< kNoPlace in an empty slot
    };

    /// The slot of a value, or the empty slot where it belongs.
    [[nodiscard]] Slot &slot(u64 hash, Value value) const noexcept {
        for (std::size_t i = hash & mask_;; i = (i + 1) & mask_) {
            Slot &each = slots_.get()[i];
            Value own{};
            if (each.place == kNoPlace) return each;
            if (each.hash != hash) continue;
            if (Property::get(certificate_at(pool_, each.place), own) && Property::equal(own, value)) {
                return each;
            }
        }
    }
    /// Keeps the first of several certificates with the same value.
    void insert(const Slot &made, Value value) noexcept {
        Slot &found = slot(made.hash, value);
        if (found.place == kNoPlace) found = made;
    }

    const X509_CERTIFICATES *pool_ = nullptr;
    OwnedOctets<Slot> slots_;
    std::size_t mask_ = 0;
};

}  // namespace tlx
