/** @file
 * Calendar times, and the texts of UTCTime and GeneralizedTime (X.680 clauses 47 and 46).
 *
 * Texts have four forms. The two-digit years of UTCTime are 1950-1999 (50-99) and 2000-2049 (00-49):
 *
 * | form | UTCTime                         | GeneralizedTime                   |
 * |------|---------------------------------|-----------------------------------|
 * | 0    | YYMMDDhhmmZ (11 characters)     | YYYYMMDDhhmmZ (13 characters)     |
 * | 1    | YYMMDDhhmm+hhmm (15 characters) | YYYYMMDDhhmm+hhmm (17 characters) |
 * | 2    | YYMMDDhhmmssZ (13 characters)   | YYYYMMDDhhmmssZ (15 characters)   |
 * | 3    | YYMMDDhhmmss+hhmm (17)          | YYYYMMDDhhmmss+hhmm (19)          |
 *
 * Arithmetic follows the proleptic Gregorian calendar in 64 bits, without leap seconds or the host's zone.
 *
 * - Ownership: the caller frees a new time or text with the free_ function of its type.
 * - Failure: a function that makes something returns null for a null argument, a text that cannot be read, a
 *   time that check_ASN1_TIME() refuses, and when memory runs out.
 * - Threads: every function may be called from any thread, on distinct records at the same time.
 */
#ifndef TLXPKI_TIME_H
#define TLXPKI_TIME_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/** Makes a record of zeros, which is no valid time until its day is set. */
TLXPKI_API ASN1_TIME *new_ASN1_TIME(void);
/** Zeroes a record. Ignores null. */
TLXPKI_API void clean_ASN1_TIME(ASN1_TIME *time);
/** Frees a record. Ignores null. */
TLXPKI_API void free_ASN1_TIME(ASN1_TIME *time);
/** Copies all nine fields of a valid time. */
TLXPKI_API ASN1_TIME *dup_ASN1_TIME(const ASN1_TIME *time);

/** Checks the ranges of month (0-11), day (1-31), hour (0-23), minute and second (0-59), but neither the year
 * nor the length of the month. Returns 0; 0x4103002B for a field out of range and for null. */
TLXPKI_API uint32_t check_ASN1_TIME(const ASN1_TIME *time);

/** Checks what check_ASN1_TIME() checks, and that the month has the day. Returns 0; 0x4104002B for a date
 * that does not exist, such as 2029-02-29, for a field out of range and for null. */
TLXPKI_API uint32_t check_ASN1_TIME_date(const ASN1_TIME *time);

/** Adds days, which may be negative, to a time. The clock stays, day of week and day of year are filled, and
 * the daylight flag becomes 0; on failure the time is unchanged. Returns 0; 0x4105002B when
 * check_ASN1_TIME_date() refuses the time; 0x4105001C for a sum outside the years 0-9999. */
TLXPKI_API uint32_t add_ASN1_TIME_days(ASN1_TIME *time, int32_t days);

/** Adds calendar months to a time as add_ASN1_TIME_days() adds days. A day that the month does not have
 * becomes the month's last: 31 January and a month is 28 or 29 February. Returns 0; 0x4106002B when
 * check_ASN1_TIME_date() refuses the time; 0x4106001C for a sum outside the years 0-9999. */
TLXPKI_API uint32_t add_ASN1_TIME_months(ASN1_TIME *time, int32_t months);

/** Adds calendar years to a time as add_ASN1_TIME_months() adds months: 29 February and a year is 28
 * February. Returns 0; 0x4107002B when check_ASN1_TIME_date() refuses the time; 0x4107001C for a sum outside
 * the years 0-9999. */
TLXPKI_API uint32_t add_ASN1_TIME_years(ASN1_TIME *time, int32_t years);

/** Compares two times by calendar seconds. Fields past their range carry over, so 31 February is 2 or 3
 * March; day of week, day of year and daylight flag are ignored. Returns 1 when a is later, 0 when they are
 * equal, -1 when a is earlier. Null is earlier than every time. */
TLXPKI_API int32_t cmp_ASN1_TIME(const ASN1_TIME *a, const ASN1_TIME *b);

/** Reads a NUL-terminated text of exactly the form YYYY-MM-DD,hh:mm:ss. Day of week, day of year and daylight
 * flag become 0. */
TLXPKI_API ASN1_TIME *charToASN1_TIME(const char *text);

/** Reads a UTCTime text and ignores the record's type and extra. In forms 0 and 2 a field past its range
 * carries over (31 February is 2 or 3 March, hour 24 is hour 0 of the next day), and day of week and day of
 * year are filled. In forms 1 and 3 the fields are only checked, the offset (a sign and four digits) is not
 * applied, and day of week and day of year are 0. */
TLXPKI_API ASN1_TIME *utcTimeToASN1_TIME(const UTC_TIME *utc);

/** Reads a GeneralizedTime text as utcTimeToASN1_TIME() does. Fractions of a second, and texts without "Z" or
 * offset, are not supported. */
TLXPKI_API ASN1_TIME *generalizedTimeToASN1_TIME(const GENERALIZED_TIME *generalized);

/** Writes a time as UTCTime text in a form of 0 to 3. The offset of forms 1 and 3 is "+0000"; extra is 1 in
 * forms 0 and 2. Returns null also for a year outside 1950-2049 and any other form. */
TLXPKI_API UTC_TIME *asn1TimeToUTC_TIME(const ASN1_TIME *time, uint32_t form);

/** Writes a time as GeneralizedTime text as asn1TimeToUTC_TIME() does, for the years 0-9999. */
TLXPKI_API GENERALIZED_TIME *asn1TimeToGENERALIZED_TIME(const ASN1_TIME *time, uint32_t form);

/** Adds seconds, which may be negative, to a UTCTime text. A new record of the same form and offset replaces
 * *time, which is freed; on failure *time is unchanged. Returns 0; 0x45020049 when time or *time is null;
 * 0x4502003C when the text cannot be read; 0x45020030 for a sum outside 1950-2049 and when memory runs out.
 */
TLXPKI_API uint32_t add_UTC_TIME(UTC_TIME **time, int32_t seconds);

/** Adds seconds to a GeneralizedTime text as add_UTC_TIME() does. Returns 0; 0x45030049 when time or *time is
 * null; 0x4503003C when the text cannot be read; 0x45030030 for a sum outside the years 0-9999 and when
 * memory runs out. */
TLXPKI_API uint32_t add_GENERALIZED_TIME(GENERALIZED_TIME **time, int32_t seconds);

/** Compares what two UTCTime texts mean as cmp_ASN1_TIME() does. A null or unreadable text is earlier than
 * every time. */
TLXPKI_API int32_t cmp_UTC_TIME(const UTC_TIME *a, const UTC_TIME *b);

/** Compares two GeneralizedTime texts as cmp_UTC_TIME() does. */
TLXPKI_API int32_t cmp_GENERALIZED_TIME(const GENERALIZED_TIME *a, const GENERALIZED_TIME *b);

/** Returns the present time in UTC. */
TLXPKI_API ASN1_TIME *getCurrentGMTime(void);
/** Returns the present time in the host's time zone; null also when the host does not know it. */
TLXPKI_API ASN1_TIME *getCurrentLocalTime(void);

TLX_END_DECLS

#endif
