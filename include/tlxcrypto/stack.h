/** @file
 * STACK, the ordered container of pointers in which every SEQUENCE OF and SET OF is held.
 *
 * The members may be read directly; only the functions below may change them. A null container is an empty
 * one to all functions that read. Values may be null.
 *
 * Thread safety: distinct containers may be used on distinct threads.
 */
#ifndef TLXCRYPTO_STACK_H
#define TLXCRYPTO_STACK_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** An ordered container of pointers, which it does not own. All zeros is an empty one. */
typedef struct STACK {
    void **values;     /**< count pointers; null when there was never a value */
    uint32_t count;    /**< values held */
    uint32_t capacity; /**< values there is room for */
} STACK;

/** Frees one value. Never called with null. */
typedef void (*STACK_FREE)(void *value);
/** Returns a copy of one value, or null on failure. Never called with null. */
typedef void *(*STACK_DUP)(const void *value);

/** A new empty container, freed with free_STACK or free_STACK_values; null on allocation failure. */
TLXCRYPTO_API STACK *new_STACK(void);

/** Frees the container, but not the values. Null is ignored. */
TLXCRYPTO_API void free_STACK(STACK *stack);

/** Calls free_value on every value, then frees the container. A null free_value leaves the values alone. */
TLXCRYPTO_API void free_STACK_values(STACK *stack, STACK_FREE free_value);

/** Calls free_value on every value and empties the container. A null free_value leaves the values alone. */
TLXCRYPTO_API void clean_STACK_values(STACK *stack, STACK_FREE free_value);

/** A new container with a copy of every value.
 *
 * @param stack       The container to copy.
 * @param dup_value   Copies a value; a null value is copied as null.
 * @param free_value  Frees the copies made so far when one of them fails.
 * @return The new container, or null when stack or dup_value is null or a copy failed; nothing is kept then.
 */
TLXCRYPTO_API STACK *dup_STACK_values(const STACK *stack, STACK_DUP dup_value, STACK_FREE free_value);

/** The number of values, 0 for null. */
TLXCRYPTO_API uint32_t get_STACK_count(const STACK *stack);

/** The value at index, counted from 0; null when there is none. It stays in the container. */
TLXCRYPTO_API void *get_STACK_value(const STACK *stack, uint32_t index);

/** Appends a value, in constant time on average.
 *
 * @return 0, or 1 on a null container or allocation failure (the container is unchanged then).
 */
TLXCRYPTO_API uint32_t push_STACK_value(STACK *stack, void *value);

/** Inserts a value before the one at index, which moves those from there on; an index below 0 or above the
 * last one appends.
 *
 * @return 0, or 1 on a null container or allocation failure (the container is unchanged then).
 */
TLXCRYPTO_API uint32_t insert_STACK_value(STACK *stack, void *value, int32_t index);

/** Takes the value at index out, moves those behind it up, and returns it; null when there is none. Each call
 * takes as many steps as values move: to empty a long list, remove from its end.
 */
TLXCRYPTO_API void *remove_STACK_value(STACK *stack, uint32_t index);

/** Puts value in the place of the one at index and returns that one; null, and nothing is stored, when there
 * is none. */
TLXCRYPTO_API void *set_STACK_value(STACK *stack, uint32_t index, void *value);

/** Makes room for count values in all, so that pushes up to there cannot fail.
 *
 * @return 0, or 1 on a null container or allocation failure (the container is unchanged then).
 */
TLXCRYPTO_API uint32_t reserve_STACK(STACK *stack, uint32_t count);

/** Reverses the order of the values. Null is ignored. */
TLXCRYPTO_API void reverse_STACK(STACK *stack);

TLX_END_DECLS

#endif
