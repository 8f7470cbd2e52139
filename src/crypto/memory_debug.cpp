#include "crypto/memory_debug.hpp"

#include <tlxcrypto/memory.h>

#include <cstdlib>

#include "crypto/platform.hpp"

namespace tlx::debug {

constinit std::atomic<u32> g_switches;

namespace {

constexpr u32 kTracking = 1;
constexpr u32 kFailing = 2;
constexpr u32 kWatching = 4;

void set_switch(u32 flag, bool on) noexcept {
    if (on) {
        g_switches.fetch_or(flag);
    } else {
        g_switches.fetch_and(~flag);
    }
}

constinit std::atomic<u64> g_until_failure;

constinit TLX_FREE_VISITOR g_visitor = nullptr;
constinit void *g_context = nullptr;

// One live block. The entries lie outside the tracking allocator, or they would track themselves.
struct Entry {
    Entry *next;
    const void *block;
    Origin origin;
};

constexpr unsigned kBucketBits = 14;
constinit Entry *g_buckets[std::size_t{1} << kBucketBits];

// Guards the buckets and all entries. Ready before any constructor runs, which a mutex is not everywhere.
class Lock {
  public:
    Lock() noexcept {
        while (g_taken.test_and_set(std::memory_order_acquire)) {
            yield_thread();
        }
    }
    ~Lock() { g_taken.clear(std::memory_order_release); }
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;

  private:
    static constinit std::atomic_flag g_taken;
};
constinit std::atomic_flag Lock::g_taken;

Entry **bucket_of(const void *block) noexcept {
    const u64 number = reinterpret_cast<std::uintptr_t>(block) / 16;
    return &g_buckets[(number * 0x9E3779B97F4A7C15U) >> (64 - kBucketBits)];
}

}  // namespace

bool refuses_allocation() noexcept {
    if ((g_switches.load() & kFailing) == 0) return false;
    u64 left = g_until_failure.load();
    while (left != 0 && !g_until_failure.compare_exchange_weak(left, left - 1)) {
    }
    return left == 1;
}

void remember(const void *block, Origin origin) noexcept {
    const Lock lock;
    if ((g_switches.load() & kTracking) == 0) return;
    auto *entry = static_cast<Entry *>(std::malloc(sizeof(Entry)));
    if (entry == nullptr) return;
    Entry **bucket = bucket_of(block);
    *entry = {*bucket, block, origin};
    *bucket = entry;
}

Origin forget(const void *block) noexcept {
    const Lock lock;
    for (Entry **link = bucket_of(block); *link != nullptr; link = &(*link)->next) {
        Entry *entry = *link;
        if (entry->block != block) continue;
        const Origin origin = entry->origin;
        *link = entry->next;
        std::free(entry);
        return origin;
    }
    return {};
}

void show(const void *block, std::size_t size) noexcept {
    if ((g_switches.load() & kWatching) != 0) g_visitor(block, size, g_context);
}

}  // namespace tlx::debug

using namespace tlx::debug;

extern "C" {

void tlx_track_allocations(int on) {
    const Lock lock;
    set_switch(kTracking, on != 0);
    if (on != 0) return;
    for (Entry *&bucket : g_buckets) {
        while (bucket != nullptr) {
            Entry *entry = bucket;
            bucket = entry->next;
            std::free(entry);
        }
    }
}

uint64_t tlx_list_live_blocks(TLX_LEAK_VISITOR visitor, void *context) {
    const Lock lock;
    uint64_t blocks = 0;
    for (const Entry *entry : g_buckets) {
        for (; entry != nullptr; entry = entry->next, ++blocks) {
            const Origin &origin = entry->origin;
            if (visitor != nullptr) visitor(entry->block, origin.size, origin.file, origin.line, context);
        }
    }
    return blocks;
}

void tlx_fail_allocation(uint64_t n) {
    g_until_failure.store(n);
    set_switch(kFailing, n != 0);
}

void tlx_watch_frees(TLX_FREE_VISITOR visitor, void *context) {
    set_switch(kWatching, false);
    g_visitor = visitor;
    g_context = context;
    set_switch(kWatching, visitor != nullptr);
}

}  // extern "C"
