/** @file
 * The object identifier registry: a constant table of 841 identifiers that the library knows by name.
 *
 * A row's index is the library's number for an algorithm, an attribute or an extension. Indexes never change.
 * Row 0 ("UNDEF", "undefined", "0.0") means "unknown". 48 rows have an empty dotted text: cipher modes
 * without a registered identifier, and the four placeholder rows 102, 118, 350 and 511, named "(null)".
 * Dotted texts of fewer than three arcs, except row 0's, have a dot at their end ("2.5.", "1.3."), which the
 * text of a decoded identifier never has. The identifiers of rows 791, 792, 794, 836 and 839 are this
 * library's own choice, because no public registration of them is known. So is the order of rows 778
 * (SEED-OFB) and 779 (SEED-CFB): of 1.2.410.200004.1.5 and .6, CFB has the first.
 *
 * The texts come from the PKCS, X.500, X.509, PKIX (RFC 5280 and its companions), S/MIME, SET, NIST, ANSI
 * X9.62, SEC 2, KISA, KFTC and GPKI registrations.
 *
 * - Ownership: the texts and rows that a function returns are constants of the library. The caller frees a
 *   new identifier with free_OBJECT_IDENTIFIER().
 * - Look-ups compare whole texts and distinguish upper and lower case. A text needs no NUL; no octet from
 *   text + len on is read. They return the lowest index of several, so "1.3.6.1.5.5.7.48.1.2" is row 366 and
 *   never row 831; 0 when nothing is found, for a null argument and an empty text.
 * - Failure: a function that makes an identifier returns null for a null argument, an unknown row, name or
 *   number, a row without a dotted text, and when memory runs out.
 * - Threads: every function may be called from any thread, on records that nobody changes meanwhile.
 */
#ifndef TLXPKI_OBJECTS_H
#define TLXPKI_OBJECTS_H

#include <tlxpki/object_names.h>
#include <tlxpki/types.h>

/** Rows of the registry: indexes run from 0 to TLX_OID_COUNT - 1. */
#define TLX_OID_COUNT 841

TLX_BEGIN_DECLS

/** One row of the registry. The texts are constant, NUL-terminated and never null. */
typedef struct OID_ROW {
    const char *short_name; /**< for example "CN"; unique but for "(null)" and "NULL" */
    const char *long_name;  /**< for example "commonName" */
    const char *dotted;     /**< for example "2.5.4.3"; may be empty */
} OID_ROW;

/** Returns the row at an index; row 0 for a negative index and for 841 or more. */
TLXPKI_API const OID_ROW *OID_LIST(int32_t index);
/** Makes an identifier with the dotted text of a row. Returns null also for row 0. */
TLXPKI_API OBJECT_IDENTIFIER *index_to_OBJECT_IDENTIFIER(int32_t index);
/** Returns the short name of the row that OID_LIST() returns. */
TLXPKI_API const char *sn_from_index(int32_t index);
/** Returns the long name of the row that OID_LIST() returns. */
TLXPKI_API const char *ln_from_index(int32_t index);

/** Looks up a short name. */
TLXPKI_API uint32_t index_from_sn(const char *text, uint32_t len);
/** Looks up a long name. */
TLXPKI_API uint32_t index_from_ln(const char *text, uint32_t len);
/** Looks up a dotted text. */
TLXPKI_API uint32_t index_from_oid_string(const char *text, uint32_t len);
/** Looks up the dotted text of an identifier. */
TLXPKI_API uint32_t index_from_OBJECT_IDENTIFIER(const OBJECT_IDENTIFIER *oid);

/** Makes an identifier as index_to_OBJECT_IDENTIFIER() does, by a row's index or, when that is 0, by a
 * NUL-terminated name: a short name, or else a long one. When the short name's row has no dotted text, the
 * function returns null and does not try long names. */
TLXPKI_API OBJECT_IDENTIFIER *get_OBJECT_IDENTIFIER(const char *name, uint32_t index);

/** Makes an identifier from a NUL-terminated text: a name as in get_OBJECT_IDENTIFIER(), or a dotted text
 * exactly as the decoder writes it. That has at least two arcs and at most 99 characters. The first arc is 0
 * to 2, the second below 40 after 0 and 1, and none is above 2147483647 or has leading zeros. Returns null
 * for any other text. */
TLXPKI_API OBJECT_IDENTIFIER *text_to_OBJECT_IDENTIFIER(const char *text);

/** Copies an identifier with all its four fields. */
TLXPKI_API OBJECT_IDENTIFIER *dup_OBJECT_IDENTIFIER(const OBJECT_IDENTIFIER *oid);

/** Compares the dotted texts of two identifiers and ignores `type` and `extra`. A null record, null data and
 * a length below 1 all mean "no text", which is shorter than any text. Returns 0 when the texts are equal or
 * both missing; below 0 when a's text is shorter, or as long and before b's in octet order; else above 0. */
TLXPKI_API int32_t cmp_OBJECT_IDENTIFIER(const OBJECT_IDENTIFIER *a, const OBJECT_IDENTIFIER *b);

/** Returns the digest (an identifier of tlxcrypto/digest.h) of a digest, a signature with a digest, or a
 * password-based scheme; 0 when the algorithm is null, unknown or has none. */
TLXPKI_API uint32_t get_DigestID_from_OID(const OBJECT_IDENTIFIER *oid);

/** Returns the cipher or public-key identifier of a cipher, a password-based scheme, a key type or a
 * signature algorithm; 0 when the algorithm is null, unknown or has none.
 *
 * The identifier packs, from the top: the algorithm (0x01 AES, 0x02 DES, 0x03 ARIA, 0x04 SEED, 0x05 RC5, 0x06
 * Blowfish, 0x07 RC2, 0x20 RSA, 0x30 DSA, 0x40 KCDSA, 0x50 ECDSA), a variant (0x01 for three-key triple DES),
 * a key-size class (AES 0x01, 0x02 and 0x03 for 128, 192 and 256 bits; DES 0x01 single, 0x02 two-key EDE; RC2
 * 0x01 for 128 bits, 0x02 for 40) and the mode (0x00 ECB, 0x20 CBC, 0x40 CFB, 0x60 OFB). For RSA the low
 * octet is the scheme: 0x00 key, 0x01 PKCS#1 v1.5 signature, 0x02 PSS, 0x08 and 0x10 OAEP.
 *
 * A password-based scheme gives its cipher, "ARIA-ECB" what "ARIA-CBC" gives, and "ecdsa-with-SHA1" 0. */
TLXPKI_API uint32_t get_CipherID_from_OID(const OBJECT_IDENTIFIER *oid);

/** Returns the class of an algorithm: 1 for a digest or MAC (and the signatures "RSA-SHA" and "RSA-SHA1"), 2
 * for a symmetric cipher, 3 for a public-key or signature algorithm, 4 for a password-based scheme; 0 for
 * null and everything else, which includes "ecdsa-with-SHA256" and the NEAT, NES and ARIA ciphers. */
TLXPKI_API uint32_t get_AlgorType_from_OID(const OBJECT_IDENTIFIER *oid);

/** Makes the identifier of an algorithm that uses a digest of tlxcrypto/digest.h, one fixed row for each: for
 * SHA-1 it is "SHA1", but for a SHA-2 digest its RSA signature, as "RSA-SHA256". */
TLXPKI_API OBJECT_IDENTIFIER *get_OID_from_DigestID(uint32_t digest_id);

/** Makes the identifier of an algorithm that get_CipherID_from_OID() gives a number, one fixed row for each
 * and not always the obvious one: 0x04000120 (SEED in CBC mode) gives "GPKIpbeWithSHA1AndSEED-CBC", and
 * 0x20000000 (RSA) gives "RSA", 2.5.8.1.1, not "rsaEncryption". These rows have no dotted text: three-key
 * triple DES in ECB, CFB and OFB mode, two-key triple DES in CFB and OFB mode, RC5 and Blowfish in ECB, CFB
 * and OFB mode. */
TLXPKI_API OBJECT_IDENTIFIER *get_OID_from_CipherID(uint32_t cipher_id);

TLX_END_DECLS

#endif
