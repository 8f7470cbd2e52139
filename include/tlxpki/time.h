/** @file
 * Calendar times, and the texts of UTCTime and GeneralizedTime (X.680 clauses 47 and 46).
 *
 * Four forms of text are read and written. UTCTime has a two-digit year (50-99 are 1950-1999, 00-49 are
 * 2000-2049), GeneralizedTime a four-digit one:
 *
 * | form | UTCTime                         | GeneralizedTime                   |
 * |------|---------------------------------|-----------------------------------|
 * | 0    | YYMMDDhhmmZ (11 characters)     | YYYYMMDDhhmmZ (13 characters)     |
 * | 1    | YYMMDDhhmm+hhmm (15 characters) | YYYYMMDDhhmm+hhmm (17 characters) |
 * | 2    | YYMMDDhhmmssZ (13 characters)   | YYYYMMDDhhmmssZ (15 characters)   |
 * | 3    | YYMMDDhhmmss+hhmm (17)          | YYYYMMDDhhmmss+hhmm (19)          |
 *
 * Calendar arithmetic follows the proleptic Gregorian calendar in 64 bits, without leap seconds, and does not
 * depend on the host's time zone. Every function may be called from any thread, on distinct records at the
 * same time.
 */
#ifndef TLXPKI_TIME_H
#define TLXPKI_TIME_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/**
 * Makes a record of zeros. It is no valid time until its day is set.
 * @return the record, freed with free_ASN1_TIME(); null when memory runs out
 */
TLXPKI_API ASN1_TIME *new_ASN1_TIME(void);

/**
 * Zeroes a record.
 * @param time a record, or null (nothing happens then)
 */
TLXPKI_API void clean_ASN1_TIME(ASN1_TIME *time);

/**
 * Frees a record.
 * @param time a record, or null (nothing happens then)
 */
TLXPKI_API void free_ASN1_TIME(ASN1_TIME *time);

/**
 * Copies all nine fields of a valid time.
 * @param time the time to copy
 * @return the copy, freed with free_ASN1_TIME(); null for a null time, one that check_ASN1_TIME() refuses,
 *         and when memory runs out
 */
TLXPKI_API ASN1_TIME *dup_ASN1_TIME(const ASN1_TIME *time);

/**
 * Checks the ranges of month (0-11), day (1-31), hour (0-23), minute and second (0-59). The year and the
 * length of the month are not looked at.
 * @param time the time
 * @return 0, or 0x4103002B when a field is out of range or time is null
 */
TLXPKI_API uint32_t check_ASN1_TIME(const ASN1_TIME *time);

/**
 * Checks that a time is one of the calendar: what check_ASN1_TIME() checks, and that the month has the day.
 * @param time the time
 * @return 0, or 0x4104002B for a date that does not exist, such as 2029-02-29, for a field out of range and
 *         for null
 */
TLXPKI_API uint32_t check_ASN1_TIME_date(const ASN1_TIME *time);

/**
 * Adds days to a time. The clock stays, day of week and day of year are filled, the daylight flag becomes 0.
 * @param time the time; it stays as it is on failure
 * @param days may be negative
 * @return 0
 * @return 0x4105002B when check_ASN1_TIME_date() refuses the time
 * @return 0x4105001C when the sum lies outside the years 0-9999
 */
TLXPKI_API uint32_t add_ASN1_TIME_days(ASN1_TIME *time, int32_t days);

/**
 * Adds calendar months to a time, in the way of add_ASN1_TIME_days(). A day that the month does not have
 * becomes the month's last: 31 January and a month is 28 or 29 February.
 * @param time   as there
 * @param months may be negative
 * @return 0
 * @return 0x4106002B when check_ASN1_TIME_date() refuses the time
 * @return 0x4106001C when the sum lies outside the years 0-9999
 */
TLXPKI_API uint32_t add_ASN1_TIME_months(ASN1_TIME *time, int32_t months);

/**
 * Adds calendar years to a time, in the way of add_ASN1_TIME_months(): 29 February and a year is 28 February.
 * @param time  as there
 * @param years may be negative
 * @return 0
 * @return 0x4107002B when check_ASN1_TIME_date() refuses the time
 * @return 0x4107001C when the sum lies outside the years 0-9999
 */
TLXPKI_API uint32_t add_ASN1_TIME_years(ASN1_TIME *time, int32_t years);

/**
 * Compares two times by calendar seconds. Fields past their range carry over, so 31 February is 2 or 3 March;
 * day of week, day of year and daylight flag are not looked at.
 * @param a,b times; null comes before every time
 * @return 1 when a is later, 0 when they are equal, -1 when a is earlier
 */
TLXPKI_API int32_t cmp_ASN1_TIME(const ASN1_TIME *a, const ASN1_TIME *b);

/**
 * Reads a text of exactly the form YYYY-MM-DD,hh:mm:ss.
 * @param text 19 characters and a NUL
 * @return the time, freed with free_ASN1_TIME(), with day of week, day of year and daylight flag 0; null
 *         for a null or ill-formed text, a field out of range and when memory runs out
 */
TLXPKI_API ASN1_TIME *charToASN1_TIME(const char *text);

/**
 * Reads a UTCTime text. Forms 0 and 2 are put through the calendar: a field past its range carries over (31
 * February is 2 or 3 March, hour 24 is hour 0 of the next day), and day of week and day of year are filled.
 * Forms 1 and 3 are taken as they stand and only checked; their offset (a sign and four digits) is not
 * applied, and day of week and day of year are 0. The record's type and extra are not looked at.
 * @param utc the text
 * @return the time, freed with free_ASN1_TIME(); null for a null or ill-formed text, a time that
 *         check_ASN1_TIME() refuses, and when memory runs out
 */
TLXPKI_API ASN1_TIME *utcTimeToASN1_TIME(const UTC_TIME *utc);

/**
 * Reads a GeneralizedTime text, in the way of utcTimeToASN1_TIME(). Fractions of a second, and texts without
 * "Z" or offset, are not supported.
 * @param generalized the text
 * @return as utcTimeToASN1_TIME()
 */
TLXPKI_API ASN1_TIME *generalizedTimeToASN1_TIME(const GENERALIZED_TIME *generalized);

/**
 * Writes a time as UTCTime text. The offset of forms 1 and 3 is "+0000".
 * @param time the time; its year has to lie in 1950-2049
 * @param form 0 to 3, see the table above
 * @return the text (extra 1 in forms 0 and 2), freed with free_UTC_TIME(); null for a null time, one that
 *         check_ASN1_TIME() refuses, a year or form out of range, and when memory runs out
 */
TLXPKI_API UTC_TIME *asn1TimeToUTC_TIME(const ASN1_TIME *time, uint32_t form);

/**
 * Writes a time as GeneralizedTime text, in the way of asn1TimeToUTC_TIME().
 * @param time the time; its year has to lie in 0-9999
 * @param form 0 to 3, see the table above
 * @return as asn1TimeToUTC_TIME(), freed with free_GENERALIZED_TIME()
 */
TLXPKI_API GENERALIZED_TIME *asn1TimeToGENERALIZED_TIME(const ASN1_TIME *time, uint32_t form);

/**
 * Adds seconds to a UTCTime text. The new text has the form of the old one, and its offset.
 * @param time    points to the record, which is freed and replaced; it stays as it is on failure
 * @param seconds may be negative
 * @return 0
 * @return 0x45020049 when time or *time is null
 * @return 0x4502003C when the text cannot be read
 * @return 0x45020030 when the sum lies outside 1950-2049 or memory runs out
 */
TLXPKI_API uint32_t add_UTC_TIME(UTC_TIME **time, int32_t seconds);

/**
 * Adds seconds to a GeneralizedTime text, in the way of add_UTC_TIME().
 * @param time    as there
 * @param seconds as there
 * @return 0
 * @return 0x45030049 when time or *time is null
 * @return 0x4503003C when the text cannot be read
 * @return 0x45030030 when the sum lies outside the years 0-9999 or memory runs out
 */
TLXPKI_API uint32_t add_GENERALIZED_TIME(GENERALIZED_TIME **time, int32_t seconds);

/**
 * Compares two UTCTime texts as cmp_ASN1_TIME() compares what they mean.
 * @param a,b texts; one that is null or cannot be read comes before every time
 * @return 1 when a is later, 0 when they are equal, -1 when a is earlier
 */
TLXPKI_API int32_t cmp_UTC_TIME(const UTC_TIME *a, const UTC_TIME *b);

/**
 * Compares two GeneralizedTime texts, in the way of cmp_UTC_TIME().
 * @param a,b as there
 * @return as there
 */
TLXPKI_API int32_t cmp_GENERALIZED_TIME(const GENERALIZED_TIME *a, const GENERALIZED_TIME *b);

/**
 * The present time in UTC.
 * @return the time, freed with free_ASN1_TIME(); null when memory runs out
 */
TLXPKI_API ASN1_TIME *getCurrentGMTime(void);

/**
 * The present time in the host's time zone.
 * @return the time, freed with free_ASN1_TIME(); null when the host cannot tell or memory runs out
 */
TLXPKI_API ASN1_TIME *getCurrentLocalTime(void);

TLX_END_DECLS

#endif
