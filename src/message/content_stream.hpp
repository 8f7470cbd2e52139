// Content that comes in pieces: encrypting and decrypting it, and holding it back.
#pragma once

#include <tlxcrypto/aead.h>
#include <tlxcrypto/cipher.h>
#include <tlxpki/message_stream.h>

#include <algorithm>

#include "message/content_algorithm.hpp"
#include "message/envelope.hpp"

TLX_OWNS(AEAD_UNIT);

namespace tlx {

/// A cipher over octets that come in pieces of any length.
class CipherStream {
  public:
    static constexpr std::size_t kPiece = 65536;

    ~CipherStream();
    CipherStream() noexcept = default;
    CipherStream(const CipherStream &) = delete;
    CipherStream &operator=(const CipherStream &) = delete;

    /// Direction 1 encrypts, 0 decrypts; the key has key_length() octets. False when memory runs out.
    [[nodiscard]] bool start(const ContentAlgorithm &algorithm, const u8 *key, u32 direction) noexcept;

    /// Gives what is ready to give(octets), up to its first status that is not 0, which is the result, or
    /// `failure` when the cipher fails: memory runs out, or the content is too long for it.
    template <typename Give>
    [[nodiscard]] u32 update(Bytes octets, u32 failure, Give give) noexcept {
        while (!octets.empty()) {
            const Bytes piece = octets.first(std::min(octets.size(), kPiece));
            octets = octets.subspan(piece.size());
            Bytes out;
            if (!transform(piece, out)) return failure;
            if (const u32 status = give(out); status != 0) return status;
        }
        return 0;
    }
    /// The last block; false for wrong padding. A cipher that authenticates has none.
    [[nodiscard]] bool finish_blocks(Bytes &last) noexcept;
    /// Of a cipher that authenticates: adds what is authenticated besides the content, before or after it.
    [[nodiscard]] bool add_data(Bytes octets) noexcept;
    /// Ends an encryption; false when memory runs out.
    [[nodiscard]] bool make_tag(u8 (&tag)[TLX_AEAD_TAG_LENGTH]) noexcept {
        return finish_AEAD_encryption(aead_.get(), tag) == 0;
    }
    /// Ends a decryption; false for a wrong tag.
    [[nodiscard]] bool check_tag(Bytes tag) noexcept;

    [[nodiscard]] bool authenticates() const noexcept { return aead_ != nullptr; }

  private:
    [[nodiscard]] bool transform(Bytes piece, Bytes &out) noexcept;

    Owned<BLOCK_CIPHER_UNIT> block_;
    Owned<AEAD_UNIT> aead_;
    OwnedOctets<u8> room_;
};

/// Content that is held back in blocks, so that no octet moves.
class HeldContent {
  public:
    ~HeldContent();
    HeldContent() noexcept = default;
    HeldContent(const HeldContent &) = delete;
    HeldContent &operator=(const HeldContent &) = delete;

    /// Takes octets, TLX_MESSAGE_HELD_BACK_LIMIT in total. False when memory runs out.
    [[nodiscard]] bool keep(Bytes octets) noexcept;
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    /// Gives all octets to give(octets), up to its first status that is not 0, which is the result.
    template <typename Give>
    [[nodiscard]] u32 release(Give give) const noexcept {
        for (std::size_t at = 0; at < size_; at += kBlock) {
            const std::size_t size = std::min(kBlock, size_ - at);
            if (const u32 status = give(Bytes(blocks_[at / kBlock].get(), size)); status != 0) return status;
        }
        return 0;
    }

  private:
    static constexpr std::size_t kBlock = 65536;

    OwnedOctets<u8> blocks_[TLX_MESSAGE_HELD_BACK_LIMIT / kBlock];
    std::size_t size_ = 0;
};

}  // namespace tlx
