// Who issued a certificate: the first of a pool that fits its authority key identifier.
#pragma once

#include "trust/extension.hpp"

namespace tlx {

/// Looks issuers up in a pool. A small pool is scanned; a large one is indexed once, at the first search, so
/// that each search after it costs the same whatever the size of the pool.
class IssuerSearch {
  public:
    explicit IssuerSearch(const X509_CERTIFICATES *pool) noexcept : pool_(pool) {}

    /// The first certificate, in pool order, that fits by subject key identifier, serial number or subject
    /// name; null when there is none.
    [[nodiscard]] const X509_CERT *find(const AUTHORITY_KEYID &wanted) noexcept;
    /// True when memory ran out during a search.
    [[nodiscard]] bool failed() const noexcept { return failed_; }

  private:
    /// One way in which a certificate can be found: the place of the first that has this hash.
    struct Slot {
        u64 hash;
        u32 place;  ///< one more than the index in the pool; 0 in an empty slot
    };

    [[nodiscard]] const X509_CERT *at(u32 place) const noexcept;
    [[nodiscard]] u32 scan(const AUTHORITY_KEYID &wanted) const noexcept;
    [[nodiscard]] u32 look_up(const AUTHORITY_KEYID &wanted) const noexcept;
    [[nodiscard]] bool build_index() noexcept;
    template <typename Same>
    void insert(u64 hash, u32 place, Same same) noexcept;
    template <typename Fits>
    [[nodiscard]] u32 first_with(u64 hash, Fits fits) const noexcept;

    const X509_CERTIFICATES *pool_;
    OwnedOctets<Slot> slots_;
    std::size_t mask_ = 0;
    bool failed_ = false;
};

}  // namespace tlx
