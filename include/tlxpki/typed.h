/** @file
 * Reading and writing records with the type checked: macros over <tlxpki/asn1_io.h>, <tlxpki/pem.h> and
 * <tlxpki/x509v3.h>, for C99 and later and for C++. They pass the type's own decoder or encoder, and a record
 * of another type does not compile:
 *
 *     X509_CERT *cert = NULL;
 *     uint32_t status = TLX_READ_PEM_FILE(X509_CERT, &cert, "user.pem");
 *
 * - Arguments: TYPE is the name of a record type, as in Seq_to_TYPE(), also where
 *   <tlxpki/with_openssl.h> gives the record itself another name. out is a TYPE **, as the decoder takes
 *   it: the address of a null pointer receives a new record. object is a TYPE * or const TYPE *. Each
 * argument is evaluated once.
 * - Limits: all lists are one type, STACK, and all strings (also SUBJECT_KEYID and KEY_USAGE) another,
 *   ASN1_STRING. The compiler cannot distinguish one list from another, or one string. C compilers warn of a
 *   void * only with -Wpedantic.
 * - Ownership, results and threads are those of the function that each macro calls.
 */
#ifndef TLXPKI_TYPED_H
#define TLXPKI_TYPED_H

#include <tlxpki/asn1_io.h>
#include <tlxpki/pem.h>
#include <tlxpki/types.h>
#include <tlxpki/x509v3.h>

/* The checks. Both results of a conditional have to be of one type, and sizeof evaluates neither. The type
 * comes from the constructor, because the record may have another name than its functions. */
#define TLX_TYPED_OBJECT(constructor, object) ((void)sizeof(1 ? *(object) : *constructor()), (object))
#ifdef __cplusplus
#define TLX_TYPED_OUT(constructor, out) \
    ((void)sizeof(1 ? **(out) : *constructor()), reinterpret_cast<void **>(out))
#else
#define TLX_TYPED_OUT(constructor, out) ((void)sizeof(1 ? **(out) : *constructor()), (void **)(out))
#endif

/** Reads a record from len octets of DER: readDER_from_Buffer(). */
#define TLX_READ_DER(TYPE, out, der, len) \
    readDER_from_Buffer(TLX_TYPED_OUT(new_##TYPE, out), TLX_DECODER(Seq_to_##TYPE), der, len)

/** Reads a record from a DER file: readDER_from_File(). */
#define TLX_READ_DER_FILE(TYPE, out, path) \
    readDER_from_File(TLX_TYPED_OUT(new_##TYPE, out), TLX_DECODER(Seq_to_##TYPE), path)

/** Reads a record from a PEM text of len characters: readPEM_from_Binary(). */
#define TLX_READ_PEM(TYPE, out, pem, len) \
    readPEM_from_Binary(TLX_TYPED_OUT(new_##TYPE, out), TLX_DECODER(Seq_to_##TYPE), pem, len)

/** Reads a record from a PEM file: readPEM_from_File(). */
#define TLX_READ_PEM_FILE(TYPE, out, path) \
    readPEM_from_File(TLX_TYPED_OUT(new_##TYPE, out), TLX_DECODER(Seq_to_##TYPE), path)

/** Writes a record as DER to *der, a new uint8_t *, and returns its length: writeDER_to_Binary(). */
#define TLX_WRITE_DER(TYPE, object, der) \
    writeDER_to_Binary(TLX_TYPED_OBJECT(new_##TYPE, object), TLX_ENCODER(TYPE##_to_Seq), der)

/** Writes a record to a DER file and returns the octets written: writeDER_to_FILE(). */
#define TLX_WRITE_DER_FILE(TYPE, object, path) \
    writeDER_to_FILE(TLX_TYPED_OBJECT(new_##TYPE, object), TLX_ENCODER(TYPE##_to_Seq), path)

/** Writes a record as PEM text to *pem, a new char *, and returns its length: writePEM_to_Binary(). label is
 * a string literal, for example "CERTIFICATE". */
#define TLX_WRITE_PEM(TYPE, object, label, pem)                                                    \
    writePEM_to_Binary(TLX_TYPED_OBJECT(new_##TYPE, object), TLX_ENCODER(TYPE##_to_Seq), "" label, \
                       sizeof("" label) - 1, pem)

/** Writes a record to a PEM file and returns the octets written: writePEM_to_FILE(). label is a string
 * literal. */
#define TLX_WRITE_PEM_FILE(TYPE, object, label, path)                                            \
    writePEM_to_FILE(TLX_TYPED_OBJECT(new_##TYPE, object), TLX_ENCODER(TYPE##_to_Seq), "" label, \
                     sizeof("" label) - 1, path)

/** Decodes the extension of a registry row in a list of extensions: decode_X509_EXTENSION_by_OID_index(). */
#define TLX_DECODE_EXTENSION(TYPE, extensions, oid_index, out)                            \
    decode_X509_EXTENSION_by_OID_index(extensions, oid_index, TLX_DECODER(Seq_to_##TYPE), \
                                       TLX_TYPED_OUT(new_##TYPE, out))

/** Makes a new extension of a registry row from a record: create_X509_EXTENSION_record_by_OID_index(). */
#define TLX_CREATE_EXTENSION(TYPE, oid_index, critical, object) \
    create_X509_EXTENSION_record_by_OID_index(                  \
        NULL, oid_index, critical, TLX_TYPED_OBJECT(new_##TYPE, object), TLX_ENCODER(TYPE##_to_Seq))

#endif
