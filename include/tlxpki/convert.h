/** @file
 * Character sets: Korean double-octet text (KS X 1001 beside ASCII, the common part of EUC-KR and code page
 * 949), UTF-8 and big-endian UCS-2.
 *
 * The code table is the plane of KS X 1001:2002 as EUC-KR carries it: lead octets 0xA1-0xFD, trail octets
 * 0xA1-0xFE, 8,227 characters. The further Hangul that code page 949 keeps outside that plane are not
 * converted.
 *
 * The functions that return a length give 0 on failure and leave *out as it was. An empty input has no text
 * to give and counts as a failure, except where noted. Every function may be called from any thread.
 */
#ifndef TLXPKI_CONVERT_H
#define TLXPKI_CONVERT_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/**
 * Looks a double-octet character up.
 * @param lead,trail its two octets
 * @return its Unicode code point; 0 when an octet is out of range or no character has that place
 */
TLXPKI_API uint32_t cp949ToUnicode(uint8_t lead, uint8_t trail);

/**
 * Looks a code point up.
 * @param code_point a Unicode code point
 * @return a new buffer of two octets, lead and trail, freed with tlx_free(); null when the plane has no
 *         such character (no ASCII character is in it, nor is 0) or memory runs out
 */
TLXPKI_API uint8_t *unicodeToCP949(uint32_t code_point);

/**
 * Converts BMPString contents. A unit of 0x8000 or above goes through the code table; every other unit
 * becomes one octet, its low octet with bit 0x80 cleared. ASCII and Hangul come out right in this way, but
 * symbols and Hanja below U+8000 do not.
 * @param string units, big-endian; an odd length fails
 * @param out    receives a NUL-terminated text, freed with tlx_free()
 * @return the length of the text in octets, without the NUL (the text may itself hold zero octets)
 * @return 0 for a null or empty record, a unit that has to be in the code table but is not, and when memory
 *         runs out
 */
TLXPKI_API uint32_t bmpToCP949(const BMP_STRING *string, char **out);

/**
 * Converts UTF-8. One-octet sequences are copied, three-octet sequences go through the code table; a sequence
 * of two or four octets is not converted, two zero octets take its place.
 * @param string the text
 * @param out    receives a NUL-terminated text, freed with tlx_free()
 * @return the length of the text in octets, zero octets inside it included, the final NUL not
 * @return 0 for a null or empty record, ill-formed UTF-8 (RFC 3629; overlong forms and surrogates too), a
 *         three-octet character that is not in the code table, and when memory runs out
 */
TLXPKI_API uint32_t utf8ToCP949(const UTF8_STRING *string, char **out);

/**
 * Converts to UCS-2. Octets below 0x80 keep their value, double-octet characters go through the code table.
 * @param text NUL-terminated
 * @param out  receives a new BMP_STRING, freed with free_BMP_STRING()
 * @return the octets of its contents, two for each character
 * @return 0 for a null or empty text, an octet pair without a character, a lead octet at the end, and when
 *         memory runs out
 */
TLXPKI_API uint32_t cp949ToBMP(const char *text, BMP_STRING **out);

/**
 * Converts to UTF-8, in the way of cp949ToBMP().
 * @param text NUL-terminated
 * @param out  receives a new UTF8_STRING, freed with free_UTF8_STRING()
 * @return the octets of its contents
 * @return 0 as cp949ToBMP()
 */
TLXPKI_API uint32_t cp949ToUTF8(const char *text, UTF8_STRING **out);

/**
 * The characters of a string of any type, for showing it. UTF8String, NumericString, PrintableString,
 * T61String, IA5String, VisibleString and the times are read as UTF-8, else as Korean text of code page 949
 * with at least one character of KS X 1001; what is neither is Latin-1, but never in a UTF8String. BMPString
 * and UniversalString are read as their units.
 * @param string the string; stays as it is
 * @return a new record, freed with free_UTF8_STRING(), which may be empty; null for null, another type,
 *         contents that are no text, and when memory runs out
 */
TLXPKI_API UTF8_STRING *ASN1_STRING_to_UTF8_STRING(const ASN1_STRING *string);

/**
 * Widens single-octet text to big-endian UCS-2, each octet to the unit of the same value, and puts two zero
 * octets after it: the form in which PKCS #12 takes passwords (RFC 7292, appendix B.1).
 * @param text characters; a zero octet is one like any other
 * @param len  how many, at most 0x7FFFFFFE; an empty text that is not null gives the two zero octets
 * @param out  receives the octets, freed with tlx_free() (wiped before by a caller whose text is a secret)
 * @return the number of octets, the two zero octets included: 2 * len + 2
 * @return 0 for a null text, a null out, a longer len, and when memory runs out
 */
TLXPKI_API uint32_t ascTouni(const char *text, uint32_t len, uint8_t **out);

/**
 * Narrows big-endian UCS-2 to single-octet text, the reverse of ascTouni().
 * @param units units; one zero unit at the end, if there is one, is a terminator and left out
 * @param len   octets at `units`; an odd number fails
 * @param out   receives a NUL-terminated text, freed with tlx_free()
 * @return the length of the text
 * @return 0 for a null argument, no units but a terminator, a unit above 0x00FF, and when memory runs out
 */
TLXPKI_API uint32_t uniToasc(const uint8_t *units, uint32_t len, char **out);

/**
 * Converts hexadecimal text to the octets it stands for.
 * @param hex digits of either case, nothing else
 * @param len how many; an odd number fails
 * @param out receives the octets, freed with tlx_free()
 * @return the number of octets
 * @return 0 for a null argument, no digits, another character, and when memory runs out
 */
TLXPKI_API uint32_t hexToASCII(const char *hex, uint32_t len, uint8_t **out);

TLX_END_DECLS

#endif
