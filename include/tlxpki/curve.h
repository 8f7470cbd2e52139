/** @file
 * Elliptic curves by name, and the library's version. One curve is known: prime256v1 (ANSI X9.62; secp256r1
 * in SEC 2), row 415 of the registry of object identifiers.
 *
 * Every function may be called from any thread, on distinct objects at the same time.
 */
#ifndef TLXPKI_CURVE_H
#define TLXPKI_CURVE_H

#include <tlxcrypto/curve.h>
#include <tlxpki/types.h>

TLX_BEGIN_DECLS

/**
 * The version of the library.
 * @return "5.1.42", a constant
 */
TLXPKI_API const char *get_PkiVersion(void);

/**
 * Gives a curve the domain parameters of a named curve.
 * @param curve     *curve is filled, or set to a new curve, freed with free_ECURVE(), when it is null; it
 *                  stays as it is on failure
 * @param oid_index row of the registry that names the curve
 * @return 0, or 1 when curve is null, no curve has that row, or memory runs out
 */
TLXPKI_API uint32_t set_ECURVE_from_list(ECURVE **curve, uint32_t oid_index);

/**
 * Gives a curve the domain parameters of the curve that an identifier names.
 * @param curve as set_ECURVE_from_list()
 * @param oid   the identifier
 * @return 0, or 1 as set_ECURVE_from_list() and for a null or unknown identifier
 */
TLXPKI_API uint32_t set_ECURVE_from_list_ex(ECURVE **curve, const OBJECT_IDENTIFIER *oid);

/**
 * Finds the identifier of a named curve.
 * @param oid  *oid is replaced by a new record, freed with free_OBJECT_IDENTIFIER(), and the one it pointed
 *             to is freed; it stays as it is on failure
 * @param name the curve's name, exactly
 * @return 0, or 1 when an argument is null, no curve has that name, or memory runs out
 */
TLXPKI_API uint32_t get_ECURVE_OID_from_name(OBJECT_IDENTIFIER **oid, const char *name);

TLX_END_DECLS

#endif
