// The tracking allocator beside the C library's.
#include <benchmark/benchmark.h>
#include <tlxcrypto/memory.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

struct Ours {
    static void *allocate(std::size_t size) { return tlx_malloc(size, __FILE__, __LINE__); }
    static void *allocate_zeroed(std::size_t size) { return tlx_calloc(1, size, __FILE__, __LINE__); }
    static void *reallocate(void *block, std::size_t size) {
        return tlx_realloc(block, size, __FILE__, __LINE__);
    }
    static void release(void *block) { tlx_free(block); }
};

struct Libc {
    static void *allocate(std::size_t size) { return std::malloc(size); }
    static void *allocate_zeroed(std::size_t size) { return std::calloc(1, size); }
    static void *reallocate(void *block, std::size_t size) { return std::realloc(block, size); }
    static void release(void *block) { std::free(block); }
};

template <typename Allocator>
void allocate_and_free(benchmark::State &state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        void *block = Allocator::allocate(size);
        benchmark::DoNotOptimize(block);
        Allocator::release(block);
    }
}

template <typename Allocator>
void allocate_zeroed_and_free(benchmark::State &state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        void *block = Allocator::allocate_zeroed(size);
        benchmark::DoNotOptimize(block);
        Allocator::release(block);
    }
}

// As many small blocks as a decoded certificate is made of, all live before the first is freed.
template <typename Allocator>
void allocate_a_record(benchmark::State &state) {
    constexpr std::size_t kBlocks = 110;
    void *blocks[kBlocks];
    for (auto _ : state) {
        for (std::size_t i = 0; i < kBlocks; ++i)
            blocks[i] = Allocator::allocate_zeroed(16 + i % 5 * 8);
        benchmark::DoNotOptimize(blocks);
        for (void *block : blocks)
            Allocator::release(block);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBlocks));
}

// A block that grows by one octet at a time.
template <typename Allocator>
void append_octets(benchmark::State &state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        void *block = nullptr;
        for (std::size_t n = 1; n <= size; ++n)
            block = Allocator::reallocate(block, n);
        benchmark::DoNotOptimize(block);
        Allocator::release(block);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

BENCHMARK(allocate_and_free<Libc>)->Arg(24)->Arg(256)->ThreadRange(1, 2);
BENCHMARK(allocate_and_free<Ours>)->Arg(24)->Arg(256)->ThreadRange(1, 2);
BENCHMARK(allocate_zeroed_and_free<Libc>)->Arg(24)->Arg(256);
BENCHMARK(allocate_zeroed_and_free<Ours>)->Arg(24)->Arg(256);
BENCHMARK(allocate_a_record<Libc>);
BENCHMARK(allocate_a_record<Ours>);
BENCHMARK(append_octets<Libc>)->Arg(10'000)->Arg(100'000);
BENCHMARK(append_octets<Ours>)->Arg(10'000)->Arg(100'000);

}  // namespace
