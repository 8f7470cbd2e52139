/** @file
 * The tracking allocator. Every block that this library or libtlxpki hands out, or uses as scratch, comes
 * from here and is released with tlx_free; a caller may use it for blocks of its own.
 *
 * Blocks are aligned to 16 octets. Live blocks and their octets are always counted, at a cost of a few
 * nanoseconds. Three further switches help with debugging and testing: tlx_track_allocations,
 * tlx_fail_allocation and tlx_watch_frees.
 *
 * Thread safety: every function may be called from any thread at any time. A block may be freed on another
 * thread than it was allocated on. The switches act on the whole process.
 */
#ifndef TLXCRYPTO_MEMORY_H
#define TLXCRYPTO_MEMORY_H

#include <stddef.h>
#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** Allocates a block of size octets, whose contents are undefined.
 *
 * @param size  Octets wanted; 0 gives a block of its own that must be freed like any other.
 * @param file  Name of the calling source file. It is kept by reference while allocations are tracked, so it
 *              must live as long as the block; __FILE__ does.
 * @param line  Line in that file.
 * @return The block, or null when there is not enough memory.
 */
TLXCRYPTO_API void *tlx_malloc(size_t size, const char *file, int line);

/** Allocates a zero-filled block of count * size octets.
 *
 * @return The block, or null when there is not enough memory or the product does not fit a size_t.
 */
TLXCRYPTO_API void *tlx_calloc(size_t count, size_t size, const char *file, int line);

/** Changes the size of a block, which may move; the contents stay up to the smaller of the two sizes.
 *
 * A block that grows is given half as much room again as it had, so that appending n items one by one costs
 * O(n) in total. A block that shrinks keeps its room, unless most of it would lie idle. The memory that a
 * moved block leaves behind is not wiped: do not resize a block that holds a secret.
 *
 * @param block  The block, or null, which makes this tlx_malloc.
 * @param size   Octets wanted; 0 does not free the block.
 * @return The block, or null when there is not enough memory; the old block is untouched then.
 */
TLXCRYPTO_API void *tlx_realloc(void *block, size_t size, const char *file, int line);

/** Frees a block from one of the functions above. Null is ignored. Secrets must be wiped before. */
TLXCRYPTO_API void tlx_free(void *block);

/** Overwrites size octets with zeros in a way that the compiler does not remove. Null is ignored. */
TLXCRYPTO_API void tlx_wipe(void *block, size_t size);

/** Blocks that are allocated and not yet freed. Exact when no other thread allocates or frees meanwhile. */
TLXCRYPTO_API uint64_t tlx_live_blocks(void);

/** The octets that the live blocks were asked to hold, without the allocator's own. Exact likewise. */
TLXCRYPTO_API uint64_t tlx_live_bytes(void);

/** Switches tracking on or off; it is off at first.
 *
 * @param on  Not 0: keep file and line of every block allocated or resized from now on, at the cost of a lock
 * and a table entry for each. 0: forget them and stop.
 */
TLXCRYPTO_API void tlx_track_allocations(int on);

/** Is told one live block: its address, its octets, and where it was allocated or last resized.
 *
 * It must not call the allocator. context is what tlx_list_live_blocks was given.
 */
typedef void (*TLX_LEAK_VISITOR)(const void *block, size_t size, const char *file, int line, void *context);

/** Calls visitor for each tracked live block, in no particular order.
 *
 * @param visitor  May be null, to count only.
 * @param context  Passed on to visitor.
 * @return The number of tracked live blocks.
 */
TLXCRYPTO_API uint64_t tlx_list_live_blocks(TLX_LEAK_VISITOR visitor, void *context);

/** Makes one allocation fail, to test how a program meets that.
 *
 * tlx_malloc, tlx_calloc and tlx_realloc (whether the block would move or not) count as one each, on
 * whichever thread they happen. The n-th from now returns null; those after it succeed again.
 *
 * @param n  1 is the next allocation; 0 takes the order back.
 */
TLXCRYPTO_API void tlx_fail_allocation(uint64_t n);

/** Is shown one block that is about to be freed: its address and its octets. It must not call the allocator.
 * context is what tlx_watch_frees was given.
 */
typedef void (*TLX_FREE_VISITOR)(const void *block, size_t size, void *context);

/** Shows every block that tlx_free is given, before it is freed, to test that secrets were wiped.
 *
 * @param visitor  Called on the thread that frees; null stops it. Only changed while no other thread frees.
 * @param context  Passed on to visitor.
 */
TLXCRYPTO_API void tlx_watch_frees(TLX_FREE_VISITOR visitor, void *context);

TLX_END_DECLS

#endif
