/** @file
 * PEM: the Base64 of a DER element between "-----BEGIN label-----" and "-----END label-----" lines (RFC
 * 7468). The label is written, but not checked when reading.
 *
 * - Arguments: texts and labels need no NUL; a label may be null when label_len is 0. decoder is
 *   Seq_to_<TYPE>, converted with TLX_DECODER, and receives out; encoder is <TYPE>_to_Seq, converted with
 *   TLX_ENCODER, and receives object.
 * - Ownership: the caller frees a text, which ends in a NUL, or octets with tlx_free().
 * - Failure: functions that return a length (a text's without its NUL) return a value below instead of it,
 *   and leave the caller's pointer unchanged. The reading functions leave out to the decoder.
 * - Threads: every function may be called from any thread, on distinct objects at the same time.
 */
#ifndef TLXPKI_PEM_H
#define TLXPKI_PEM_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/** Puts the two lines around a Base64 text, which may be empty; the result ends in a line feed. Returns its
 * length, len + 2 * label_len + 33; 0 for a null argument, a negative len, a result longer than 0x7FFFFFFF
 * and when memory runs out. */
TLXPKI_API uint32_t base64ToPEM(const char *base64, int32_t len, const char *label, uint32_t label_len,
                                char **out);

/** Encodes len octets, at least 1, to PEM. wrap 1 makes lines of 64 characters, any other value one line.
 * Returns the length of the text; 0 when encode_Base64() or base64ToPEM() fails. */
TLXPKI_API uint32_t encode_PEM(const uint8_t *der, uint32_t len, const char *label, uint32_t label_len,
                               char **out, uint32_t wrap);

/** Decodes the body of a PEM text. The text begins with the header line, which the first run of five "-" at
 * or after offset 5 ends. The body starts after that line and any blank lines, and ends at the next "-".
 * Returns the number of octets; 0 for a null argument, a text that is shorter than 20 characters or begins
 * with "=", one without a body or without "-" after it, a body that is not Base64, and when memory runs out.
 */
TLXPKI_API uint32_t decode_PEM(const char *pem, int32_t len, uint8_t **der);

/** Reads a structure from a PEM text and ignores octets after its DER element. Returns the decoder's status;
 * 0x4E00002B when pem or decoder is null or decode_PEM() fails; 0x4E00004F for octets that are no complete
 * DER element and when memory runs out. */
TLXPKI_API uint32_t readPEM_from_Binary(void **out, ASN1_DECODER decoder, const char *pem, uint32_t len);

/** Writes a structure as a PEM text with lines of 64 characters. Returns the length of the text; 0x4E00002B
 * when out is null; 0xFFFFFFFF when encoder is null, the encoder or the PEM encoding fails and when memory
 * runs out. */
TLXPKI_API uint32_t writePEM_to_Binary(const void *object, ASN1_ENCODER encoder, const char *label,
                                       uint32_t label_len, char **out);

/** Reads a structure from a PEM file. Returns as readPEM_from_Binary(), and 0x4E00002B for an unreadable
 * file. */
TLXPKI_API uint32_t readPEM_from_File(void **out, ASN1_DECODER decoder, const char *path);

/** Writes a structure to a PEM file and replaces an existing one. Only the umask keeps others from reading a
 * new file: for a private key use writePEM_to_Binary() and binary_to_private_File() of <tlxcrypto/file.h>, or
 * the writers of <tlxpki/pkcs1.h>. Returns the number of octets written; 0x4E00002B when path is null;
 * 0xFFFFFFFF as writePEM_to_Binary(), and when the file cannot be written. */
TLXPKI_API uint32_t writePEM_to_FILE(const void *object, ASN1_ENCODER encoder, const char *label,
                                     uint32_t label_len, const char *path);

TLX_END_DECLS

#endif
