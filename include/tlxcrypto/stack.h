#ifndef TLXCRYPTO_STACK_H
#define TLXCRYPTO_STACK_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** An ordered container of pointers, which it does not own. */
typedef struct STACK {
    void **values;
    uint32_t count;
    uint32_t capacity;
} STACK;

typedef void (*STACK_FREE)(void *value);
typedef void *(*STACK_DUP)(const void *value);

TLXCRYPTO_API STACK *new_STACK(void);
/** Frees the container only. */
TLXCRYPTO_API void free_STACK(STACK *stack);
/** Calls free_value on every value, then frees the container. */
TLXCRYPTO_API void free_STACK_values(STACK *stack, STACK_FREE free_value);
/** Calls free_value on every value and empties the container. */
TLXCRYPTO_API void clean_STACK_values(STACK *stack, STACK_FREE free_value);
/** A new container with a copy of every value; null when one of them could not be copied (nothing is kept
 * then). */
TLXCRYPTO_API STACK *dup_STACK_values(const STACK *stack, STACK_DUP dup_value, STACK_FREE free_value);
TLXCRYPTO_API uint32_t get_STACK_count(const STACK *stack);
/** The value at index, null when there is none. */
TLXCRYPTO_API void *get_STACK_value(const STACK *stack, uint32_t index);
/** Appends; 0, or 1 on a null stack or allocation failure (the stack is unchanged then). */
TLXCRYPTO_API uint32_t push_STACK_value(STACK *stack, void *value);
/** Inserts before index; an index below 0 or above the count appends. 0 or 1. */
TLXCRYPTO_API uint32_t insert_STACK_value(STACK *stack, void *value, int32_t index);
/** Takes the value at index out and returns it; null when there is none. */
TLXCRYPTO_API void *remove_STACK_value(STACK *stack, uint32_t index);
/** Replaces the value at index and returns the old one; null when there is none. */
TLXCRYPTO_API void *set_STACK_value(STACK *stack, uint32_t index, void *value);
/** Makes room for count values in all, so that pushes up to there cannot fail. 0 or 1. */
TLXCRYPTO_API uint32_t reserve_STACK(STACK *stack, uint32_t count);
TLXCRYPTO_API void reverse_STACK(STACK *stack);

TLX_END_DECLS

#endif
