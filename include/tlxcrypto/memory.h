/** @file
 * The tracking allocator. Every block that this library or libtlxpki hands out or uses as scratch comes from
 * here, and tlx_free() frees it. Callers may use it for blocks of their own.
 *
 * Blocks are aligned to 16 octets. Live blocks and their octets are always counted, at a cost of a few
 * nanoseconds. Three switches help with debugging and tests: tlx_track_allocations(), tlx_fail_allocation()
 * and tlx_watch_frees(). They act on the whole process.
 *
 * - Arguments: file names the calling source file and line is a line of it. While allocations are tracked,
 *   file is kept by reference, so it must live as long as the block; __FILE__ does.
 * - Failure: the allocating functions return null when memory runs out.
 * - Threads: every function may be called from any thread at any time. Any thread may free a block.
 */
#ifndef TLXCRYPTO_MEMORY_H
#define TLXCRYPTO_MEMORY_H

#include <stddef.h>
#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** Allocates size octets with undefined contents. Size 0 also gives a block to free. */
TLXCRYPTO_API void *tlx_malloc(size_t size, const char *file, int line);

/** Allocates count * size octets of zeros. Returns null also when the product exceeds a size_t. */
TLXCRYPTO_API void *tlx_calloc(size_t count, size_t size, const char *file, int line);

/** Changes the size of a block, which may move, and keeps its contents up to the smaller of the two sizes. A
 * null block makes this tlx_malloc(); size 0 does not free the block. On failure the old block is unchanged.
 *
 * A block that grows gets half as much room again as it had, so that appending n items one by one costs O(n)
 * in total. A block that shrinks keeps its room, unless most of it would lie idle. A block that moves leaves
 * its old memory unwiped: do not resize a block that holds a secret. */
TLXCRYPTO_API void *tlx_realloc(void *block, size_t size, const char *file, int line);

/** Frees a block, without wiping it. Ignores null. */
TLXCRYPTO_API void tlx_free(void *block);

/** Overwrites size octets with zeros in a way that the compiler does not remove. Ignores null. */
TLXCRYPTO_API void tlx_wipe(void *block, size_t size);

/** Returns the number of live blocks. It is exact when no other thread allocates or frees meanwhile. */
TLXCRYPTO_API uint64_t tlx_live_blocks(void);
/** Returns the octets that callers asked for in the live blocks, as exactly. */
TLXCRYPTO_API uint64_t tlx_live_bytes(void);

/** Returns how many allocations have failed in the whole process, whether memory ran out, a size overflowed
 * or tlx_fail_allocation() asked for it. The difference of two calls tells a lack of memory from other
 * failures. */
TLXCRYPTO_API uint64_t tlx_failed_allocations(void);

/** Switches tracking on or off; it is off at first. Tracking (on other than 0) keeps file and line of every
 * block that is allocated or resized from now on, at the cost of a lock and a table entry for each; 0 forgets
 * them. */
TLXCRYPTO_API void tlx_track_allocations(int on);

/** Receives one live block, its octets, where it was allocated or last resized, and the context of
 * tlx_list_live_blocks(). It must not call the allocator. */
typedef void (*TLX_LEAK_VISITOR)(const void *block, size_t size, const char *file, int line, void *context);

/** Calls visitor, unless it is null, for each tracked live block, in any order. Returns their number. */
TLXCRYPTO_API uint64_t tlx_list_live_blocks(TLX_LEAK_VISITOR visitor, void *context);

/** Makes the n-th allocation from now fail, on whichever thread it happens, to test how a program meets that;
 * later ones succeed again. Each tlx_malloc(), tlx_calloc() and tlx_realloc() counts as one, whether a block
 * would move or not. 1 is the next allocation; 0 cancels. */
TLXCRYPTO_API void tlx_fail_allocation(uint64_t n);

/** Receives one block that is about to be freed, its octets, and the context of tlx_watch_frees(). It must
 * not call the allocator. */
typedef void (*TLX_FREE_VISITOR)(const void *block, size_t size, void *context);

/** Shows visitor every block before tlx_free() frees it, on the thread that frees, to test that secrets were
 * wiped. Null stops it. Call it only while no other thread frees. */
TLXCRYPTO_API void tlx_watch_frees(TLX_FREE_VISITOR visitor, void *context);

TLX_END_DECLS

#endif
