// Content that comes in pieces: what its signers need of it.
#pragma once

#include "der/element_stream.hpp"
#include "message/running_digests.hpp"
#include "message/signer_check.hpp"

namespace tlx {

/// Says of octets that come in pieces whether they are one SET.
class SetWatch {
  public:
    void update(Bytes octets) noexcept;
    [[nodiscard]] bool is_set() const noexcept { return may_be_set_ && elements_.finished(); }

  private:
    ElementStream elements_;
    bool may_be_set_ = true;
};

/// Digests content, and keeps it as long as it is short.
class StreamedContent {
  public:
    /// @param pool certificates whose KCDSA keys may sign the content; may be null
    StreamedContent(std::size_t most_kept, const X509_CERTIFICATES *pool) noexcept
        : most_kept_(most_kept), pool_(pool) {}

    /// Begins a digest for each known algorithm of digestAlgorithms, the second of the members. 0; 0x5280001C
    /// for too many, 0x5280003C when memory runs out, a status of the members.
    [[nodiscard]] u32 start(Bytes members) noexcept;
    /// False when memory runs out.
    [[nodiscard]] bool update(Bytes octets) noexcept;
    /// Gives the checks the content, or its digests alone. False when memory runs out.
    [[nodiscard]] bool finish(SignerChecks &checks) noexcept;

    [[nodiscard]] bool is_kept() const noexcept { return is_kept_; }
    [[nodiscard]] Bytes kept() const noexcept { return kept_.bytes(); }

  private:
    [[nodiscard]] bool keep(Bytes octets) noexcept;
    [[nodiscard]] bool start_keyed() noexcept;

    RunningDigests digests_;
    RunningDigests keyed_;  ///< those of KCDSA, once the content is not kept
    std::size_t most_kept_;
    const X509_CERTIFICATES *pool_;
    Buffer kept_;
    bool is_kept_ = true;
    SetWatch set_;
};

}  // namespace tlx
