#include <tlxcrypto/stack.h>

#include <algorithm>
#include <utility>

#include "crypto/memory.hpp"

using namespace tlx;

namespace {

void free_values(const STACK &stack, STACK_FREE free_value) noexcept {
    if (free_value == nullptr) return;
    for (u32 i = 0; i < stack.count; ++i) {
        if (stack.values[i] != nullptr) free_value(stack.values[i]);
    }
}

// Room for one more value, doubling so that n pushes cost O(n).
bool grow(STACK &stack) noexcept {
    constexpr u32 kFirst = 8;
    if (stack.count < stack.capacity) return true;
    if (stack.count > UINT32_MAX / 2) return false;
    return reserve_STACK(&stack, std::max(kFirst, stack.count * 2)) == 0;
}

}  // namespace

extern "C" {

STACK *new_STACK(void) {
    return TLX_NEW(STACK);
}

void free_STACK(STACK *stack) {
    if (stack == nullptr) return;
    tlx_free(static_cast<void *>(stack->values));
    tlx_free(stack);
}

void free_STACK_values(STACK *stack, STACK_FREE free_value) {
    if (stack == nullptr) return;
    free_values(*stack, free_value);
    free_STACK(stack);
}

void clean_STACK_values(STACK *stack, STACK_FREE free_value) {
    if (stack == nullptr) return;
    free_values(*stack, free_value);
    tlx_free(static_cast<void *>(stack->values));
    *stack = {};
}

STACK *dup_STACK_values(const STACK *stack, STACK_DUP dup_value, STACK_FREE free_value) {
    if (stack == nullptr || dup_value == nullptr) return nullptr;
    STACK *copy = new_STACK();
    if (copy == nullptr) return nullptr;
    bool complete = reserve_STACK(copy, stack->count) == 0;
    for (u32 i = 0; complete && i < stack->count; ++i) {
        const void *value = stack->values[i];
        void *duplicate = value == nullptr ? nullptr : dup_value(value);
        complete = (value == nullptr) == (duplicate == nullptr);
        if (complete) copy->values[copy->count++] = duplicate;
    }
    if (complete) return copy;
    free_STACK_values(copy, free_value);
    return nullptr;
}

uint32_t get_STACK_count(const STACK *stack) {
    return stack == nullptr ? 0 : stack->count;
}

void *get_STACK_value(const STACK *stack, uint32_t index) {
    return stack == nullptr || index >= stack->count ? nullptr : stack->values[index];
}

uint32_t push_STACK_value(STACK *stack, void *value) {
    if (stack == nullptr || !grow(*stack)) return 1;
    stack->values[stack->count++] = value;
    return 0;
}

uint32_t insert_STACK_value(STACK *stack, void *value, int32_t index) {
    if (stack == nullptr || !grow(*stack)) return 1;
    const bool inside = index >= 0 && static_cast<u32>(index) < stack->count;
    void **place = stack->values + (inside ? static_cast<u32>(index) : stack->count);
    void **end = stack->values + stack->count++;
    std::copy_backward(place, end, end + 1);
    *place = value;
    return 0;
}

void *remove_STACK_value(STACK *stack, uint32_t index) {
    if (stack == nullptr || index >= stack->count) return nullptr;
    void **place = stack->values + index;
    void *value = *place;
    std::copy(place + 1, stack->values + stack->count, place);
    --stack->count;
    return value;
}

void *set_STACK_value(STACK *stack, uint32_t index, void *value) {
    if (stack == nullptr || index >= stack->count) return nullptr;
    return std::exchange(stack->values[index], value);
}

uint32_t reserve_STACK(STACK *stack, uint32_t count) {
    if (stack == nullptr) return 1;
    if (count <= stack->capacity) return 0;
    void *values = TLX_REALLOCATE(static_cast<void *>(stack->values), std::size_t{count} * sizeof(void *));
    if (values == nullptr) return 1;
    stack->values = static_cast<void **>(values);
    stack->capacity = count;
    return 0;
}

void reverse_STACK(STACK *stack) {
    if (stack != nullptr) std::reverse(stack->values, stack->values + stack->count);
}

}  // extern "C"
