#include "crypto/kcdsa.hpp"

#include <new>

#include "crypto/memory.hpp"

using namespace tlx;

namespace {

u32 set_one_number(KCDSA *unit, TLX_KCDSA_NUMBER which, const BIGINT *number) noexcept {
    if (unit == nullptr || number == nullptr) return 1;
    KcdsaNumbers::Pointers numbers;
    unit->numbers.get_all(numbers);
    numbers[which] = number;
    return set_kcdsa_numbers(*unit, numbers) ? 0 : 1;
}

}  // namespace

namespace tlx {

bool set_kcdsa_numbers(KCDSA &unit, const KcdsaNumbers::Pointers &numbers) noexcept {
    if (!unit.numbers.set_all(numbers)) return false;
    unit.cache.drop();
    unit.task = KcdsaTask::none;
    clean_digest(unit.digest);
    return true;
}

}  // namespace tlx

extern "C" {

KCDSA *new_KCDSA(void) {
    void *memory = TLX_ALLOCATE(sizeof(KCDSA));
    return memory == nullptr ? nullptr : new (memory) KCDSA;
}

void clean_KCDSA(KCDSA *unit) {
    if (unit == nullptr) return;
    set_kcdsa_numbers(*unit, {});
    unit->digest_id = TLX_DIGEST_HAS160;
}

void free_KCDSA(KCDSA *unit) {
    if (unit == nullptr) return;
    unit->~KCDSA();
    tlx_free(unit);
}

KCDSA *dup_KCDSA(const KCDSA *unit) {
    KCDSA *copy = unit == nullptr ? nullptr : new_KCDSA();
    if (copy == nullptr) return nullptr;
    KcdsaNumbers::Pointers numbers;
    unit->numbers.get_all(numbers);
    if (!set_kcdsa_numbers(*copy, numbers)) {
        free_KCDSA(copy);
        return nullptr;
    }
    copy->digest_id = unit->digest_id;
    return copy;
}

uint32_t set_KCDSA_params(KCDSA *unit, const BIGINT *p, const BIGINT *q, const BIGINT *g) {
    if (unit == nullptr || p == nullptr || q == nullptr || g == nullptr) return 1;
    const bool set =
        set_kcdsa_numbers(*unit, {p, q, g, unit->numbers[TLX_KCDSA_X], unit->numbers[TLX_KCDSA_Y]});
    return set ? 0 : 1;
}

uint32_t set_KCDSA_public(KCDSA *unit, const BIGINT *y) {
    return set_one_number(unit, TLX_KCDSA_Y, y);
}

uint32_t set_KCDSA_private(KCDSA *unit, const BIGINT *x) {
    return set_one_number(unit, TLX_KCDSA_X, x);
}

uint32_t set_KCDSA_digest(KCDSA *unit, uint32_t digest_id) {
    if (unit == nullptr || get_DigestLength(digest_id) == 0) return 1;
    unit->digest_id = digest_id;
    return 0;
}

const BIGINT *get_KCDSA_number(const KCDSA *unit, TLX_KCDSA_NUMBER which) {
    return unit == nullptr ? nullptr : unit->numbers[static_cast<u32>(which)];
}

uint32_t get_KCDSA_length(const KCDSA *unit) {
    return (get_BIGINT_bits(get_KCDSA_number(unit, TLX_KCDSA_Q)) + 7) / 8;
}

uint32_t get_KCDSA_builds(const KCDSA *unit) {
    return unit == nullptr ? 0 : unit->cache.builds.load(std::memory_order_relaxed);
}

}  // extern "C"
