/** @file
 * Nodes and strings as text for people: printed to standard output (print_, through C's stdio) or returned as
 * a new text (dump_), which the caller frees with tlx_free().
 *
 * Time and space are linear in the input. Every function may be called from any thread, on distinct objects
 * at the same time; lines that several threads print may mix.
 */
#ifndef TLXPKI_PRINT_H
#define TLXPKI_PRINT_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/** Prints the parts of a node in upper-case hexadecimal: "[Tag] 30 | [Length] 03 | [Value] 020105" and a line
 * end. For an indefinite length it puts colons between the octets of the contents, adds the end-of-contents
 * octets and prints no line end: "[Tag] 30 | [Length] 80 | [Value] 02:01:05 | [EOC] 0000". For null, an empty
 * node and one whose length cannot be read it prints "Null Pointer" and a line end to standard error. */
TLXPKI_API void printBERData(const ASN1_UNIT *node);

/** Does the same as printBERData(). */
TLXPKI_API void printDERData(const ASN1_UNIT *node);

/** Copies len characters, zero octets included, and adds two zero octets. Null for a null text and when
 * memory runs out. */
TLXPKI_API char *dump_PCHAR(const char *text, uint32_t len);

/** Prints len characters, zero octets included, and a line feed; nothing for a null text. */
TLXPKI_API void print_PCHAR(const char *text, uint32_t len);

/** Makes a NUL-terminated text for a string, by its type:
 *
 * - BIT STRING, OCTET STRING: upper-case hexadecimal;
 * - OBJECT IDENTIFIER: "2.5.4.3 - (commonName)" and a line feed, with the long name of row 0 for an
 *   identifier that is not in the registry;
 * - UTF8String, BMPString: Korean double-octet text (utf8ToCP949(), bmpToCP949());
 * - PrintableString, T61String, IA5String, UTCTime: their characters;
 * - any other type, which includes GeneralizedTime: "Un-Supported Type (18)" and a line feed, with the type
 *   in hexadecimal.
 *
 * Returns null for a null record, one without octets or with type 0, text that cannot be converted, and when
 * memory runs out. */
TLXPKI_API char *dump_ASN1STRING(const ASN1_STRING *string);

/** Prints the text of dump_ASN1STRING() up to its first zero octet; nothing when there is none. */
TLXPKI_API void print_ASN1STRING(const ASN1_STRING *string);

TLX_END_DECLS

#endif
