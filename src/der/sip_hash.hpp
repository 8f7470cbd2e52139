// SipHash-2-4 (Aumasson and Bernstein, "SipHash: a fast short-input PRF", 2012): a hash for tables whose
// contents a stranger chooses. Without the key, nobody can choose values that collide.
#pragma once

#include <bit>

#include "der/types.hpp"

namespace tlx {

class SipHash {
  public:
    struct Key {
        u64 words[2];
    };

    explicit SipHash(const Key &key) noexcept
        : v_{key.words[0] ^ 0x736F6D6570736575, key.words[1] ^ 0x646F72616E646F6D,
             key.words[0] ^ 0x6C7967656E657261, key.words[1] ^ 0x7465646279746573} {}

    void add(u8 octet) noexcept {
        word_ |= u64{octet} << (8 * (size_ % 8));
        if (++size_ % 8 != 0) return;
        absorb(word_);
        word_ = 0;
    }
    void add(Bytes octets) noexcept {
        const unsigned shift = 8 * (size_ % 8);
        while (octets.size() >= 8) {
            const u64 word = word_of(octets);
            absorb(word_ | word << shift);
            word_ = shift == 0 ? 0 : word >> (64 - shift);
            size_ += 8;
            octets = octets.subspan(8);
        }
        for (const u8 octet : octets) {
            add(octet);
        }
    }
    /// The hash of the octets so far; more may follow.
    [[nodiscard]] u64 value() const noexcept {
        SipHash end = *this;
        end.absorb(word_ | u64{size_} << 56);
        end.v_[2] ^= 0xFF;
        for (int i = 0; i < 4; ++i) {
            end.mix();
        }
        return end.v_[0] ^ end.v_[1] ^ end.v_[2] ^ end.v_[3];
    }

  private:
    /// The first eight octets, which compilers load at once.
    static u64 word_of(Bytes octets) noexcept {
        u64 word = 0;
        for (unsigned i = 0; i < 8; ++i) {
            word |= u64{octets[i]} << (8 * i);
        }
        return word;
    }
    void absorb(u64 word) noexcept {
        v_[3] ^= word;
        mix();
        mix();
        v_[0] ^= word;
    }
    void mix() noexcept {
        v_[0] += v_[1];
        v_[2] += v_[3];
        v_[1] = std::rotl(v_[1], 13) ^ v_[0];
        v_[3] = std::rotl(v_[3], 16) ^ v_[2];
        v_[0] = std::rotl(v_[0], 32);
        v_[2] += v_[1];
        v_[0] += v_[3];
        v_[1] = std::rotl(v_[1], 17) ^ v_[2];
        v_[3] = std::rotl(v_[3], 21) ^ v_[0];
        v_[2] = std::rotl(v_[2], 32);
    }

    u64 v_[4];
    u64 word_ = 0;
    u64 size_ = 0;
};

}  // namespace tlx
