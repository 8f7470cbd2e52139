#include <tlxcrypto/stack.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "support/allocation.hpp"

namespace {

std::vector<void *> values_of(const STACK *stack) {
    std::vector<void *> values;
    for (std::uint32_t i = 0; i < get_STACK_count(stack); ++i)
        values.push_back(get_STACK_value(stack, i));
    return values;
}

void *dup_value(const void *value) {
    void *copy = tlx_malloc(sizeof(int), __FILE__, __LINE__);
    return copy == nullptr ? nullptr : std::memcpy(copy, value, sizeof(int));
}

using Stack = tlx_test::LeakFreeTest;

TEST_F(Stack, BehavesAsAVector) {
    std::mt19937 random(7);
    int cells[64] = {};
    STACK *stack = new_STACK();
    std::vector<void *> model;
    for (int step = 0; step < 5000; ++step) {
        const auto at = static_cast<std::uint32_t>(random() % (model.size() + 2));
        void *value = &cells[random() % 64];
        const auto place =
            model.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(at, model.size()));
        void *expected = at < model.size() ? model[at] : nullptr;
        switch (random() % 5) {
            case 0:
            case 1:
                ASSERT_EQ(insert_STACK_value(stack, value, static_cast<std::int32_t>(at)), 0U);
                model.insert(place, value);
                break;
            case 2:
                ASSERT_EQ(remove_STACK_value(stack, at), expected);
                if (place != model.end()) model.erase(place);
                break;
            case 3:
                ASSERT_EQ(set_STACK_value(stack, at, value), expected);
                if (place != model.end()) *place = value;
                break;
            default:
                reverse_STACK(stack);
                std::reverse(model.begin(), model.end());
        }
        ASSERT_EQ(values_of(stack), model) << "after step " << step;
        ASSERT_EQ(get_STACK_value(stack, static_cast<std::uint32_t>(model.size())), nullptr);
    }
    ASSERT_EQ(insert_STACK_value(stack, &cells[1], -1), 0U);
    EXPECT_EQ(values_of(stack).back(), &cells[1]) << "an index below 0 appends";
    free_STACK(stack);
}

TEST_F(Stack, CopiesAndFreesValues) {
    STACK *stack = new_STACK();
    for (int value = 0; value < 10; ++value)
        push_STACK_value(stack, value == 4 ? nullptr : dup_value(&value));
    const unsigned failures = tlx_test::sweep_failing_allocations([stack] {
        STACK *copy = dup_STACK_values(stack, dup_value, tlx_free);
        if (copy == nullptr) return false;
        EXPECT_EQ(get_STACK_count(copy), 10U);
        EXPECT_EQ(get_STACK_value(copy, 4), nullptr);
        EXPECT_EQ(*static_cast<int *>(get_STACK_value(copy, 9)), 9);
        EXPECT_NE(get_STACK_value(copy, 9), get_STACK_value(stack, 9));
        free_STACK_values(copy, tlx_free);
        return true;
    });
    EXPECT_EQ(failures, 11U) << "the container, its array, nine values";
    clean_STACK_values(stack, tlx_free);
    EXPECT_EQ(push_STACK_value(stack, stack), 0U) << "a cleaned container is as new";
    EXPECT_EQ(values_of(stack), std::vector<void *>{stack});
    free_STACK_values(stack, nullptr);
}

TEST_F(Stack, StaysAsItWasWhenItCannotGrow) {
    STACK *stack = new_STACK();
    ASSERT_EQ(reserve_STACK(stack, 100), 0U);
    tlx_fail_allocation(1);
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(push_STACK_value(stack, stack), 0U) << "room was reserved";
    EXPECT_EQ(push_STACK_value(stack, stack), 1U);
    tlx_fail_allocation(1);
    EXPECT_EQ(insert_STACK_value(stack, stack, 0), 1U);
    tlx_fail_allocation(1);
    EXPECT_EQ(reserve_STACK(stack, 101), 1U);
    EXPECT_EQ(get_STACK_count(stack), 100U);
    free_STACK(stack);
    EXPECT_EQ(push_STACK_value(nullptr, &stack), 1U);
    EXPECT_EQ(get_STACK_value(nullptr, 0), nullptr);
}

}  // namespace
