#ifndef TLXPKI_ASN1_H
#define TLXPKI_ASN1_H

#include <tlxpki/types.h>

TLX_BEGIN_DECLS

TLXPKI_API ASN1_UNIT *new_ASN1_UNIT(void);
TLXPKI_API void clean_ASN1_UNIT(ASN1_UNIT *node);
TLXPKI_API void free_ASN1_UNIT(ASN1_UNIT *node);
TLXPKI_API ASN1_UNIT *dup_ASN1_UNIT(const ASN1_UNIT *node);

/* Parsing and measuring */
TLXPKI_API ASN1_UNIT *decodeToBERSequence(const uint8_t *element);
TLXPKI_API ASN1_UNIT *decodeToDERSequence(const uint8_t *element);
TLXPKI_API ASN1_UNIT *decodeToDERSequence_n(const uint8_t *element, uint32_t len);
TLXPKI_API uint32_t getASN1LengthSize(const uint8_t *length);
TLXPKI_API uint32_t getASN1ValueLengthFromLO(const uint8_t *length);
TLXPKI_API uint32_t getASN1ValueLength(const ASN1_UNIT *node);
TLXPKI_API uint32_t getASN1IndefiniteValueLength(const uint8_t *contents);
TLXPKI_API uint32_t getASN1LengthForm(uint32_t tag, int32_t len);
TLXPKI_API uint32_t setBERLengthForm(ASN1_UNIT *node, uint32_t form);

/* Child access */
TLXPKI_API void *getBERChildAt(const ASN1_UNIT *node, uint32_t index, uint32_t expected);
TLXPKI_API void *getDERChildAt(const ASN1_UNIT *node, uint32_t index, uint32_t expected);
TLXPKI_API void *getBERChildOffset(const ASN1_UNIT *node, uint32_t index, uint32_t expected,
                                   uint32_t *cursor);
TLXPKI_API void *getDERChildOffset(const ASN1_UNIT *node, uint32_t index, uint32_t expected,
                                   uint32_t *cursor);
TLXPKI_API uint32_t getChildType(const ASN1_UNIT *node, uint32_t index);
TLXPKI_API uint32_t getSequenceChildNum(const ASN1_UNIT *node);

/* Building, BER layer */
TLXPKI_API uint32_t encodeToBER(ASN1_UNIT *node, uint32_t tag, const void *value, int32_t len, uint32_t form);
TLXPKI_API uint32_t encodeToBER_CS(ASN1_UNIT *node, uint32_t ctx, uint32_t tag, const void *value,
                                   int32_t len, uint32_t form);
TLXPKI_API uint32_t addToBERSequence(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len,
                                     int32_t form);
TLXPKI_API uint32_t addToBERSequence_CS(ASN1_UNIT *seq, uint32_t ctx, uint32_t tag, const void *value,
                                        uint32_t len, int32_t form);
TLXPKI_API uint32_t addToBERSequenceOf(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len,
                                       int32_t form);
TLXPKI_API uint32_t addToBERSet(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len, int32_t form);
TLXPKI_API uint32_t addToBERSetOf(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len,
                                  int32_t form);
TLXPKI_API uint32_t addToBERStringSequence(ASN1_UNIT *seq, uint32_t tag, const void *value, uint32_t len,
                                           int32_t form);

/* Building, DER layer */
TLXPKI_API uint32_t checkDER(uint32_t tag, void *value, uint32_t *len);
TLXPKI_API uint32_t encodeToDER(ASN1_UNIT *node, uint32_t tag, void *value, int32_t len);
TLXPKI_API uint32_t encodeToDER_CS(ASN1_UNIT *node, uint32_t ctx, uint32_t tag, void *value, int32_t len);
TLXPKI_API uint32_t addToDERSequence(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len);
TLXPKI_API uint32_t addToDERSequence_CS(ASN1_UNIT *seq, uint32_t ctx, uint32_t tag, void *value,
                                        uint32_t len);
TLXPKI_API uint32_t addToDERSequenceOf(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len);
TLXPKI_API uint32_t addToDERSet(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len);
TLXPKI_API uint32_t addToDERSetOf(ASN1_UNIT *seq, uint32_t tag, void *value, uint32_t len);

TLX_END_DECLS

#endif
