#ifndef TLXPKI_CURVE_H
#define TLXPKI_CURVE_H

#include <tlxcrypto/curve.h>
#include <tlxpki/types.h>

TLX_BEGIN_DECLS

TLXPKI_API const char *get_PkiVersion(void);
TLXPKI_API uint32_t set_ECURVE_from_list(ECURVE **curve, uint32_t oid_index);
TLXPKI_API uint32_t set_ECURVE_from_list_ex(ECURVE **curve, const OBJECT_IDENTIFIER *oid);
TLXPKI_API uint32_t get_ECURVE_OID_from_name(OBJECT_IDENTIFIER **oid, const char *name);

TLX_END_DECLS

#endif
