/** @file
 * Whole files, and octets as hexadecimal text.
 *
 * Paths are UTF-8. On Windows a path that is not valid UTF-8 is read in the ANSI code page, as older programs
 * pass it (949 on Korean Windows). Elsewhere its octets go to the system unchanged.
 *
 * - Ownership: the caller frees new buffers and texts with tlx_free().
 * - Failure: functions return 0, or 1 for a null argument, a file that cannot be opened, read or written, and
 *   when memory runs out. A failing function stores nothing. Octets to read from may be null when len is 0.
 * - Threads: every function may be called from any thread.
 */
#ifndef TLXCRYPTO_FILE_H
#define TLXCRYPTO_FILE_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** Reads a whole file in binary mode. Returns 1 also for a directory and for more than 0x7FFFFFFF octets.
 * @param octets receives a new buffer, with a zero octet after the last one
 * @param len receives the octets of the file, without the zero octet */
TLXCRYPTO_API uint32_t File_to_binary(const char *path, uint8_t **octets, uint32_t *len);

/** Writes a file in binary mode or replaces an existing one. After a failure it may be incomplete. */
TLXCRYPTO_API uint32_t binary_to_File(const char *path, const uint8_t *octets, uint32_t len);

/** Writes a file for a secret: it is its owner's alone (mode 0600) before the first octet is written. An
 * existing file loses the permissions of others; where the file system has none to take away, as on many
 * memory sticks, it stays as it is. On Windows the folder decides who has access. Pipes and devices are
 * written to as they are. Returns 1 also, with the file unchanged, when others may read or write it and the
 * caller may not change its permissions. */
TLXCRYPTO_API uint32_t binary_to_private_File(const char *path, const uint8_t *octets, uint32_t len);

/** Prints octets to standard output as upper-case hexadecimal digits, with nothing between or after them. */
TLXCRYPTO_API void print_hex(const uint8_t *octets, uint32_t len);

/** Makes upper-case hexadecimal text of 2 * len digits; null for null octets and when memory runs out. */
TLXCRYPTO_API char *binary_to_hex(const uint8_t *octets, uint32_t len);

/** Makes octets from hexadecimal digits of either case with nothing between them. Returns 1 also for an odd
 * number of digits and any other character.
 * @param hex hex_len digits, which need no NUL; none give an empty buffer
 * @param octets receives a new buffer of hex_len / 2 octets, *len */
TLXCRYPTO_API uint32_t hex_to_binary(const char *hex, uint32_t hex_len, uint8_t **octets, uint32_t *len);

TLX_END_DECLS

#endif
