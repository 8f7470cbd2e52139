#include "crypto/ghash.hpp"

#include <algorithm>
#include <cstring>

namespace tlx {
namespace {

u64 load_word(const u8 *octets) noexcept {
    u64 word = 0;
    for (int i = 0; i < 8; ++i)
        word = word << 8 | octets[i];
    return word;
}

void store_word(u64 word, u8 *octets) noexcept {
    for (int i = 0; i < 8; ++i)
        octets[i] = static_cast<u8>(word >> (56 - 8 * i));
}

/// All ones for 1, zeros for 0.
u64 mask_of(u64 bit) noexcept {
    return 0 - bit;
}

}  // namespace

FieldElement load_element(const u8 *octets) noexcept {
    return {load_word(octets), load_word(octets + 8)};
}

void store_element(const FieldElement &element, u8 *octets) noexcept {
    store_word(element.high, octets);
    store_word(element.low, octets + 8);
}

// SP 800-38D, section 6.3: the polynomial is x^128 + x^7 + x^2 + x + 1, whose low terms are 0xE1 in front.
FieldElement multiply(FieldElement a, FieldElement b) noexcept {
    constexpr u64 kReduction = 0xE1ULL << 56;
    FieldElement product;
    for (int i = 0; i < 128; ++i) {
        const u64 take = mask_of(a.high >> 63);
        product.high ^= b.high & take;
        product.low ^= b.low & take;
        a = {a.high << 1 | a.low >> 63, a.low << 1};
        const u64 carry = mask_of(b.low & 1);
        b = {b.high >> 1 ^ (kReduction & carry), b.high << 63 | b.low >> 1};
    }
    return product;
}

FieldElement raise(FieldElement base, u64 exponent) noexcept {
    FieldElement power = {1ULL << 63, 0};
    for (; exponent != 0; exponent >>= 1) {
        if ((exponent & 1) != 0) power = multiply(power, base);
        base = multiply(base, base);
    }
    return power;
}

void Ghash::start(const FieldElement &key) noexcept {
    key_ = key;
    sum_ = {};
    length_ = 0;
}

void Ghash::add_block(const u8 *octets) noexcept {
    sum_ ^= load_element(octets);
    sum_ = multiply(sum_, key_);
}

void Ghash::add(Bytes octets) noexcept {
    while (!octets.empty()) {
        const std::size_t held = length_ % kGhashBlock;
        const std::size_t taken = std::min(octets.size(), kGhashBlock - held);
        std::memcpy(pending_ + held, octets.data(), taken);
        length_ += taken;
        octets = octets.subspan(taken);
        if (length_ % kGhashBlock == 0) add_block(pending_);
    }
}

FieldElement Ghash::finish() noexcept {
    const std::size_t held = length_ % kGhashBlock;
    if (held != 0) {
        std::memset(pending_ + held, 0, kGhashBlock - held);
        add_block(pending_);
    }
    return sum_;
}

}  // namespace tlx
