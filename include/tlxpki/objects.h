/** @file
 * The object identifier registry: a constant table of 841 identifiers that the library knows by name.
 *
 * A row's index is the library's number for an algorithm, an attribute or an extension. Indexes never change.
 * Row 0 ("UNDEF", "undefined", "0.0") stands for "unknown", and 0 is what every lookup answers when it finds
 * nothing. 48 rows have an empty dotted text: cipher modes that nobody registered an identifier for, and the
 * four placeholder rows 102, 118, 350 and 511, named "(null)". Some texts stand in several rows; a lookup
 * then answers the lowest index, so that "1.3.6.1.5.5.7.48.1.2" is row 366 and never row 831.
 *
 * Dotted texts are compared as texts. Those of fewer than three arcs, but for row 0, are stored with a dot at
 * their end
 * ("2.5.", "1.3."), which the text of a decoded identifier never has. The identifiers of rows 791, 792, 794,
 * 836 and 839 are this library's own choice, because no public registration of them is known. So is the order
 * of rows 778 (SEED-OFB) and 779 (SEED-CFB): of 1.2.410.200004.1.5 and .6, the library gives CFB the first.
 *
 * The texts come from the PKCS, X.500, X.509, PKIX (RFC 5280 and its companions), S/MIME, SET, NIST, ANSI
 * X9.62, SEC 2, KISA, KFTC and GPKI registrations.
 *
 * Thread safety: every function may be called from any number of threads at once. The table is constant;
 * records given as arguments are only read and must not be changed meanwhile.
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

/**
 * The row at an index.
 *
 * @param index a row index
 * @return the row, owned by the library; row 0 for a negative index and for one of 841 or more
 */
TLXPKI_API const OID_ROW *OID_LIST(int32_t index);

/**
 * A new identifier with the dotted text of a row.
 *
 * @param index a row index
 * @return a new record, which the caller frees with free_OBJECT_IDENTIFIER; null for index 0, a negative
 * index, one of 841 or more, a row whose dotted text is empty, and when memory runs out
 */
TLXPKI_API OBJECT_IDENTIFIER *index_to_OBJECT_IDENTIFIER(int32_t index);

/**
 * The short name of a row.
 *
 * @param index a row index
 * @return the text, owned by the library; "UNDEF" for an index that OID_LIST answers with row 0
 */
TLXPKI_API const char *sn_from_index(int32_t index);

/**
 * The long name of a row.
 *
 * @param index a row index
 * @return the text, owned by the library; "undefined" for an index that OID_LIST answers with row 0
 */
TLXPKI_API const char *ln_from_index(int32_t index);

/**
 * Looks a short name up. Upper and lower case are different.
 *
 * @param text the name; needs no NUL at its end, and no octet from text + len on is read
 * @param len  its length in octets; a row matches only when its whole short name has this length
 * @return the lowest index whose short name is the text; 0 for a null text, a length of 0 and an unknown name
 */
TLXPKI_API uint32_t index_from_sn(const char *text, uint32_t len);

/**
 * Looks a long name up. Upper and lower case are different.
 *
 * @param text the name; needs no NUL at its end, and no octet from text + len on is read
 * @param len  its length in octets; a row matches only when its whole long name has this length
 * @return the lowest index whose long name is the text; 0 for a null text, a length of 0 and an unknown name
 */
TLXPKI_API uint32_t index_from_ln(const char *text, uint32_t len);

/**
 * Looks a dotted text up.
 *
 * @param text the dotted text; needs no NUL at its end, and no octet from text + len on is read
 * @param len  its length in octets; a row matches only when its whole dotted text has this length
 * @return the lowest index whose dotted text is the text; 0 for a null text, a length of 0 (rows with an
 * empty dotted text never match) and an unknown identifier
 */
TLXPKI_API uint32_t index_from_oid_string(const char *text, uint32_t len);

/**
 * Looks an identifier up, as index_from_oid_string does with its text and length.
 *
 * @param oid the identifier, may be null
 * @return the lowest index whose dotted text is the identifier's; 0 for a null record, null data, a length
 * below 1 and an unknown identifier
 */
TLXPKI_API uint32_t index_from_OBJECT_IDENTIFIER(const OBJECT_IDENTIFIER *oid);

/**
 * A new identifier by row index or by name.
 *
 * @param name  used when index is 0: a NUL-terminated short name, or else long name; may be null
 * @param index a row index, or 0 to go by the name
 * @return a new record as index_to_OBJECT_IDENTIFIER makes it, which the caller frees with
 *         free_OBJECT_IDENTIFIER; null when the name is null or unknown, when the row found has no dotted
 * text (a long name is not tried then), and in the cases of index_to_OBJECT_IDENTIFIER
 */
TLXPKI_API OBJECT_IDENTIFIER *get_OBJECT_IDENTIFIER(const char *name, uint32_t index);

/**
 * A new identifier from text: "2.5.29.19", or a short or long name of the registry as in
 * get_OBJECT_IDENTIFIER().
 *
 * @param text NUL-terminated. A dotted text is a decoded identifier's, octet for octet: at least two arcs,
 * the first 0 to 2, the second below 40 after 0 and 1, none above 2147483647 or with leading zeros, at most
 * 99 characters
 * @return a new record, which the caller frees with free_OBJECT_IDENTIFIER; null for null, any other text,
 * and when memory runs out
 */
TLXPKI_API OBJECT_IDENTIFIER *text_to_OBJECT_IDENTIFIER(const char *text);

/**
 * Copies an identifier with all its four fields and its text.
 *
 * @param oid the identifier, may be null
 * @return a new record, which the caller frees with free_OBJECT_IDENTIFIER; null for null and when memory
 * runs out
 */
TLXPKI_API OBJECT_IDENTIFIER *dup_OBJECT_IDENTIFIER(const OBJECT_IDENTIFIER *oid);

/**
 * Compares the dotted texts of two identifiers; `type` and `extra` do not count.
 *
 * A null record, null data and a length below 1 all mean "no text", which is shorter than any text.
 *
 * @param a an identifier, may be null
 * @param b an identifier, may be null
 * @return 0 when the texts are equal, and when both arguments have no text; negative when a's text is the
 *         shorter one, or as long as b's and before it in octet order; positive otherwise
 */
TLXPKI_API int32_t cmp_OBJECT_IDENTIFIER(const OBJECT_IDENTIFIER *a, const OBJECT_IDENTIFIER *b);

/**
 * The digest that an algorithm uses.
 *
 * @param oid a digest, a signature with a digest, or a password-based scheme; may be null
 * @return the digest identifier of tlxcrypto/digest.h; 0 when the identifier is unknown or names no digest
 */
TLXPKI_API uint32_t get_DigestID_from_OID(const OBJECT_IDENTIFIER *oid);

/**
 * The cipher or public-key algorithm that an identifier stands for.
 *
 * The result packs, from the top: the algorithm (0x01 AES, 0x02 DES, 0x03 ARIA, 0x04 SEED, 0x05 RC5, 0x06
 * Blowfish, 0x07 RC2, 0x20 RSA, 0x30 DSA, 0x40 KCDSA, 0x50 ECDSA), a variant (0x01 for three-key triple DES),
 * a key-size class (AES 0x01, 0x02 and 0x03 for 128, 192 and 256 bits; DES 0x01 single, 0x02 two-key EDE; RC2
 * 0x01 for 128 bits, 0x02 for 40) and the mode (0x00 ECB, 0x20 CBC, 0x40 CFB, 0x60 OFB). For RSA the low
 * octet is the scheme: 0x00 key, 0x01 PKCS#1 v1.5 signature, 0x02 PSS, 0x08 and 0x10 OAEP.
 *
 * Password-based schemes answer the cipher they use, and "ARIA-ECB" answers as "ARIA-CBC" does.
 * "ecdsa-with-SHA256" answers 0x50000000, while "ecdsa-with-SHA1" answers 0.
 *
 * @param oid a cipher, a password-based scheme, a key type or a signature algorithm; may be null
 * @return the identifier; 0 when the algorithm is unknown or has none
 */
TLXPKI_API uint32_t get_CipherID_from_OID(const OBJECT_IDENTIFIER *oid);

/**
 * The class of an algorithm.
 *
 * @param oid the algorithm, may be null
 * @return 1 for a digest or MAC (and for "RSA-SHA" and "RSA-SHA1", though they are signatures), 2 for a
 * symmetric cipher, 3 for a public-key or signature algorithm, 4 for a password-based scheme, 0 for
 * everything else, to which "ecdsa-with-SHA256" and the NEAT, NES and ARIA ciphers belong
 */
TLXPKI_API uint32_t get_AlgorType_from_OID(const OBJECT_IDENTIFIER *oid);

/**
 * An algorithm that uses a digest: one fixed row for each digest, not always the digest's own. SHA-1 gives
 * "SHA1", but SHA-256 gives "RSA-SHA256"; the SHA-2 digests all give their RSA signature.
 *
 * @param digest_id a digest identifier of tlxcrypto/digest.h
 * @return a new record, which the caller frees with free_OBJECT_IDENTIFIER; null for an unknown digest and
 * when memory runs out
 */
TLXPKI_API OBJECT_IDENTIFIER *get_OID_from_DigestID(uint32_t digest_id);

/**
 * An algorithm that has a cipher or public-key identifier: one fixed row for each, not always the obvious
 * one. 0x04000120 (SEED in CBC mode) gives "GPKIpbeWithSHA1AndSEED-CBC", and 0x20000000 (RSA) gives
 * "RSA", 2.5.8.1.1, not "rsaEncryption".
 *
 * @param cipher_id an identifier as get_CipherID_from_OID returns it
 * @return a new record, which the caller frees with free_OBJECT_IDENTIFIER; null for an unknown identifier,
 * for one whose row has no dotted text (three-key triple DES in ECB, CFB and OFB mode, two-key triple DES in
 *         CFB and OFB mode, RC5 and Blowfish in ECB, CFB and OFB mode), and when memory runs out
 */
TLXPKI_API OBJECT_IDENTIFIER *get_OID_from_CipherID(uint32_t cipher_id);

TLX_END_DECLS

#endif
