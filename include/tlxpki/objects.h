#ifndef TLXPKI_OBJECTS_H
#define TLXPKI_OBJECTS_H

#include <tlxpki/types.h>

#define TLX_OID_COUNT 841

TLX_BEGIN_DECLS

/** One row of the registry. */
typedef struct OID_ROW {
    const char *short_name;
    const char *long_name;
    const char *dotted;
} OID_ROW;

TLXPKI_API const OID_ROW *OID_LIST(int32_t index);
TLXPKI_API OBJECT_IDENTIFIER *index_to_OBJECT_IDENTIFIER(int32_t index);
TLXPKI_API const char *sn_from_index(int32_t index);
TLXPKI_API const char *ln_from_index(int32_t index);
TLXPKI_API uint32_t index_from_sn(const char *text, uint32_t len);
TLXPKI_API uint32_t index_from_ln(const char *text, uint32_t len);
TLXPKI_API uint32_t index_from_oid_string(const char *text, uint32_t len);
TLXPKI_API uint32_t index_from_OBJECT_IDENTIFIER(const OBJECT_IDENTIFIER *oid);
TLXPKI_API OBJECT_IDENTIFIER *get_OBJECT_IDENTIFIER(const char *name, uint32_t index);
TLXPKI_API OBJECT_IDENTIFIER *dup_OBJECT_IDENTIFIER(const OBJECT_IDENTIFIER *oid);
TLXPKI_API int32_t cmp_OBJECT_IDENTIFIER(const OBJECT_IDENTIFIER *a, const OBJECT_IDENTIFIER *b);
TLXPKI_API uint32_t get_DigestID_from_OID(const OBJECT_IDENTIFIER *oid);
TLXPKI_API uint32_t get_CipherID_from_OID(const OBJECT_IDENTIFIER *oid);
TLXPKI_API uint32_t get_AlgorType_from_OID(const OBJECT_IDENTIFIER *oid);
TLXPKI_API OBJECT_IDENTIFIER *get_OID_from_DigestID(uint32_t digest_id);
TLXPKI_API OBJECT_IDENTIFIER *get_OID_from_CipherID(uint32_t cipher_id);

TLX_END_DECLS

#endif
