/** @file
 * STACK, the ordered container of pointers that holds every SEQUENCE OF and SET OF.
 *
 * - Ownership: a container does not own its values. Its members may be read directly; only the functions
 *   below may change them. Functions that read take null for an empty container. Values may be null.
 * - Failure: push_, insert_ and reserve_ return 0, or 1 for null and when memory runs out, with nothing
 *   changed.
 * - Threads: distinct containers may be used at the same time.
 */
#ifndef TLXCRYPTO_STACK_H
#define TLXCRYPTO_STACK_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** An ordered container of pointers. All zeros is an empty one. */
typedef struct STACK {
    void **values;     /**< count pointers; null when there was never a value */
    uint32_t count;    /**< values held */
    uint32_t capacity; /**< values there is room for */
} STACK;

/** Frees one value, which is never null. */
typedef void (*STACK_FREE)(void *value);
/** Returns a copy of one value, which is never null; null on failure. */
typedef void *(*STACK_DUP)(const void *value);

/** Makes an empty container, freed with free_STACK() or free_STACK_values(); null when memory runs out. */
TLXCRYPTO_API STACK *new_STACK(void);
/** Frees the container, but not the values. Ignores null. */
TLXCRYPTO_API void free_STACK(STACK *stack);
/** Calls free_value on every value and frees the container. A null free_value leaves the values alone. */
TLXCRYPTO_API void free_STACK_values(STACK *stack, STACK_FREE free_value);
/** Calls free_value on every value and empties the container. A null free_value leaves the values alone. */
TLXCRYPTO_API void clean_STACK_values(STACK *stack, STACK_FREE free_value);

/** Makes a container with a copy of every value; null for a null stack or dup_value and when a copy fails.
 * free_value frees the copies made until then. */
TLXCRYPTO_API STACK *dup_STACK_values(const STACK *stack, STACK_DUP dup_value, STACK_FREE free_value);

/** Returns the number of values; 0 for null. */
TLXCRYPTO_API uint32_t get_STACK_count(const STACK *stack);
/** Returns the value at a zero-based index, which stays in the container; null when there is none. */
TLXCRYPTO_API void *get_STACK_value(const STACK *stack, uint32_t index);

/** Appends a value, in constant time on average. */
TLXCRYPTO_API uint32_t push_STACK_value(STACK *stack, void *value);
/** Inserts a value before the one at index, or appends it when index is below 0 or above the last one. */
TLXCRYPTO_API uint32_t insert_STACK_value(STACK *stack, void *value, int32_t index);
/** Takes the value at index out and returns it; null when there is none. Later values move up a place. */
TLXCRYPTO_API void *remove_STACK_value(STACK *stack, uint32_t index);
/** Replaces the value at index and returns the old one; does nothing and returns null when there is none. */
TLXCRYPTO_API void *set_STACK_value(STACK *stack, uint32_t index, void *value);

/** Makes room for count values in all, so that pushes up to there cannot fail. */
TLXCRYPTO_API uint32_t reserve_STACK(STACK *stack, uint32_t count);
/** Reverses the order of the values. Ignores null. */
TLXCRYPTO_API void reverse_STACK(STACK *stack);

TLX_END_DECLS

#endif
