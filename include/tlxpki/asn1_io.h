/** @file
 * Nodes and records to and from octets and files.
 *
 * These rules hold for all functions:
 *
 * - A decoder is the Seq_to_ function of a type, an encoder its _to_Seq function. TLX_DECODER() and
 * TLX_ENCODER() turn them into arguments.
 * - A reader fills the record that *out points to, or sets a null *out to a new one, as its decoder says. It
 *   returns the decoder's status unchanged. The decoder sees the octets where they are, in a node that is
 * valid while it runs. The readers ignore octets after the element.
 * - A writer returns a number of octets, not a status, and 0xFFFFFFFF on failure: for a null argument, an
 * empty node or one whose length cannot be read, when the encoder or the file fails, and when memory runs
 * out. The encoder decides on a null record. The caller frees *out with tlx_free(); it is unchanged on
 * failure.
 * - Paths are as <tlxcrypto/file.h> takes them. The functions make or replace the files they write. Only the
 *   umask keeps others from reading a new file: for a private key use writeDER_to_Binary() and
 *   binary_to_private_File() of <tlxcrypto/file.h>, or the writers of <tlxpki/pkcs1.h>.
 * - Every function may be called from any thread, on distinct records at the same time.
 */
#ifndef TLXPKI_ASN1_IO_H
#define TLXPKI_ASN1_IO_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/**
 * Writes identifier, length octets and contents as the node holds them, and 00 00 after an indefinite length,
 * to a new block of octets. Returns their number.
 */
TLXPKI_API uint32_t ASN1_to_binary(const ASN1_UNIT *node, uint8_t **out);

/** ASN1_to_binary() to a file. Fails also when not all octets can be written. */
TLXPKI_API uint32_t ASN1_to_FILE(const ASN1_UNIT *node, const char *path);

/**
 * Reads the element whose identifier octet is at `der`, without a length: see "Functions without a length" in
 * <tlxpki/asn1.h>. With a length readDER_from_Buffer() reads it.
 *
 *     X509_CERT *cert = NULL;
 *     uint32_t status = readDER_from_Binary((void **)&cert, TLX_DECODER(Seq_to_X509_CERT), der);
 *
 * @return the decoder's status
 * @return 0x4300002B for null octets
 * @return 0x43000049 for a null decoder
 * @return 0x4300004F for an element that cannot be read
 */
TLXPKI_API uint32_t readDER_from_Binary(void **out, ASN1_DECODER decoder, const uint8_t *der);

/**
 * Reads the element at the start of `len` octets, past which it reads none, as X.690 says. The statuses are
 * those of readDER_from_Binary(); 0x4300004F also for an element that does not end within the octets.
 */
TLXPKI_API uint32_t readDER_from_Buffer(void **out, ASN1_DECODER decoder, const uint8_t *der, uint32_t len);

/** Converts a record to DER in a new block of octets. Returns their number. */
TLXPKI_API uint32_t writeDER_to_Binary(const void *object, ASN1_ENCODER encoder, uint8_t **out);

/**
 * Reads the element at the start of a file as readDER_from_Buffer() does, with its statuses; 0x4300002B for a
 * null path and a file that cannot be read.
 */
TLXPKI_API uint32_t readDER_from_File(void **out, ASN1_DECODER decoder, const char *path);

/**
 * Converts a record to DER in a file. Returns the number of octets; 1 for a null encoder and when the encoder
 * fails.
 */
TLXPKI_API uint32_t writeDER_to_FILE(const void *object, ASN1_ENCODER encoder, const char *path);

/**
 * Writes the digest of a record's DER encoding to `digest` and returns its number of octets. `digest_id` is a
 * TLX_DIGEST_ value; `digest` has room for get_DigestLength() octets, TLX_DIGEST_MAX_LENGTH at most. Returns
 * 0 for a null argument, a digest that is not available, when the encoder fails, and when memory runs out.
 */
TLXPKI_API uint32_t get_ASN1_hash(const void *object, ASN1_ENCODER encoder, uint32_t digest_id,
                                  uint8_t *digest);

TLX_END_DECLS

#endif
