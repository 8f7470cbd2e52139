/** @file
 * Character sets: Korean double-octet text (KS X 1001 with ASCII, the common part of EUC-KR and code page
 * 949), UTF-8 and big-endian UCS-2.
 *
 * The code table is the plane of KS X 1001:2002 as EUC-KR carries it: lead octets 0xA1-0xFD, trail octets
 * 0xA1-0xFE, 8,227 characters. It has none of the Hangul that code page 949 adds outside that plane.
 *
 * - Ownership: the caller frees a text or octets with tlx_free(), a string with the free_ function of its
 *   type. A text ends in a NUL, and may hold others.
 * - Failure: a function that converts returns the length of its result, a text's without the final NUL, or 0,
 *   and leaves *out unchanged: for a null argument, an empty input, characters that it cannot convert and
 *   when memory runs out.
 * - Threads: every function may be called from any thread.
 */
#ifndef TLXPKI_CONVERT_H
#define TLXPKI_CONVERT_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/** Returns the Unicode code point of a double-octet character; 0 when the code table has none. */
TLXPKI_API uint32_t cp949ToUnicode(uint8_t lead, uint8_t trail);

/** Returns the two octets, lead and trail, of a code point in a new buffer; null when the code table does not
 * have it (it has neither ASCII nor 0) and when memory runs out. */
TLXPKI_API uint8_t *unicodeToCP949(uint32_t code_point);

/** Converts BMPString contents to a text. A unit of 0x8000 or above goes through the code table; every other
 * unit becomes its low octet with bit 0x80 cleared. So ASCII and Hangul come out right, but symbols and Hanja
 * below U+8000 do not. Returns 0 also for an odd length. */
TLXPKI_API uint32_t bmpToCP949(const BMP_STRING *string, char **out);

/** Converts UTF-8 to a text. One octet stays, three octets go through the code table, and two zero octets
 * replace a sequence of two or four. Returns 0 also for ill-formed UTF-8 (RFC 3629; overlong forms and
 * surrogates included) and for three octets that the code table does not have. */
TLXPKI_API uint32_t utf8ToCP949(const UTF8_STRING *string, char **out);

/** Converts a NUL-terminated text to a new string. Octets below 0x80 keep their value, and double-octet
 * characters go through the code table. Returns the octets of its contents, two for each character. */
TLXPKI_API uint32_t cp949ToBMP(const char *text, BMP_STRING **out);

/** Converts as cp949ToBMP() does, to UTF-8. */
TLXPKI_API uint32_t cp949ToUTF8(const char *text, UTF8_STRING **out);

/** Returns the characters of a string of any type, which may be none, in a new string; null for null, another
 * type, contents that are no text, and when memory runs out. Contents of UTF8String, NumericString,
 * PrintableString, T61String, IA5String, VisibleString and the times are UTF-8, or else Korean text of code
 * page 949 with at least one character of KS X 1001, or else Latin-1. A UTF8String is never Latin-1.
 * BMPString and UniversalString hold units. */
TLXPKI_API UTF8_STRING *ASN1_STRING_to_UTF8_STRING(const ASN1_STRING *string);

/** Widens each of len octets to the big-endian unit of the same value and adds two zero octets, the form in
 * which PKCS #12 takes passwords (RFC 7292, appendix B.1). Zero octets are characters; a text of 0 octets
 * gives the two zero octets. A caller whose text is a secret wipes *out before freeing it. Returns 2 * len +
 * 2; 0 also for len above 0x7FFFFFFE. */
TLXPKI_API uint32_t ascTouni(const char *text, uint32_t len, uint8_t **out);

/** Narrows len octets of big-endian units to a text, and drops one zero unit at the end. Returns 0 also for
 * an odd length, no units but a terminator, and a unit above 0x00FF. */
TLXPKI_API uint32_t uniToasc(const uint8_t *units, uint32_t len, char **out);

/** Converts len hexadecimal digits of either case to octets. Returns 0 also for an odd number. */
TLXPKI_API uint32_t hexToASCII(const char *hex, uint32_t len, uint8_t **out);

TLX_END_DECLS

#endif
