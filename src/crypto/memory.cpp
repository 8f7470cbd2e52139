#include "crypto/memory.hpp"

#include <openssl/crypto.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "crypto/memory_debug.hpp"
#include "crypto/platform.hpp"

#if defined(__SANITIZE_ADDRESS__)
#define TLX_POISON 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TLX_POISON 1
#endif
#endif
#ifdef TLX_POISON
#include <sanitizer/asan_interface.h>
#endif

namespace tlx {
namespace {

// Precedes every block. It has two words, so that the block keeps malloc's alignment.
struct alignas(16) Header {
    std::size_t size;      // what the caller asked for
    std::size_t capacity;  // octets after the header
};
static_assert(sizeof(Header) == 16);

constexpr std::size_t kMostOctets = PTRDIFF_MAX - sizeof(Header);
/// Blocks of this many octets ask for large pages.
constexpr std::size_t kLargeBlock = std::size_t{4} << 20;

// Live blocks and bytes as one thread saw them. A block freed on another thread than it was allocated on
// leaves one cell too high and the other too low (below zero even); the sum over all cells is right.
struct alignas(64) Cell {
    std::atomic<std::int64_t> blocks;
    std::atomic<std::int64_t> bytes;
};

constexpr std::size_t kCells = 256;
constinit Cell g_cells[kCells + 1];  // threads that came too late for their own share the last one
constinit Cell &g_shared_cell = g_cells[kCells];
constexpr auto kRelaxed = std::memory_order_relaxed;
constinit std::atomic<std::size_t> g_cells_taken;

#ifdef _WIN32
// A variable of the compiler's would allocate memory that outlives the DLL.
Cell *own_cell() noexcept {
    return static_cast<Cell *>(thread_pointer());
}
void set_own_cell(Cell *cell) noexcept {
    set_thread_pointer(cell);
}
#else
// Within the library itself a thread's cell is one load away: no call to find the thread's storage.
constinit thread_local __attribute__((tls_model("initial-exec"))) Cell *t_cell = nullptr;

Cell *own_cell() noexcept {
    return t_cell;
}
void set_own_cell(Cell *cell) noexcept {
    t_cell = cell;
}
#endif

/// Null when all are taken.
Cell *claim_cell() noexcept {
    std::size_t taken = g_cells_taken.load(kRelaxed);
    do {
        if (taken == kCells) return nullptr;
    } while (!g_cells_taken.compare_exchange_weak(taken, taken + 1, kRelaxed));
    set_own_cell(&g_cells[taken]);
    return &g_cells[taken];
}

/// Only this thread writes to the cell.
void count_in(Cell &cell, std::int64_t blocks, std::int64_t bytes) noexcept {
    cell.blocks.store(cell.blocks.load(kRelaxed) + blocks, kRelaxed);
    cell.bytes.store(cell.bytes.load(kRelaxed) + bytes, kRelaxed);
}

[[gnu::noinline]] void count_without_cell(std::int64_t blocks, std::int64_t bytes) noexcept {
    if (Cell *cell = claim_cell()) return count_in(*cell, blocks, bytes);
    g_shared_cell.blocks.fetch_add(blocks, kRelaxed);
    g_shared_cell.bytes.fetch_add(bytes, kRelaxed);
}

[[gnu::always_inline]] inline void count(std::int64_t blocks, std::int64_t bytes) noexcept {
    Cell *cell = own_cell();
    if (cell == nullptr) return count_without_cell(blocks, bytes);
    count_in(*cell, blocks, bytes);
}

u64 sum(std::atomic<std::int64_t> Cell::*counter) noexcept {
    std::int64_t total = 0;
    for (const Cell &cell : g_cells) {
        total += (cell.*counter).load(kRelaxed);
    }
    return static_cast<u64>(total);
}

constinit std::atomic<u64> g_failures;

// Null, which callers return.
[[gnu::noinline]] void *fail() noexcept {
    g_failures.fetch_add(1, kRelaxed);
    return nullptr;
}

// Under AddressSanitizer the header and the spare capacity are out of bounds for everybody else.
void close_block([[maybe_unused]] Header *header) noexcept {
#ifdef TLX_POISON
    auto *octets = reinterpret_cast<u8 *>(header + 1);
    ASAN_POISON_MEMORY_REGION(octets + header->size, header->capacity - header->size);
    ASAN_POISON_MEMORY_REGION(header, sizeof(Header));
#endif
}

Header *open_block(void *block) noexcept {
    Header *header = static_cast<Header *>(block) - 1;
#ifdef TLX_POISON
    ASAN_UNPOISON_MEMORY_REGION(header, sizeof(Header));
    ASAN_UNPOISON_MEMORY_REGION(block, header->capacity);
#endif
    return header;
}

// Writes the header of a block from malloc and counts the block.
void *issue(void *memory, std::size_t size, const char *file, int line) noexcept {
    if (memory == nullptr) return fail();
    auto *header = static_cast<Header *>(memory);
    header->size = size;
    header->capacity = size;
    if (size >= kLargeBlock) advise_large_pages(header, sizeof(Header) + size);
    count(1, static_cast<std::int64_t>(size));
    void *block = header + 1;
    close_block(header);
    if (debug::active()) debug::remember(block, {size, file, line});
    return block;
}

// The capacity for a block that is to hold `size` octets: half as much again when it grows, so that a block
// grown one item at a time moves a number of times that is logarithmic in its size.
std::size_t new_capacity(std::size_t capacity, std::size_t size) noexcept {
    if (size <= capacity) return size;
    const std::size_t generous = capacity + capacity / 2;
    return generous > size && generous <= kMostOctets ? generous : size;
}

// A block keeps its memory when it shrinks, unless most of it would lie idle.
bool can_stay(const Header &header, std::size_t size) noexcept {
    constexpr std::size_t kSmall = 256;
    return size <= header.capacity && (header.capacity <= kSmall || size >= header.capacity / 4);
}

// Null on failure; the block is unchanged then.
void *resize(void *block, std::size_t size) noexcept {
    Header *header = open_block(block);
    const std::size_t old_size = header->size;
    if (!can_stay(*header, size)) {
        const std::size_t capacity = new_capacity(header->capacity, size);
        void *moved = std::realloc(header, sizeof(Header) + capacity);
        if (moved == nullptr) {
            close_block(header);
            return fail();
        }
        header = static_cast<Header *>(moved);
        header->capacity = capacity;
    }
    header->size = size;
    count(0, static_cast<std::int64_t>(size) - static_cast<std::int64_t>(old_size));
    close_block(header);
    return header + 1;
}

}  // namespace
}  // namespace tlx

using namespace tlx;

extern "C" {

void *tlx_malloc(size_t size, const char *file, int line) {
    if (debug::active() && debug::refuses_allocation()) return fail();
    if (size > kMostOctets) return fail();
    return issue(std::malloc(sizeof(Header) + size), size, file, line);
}

void *tlx_calloc(size_t count, size_t size, const char *file, int line) {
    if (debug::active() && debug::refuses_allocation()) return fail();
    if (size != 0 && count > kMostOctets / size) return fail();
    const std::size_t total = count * size;
    // A small block is zeroed here: the C library's calloc may go around its fast path. A large one comes
    // from the operating system as zeros already.
    constexpr std::size_t kLarge = 16384;
    if (total >= kLarge) return issue(std::calloc(1, sizeof(Header) + total), total, file, line);
    void *block = issue(std::malloc(sizeof(Header) + total), total, file, line);
    if (block != nullptr) std::memset(block, 0, total);
    return block;
}

void *tlx_realloc(void *block, size_t size, const char *file, int line) {
    if (block == nullptr) return tlx_malloc(size, file, line);
    if (debug::active() && debug::refuses_allocation()) return fail();
    if (size > kMostOctets) return fail();
    if (!debug::active()) return resize(block, size);
    const debug::Origin origin = debug::forget(block);
    void *resized = resize(block, size);
    if (resized != nullptr) {
        debug::remember(resized, {size, file, line});
    } else if (origin.file != nullptr) {
        debug::remember(block, origin);
    }
    return resized;
}

void tlx_free(void *block) {
    if (block == nullptr) return;
    Header *header = open_block(block);
    if (debug::active()) {
        debug::forget(block);
        debug::show(block, header->size);
    }
    count(-1, -static_cast<std::int64_t>(header->size));
    std::free(header);
}

void tlx_wipe(void *block, size_t size) {
    if (block != nullptr) OPENSSL_cleanse(block, size);
}

uint64_t tlx_live_blocks(void) {
    return sum(&Cell::blocks);
}

uint64_t tlx_live_bytes(void) {
    return sum(&Cell::bytes);
}

uint64_t tlx_failed_allocations(void) {
    return g_failures.load(kRelaxed);
}

}  // extern "C"
