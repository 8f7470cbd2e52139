
#include <algorithm>
#include <cstring>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/rows.hpp"
#include "support/threads.hpp"

namespace {

using namespace tlx_test;
using Memory = LeakFreeTest;

void *allocate(std::size_t size) {
    return tlx_malloc(size, "here.c", 1);
}
void *resize(void *block, std::size_t size) {
    return tlx_realloc(block, size, "there.c", 2);
}

/// Steps with blocks 0 to 3, where 0xFFFFFFFF octets are nearly as many as there can be. The blocks and
/// octets that a step leaves live are counted from the start.
std::string run_on_blocks(const Row &row) {
    void *blocks[4] = {};
    const std::uint64_t live_blocks = tlx_live_blocks(), live_bytes = tlx_live_bytes();
    const std::uint64_t failed = tlx_failed_allocations();
    const auto size = [](std::size_t octets) { return octets == 0xFFFFFFFF ? SIZE_MAX - 15 : octets; };
    const auto keep = [&](std::uint32_t place, void *block) {
        if (block == nullptr) return 1U;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0U);
        EXPECT_EQ(std::count(blocks, blocks + 4, block), blocks[place] == block ? 1 : 0)
            << "a block of its own";
        blocks[place] = block;
        return 0U;
    };
    const auto octets = [&](std::uint32_t place) { return static_cast<std::uint8_t *>(blocks[place]); };
    using N = const Numbers &;
    const Steps steps = {
        {"malloc", [&](N n) { return keep(n[0], allocate(size(n[1]))); }},
        {"calloc", [&](N n) { return keep(n[0], tlx_calloc(size(n[1]), size(n[2]), "here.c", 1)); }},
        {"dirty", [&](N n) { return std::memset(blocks[n[0]], 0xAA, n[1]), 0U; }},
        {"zero", [&](N n) { return Octets(n[1]) == Octets(octets(n[0]), octets(n[0]) + n[1]) ? 1U : 0U; }},
        {"free", [&](N n) { return tlx_free(std::exchange(blocks[n[0]], nullptr)), 0U; }},
        {"realloc", [&](N n) { return keep(n[0], resize(blocks[n[0]], size(n[1]))); }},
        {"fail", [&](N n) { return tlx_fail_allocation(n[0]), 0U; }},
        {"failed", [&](N) { return static_cast<std::uint32_t>(tlx_failed_allocations() - failed); }},
        {"blocks", [&](N) { return static_cast<std::uint32_t>(tlx_live_blocks() - live_blocks); }},
        {"octets", [&](N) { return static_cast<std::uint32_t>(tlx_live_bytes() - live_bytes); }},
    };
    const std::string results = run_steps(row[1], steps);
    for (void *block : blocks)
        tlx_free(block);
    EXPECT_EQ(tlx_live_bytes(), live_bytes);
    return results;
}

TEST_F(Memory, Rows) {
    expect_rows("memory.txt", {{"steps", {run_on_blocks}}});
}

TEST_F(Memory, MovesAGrowingBlockRarely) {
    // Two blocks that grow in turn keep each other from growing in place.
    std::uint8_t *blocks[2] = {};
    std::vector<std::uint8_t> expected;
    unsigned moves = 0;
    while (expected.size() < 100'000) {
        expected.push_back(static_cast<std::uint8_t>(expected.size() * 7));
        for (std::uint8_t *&block : blocks) {
            auto *grown = static_cast<std::uint8_t *>(resize(block, expected.size()));
            if (grown != block) ++moves;
            block = grown;
            block[expected.size() - 1] = expected.back();
        }
    }
    EXPECT_LE(moves, 2U * 30U);  // log(100000) / log(1.5) = 28.4
    for (std::uint8_t *block : blocks) {
        EXPECT_EQ(std::memcmp(block, expected.data(), expected.size()), 0);
        block = static_cast<std::uint8_t *>(resize(block, 10));
        EXPECT_EQ(block[9], 63);
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
        successes_on_threads(kThreads, [&] {
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
