#include "crypto/bigint.hpp"

#include <algorithm>
#include <bit>
#include <cstring>

#include "crypto/hex.hpp"
#include "crypto/memory.hpp"

using namespace tlx;

namespace {

constexpr u32 kLimbOctets = 8;
// A new number has room for the 20 octets of a certificate's serial number.
constexpr u32 kOwnLimbs = 3;

u64 *own_limbs(BIGINT *number) noexcept {
    return reinterpret_cast<u64 *>(number + 1);
}

// A new zero with room for `limbs` limbs behind the record.
BIGINT *create(u32 limbs) noexcept {
    if (limbs > kMostLimbs) return nullptr;
    limbs = std::max(limbs, kOwnLimbs);
    auto *number = static_cast<BIGINT *>(TLX_ALLOCATE(sizeof(BIGINT) + std::size_t{limbs} * kLimbOctets));
    if (number == nullptr) return nullptr;
    *number = {own_limbs(number), 0, limbs};
    return number;
}

void wipe(BIGINT &number) noexcept {
    tlx_wipe(number.limbs, std::size_t{number.capacity} * kLimbOctets);
}

void release_limbs(BIGINT &number) noexcept {
    wipe(number);
    if (number.limbs != own_limbs(&number)) tlx_free(number.limbs);
}

u64 load_big_endian(const u8 *octets) noexcept {
    u64 value = 0;
    for (u32 i = 0; i < kLimbOctets; ++i) {
        value = value << 8U | octets[i];
    }
    return value;
}

void store_big_endian(u8 *octets, u64 value) noexcept {
    for (u32 i = kLimbOctets; i-- != 0; value >>= 8U) {
        octets[i] = static_cast<u8>(value);
    }
}

u32 octets_of(const BIGINT &number) noexcept {
    return (get_BIGINT_bits(&number) + 7) / 8;
}

}  // namespace

namespace tlx {

bool reserve(BIGINT &number, u32 limbs) noexcept {
    if (limbs <= number.capacity) return true;
    if (limbs > kMostLimbs) return false;
    auto *wider = static_cast<u64 *>(TLX_ALLOCATE(std::size_t{limbs} * kLimbOctets));
    if (wider == nullptr) return false;
    std::copy_n(number.limbs, number.used, wider);
    release_limbs(number);
    number.limbs = wider;
    number.capacity = limbs;
    return true;
}

void set_used(BIGINT &number, u32 used) noexcept {
    while (used != 0 && number.limbs[used - 1] == 0) {
        --used;
    }
    number.used = used;
}

}  // namespace tlx

extern "C" {

BIGINT *new_BIGINT(void) {
    return create(0);
}

void clean_BIGINT(BIGINT *number) {
    if (number == nullptr) return;
    wipe(*number);
    number->used = 0;
}

void free_BIGINT(BIGINT *number) {
    if (number == nullptr) return;
    release_limbs(*number);
    tlx_free(number);
}

BIGINT *dup_BIGINT(const BIGINT *number) {
    if (number == nullptr) return nullptr;
    BIGINT *copy = create(number->used);
    if (copy == nullptr) return nullptr;
    std::copy_n(number->limbs, number->used, copy->limbs);
    copy->used = number->used;
    return copy;
}

uint32_t copy_BIGINT(BIGINT *to, const BIGINT *from) {
    if (to == nullptr || from == nullptr || !reserve(*to, from->used)) return 1;
    if (to != from) std::copy_n(from->limbs, from->used, to->limbs);
    to->used = from->used;
    return 0;
}

BIGINT *binary_to_BIGINT(const uint8_t *octets, uint32_t len) {
    if (octets == nullptr && len != 0) return nullptr;
    for (; len != 0 && *octets == 0; --len) {
        ++octets;
    }
    const u32 whole = len / kLimbOctets;
    const u32 rest = len % kLimbOctets;
    BIGINT *number = create(whole + (rest != 0 ? 1 : 0));
    if (number == nullptr) return nullptr;
    for (u32 i = 0; i < whole; ++i) {
        len -= kLimbOctets;
        number->limbs[i] = load_big_endian(octets + len);
    }
    number->used = whole;
    if (rest != 0) {
        u64 top = 0;
        for (u32 i = 0; i < rest; ++i) {
            top = top << 8U | octets[i];
        }
        number->limbs[number->used++] = top;
    }
    return number;
}

uint32_t BIGINT_to_binary(const BIGINT *number, uint8_t *octets, uint32_t len) {
    if (number == nullptr || octets == nullptr || octets_of(*number) > len) return 1;
    u32 index = 0;
    for (; len >= kLimbOctets; ++index) {
        len -= kLimbOctets;
        store_big_endian(octets + len, limb(*number, index));
    }
    u64 top = limb(*number, index);
    for (; len != 0; top >>= 8U) {
        octets[--len] = static_cast<u8>(top);
    }
    return 0;
}

BIGINT *hex_to_BIGINT(const char *hex) {
    if (hex == nullptr || *hex == '\0') return nullptr;
    const std::size_t digits = std::strlen(hex);
    if (digits > std::size_t{kMostLimbs} * 16) return nullptr;
    BIGINT *number = create(static_cast<u32>((digits + 15) / 16));
    if (number == nullptr) return nullptr;
    std::fill_n(number->limbs, number->capacity, 0);
    for (std::size_t i = 0; i < digits; ++i) {
        const i32 value = hex_value(hex[digits - 1 - i]);
        if (value < 0) {
            free_BIGINT(number);
            return nullptr;
        }
        number->limbs[i / 16] |= static_cast<u64>(value) << (i % 16 * 4);
    }
    set_used(*number, number->capacity);
    return number;
}

char *BIGINT_to_hex(const BIGINT *number) {
    if (number == nullptr) return nullptr;
    const std::size_t octets = std::max(octets_of(*number), 1U);
    auto *text = static_cast<char *>(TLX_ALLOCATE(2 * octets + 1));
    if (text == nullptr) return nullptr;
    for (std::size_t i = 0; i < 2 * octets; ++i) {
        const u64 digits = limb(*number, static_cast<u32>(i / 16)) >> (i % 16 * 4);
        text[2 * octets - 1 - i] = kHexDigits[digits & 15U];
    }
    text[2 * octets] = '\0';
    return text;
}

uint32_t set_BIGINT_word(BIGINT *number, uint32_t word) {
    if (number == nullptr) return 1;
    number->limbs[0] = word;
    set_used(*number, 1);
    return 0;
}

uint32_t get_BIGINT_word(const BIGINT *number) {
    if (number == nullptr || get_BIGINT_bits(number) > 32) return UINT32_MAX;
    return static_cast<u32>(limb(*number, 0));
}

uint32_t get_BIGINT_bits(const BIGINT *number) {
    if (number == nullptr || number->used == 0) return 0;
    const u64 top = number->limbs[number->used - 1];
    return number->used * kLimbBits - static_cast<u32>(std::countl_zero(top));
}

uint32_t get_BIGINT_der_length(const BIGINT *number) {
    return number == nullptr ? 0 : get_BIGINT_bits(number) / 8 + 1;
}

int32_t is_BIGINT_zero(const BIGINT *number) {
    return number != nullptr && number->used == 0 ? 1 : 0;
}

int32_t cmp_BIGINT(const BIGINT *a, const BIGINT *b) {
    if (a == nullptr || b == nullptr) return (a != nullptr ? 1 : 0) - (b != nullptr ? 1 : 0);
    if (a->used != b->used) return a->used < b->used ? -1 : 1;
    for (u32 i = a->used; i-- != 0;) {
        if (a->limbs[i] != b->limbs[i]) return a->limbs[i] < b->limbs[i] ? -1 : 1;
    }
    return 0;
}

}  // extern "C"
