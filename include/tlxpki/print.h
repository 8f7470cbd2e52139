/** @file
 * Nodes and strings as text for people: printed to standard output (print_, through C's stdio) or given back
 * as a new text (dump_).
 *
 * Time and space are linear in the input. Every function may be called from any thread, on distinct objects
 * at the same time; lines printed by several threads may mix.
 */
#ifndef TLXPKI_PRINT_H
#define TLXPKI_PRINT_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/**
 * Prints the parts of a node in upper-case hexadecimal: "[Tag] 30 | [Length] 03 | [Value] 020105" and a line
 * end. For an indefinite length the contents are printed in pairs with colons between them, the
 * end-of-contents octets follow and there is no line end: "[Tag] 30 | [Length] 80 | [Value] 02:01:05 | [EOC]
 * 0000".
 * @param node the node; for null, an empty node and one whose length cannot be read "Null Pointer" and a line
 * end go to standard error
 */
TLXPKI_API void printBERData(const ASN1_UNIT *node);

/**
 * The same as printBERData().
 * @param node as there
 */
TLXPKI_API void printDERData(const ASN1_UNIT *node);

/**
 * Copies characters to a new text.
 * @param text characters, zero octets included
 * @param len  how many
 * @return len + 2 octets, the last two of them zero, freed with tlx_free(); null for a null text and when
 *         memory runs out
 */
TLXPKI_API char *dump_PCHAR(const char *text, uint32_t len);

/**
 * Prints characters and a line feed.
 * @param text characters, zero octets included; null prints nothing
 * @param len  how many
 */
TLXPKI_API void print_PCHAR(const char *text, uint32_t len);

/**
 * A text for a string, by its type: BIT STRING and OCTET STRING in upper-case hexadecimal; OBJECT IDENTIFIER
 * as "2.5.4.3 - (commonName)" and a line feed, with the long name of row 0 for one that is not in the
 * registry; UTF8String and BMPString in Korean double-octet text (utf8ToCP949(), bmpToCP949());
 * PrintableString, T61String, IA5String and UTCTime as their characters; any other type, GeneralizedTime
 * among them, as "Un-Supported Type (18)" and a line feed, with the type in hexadecimal.
 * @param string the string
 * @return a NUL-terminated text, freed with tlx_free(); null for a null record, one without octets or with
 *         type 0, text that cannot be converted, and when memory runs out
 */
TLXPKI_API char *dump_ASN1STRING(const ASN1_STRING *string);

/**
 * Prints the text that dump_ASN1STRING() gives, up to its first zero octet, and nothing when it gives none.
 * @param string as there
 */
TLXPKI_API void print_ASN1STRING(const ASN1_STRING *string);

TLX_END_DECLS

#endif
