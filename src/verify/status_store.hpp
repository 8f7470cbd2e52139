// Revocation lists and OCSP responses, which are read once and then serve all threads.
#pragma once

#include <atomic>

#include "der/buffer.hpp"
#include "verify/chain_index.hpp"
#include "verify/object.hpp"
#include "verify/ocsp_view.hpp"
#include "verify/public_key.hpp"
#include "verify/revoked_entries.hpp"

namespace tlx {

struct StoreEntry;

/// A key that was found to have signed something. Several threads may ask and tell at once; the first one
/// told is kept.
class KnownSigner {
  public:
    KnownSigner() noexcept = default;
    ~KnownSigner();
    KnownSigner(const KnownSigner &) = delete;
    KnownSigner &operator=(const KnownSigner &) = delete;

    /// @param key_info a SubjectPublicKeyInfo
    [[nodiscard]] bool is(Bytes key_info) const noexcept;
    void remember(Bytes key_info) const noexcept;

  private:
    mutable std::atomic<const Buffer *> key_info_ = nullptr;
};

struct ListEntry {
    OwnedOctets<u8> octets;
    KnownSigner signer;  ///< so that a long list is digested once
    CrlView view;
    RevokedEntries revoked;
    ListEntry *next_of_issuer = nullptr;
};

struct ResponseEntry;

struct AnswerEntry {
    AnswerView view;
    const ResponseEntry *response;
    AnswerEntry *next_of_serial;
};

struct ResponseEntry {
    ~ResponseEntry();

    OwnedOctets<u8> octets;
    ResponseView view;
    OwnedOctets<AnswerEntry> answers;
    Array<StoreEntry *> certificates;  ///< those that came with it and can be read
};

class StatusStore {
  public:
    StatusStore() noexcept = default;
    ~StatusStore();
    StatusStore(const StatusStore &) = delete;
    StatusStore &operator=(const StatusStore &) = delete;

    /// Takes the key of the hashes.
    void start(const SipHash::Key &key) noexcept { key_ = key; }

    /// Copies and adds a list: kNone, a rule of read_crl() or of RevokedEntries, or kNoMemory.
    [[nodiscard]] Rule add_list(Bytes octets) noexcept;
    /// Copies and adds a response with its certificates: kNone, a rule of read_response() or kNoMemory.
    [[nodiscard]] Rule add_response(Bytes octets) noexcept;

    /// How many lists and responses there are.
    [[nodiscard]] u32 size() const noexcept { return lists_.size() + responses_.size(); }
    /// The lists whose issuer has this hash. Their names may differ.
    [[nodiscard]] const ListEntry *find_list(u64 name_hash) const noexcept {
        return by_issuer_.find(name_hash);
    }
    /// The answers for serial numbers with the hash of this one.
    [[nodiscard]] const AnswerEntry *find_answer(Bytes serial) const noexcept {
        return by_serial_.find(hash_of_serial(serial));
    }

  private:
    [[nodiscard]] u64 hash_of_serial(Bytes serial) const noexcept;
    [[nodiscard]] Rule keep_answers(ResponseEntry &response) noexcept;

    SipHash::Key key_ = {};
    Array<ListEntry *> lists_;
    Array<ResponseEntry *> responses_;
    ChainIndex<ListEntry> by_issuer_{&ListEntry::next_of_issuer};
    ChainIndex<AnswerEntry> by_serial_{&AnswerEntry::next_of_serial};
};

}  // namespace tlx
