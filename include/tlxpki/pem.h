#ifndef TLXPKI_PEM_H
#define TLXPKI_PEM_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

TLXPKI_API uint32_t base64ToPEM(const char *base64, int32_t len, const char *label, uint32_t label_len,
                                char **out);
TLXPKI_API uint32_t encode_PEM(const uint8_t *der, uint32_t len, const char *label, uint32_t label_len,
                               char **out, uint32_t wrap);
TLXPKI_API uint32_t decode_PEM(const char *pem, int32_t len, uint8_t **der);
TLXPKI_API uint32_t readPEM_from_Binary(void **out, ASN1_DECODER decoder, const char *pem, uint32_t len);
TLXPKI_API uint32_t writePEM_to_Binary(const void *object, ASN1_ENCODER encoder, const char *label,
                                       uint32_t label_len, char **out);
TLXPKI_API uint32_t readPEM_from_File(void **out, ASN1_DECODER decoder, const char *path);
TLXPKI_API uint32_t writePEM_to_FILE(const void *object, ASN1_ENCODER encoder, const char *label,
                                     uint32_t label_len, const char *path);

TLX_END_DECLS

#endif
