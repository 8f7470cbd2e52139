/** @file
 * Status codes.
 *
 * An operation returns 0 for success, or an unsigned 32-bit code that says where and why it failed:
 *
 * | bits  | field    | meaning                                                                              |
 * |-------|----------|--------------------------------------------------------------------------------------|
 * | 31-24 | group    | the module that reports, TLX_GROUP_...                                               |
 * | 23-16 | function | the operation within that module, numbered from 1; 0 for routines shared by a module |
 * | 15-0  | reason   | why, TLX_REASON_...                                                                  |
 *
 * Group and function name the operation that reports. An operation reports its own code, not that of an
 * operation it called, except where its documentation says so. Each declaration lists its codes.
 *
 *     uint32_t status = readDER_from_Buffer(&cert, TLX_DECODER(Seq_to_X509_CERT), der, len);
 *     if (status != 0 && TLX_STATUS_REASON(status) == TLX_REASON_NOT_DER) ...
 *
 * Operations that return a length fail with 0xFFFFFFFF (a few with 0), those that return a pointer with null.
 * A few return the plain value 1 for failure, which is in none of the groups.
 */
#ifndef TLXPKI_STATUS_H
#define TLXPKI_STATUS_H

#include <stdint.h>
#include <tlxpki/export.h>

TLX_BEGIN_DECLS

#define TLX_SUCCESS 0U /**< the only value that means success */

/* The parts of a status code, which is a uint32_t. */
#define TLX_STATUS_GROUP(status) ((status) >> 24)
#define TLX_STATUS_FUNCTION(status) (((status) >> 16) & 0xFFU)
#define TLX_STATUS_REASON(status) ((status)&0xFFFFU)

/* Module groups. */
#define TLX_GROUP_TOKEN_LIST 0x30U        /**< KISA's list of hardware tokens */
#define TLX_GROUP_SHARED 0x40U            /**< routines shared by the X.509 and object identifier modules */
#define TLX_GROUP_VALUES 0x41U            /**< ASN1_STRING and ASN1_TIME */
#define TLX_GROUP_BER 0x42U               /**< BER layer: node building, typed encoders */
#define TLX_GROUP_DER 0x43U               /**< DER layer: node building, reading and writing */
#define TLX_GROUP_BER_SECONDARY 0x44U     /**< BER layer, secondary group */
#define TLX_GROUP_TIME 0x45U              /**< conversions of UTCTime and GeneralizedTime */
#define TLX_GROUP_X509 0x46U              /**< X.509 certificates, names and keys */
#define TLX_GROUP_X509_EXTENSIONS 0x47U   /**< X.509 version 3 extensions */
#define TLX_GROUP_CRL 0x48U               /**< certificate revocation lists */
#define TLX_GROUP_PKCS1 0x49U             /**< PKCS #1 keys and parameters, PKCS #11 access */
#define TLX_GROUP_PKCS5 0x4AU             /**< PKCS #5 password-based encryption */
#define TLX_GROUP_PKCS7 0x4BU             /**< PKCS #7 messages */
#define TLX_GROUP_PKCS8 0x4CU             /**< PKCS #8 private keys */
#define TLX_GROUP_PKCS12 0x4DU            /**< PKCS #12 */
#define TLX_GROUP_PEM 0x4EU               /**< PEM, and the files it is read from and written to */
#define TLX_GROUP_PATH_BUILDING 0x4FU     /**< building of certification paths, and signature values */
#define TLX_GROUP_OCSP 0x50U              /**< OCSP */
#define TLX_GROUP_ISSUER_AND_SERIAL 0x51U /**< issuer and serial number */
#define TLX_GROUP_CMS 0x52U               /**< CMS */
#define TLX_GROUP_PATH_VALIDATION 0x53U   /**< validation of certification paths */
#define TLX_GROUP_CTL 0x54U               /**< certificate trust lists */
#define TLX_GROUP_VERIFICATION 0x55U      /**< verification of certificates by RFC 5280 */

/* Reasons. Values that are not listed occur in single modules and are documented there. */

/** No further detail. */
#define TLX_REASON_UNSPECIFIED 0x0000U
/** A signature value, or in path validation a basic-constraints extension, could not be decoded. */
#define TLX_REASON_BAD_SIGNATURE_VALUE 0x000EU
/** Encoding or decoding gave nothing: an unencodable signature value, or decrypted data that is no DER
 * SEQUENCE, which a wrong password leads to. */
#define TLX_REASON_NO_RESULT 0x0012U
/** An index or count is out of range. */
#define TLX_REASON_OUT_OF_RANGE 0x001CU
/** A big integer could not be set from a word. */
#define TLX_REASON_NUMBER_NOT_SET 0x0028U
/** The input to decode is empty or missing, or a list that must not be empty is. */
#define TLX_REASON_EMPTY 0x002BU
/** An encrypted member could not be encoded. */
#define TLX_REASON_ENCRYPTED_NOT_ENCODED 0x0030U
/** A node or structure could not be made. */
#define TLX_REASON_NOT_MADE 0x003AU
/** A member could not be copied or is missing, or a buffer could not be allocated. */
#define TLX_REASON_NOT_COPIED 0x003BU
/** A node, list or structure could not be allocated. */
#define TLX_REASON_NOT_ALLOCATED 0x003CU
/** An identifier, child or other item was not found, or a limit was exceeded: path too long, no issuer. */
#define TLX_REASON_NOT_FOUND 0x0047U
/** An object identifier, tag or choice is not the required one. */
#define TLX_REASON_WRONG_TYPE 0x0048U
/** A required argument or member is null. */
#define TLX_REASON_MISSING_ARGUMENT 0x0049U
/** The input is no element that can be parsed. */
#define TLX_REASON_NOT_DER 0x004FU
/** A length is not positive; in path validation, a signature does not verify. */
#define TLX_REASON_NOT_POSITIVE 0x0054U
/** The message-digest attribute is not the digest that was computed. */
#define TLX_REASON_DIGEST_DIFFERS 0x005EU
/** A member could not be written to DER, or an attribute set encodes to nothing. */
#define TLX_REASON_NOT_WRITTEN 0x005FU
/** BER and DER layers: a bad argument, a bad length form, or no memory. */
#define TLX_REASON_NOT_BUILT 0x0101U
/** A member could not be converted to its node. */
#define TLX_REASON_NOT_ENCODED 0x0103U
/** A node could not be converted to a member: a child is missing or of the wrong kind. */
#define TLX_REASON_NOT_DECODED 0x0104U
/** The issuer name is not the subject of the issuer's certificate. */
#define TLX_REASON_ISSUER_DIFFERS 0x0106U
/** An element could not be added to a list. */
#define TLX_REASON_NOT_ADDED 0x010CU
/** A time lies outside the required interval. */
#define TLX_REASON_NOT_VALID_NOW 0x0113U
/** A self-issued end of the path is no trust anchor. */
#define TLX_REASON_NO_TRUST_ANCHOR 0x0116U
/** The contents of a PEM block or of a message are encrypted. */
#define TLX_REASON_ENCRYPTED 0x0114U
/** The issuer's key usage lacks keyCertSign. */
#define TLX_REASON_NO_CERT_SIGN 0x0118U
/** No acceptable policy remains where an explicit one is required. */
#define TLX_REASON_NO_POLICY 0x0119U
/** The path is longer than the maximum path length allows. */
#define TLX_REASON_PATH_LENGTH 0x011AU
/** The issuer's basic constraints are missing, not those of a CA, or their path length is used up. */
#define TLX_REASON_NOT_A_CA 0x011BU
/** An explicit policy is required, and the certificate has no certificate policies. */
#define TLX_REASON_NO_POLICIES 0x011CU

/** What a status means: constant texts in UTF-8, none of them null. */
typedef struct STATUS_TEXT {
    const char *module; /**< the module that reports; empty for a value outside the groups */
    const char
        *operation;     /**< the operations that return the status, with ", " between them; empty likewise */
    const char *reason; /**< what the reason stands for in that module */
    const char *sentence; /**< when the operation returns it; the reason where no more is documented */
} STATUS_TEXT;

/**
 * Says in words what a status means: those of this library, and the values 0, 1, 2, 3 and 0xFFFFFFFF that it
 * and libtlxcrypto return. Texts begin in lower case and have no full stop; "unknown" stands for what is not
 * documented. Nothing is allocated.
 * @param status any value
 * @param text   receives the texts
 * @return 0
 * @return 1 for a null text, and for a status of no known module
 */
TLXPKI_API uint32_t get_STATUS_TEXT(uint32_t status, STATUS_TEXT *text);

TLX_END_DECLS

#endif
