/** @file
 * Nodes and records to and from octets and files.
 *
 * Paths are as <tlxcrypto/file.h> takes them. Every function may be called from any thread, on distinct
 * records at the same time.
 */
#ifndef TLXPKI_ASN1_IO_H
#define TLXPKI_ASN1_IO_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/**
 * Writes a node as octets: identifier, length octets and contents as the node holds them, and 00 00 after an
 * indefinite length.
 * @param node the node
 * @param out  receives the octets, freed with tlx_free(); unchanged on failure
 * @return number of octets; 0xFFFFFFFF for a null argument, an empty node, one whose length cannot be read,
 * and when memory runs out
 */
TLXPKI_API uint32_t ASN1_to_binary(const ASN1_UNIT *node, uint8_t **out);

/**
 * Writes a node to a file, which is made or replaced.
 *
 * The umask alone keeps others from reading a new file: for a private key use ASN1_to_binary() and
 * binary_to_private_File() of <tlxcrypto/file.h>, or the writers of <tlxpki/pkcs1.h>.
 * @param node the node
 * @param path the file
 * @return number of octets written; 0xFFFFFFFF where ASN1_to_binary() fails, for a null path, and when the
 * file cannot be opened or not all octets can be written
 */
TLXPKI_API uint32_t ASN1_to_FILE(const ASN1_UNIT *node, const char *path);

/**
 * Reads the element at `der` and converts it to a record. No size is passed: the caller vouches for a
 * complete element, as with decodeToDERSequence(). The decoder sees the octets where they are, in a node that
 * is valid while it runs. Use readDER_from_Buffer() for octets that come from elsewhere.
 *
 *     X509_CERT *cert = NULL;
 *     uint32_t status = readDER_from_Binary((void **)&cert, TLX_DECODER(Seq_to_X509_CERT), der);
 *
 * @param out     the record to fill, or null to receive a new one; as the decoder says
 * @param decoder the type's Seq_to_ function
 * @param der     the identifier octet of the element
 * @return the decoder's status
 * @return 0x4300002B for null octets
 * @return 0x43000049 for a null decoder
 * @return 0x4300004F for a length that is refused
 */
TLXPKI_API uint32_t readDER_from_Binary(void **out, ASN1_DECODER decoder, const uint8_t *der);

/**
 * readDER_from_Binary() within bounds. Octets after the element are ignored.
 * @param len octets at `der`, none of which is read past the last
 * @return as readDER_from_Binary(); 0x4300004F also for an element that does not end within `len` octets
 */
TLXPKI_API uint32_t readDER_from_Buffer(void **out, ASN1_DECODER decoder, const uint8_t *der, uint32_t len);

/**
 * Converts a record to DER.
 * @param object  the record
 * @param encoder the type's _to_Seq function
 * @param out     receives the octets, freed with tlx_free(); unchanged on failure
 * @return number of octets (no status); 0xFFFFFFFF for a null encoder or out, when the encoder fails, and
 * when memory runs out
 */
TLXPKI_API uint32_t writeDER_to_Binary(const void *object, ASN1_ENCODER encoder, uint8_t **out);

/**
 * Reads a file and converts the element at its start to a record, within the bounds of the file.
 * @param path the file
 * @return as readDER_from_Buffer(); 0x4300002B for a null path and a file that cannot be read
 */
TLXPKI_API uint32_t readDER_from_File(void **out, ASN1_DECODER decoder, const char *path);

/**
 * Converts a record to DER and writes it to a file, which is made or replaced.
 *
 * The umask alone keeps others from reading a new file: for a private key use writeDER_to_Binary() and
 * binary_to_private_File() of <tlxcrypto/file.h>, or the writers of <tlxpki/pkcs1.h>.
 * @param object  the record
 * @param encoder the type's _to_Seq function
 * @param path    the file
 * @return number of octets written
 * @return 1 when the encoder is null or fails
 * @return 0xFFFFFFFF for a null path, and where ASN1_to_FILE() fails
 */
TLXPKI_API uint32_t writeDER_to_FILE(const void *object, ASN1_ENCODER encoder, const char *path);

/**
 * The digest of a record's DER encoding.
 * @param object    the record
 * @param encoder   the type's _to_Seq function
 * @param digest_id a TLX_DIGEST_ value
 * @param digest    receives the digest; room for get_DigestLength() octets, TLX_DIGEST_MAX_LENGTH at most
 * @return octets of the digest; 0 for a null argument, a digest that is not available, when the encoder
 * fails, and when memory runs out
 */
TLXPKI_API uint32_t get_ASN1_hash(const void *object, ASN1_ENCODER encoder, uint32_t digest_id,
                                  uint8_t *digest);

TLX_END_DECLS

#endif
