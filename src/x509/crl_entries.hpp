// The entries of a revocation list: octets, of which records are made only when somebody asks.
#pragma once

#include <tlxpki/x509_crl.h>

#include <atomic>

#include "der/element.hpp"

namespace tlx {

class CrlIndex;

/// An entry as views of its octets.
struct CrlEntry {
    Bytes serial;             ///< the contents of the INTEGER
    Bytes issuer_names;       ///< the value of certificateIssuer; empty without
    bool is_unknown = false;  ///< it has a critical extension that this library does not know
};

/// False for an element that is no entry.
[[nodiscard]] bool read_crl_entry(const Element &element, CrlEntry &entry) noexcept;

/// A number as equal ones are written alike: without leading zeros.
[[nodiscard]] Bytes magnitude_of(Bytes octets) noexcept;

}  // namespace tlx

/// It owns the whole list as received, or, once that is forgotten, the entries alone.
struct TLX_CRL_ENTRIES {
    TLX_CRL_ENTRIES() noexcept = default;
    ~TLX_CRL_ENTRIES();
    TLX_CRL_ENTRIES(const TLX_CRL_ENTRIES &) = delete;
    TLX_CRL_ENTRIES &operator=(const TLX_CRL_ENTRIES &) = delete;

    static TLX_CRL_ENTRIES *make() noexcept;
    static TLX_CRL_ENTRIES *dup(const TLX_CRL_ENTRIES *entries) noexcept;
    static void free(TLX_CRL_ENTRIES *entries) noexcept;

    /// Takes the entries of a list, which stay where they are until keep(). False for a broken one.
    [[nodiscard]] bool read(tlx::Bytes contents) noexcept;
    /// Copies the list that they lie in. False when memory runs out.
    [[nodiscard]] bool keep(const tlx::Element &crl) noexcept;
    /// Appends the octets of an entry. False when they are none and when memory runs out.
    [[nodiscard]] bool append(tlx::Bytes octets) noexcept;
    /// The list is another one now.
    void forget_received() noexcept;

    /// The whole list; empty once it is forgotten.
    [[nodiscard]] tlx::Bytes received() const noexcept { return {octets_, received_}; }
    /// The entries, one after the other.
    [[nodiscard]] tlx::Bytes octets() const noexcept { return entries_; }
    [[nodiscard]] tlx::u32 count() const noexcept { return count_; }
    /// Whether there is a list of entries, which may be empty.
    [[nodiscard]] bool present() const noexcept { return present_; }
    [[nodiscard]] bool names_issuers() const noexcept { return names_issuers_; }
    [[nodiscard]] bool has_unknown() const noexcept { return has_unknown_; }

    /// Gives the index, which the first call makes, on any thread. `issuer` is that of the list. A status of
    /// find_X509_CRL_revoked.
    [[nodiscard]] tlx::u32 index(const X509_NAME *issuer, const tlx::CrlIndex *&index) const noexcept;

  private:
    void count_in(const tlx::CrlEntry &entry) noexcept;
    [[nodiscard]] bool reserve(std::size_t more) noexcept;
    void drop_index() noexcept;

    tlx::u8 *octets_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
    std::size_t received_ = 0;  ///< how many octets are the list as received: all of them, or none
    tlx::Bytes entries_;
    tlx::u32 count_ = 0;
    bool present_ = false;
    bool names_issuers_ = false;
    bool has_unknown_ = false;
    mutable std::atomic<const tlx::CrlIndex *> index_ = nullptr;
};
