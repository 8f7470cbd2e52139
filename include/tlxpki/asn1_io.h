#ifndef TLXPKI_ASN1_IO_H
#define TLXPKI_ASN1_IO_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

TLXPKI_API uint32_t ASN1_to_binary(const ASN1_UNIT *node, uint8_t **out);
TLXPKI_API uint32_t ASN1_to_FILE(const ASN1_UNIT *node, const char *path);
TLXPKI_API uint32_t readDER_from_Binary(void **out, ASN1_DECODER decoder, const uint8_t *der);
TLXPKI_API uint32_t readDER_from_Buffer(void **out, ASN1_DECODER decoder, const uint8_t *der, uint32_t len);
TLXPKI_API uint32_t writeDER_to_Binary(const void *object, ASN1_ENCODER encoder, uint8_t **out);
TLXPKI_API uint32_t readDER_from_File(void **out, ASN1_DECODER decoder, const char *path);
TLXPKI_API uint32_t writeDER_to_FILE(const void *object, ASN1_ENCODER encoder, const char *path);
TLXPKI_API uint32_t get_ASN1_hash(const void *object, ASN1_ENCODER encoder, uint32_t digest_id,
                                  uint8_t *digest);

TLX_END_DECLS

#endif
