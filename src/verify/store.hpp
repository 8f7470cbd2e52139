// What verification starts from: anchors, intermediates, revocation lists and OCSP responses, which are made
// once and then serve all threads.
#pragma once

#include "verify/name_match.hpp"
#include "verify/status_store.hpp"

namespace tlx {

/// A certificate, or an anchor that is a name and a key alone.
struct StoreEntry {
    OwnedOctets<u8> octets;
    CertificateView view;  ///< of an anchor without certificate only the subject and the key
    PublicKey key;
    bool is_anchor = false;
    bool has_certificate = true;

    u64 name_hash = 0;    ///< of the subject, in a store
    u64 issuer_hash = 0;  ///< of a certificate's issuer
    StoreEntry *next_of_name = nullptr;
    StoreEntry *next_of_key = nullptr;
    StoreEntry *next_of_octets = nullptr;
};

/// Reads a certificate, whose octets outlive the entry, and makes its key: kNone, a rule of
/// read_certificate() or make_key(), or kNoMemory.
[[nodiscard]] Rule read_entry(Bytes octets, u32 accepted, StoreEntry &entry) noexcept;

/// Nothing changes a store while a verification uses it.
class Store {
  public:
    Store() noexcept = default;
    ~Store();
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    /// Takes the key of the hashes. False when there are no random octets.
    [[nodiscard]] bool start() noexcept;

    /// Copies and adds a certificate: a rule of read_entry(). One that cannot be used is not added. Equal
    /// certificates are added once.
    [[nodiscard]] Rule add(Bytes certificate, bool is_anchor, u32 accepted) noexcept;
    /// Adds an anchor that is a Name and a SubjectPublicKeyInfo, in DER.
    [[nodiscard]] Rule add_anchor(Bytes name, Bytes key_info) noexcept;

    [[nodiscard]] u32 size() const noexcept { return entries_.size(); }
    [[nodiscard]] u64 hash_of_name(Bytes name) const noexcept { return tlx::hash_of_name(hash_key_, name); }
    /// The entries whose subject has this hash. Their names may differ.
    [[nodiscard]] const StoreEntry *find_name(u64 name_hash) const noexcept {
        return by_name_.find(name_hash);
    }
    /// The entries with a subject of this hash and a key identifier.
    [[nodiscard]] const StoreEntry *find_key(u64 name_hash, Bytes key_identifier) const noexcept;

    [[nodiscard]] StatusStore &status() noexcept { return status_; }
    [[nodiscard]] const StatusStore &status() const noexcept { return status_; }

  private:
    [[nodiscard]] Rule keep(StoreEntry *entry) noexcept;
    [[nodiscard]] bool has(const StoreEntry &entry, u64 octets_hash) const noexcept;
    [[nodiscard]] u64 hash_of_key(u64 name_hash, Bytes key_identifier) const noexcept;

    SipHash::Key hash_key_ = {};
    StatusStore status_;
    Array<StoreEntry *> entries_;
    ChainIndex<StoreEntry> by_name_{&StoreEntry::next_of_name};
    ChainIndex<StoreEntry> by_key_{&StoreEntry::next_of_key};
    ChainIndex<StoreEntry> by_octets_{&StoreEntry::next_of_octets};
};

}  // namespace tlx
