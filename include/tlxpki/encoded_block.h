/** @file
 * All that stands in a file: every PEM block of it, or one DER element.
 *
 * PEM is read as it is met (RFC 7468, and the headers of RFC 1421): with a UTF-8 byte order mark, any line
 * ends, spaces at the ends of lines, text before, between and after the blocks. A file is PEM when a line
 * begins with
 * "-----BEGIN " and nothing but text stands before it; otherwise it is one block of DER without a label.
 *
 *     ENCODED_BLOCKS *blocks = NULL;
 *     if (readENCODED_BLOCKS_from_File(path, &blocks) == 0) {
 *         for (uint32_t i = 0; i < get_ENCODED_BLOCKS_count(blocks); i++) {
 *             const ENCODED_BLOCK *block = get_ENCODED_BLOCKS_child(blocks, i);
 *             if (block->status != 0) fprintf(stderr, "line %u: 0x%08X\n", block->line, block->status);
 *             ...
 *         }
 *         free_ENCODED_BLOCKS(blocks);
 *     }
 *
 * Every function may be called from any thread, on distinct lists at the same time.
 */
#ifndef TLXPKI_ENCODED_BLOCK_H
#define TLXPKI_ENCODED_BLOCK_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/**
 * A PEM block, or a whole DER file. Its list owns it and what it holds.
 *
 * status is 0, or why the contents are not one element:
 * - 0x4E010000 the line "-----BEGIN" or "-----END" is not complete
 * - 0x4E010012 the text is empty or is not Base64
 * - 0x4E010047 the line "-----END" is missing
 * - 0x4E010048 the line "-----END" has another label
 * - 0x4E01004F the contents, which are there, are not exactly one element
 * - 0x4E010114 the contents are encrypted ("Proc-Type: 4,ENCRYPTED"); contents holds the text of the block,
 * which readPKCS1_from_Binary() takes
 *
 * The trust settings of OpenSSL after the certificate in a "TRUSTED CERTIFICATE" are left out of the
 * contents.
 */
typedef struct ENCODED_BLOCK {
    const char *label;     /**< between "-----BEGIN " and "-----", with a NUL after it; empty for DER */
    uint32_t offset;       /**< where the block begins in the input, in octets */
    uint32_t length;       /**< octets it takes in the input */
    uint32_t line;         /**< where it begins, counted from 1; 0 for DER */
    uint32_t status;       /**< 0, or a status as above */
    uint8_t *contents;     /**< the octets that the block encodes; null when they cannot be had */
    uint32_t contents_len; /**< how many */
} ENCODED_BLOCK;

/** ENCODED_BLOCK entries, in the order of the input. */
typedef STACK ENCODED_BLOCKS;

/**
 * Reads all blocks of an input. A block that cannot be decoded is listed with its reason, and reading goes on
 * after it. Memory: up to eight times the input when it is made of nothing but empty blocks.
 * @param octets the input, which needs no NUL; may be null when len is 0
 * @param len    how many octets
 * @param out    receives the list, of one block at least, freed with free_ENCODED_BLOCKS(); unchanged on
 * failure
 * @return 0, whatever the statuses of the blocks
 * @return 0x4E010049 for a null argument
 * @return 0x4E01002B when the input is empty
 * @return 0x4E01003C when memory runs out
 */
TLXPKI_API uint32_t readENCODED_BLOCKS_from_Buffer(const uint8_t *octets, uint32_t len, ENCODED_BLOCKS **out);

/**
 * Reads all blocks of a file.
 * @param path the file, as <tlxcrypto/file.h> takes it
 * @param out  as for readENCODED_BLOCKS_from_Buffer()
 * @return as readENCODED_BLOCKS_from_Buffer(); 0x4E01002B also when the file cannot be read
 */
TLXPKI_API uint32_t readENCODED_BLOCKS_from_File(const char *path, ENCODED_BLOCKS **out);

/** The number of blocks; 0 for null. */
TLXPKI_API uint32_t get_ENCODED_BLOCKS_count(const ENCODED_BLOCKS *blocks);

/** The block at an index, counted from 0, which stays the list's; null when there is none. */
TLXPKI_API const ENCODED_BLOCK *get_ENCODED_BLOCKS_child(const ENCODED_BLOCKS *blocks, uint32_t index);

/** Wipes and frees the blocks and their list. Null is ignored. */
TLXPKI_API void free_ENCODED_BLOCKS(ENCODED_BLOCKS *blocks);

TLX_END_DECLS

#endif
