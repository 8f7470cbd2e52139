/** @file
 * The records that all modules share, and what holds for all functions of the library.
 *
 * - Ownership: the caller frees what a function returns as new with the free_ function of its type, octets
 *   and texts with tlx_free(). A clean_ function frees what a record holds and keeps the record. Both ignore
 *   null. A function copies its arguments unless its documentation says that it takes them over.
 * - Failure: a status says where and why a function failed (<tlxpki/status.h>).
 * - Threads: functions may run on many threads at once on distinct records, and share records that nobody
 *   changes.
 */
#ifndef TLXPKI_TYPES_H
#define TLXPKI_TYPES_H

#include <stdint.h>
#include <tlxcrypto/bigint.h>
#include <tlxcrypto/stack.h>
#include <tlxpki/export.h>

/** One encoded ASN.1 element. The contents of a constructed element are the encodings of its children, one
 * after the other. The identifier is a single octet (X.690 8.1.2.2): tag numbers above 30 are not supported.
 * A node with a null tag is empty. */
typedef struct ASN1_UNIT {
    uint8_t *tag;    /**< the identifier octet, owned; null in an empty node */
    uint8_t *length; /**< the length octets as encoded (X.690 8.1.3), owned */
    uint8_t *value;  /**< the contents, with 00 00 after them in an indefinite-length node; owned */
    uint8_t *eoc;    /**< the end-of-contents octets in value; null for a definite length */
} ASN1_UNIT;

/** A string, time, bit string, octet string or object identifier value. Each name that follows is the same
 * record with that type. */
typedef struct ASN1_STRING {
    int32_t type;   /**< universal tag (for ASN1_STRING: the identifier octet) */
    uint8_t *data;  /**< contents, owned, with a zero octet after them */
    int32_t length; /**< octets in data, without that zero octet */
    int32_t extra;  /**< BIT STRING: unused bits of the last octet; times: 1 when the text ends in "Z" */
} ASN1_STRING;

typedef ASN1_STRING BIT_STRING;
typedef ASN1_STRING OCTET_STRING;
typedef ASN1_STRING OBJECT_IDENTIFIER; /**< data holds the dotted decimal text */
typedef ASN1_STRING UTF8_STRING;
typedef ASN1_STRING PRINTABLE_STRING;
typedef ASN1_STRING T61_STRING;
typedef ASN1_STRING IA5_STRING;
typedef ASN1_STRING BMP_STRING; /**< data holds UCS-2 units, big-endian */
typedef ASN1_STRING UTC_TIME;
typedef ASN1_STRING GENERALIZED_TIME;

/** A broken-down calendar time. */
typedef struct ASN1_TIME {
    int32_t second;      /**< 0-59 */
    int32_t minute;      /**< 0-59 */
    int32_t hour;        /**< 0-23 */
    int32_t day;         /**< of the month, 1-31 */
    int32_t month;       /**< 0-11 */
    int32_t year;        /**< since 1900 */
    int32_t day_of_week; /**< 0 (Sunday)-6 */
    int32_t day_of_year; /**< 0-365 */
    int32_t daylight;    /**< daylight-saving flag */
} ASN1_TIME;

/** Values of tag arguments: the universal tag numbers, and four values of their own. */
enum {
    TLX_TAG_BOOLEAN = 1,
    TLX_TAG_INTEGER = 2,
    TLX_TAG_BIT_STRING = 3,
    TLX_TAG_OCTET_STRING = 4,
    TLX_TAG_NULL = 5,
    TLX_TAG_OBJECT_IDENTIFIER = 6,
    TLX_TAG_ENUMERATED = 10,
    TLX_TAG_UTF8_STRING = 12,
    TLX_TAG_SEQUENCE = 16,
    TLX_TAG_SET = 17,
    TLX_TAG_PRINTABLE_STRING = 19,
    TLX_TAG_T61_STRING = 20,
    TLX_TAG_IA5_STRING = 22,
    TLX_TAG_UTC_TIME = 23,
    TLX_TAG_GENERALIZED_TIME = 24,
    TLX_TAG_BMP_STRING = 30,
    TLX_TAG_ANY_STRING = 32,     /**< any type, as an ASN1_STRING */
    TLX_TAG_ANY_NODE = 33,       /**< any string or time type, as an ASN1_UNIT */
    TLX_TAG_SEQUENCE_OCTET = 48, /**< SEQUENCE with the constructed bit */
    TLX_TAG_SET_OCTET = 49       /**< SET with the constructed bit */
};

/** Values of length-form arguments (X.690 8.1.3). */
enum {
    TLX_FORM_SHORT = 0,     /**< one octet, for contents of up to 127 octets */
    TLX_FORM_LONG = 1,      /**< 0x80 + n and n octets, whatever the length */
    TLX_FORM_INDEFINITE = 2 /**< 0x80, and end-of-contents octets after the contents */
};

/** A decoder Seq_to_<TYPE> (node, <TYPE> **out), converted with TLX_DECODER for the reading functions. It
 * fills the record at *out, or stores a new one there when *out is null. On failure it frees only what it
 * allocated: *out stays null, or the caller's record stays as far as it was filled, unless its own
 * documentation says otherwise. The node stays the caller's. */
typedef uint32_t (*ASN1_DECODER)(const ASN1_UNIT *node, void **out);
/** An encoder <TYPE>_to_Seq (const <TYPE> *object, ASN1_UNIT **node), converted with TLX_ENCODER. On success
 * it stores a new node, which the caller frees with free_ASN1_UNIT(). It ignores what *node holds before,
 * except for X509_NAME_to_Seq(). */
typedef uint32_t (*ASN1_ENCODER)(const void *object, ASN1_UNIT **node);

/** The decoder or encoder of a concrete type as the reading and writing functions take it. */
#ifdef __cplusplus
#define TLX_DECODER(function) (reinterpret_cast<ASN1_DECODER>(function))
#define TLX_ENCODER(function) (reinterpret_cast<ASN1_ENCODER>(function))
#else
#define TLX_DECODER(function) ((ASN1_DECODER)(function))
#define TLX_ENCODER(function) ((ASN1_ENCODER)(function))
#endif

#endif
