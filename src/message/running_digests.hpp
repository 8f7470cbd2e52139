// Digests of octets that come in pieces.
#pragma once

#include <tlxcrypto/digest.h>
#include <tlxcrypto/kcdsa.h>

#include "message/content_digests.hpp"
#include "verify/array.hpp"
#include "verify/object.hpp"

TLX_OWNS(DIGEST_UNIT);

namespace tlx {

class RunningDigests {
  public:
    enum class Start : u8 { done, too_many, bad_key, no_memory };

    RunningDigests() noexcept = default;
    ~RunningDigests();
    RunningDigests(const RunningDigests &) = delete;
    RunningDigests &operator=(const RunningDigests &) = delete;

    /// Begins a digest that is available, unless it has begun, with a key that of init_KCDSA_digest(). There
    /// are 8 at most without a key. The key has to outlive this.
    [[nodiscard]] Start start(u32 digest_id, const KCDSA *key = nullptr) noexcept;
    /// Begins with a key all digests that others have begun.
    [[nodiscard]] Start start_all(const RunningDigests &others, const KCDSA *key) noexcept;
    /// False when memory runs out.
    [[nodiscard]] bool update(Bytes octets) noexcept;
    /// Ends all of them. False when memory runs out.
    [[nodiscard]] bool finish() noexcept;

    /// A digest that has ended; empty for one that had not begun.
    [[nodiscard]] Bytes get(u32 digest_id, const KCDSA *key = nullptr) const noexcept;
    /// Stores those without a key.
    void give_to(ContentDigests &digests) const noexcept;

  private:
    struct Entry {
        Entry(u32 id, const KCDSA *of) noexcept : digest_id(id), key(of), unit(new_DIGEST_UNIT()) {}

        u32 digest_id;
        const KCDSA *key;
        Owned<DIGEST_UNIT> unit;
        u8 octets[TLX_DIGEST_MAX_LENGTH];
        u32 length = 0;
    };

    [[nodiscard]] const Entry *find(u32 digest_id, const KCDSA *key) const noexcept;

    Array<Entry *> entries_;
    u32 plain_ = 0;  ///< how many have no key
};

}  // namespace tlx
