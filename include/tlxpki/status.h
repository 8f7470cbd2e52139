/** @file
 * Status codes.
 */
#ifndef TLXPKI_STATUS_H
#define TLXPKI_STATUS_H

#include <stdint.h>

/** Module group, function and reason of a status code. */
#define TLX_STATUS_GROUP(status) ((uint32_t)(status) >> 24)
#define TLX_STATUS_FUNCTION(status) (((uint32_t)(status) >> 16) & 0xFFU)
#define TLX_STATUS_REASON(status) ((uint32_t)(status)&0xFFFFU)

#endif
