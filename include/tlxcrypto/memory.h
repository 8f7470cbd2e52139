#ifndef TLXCRYPTO_MEMORY_H
#define TLXCRYPTO_MEMORY_H

#include <stddef.h>
#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

TLXCRYPTO_API void *tlx_malloc(size_t size, const char *file, int line);
TLXCRYPTO_API void *tlx_calloc(size_t count, size_t size, const char *file, int line);
TLXCRYPTO_API void *tlx_realloc(void *block, size_t size, const char *file, int line);
TLXCRYPTO_API void tlx_free(void *block);

/** Overwrites size octets with zeros in a way that the compiler keeps. */
TLXCRYPTO_API void tlx_wipe(void *block, size_t size);

TLXCRYPTO_API uint64_t tlx_live_blocks(void);
TLXCRYPTO_API uint64_t tlx_live_bytes(void);

/** on != 0: keep file and line of every block allocated from now on; 0: forget them and stop. */
TLXCRYPTO_API void tlx_track_allocations(int on);
typedef void (*TLX_LEAK_VISITOR)(const void *block, size_t size, const char *file, int line, void *context);
/** Calls visitor for each tracked live block, returns their number. */
TLXCRYPTO_API uint64_t tlx_list_live_blocks(TLX_LEAK_VISITOR visitor, void *context);

/** Makes the n-th allocation from now (1 = the next) fail, once; 0 disarms. Process-wide, for tests. */
TLXCRYPTO_API void tlx_fail_allocation(uint64_t n);

TLX_END_DECLS

#endif
