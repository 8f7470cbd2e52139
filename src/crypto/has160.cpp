#include "crypto/has160.hpp"

#include <algorithm>
#include <bit>

#include "crypto/memory.hpp"

namespace tlx {
namespace {

constexpr u32 kInitial[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};

// Rotation of the first word, by step within a round; of the second word and constant, by round.
constexpr int kRotateA[20] = {5, 11, 7, 15, 6, 13, 8, 14, 7, 12, 9, 11, 8, 15, 6, 12, 9, 14, 5, 13};
constexpr int kRotateB[4] = {10, 17, 25, 30};
constexpr u32 kConstant[4] = {0x00000000, 0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC};

// The message words in the order in which each round takes them. Words 16 to 19 are the sums of the round's
// first, second, third and fourth group of four.
constexpr u8 kOrder[4][20] = {
    {18, 0, 1, 2, 3, 19, 4, 5, 6, 7, 16, 8, 9, 10, 11, 17, 12, 13, 14, 15},
    {18, 3, 6, 9, 12, 19, 15, 2, 5, 8, 16, 11, 14, 1, 4, 17, 7, 10, 13, 0},
    {18, 12, 5, 14, 7, 19, 0, 9, 2, 11, 16, 4, 13, 6, 15, 17, 8, 1, 10, 3},
    {18, 7, 2, 13, 8, 19, 3, 14, 9, 4, 16, 15, 10, 5, 0, 17, 11, 6, 1, 12},
};

u32 load_little_endian(const u8 *octets) noexcept {
    return u32{octets[0]} | u32{octets[1]} << 8U | u32{octets[2]} << 16U | u32{octets[3]} << 24U;
}

void store_little_endian(u8 *octets, u32 value) noexcept {
    for (std::size_t i = 0; i < 4; ++i) {
        octets[i] = static_cast<u8>(value >> (8 * i));
    }
}

template <u32 round>
u32 mix(u32 b, u32 c, u32 d) noexcept {
    if constexpr (round == 0) return (b & c) | (~b & d);
    if constexpr (round == 2) return c ^ (b | ~d);
    return b ^ c ^ d;
}

template <u32 round>
void run(u32 (&state)[5], u32 (&words)[20]) noexcept {
    constexpr const u8(&order)[20] = kOrder[round];
    for (std::size_t group = 0; group < 4; ++group) {
        const u8 *of_group = order + 5 * group + 1;
        words[16 + group] = words[of_group[0]] ^ words[of_group[1]] ^ words[of_group[2]] ^ words[of_group[3]];
    }
    auto [a, b, c, d, e] = state;
#pragma GCC unroll 20
    for (std::size_t step = 0; step < 20; ++step) {
        const u32 next =
            std::rotl(a, kRotateA[step]) + mix<round>(b, c, d) + e + words[order[step]] + kConstant[round];
        e = d;
        d = c;
        c = std::rotl(b, kRotateB[round]);
        b = a;
        a = next;
    }
    state[0] = a;
    state[1] = b;
    state[2] = c;
    state[3] = d;
    state[4] = e;
}

// Wipes the stack where compress, called from the same function, had the message. If compress wiped its own
// array, other copies would remain, and the compiler could not hold words in registers.
[[gnu::noinline]] void wipe_stack() noexcept {
    u8 octets[256];
    tlx_wipe(octets, sizeof octets);
}

}  // namespace

void Has160::start() noexcept {
    std::copy_n(kInitial, 5, chain_);
    length_ = 0;
}

[[gnu::noinline]] void Has160::compress(const u8 *block) noexcept {
    u32 words[20];
    for (std::size_t i = 0; i < 16; ++i) {
        words[i] = load_little_endian(block + 4 * i);
    }
    u32 state[5];
    std::copy_n(chain_, 5, state);
    run<0>(state, words);
    run<1>(state, words);
    run<2>(state, words);
    run<3>(state, words);
    for (std::size_t i = 0; i < 5; ++i) {
        chain_[i] += state[i];
    }
}

void Has160::add(Bytes data) noexcept {
    const std::size_t held = length_ % kBlockLength;
    length_ += data.size();
    if (held + data.size() < kBlockLength) {
        std::copy_n(data.data(), data.size(), pending_ + held);
        return;
    }
    if (held != 0) {
        const std::size_t taken = kBlockLength - held;
        std::copy_n(data.data(), taken, pending_ + held);
        data = data.subspan(taken);
        compress(pending_);
    }
    for (; data.size() >= kBlockLength; data = data.subspan(kBlockLength)) {
        compress(data.data());
    }
    wipe_stack();
    std::copy_n(data.data(), data.size(), pending_);
}

void Has160::finish(u8 *digest) noexcept {
    constexpr std::size_t kLengthOffset = kBlockLength - 8;
    const u64 bits = length_ * 8;
    std::size_t held = length_ % kBlockLength;
    pending_[held++] = 0x80;
    if (held > kLengthOffset) {
        std::fill(pending_ + held, pending_ + kBlockLength, u8{0});
        compress(pending_);
        held = 0;
    }
    std::fill(pending_ + held, pending_ + kLengthOffset, u8{0});
    store_little_endian(pending_ + kLengthOffset, static_cast<u32>(bits));
    store_little_endian(pending_ + kLengthOffset + 4, static_cast<u32>(bits >> 32U));
    compress(pending_);
    wipe_stack();
    for (std::size_t i = 0; i < 5; ++i) {
        store_little_endian(digest + 4 * i, chain_[i]);
    }
}

}  // namespace tlx
