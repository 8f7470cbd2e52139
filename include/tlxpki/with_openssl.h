/** @file
 * libtlxpki for files that also include OpenSSL's headers, before this one or after it.
 *
 * Both have types of the same names, such as X509_NAME. From here, the library's are called TLX_X509_NAME and
 * so on; the plain names are OpenSSL's. Functions keep their names, which differ from OpenSSL's. Include this
 * header in place of <tlxpki.h>, and before any other header of the library in the file.
 *
 *     #include <openssl/x509.h>
 *     #include <tlxpki/with_openssl.h>
 *
 *     TLX_X509_NAME *name = new_X509_NAME();
 *     X509_NAME *other = X509_NAME_new();
 */
#ifndef TLXPKI_WITH_OPENSSL_H
#if defined(TLXPKI_TYPES_H) || defined(TLXPKI_X509_TYPES_H)
#error "<tlxpki/with_openssl.h> has to come before the other headers of tlxpki"
#endif
#define TLXPKI_WITH_OPENSSL_H

/* <wincrypt.h> has macros of some of the names, which OpenSSL takes away as well. */
#ifdef _WIN32
#undef OCSP_REQUEST
#undef OCSP_RESPONSE
#undef X509_EXTENSIONS
#undef X509_NAME
#endif

#define ACCESS_DESCRIPTION TLX_ACCESS_DESCRIPTION
#define ASN1_STRING TLX_ASN1_STRING
#define ASN1_TIME TLX_ASN1_TIME
#define AUTHORITY_INFO_ACCESS TLX_AUTHORITY_INFO_ACCESS
#define AUTHORITY_KEYID TLX_AUTHORITY_KEYID
#define BASIC_CONSTRAINTS TLX_BASIC_CONSTRAINTS
#define CRL_DIST_POINTS TLX_CRL_DIST_POINTS
#define DIST_POINT TLX_DIST_POINT
#define DIST_POINT_NAME TLX_DIST_POINT_NAME
#define EDIPARTYNAME TLX_EDIPARTYNAME
#define EXTENDED_KEY_USAGE TLX_EXTENDED_KEY_USAGE
#define GENERAL_NAME TLX_GENERAL_NAME
#define GENERAL_NAMES TLX_GENERAL_NAMES
#define GENERAL_SUBTREE TLX_GENERAL_SUBTREE
#define NAME_CONSTRAINTS TLX_NAME_CONSTRAINTS
#define OCSP_REQUEST TLX_OCSP_REQUEST
#define OCSP_RESPONSE TLX_OCSP_RESPONSE
#define OCSP_SIGNATURE TLX_OCSP_SIGNATURE
#define OTHERNAME TLX_OTHERNAME
#define POLICY_CONSTRAINTS TLX_POLICY_CONSTRAINTS
#define POLICY_MAPPING TLX_POLICY_MAPPING
#define POLICY_MAPPINGS TLX_POLICY_MAPPINGS
#define X509_ATTRIBUTE TLX_X509_ATTRIBUTE
#define X509_CRL TLX_X509_CRL
#define X509_EXTENSION TLX_X509_EXTENSION
#define X509_EXTENSIONS TLX_X509_EXTENSIONS
#define X509_NAME TLX_X509_NAME
#define X509_PUBKEY TLX_X509_PUBKEY
#define X509_REVOKED TLX_X509_REVOKED

#include <tlxpki.h>
#include <tlxpki/ocsp.h>
#include <tlxpki/ocsp_respond.h>

#undef ACCESS_DESCRIPTION
#undef ASN1_STRING
#undef ASN1_TIME
#undef AUTHORITY_INFO_ACCESS
#undef AUTHORITY_KEYID
#undef BASIC_CONSTRAINTS
#undef CRL_DIST_POINTS
#undef DIST_POINT
#undef DIST_POINT_NAME
#undef EDIPARTYNAME
#undef EXTENDED_KEY_USAGE
#undef GENERAL_NAME
#undef GENERAL_NAMES
#undef GENERAL_SUBTREE
#undef NAME_CONSTRAINTS
#undef OCSP_REQUEST
#undef OCSP_RESPONSE
#undef OCSP_SIGNATURE
#undef OTHERNAME
#undef POLICY_CONSTRAINTS
#undef POLICY_MAPPING
#undef POLICY_MAPPINGS
#undef X509_ATTRIBUTE
#undef X509_CRL
#undef X509_EXTENSION
#undef X509_EXTENSIONS
#undef X509_NAME
#undef X509_PUBKEY
#undef X509_REVOKED

#endif
