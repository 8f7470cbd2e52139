#include <gtest/gtest.h>
#include <tlxcrypto/memory.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/threads.hpp"

namespace {

void *allocate(std::size_t size) {
    return tlx_malloc(size, "here.c", 1);
}
void *resize(void *block, std::size_t size) {
    return tlx_realloc(block, size, "there.c", 2);
}

using Memory = tlx_test::LeakFreeTest;

TEST_F(Memory, CountsBlocksAndBytes) {
    const std::uint64_t blocks = tlx_live_blocks();
    const std::uint64_t bytes = tlx_live_bytes();
    const auto expect = [=](std::uint64_t more_blocks, std::uint64_t more_bytes) {
        EXPECT_EQ(tlx_live_blocks() - blocks, more_blocks);
        EXPECT_EQ(tlx_live_bytes() - bytes, more_bytes);
    };
    void *a = allocate(100);
    void *b = tlx_calloc(3, 7, "here.c", 1);
    expect(2, 121);
    a = resize(a, 1000);
    expect(2, 1021);
    a = resize(a, 0);
    expect(2, 21);
    void *c = resize(nullptr, 5);
    void *d = allocate(0);
    EXPECT_NE(d, nullptr);
    EXPECT_NE(d, a) << "no octets, but a block of its own";
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(c) % 16, 0U);
    expect(4, 26);
    for (void *block : {a, b, c, d})
        tlx_free(block);
    tlx_free(nullptr);
    expect(0, 0);
}

TEST_F(Memory, ZeroesWhatCallocGives) {
    for (const std::size_t size : {1U, 100U, 16383U, 100000U}) {
        void *dirty = allocate(size);
        std::memset(dirty, 0xAA, size);
        tlx_free(dirty);
        auto *block = static_cast<std::uint8_t *>(tlx_calloc(1, size, "here.c", 1));
        EXPECT_EQ(std::vector<std::uint8_t>(block, block + size), std::vector<std::uint8_t>(size, 0));
        tlx_free(block);
    }
}

TEST_F(Memory, MovesAGrowingBlockRarely) {
    // Two blocks that grow in turn keep each other from growing in place.
    constexpr std::size_t kOctets = 100'000;
    std::uint8_t *blocks[2] = {};
    unsigned moves = 0;
    for (std::size_t n = 1; n <= kOctets; ++n) {
        for (std::uint8_t *&block : blocks) {
            auto *grown = static_cast<std::uint8_t *>(resize(block, n));
            if (grown != block) ++moves;
            block = grown;
            block[n - 1] = static_cast<std::uint8_t>(n * 7);
        }
    }
    EXPECT_LE(moves, 2U * 30U);  // log(100000) / log(1.5) = 28.4
    for (std::uint8_t *block : blocks) {
        std::size_t wrong = 0;
        for (std::size_t n = 1; n <= kOctets; ++n)
            wrong += block[n - 1] != static_cast<std::uint8_t>(n * 7) ? 1U : 0U;
        EXPECT_EQ(wrong, 0U);
        block = static_cast<std::uint8_t *>(resize(block, 10));
        EXPECT_EQ(block[9], 70);
        tlx_free(block);
    }
}

TEST_F(Memory, CountsAcrossThreads) {
    const std::uint64_t bytes = tlx_live_bytes();
    // More threads than there are counters, so that the later ones share. Each frees what its neighbour
    // allocated.
    for (int round = 0; round < 34; ++round) {
        const int allocations = round < 32 ? 10 : 50000;
        constexpr unsigned kThreads = 8;
        std::atomic<void *> handed_over[kThreads] = {};
        std::atomic<unsigned> started = 0;
        tlx_test::successes_on_threads(kThreads, [&] {
            const unsigned own = started++;
            for (int i = 0; i < allocations; ++i)
                tlx_free(handed_over[(own + 1) % kThreads].exchange(allocate(own + 1)));
            return true;
        });
        for (std::atomic<void *> &block : handed_over)
            tlx_free(block.load());
    }
    EXPECT_EQ(tlx_live_bytes(), bytes);
}

TEST_F(Memory, FailsTheAllocationAskedForAndSizesThatOverflow) {
    EXPECT_EQ(allocate(SIZE_MAX - 15), nullptr);
    EXPECT_EQ(tlx_calloc(std::size_t{1} << 32U, std::size_t{1} << 32U, "here.c", 1), nullptr);
    tlx_fail_allocation(4);
    void *a = allocate(8);
    void *b = tlx_calloc(1, 8, "here.c", 1);
    a = resize(a, 4);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(resize(a, 2), nullptr) << "a block that would not move counts too";
    EXPECT_EQ(resize(a, SIZE_MAX - 15), nullptr);
    EXPECT_NE(a = resize(a, 64), nullptr) << "only one allocation fails";
    tlx_fail_allocation(1);
    tlx_fail_allocation(0);
    EXPECT_NE(b = resize(b, 64), nullptr) << "the order was taken back";
    tlx_free(a);
    tlx_free(b);
}

std::vector<std::string> tracked_blocks() {
    std::vector<std::string> texts;
    const auto visitor = [](const void *, std::size_t size, const char *file, int line, void *context) {
        const std::string text = std::to_string(size) + " at " + file + ":" + std::to_string(line);
        static_cast<std::vector<std::string> *>(context)->push_back(text);
    };
    const std::uint64_t blocks = tlx_list_live_blocks(visitor, &texts);
    EXPECT_EQ(blocks, texts.size());
    return texts;
}

TEST_F(Memory, ListsWhereLiveBlocksCameFrom) {
    using Texts = std::vector<std::string>;
    void *earlier = allocate(1);
    tlx_track_allocations(1);
    void *a = tlx_malloc(10, "a.c", 11);
    tlx_free(tlx_calloc(2, 10, "b.c", 22));
    EXPECT_EQ(tracked_blocks(), Texts{"10 at a.c:11"});
    tlx_fail_allocation(1);
    EXPECT_EQ(resize(a, 100000), nullptr);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_EQ(resize(a, SIZE_MAX / 2 - 32), nullptr);  // the sanitizers end the program here
#endif
    EXPECT_EQ(tracked_blocks(), Texts{"10 at a.c:11"}) << "a block that could not grow stays listed";
    a = resize(a, 100000);
    EXPECT_EQ(tracked_blocks(), Texts{"100000 at there.c:2"});
    tlx_free(earlier);
    tlx_track_allocations(0);
    EXPECT_EQ(tracked_blocks(), Texts{});
    tlx_free(a);
}

}  // namespace
