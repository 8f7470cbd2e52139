/** @file
 * Whole files, and octets as hexadecimal text.
 *
 * Paths are UTF-8. On Windows a path that is not valid UTF-8 is taken to be in the ANSI code page, as older
 * programs pass it (949 on Korean Windows). Elsewhere the octets go to the system as they are. Buffers and
 * texts that a function makes are freed with tlx_free.
 *
 * Thread safety: every function may be called from any thread; print_hex shares standard output with whoever
 * else writes to it.
 */
#ifndef TLXCRYPTO_FILE_H
#define TLXCRYPTO_FILE_H

#include <stdint.h>
#include <tlxcrypto/export.h>

TLX_BEGIN_DECLS

/** Reads a whole file into a new buffer, with a zero octet after its last one.
 *
 * @param path    The file, read in binary mode.
 * @param octets  Receives the buffer; an empty file gives a buffer of the zero octet alone.
 * @param len     Receives the octets of the file, without the zero octet.
 * @return 0, or 1 when an argument is null, the file cannot be read (a directory never can), it is longer
 * than 0x7FFFFFFF octets, or there is not enough memory; nothing is stored then.
 */
TLXCRYPTO_API uint32_t File_to_binary(const char *path, uint8_t **octets, uint32_t *len);

/** Writes a file anew, in binary mode; an existing one is replaced.
 *
 * @param octets  May be null when len is 0, which makes an empty file.
 * @return 0, or 1 when path or octets is null or the file cannot be opened or written; it may be incomplete
 * then.
 */
TLXCRYPTO_API uint32_t binary_to_File(const char *path, const uint8_t *octets, uint32_t len);

/** The same for a secret: the file is its owner's alone (mode 0600) before the first octet is written. One
 * that others may read or write loses that; where the file system has no permissions to take away, as on many
 * memory sticks, it stays as it is. On Windows a file's access is that of its folder. Pipes and devices are
 * written to as they are.
 *
 * @return as binary_to_File; 1 also when others may read or write the file and its permissions are not the
 * caller's to change, and the file is unchanged then.
 */
TLXCRYPTO_API uint32_t binary_to_private_File(const char *path, const uint8_t *octets, uint32_t len);

/** Prints len octets as upper-case hexadecimal digits to standard output, with nothing between or after them.
 */
TLXCRYPTO_API void print_hex(const uint8_t *octets, uint32_t len);

/** New upper-case hexadecimal text of 2 * len digits.
 *
 * @return The text, or null when octets is null (and len is not 0) or there is not enough memory.
 */
TLXCRYPTO_API char *binary_to_hex(const uint8_t *octets, uint32_t len);

/** New octets from hexadecimal digits of either case, without anything between them.
 *
 * @param hex      hex_len digits; need not end in a zero octet.
 * @param hex_len  An even number; 0 gives an empty buffer.
 * @param octets   Receives the buffer.
 * @param len      Receives its length, hex_len / 2.
 * @return 0, or 1 when an argument is null, hex_len is odd, a character is not a digit, or there is not
 * enough memory; nothing is stored then.
 */
TLXCRYPTO_API uint32_t hex_to_binary(const char *hex, uint32_t hex_len, uint8_t **octets, uint32_t *len);

TLX_END_DECLS

#endif
