/** @file
 * PEM: the Base64 of a DER element between "-----BEGIN label-----" and "-----END label-----" lines (RFC
 * 7468).
 *
 * The label is written, but not checked on input. Every function may be called from any thread, on distinct
 * objects at the same time.
 */
#ifndef TLXPKI_PEM_H
#define TLXPKI_PEM_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/**
 * Puts the two lines around a Base64 text; the text ends in a line feed.
 * @param base64    the text, which needs no NUL
 * @param len       its length; may be 0, not negative
 * @param label     the label, which needs no NUL; may be null when label_len is 0
 * @param label_len its length
 * @param out       receives a NUL-terminated text, freed with tlx_free(); unchanged on failure
 * @return the length of the text without the NUL: len + 2 * label_len + 33
 * @return 0 for a null argument, a negative len, a result longer than 0x7FFFFFFF, and when memory runs out
 */
TLXPKI_API uint32_t base64ToPEM(const char *base64, int32_t len, const char *label, uint32_t label_len,
                                char **out);

/**
 * Encodes octets to PEM.
 * @param der       the octets
 * @param len       how many, at least 1
 * @param label     the label, as for base64ToPEM()
 * @param label_len its length
 * @param out       receives a NUL-terminated text, freed with tlx_free(); unchanged on failure
 * @param wrap      1: lines of 64 characters; any other value: one line
 * @return the length of the text without the NUL
 * @return 0 when encode_Base64() or base64ToPEM() fails
 */
TLXPKI_API uint32_t encode_PEM(const uint8_t *der, uint32_t len, const char *label, uint32_t label_len,
                               char **out, uint32_t wrap);

/**
 * Decodes the body of a PEM text. The text is taken to begin with the header line: the first run of five "-"
 * at or after offset 5 ends it. The body starts after that line and any blank lines, and reaches to the next
 * "-".
 * @param pem the text, which needs no NUL
 * @param len its length
 * @param der receives the octets, freed with tlx_free(); unchanged on failure
 * @return the number of octets
 * @return 0 for a null argument, a text that is shorter than 20 characters or begins with "=", one without
 *         a body or without "-" after it, a body that is not Base64, and when memory runs out
 */
TLXPKI_API uint32_t decode_PEM(const char *pem, int32_t len, uint8_t **der);

/**
 * Reads a structure from a PEM text. Octets after its DER element are ignored.
 * @param out     given to the decoder
 * @param decoder Seq_to_<TYPE>, converted with TLX_DECODER
 * @param pem     the text, which needs no NUL
 * @param len     its length
 * @return the decoder's status
 * @return 0x4E00002B when pem or decoder is null or decode_PEM() fails
 * @return 0x4E00004F when the octets are not a complete DER element, or memory runs out
 */
TLXPKI_API uint32_t readPEM_from_Binary(void **out, ASN1_DECODER decoder, const char *pem, uint32_t len);

/**
 * Writes a structure as a PEM text with lines of 64 characters.
 * @param object    given to the encoder
 * @param encoder   <TYPE>_to_Seq, converted with TLX_ENCODER
 * @param label     the label, as for base64ToPEM()
 * @param label_len its length
 * @param out       receives a NUL-terminated text, freed with tlx_free(); unchanged on failure
 * @return the length of the text without the NUL
 * @return 0x4E00002B when out is null
 * @return 0xFFFFFFFF when encoder is null, the encoder or the PEM encoding fails, or memory runs out
 */
TLXPKI_API uint32_t writePEM_to_Binary(const void *object, ASN1_ENCODER encoder, const char *label,
                                       uint32_t label_len, char **out);

/**
 * Reads a structure from a PEM file.
 * @param out     given to the decoder
 * @param decoder Seq_to_<TYPE>, converted with TLX_DECODER
 * @param path    the file
 * @return as readPEM_from_Binary(); 0x4E00002B also when the file cannot be read
 */
TLXPKI_API uint32_t readPEM_from_File(void **out, ASN1_DECODER decoder, const char *path);

/**
 * Writes a structure to a PEM file, which is made anew.
 *
 * The umask alone keeps others from reading a new file: for a private key use writePEM_to_Binary() and
 * binary_to_private_File() of <tlxcrypto/file.h>, or the writers of <tlxpki/pkcs1.h>.
 * @param object    given to the encoder
 * @param encoder   <TYPE>_to_Seq, converted with TLX_ENCODER
 * @param label     the label, as for base64ToPEM()
 * @param label_len its length
 * @param path      the file
 * @return the number of octets written
 * @return 0x4E00002B when path is null
 * @return 0xFFFFFFFF as writePEM_to_Binary(), and when the file cannot be written
 */
TLXPKI_API uint32_t writePEM_to_FILE(const void *object, ASN1_ENCODER encoder, const char *label,
                                     uint32_t label_len, const char *path);

TLX_END_DECLS

#endif
