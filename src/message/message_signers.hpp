// The signers of a message that is being written, by the records of CMS. Those that PKCS #7 has are the same
// octets there.
#pragma once

#include <tlxpki/message_stream.h>

#include "message/cms_records.hpp"
#include "message/running_digests.hpp"

namespace tlx {

class MessageSigners {
  public:
    /// Makes the members of the message, with signers that have no signature yet. A status of
    /// update_SIGNED_MESSAGE_WRITER(). What the settings point to has to outlive this.
    [[nodiscard]] u32 begin(const SIGNED_MESSAGE_WRITER_SETTINGS &settings) noexcept;
    /// False when memory runs out.
    [[nodiscard]] bool update(Bytes octets) noexcept { return digests_.update(octets); }
    /// Gives every signer attributes and a signature as long as those that sign() makes.
    [[nodiscard]] u32 reserve() noexcept;
    /// Signs. A status of final_SIGNED_MESSAGE_WRITER().
    [[nodiscard]] u32 sign() noexcept;
    /// Writes the message without its content, once every signer has a signature.
    void encode(Encoder &out) const noexcept { Codec<CMS_CONTENT_INFO>::encode(out, info_.get()); }

  private:
    [[nodiscard]] u32 begin_body() noexcept;
    [[nodiscard]] u32 carry_certificates() noexcept;
    [[nodiscard]] u32 add(const MESSAGE_SIGNER &wanted) noexcept;
    [[nodiscard]] bool is_of_pkcs7() const noexcept;
    /// False when memory runs out and for attributes that cannot be encoded.
    [[nodiscard]] bool put_attributes(const MESSAGE_SIGNER &wanted, CMS_SIGNER_INFO &signer,
                                      Bytes digest) const noexcept;
    [[nodiscard]] u32 sign_one(const MESSAGE_SIGNER &wanted, CMS_SIGNER_INFO &signer, Bytes digest) noexcept;
    /// Calls act(wanted, signer) for each signer, up to the first status that is not 0.
    template <typename Act>
    [[nodiscard]] u32 for_each(Act act) noexcept;

    const SIGNED_MESSAGE_WRITER_SETTINGS *settings_ = nullptr;
    Owned<CMS_CONTENT_INFO> info_;
    RunningDigests digests_;
};

}  // namespace tlx
