/** @file
 * Elliptic curves by name. One curve is known: prime256v1 (ANSI X9.62; secp256r1 in SEC 2), row 415 of the
 * registry of object identifiers.
 *
 * - Failure: a function returns 0, or 1, with nothing changed, for a null argument, an unknown curve and when
 *   memory runs out.
 * - Threads: every function may be called from any thread, on distinct records at the same time.
 */
#ifndef TLXPKI_CURVE_H
#define TLXPKI_CURVE_H

#include <tlxcrypto/curve.h>
#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/** Fills *curve with the domain parameters of the curve that a row of the registry names. A null *curve
 * receives a new curve, freed with free_ECURVE(). */
TLXPKI_API uint32_t set_ECURVE_from_list(ECURVE **curve, uint32_t oid_index);

/** Does the same for the curve that an identifier names. */
TLXPKI_API uint32_t set_ECURVE_from_list_ex(ECURVE **curve, const OBJECT_IDENTIFIER *oid);

/** Finds the identifier of the curve that has exactly this name. Frees *oid and replaces it by a new record,
 * freed with free_OBJECT_IDENTIFIER(). */
TLXPKI_API uint32_t get_ECURVE_OID_from_name(OBJECT_IDENTIFIER **oid, const char *name);

TLX_END_DECLS

#endif
