/** @file
 * Names that are types here and macros of Windows' <wincrypt.h>, which <windows.h> includes: X509_CERT,
 * X509_NAME, X509_EXTENSIONS, CMS_SIGNER_INFO, OCSP_REQUEST and OCSP_RESPONSE.
 *
 * Both headers can be used in one file: this one undefines the macros each time it is included. Every header
 * of the library that uses the names includes it, so a file that includes <windows.h> first needs nothing
 * more. A file that includes it later includes this header, or <tlxpki.h>, once more after it:
 *
 *     #include <tlxpki.h>
 *     #include <windows.h>
 *     #include <tlxpki/wincrypt.h>
 *
 * The macros name structures for CryptDecodeObjectEx and its like. This header keeps their values under other
 * names.
 */
#ifdef _WIN32
#undef X509_CERT
#undef CMS_SIGNER_INFO
#ifndef TLXPKI_WITH_OPENSSL_H /* there the names are OpenSSL's */
#undef OCSP_REQUEST
#undef OCSP_RESPONSE
#undef X509_NAME
#undef X509_EXTENSIONS
#endif

#ifndef TLXPKI_WINCRYPT_H
#define TLXPKI_WINCRYPT_H

#define TLX_WINCRYPT_X509_CERT ((LPCSTR)1)         /**< X509_CERT of <wincrypt.h> */
#define TLX_WINCRYPT_X509_NAME ((LPCSTR)7)         /**< X509_NAME of <wincrypt.h> */
#define TLX_WINCRYPT_X509_EXTENSIONS ((LPCSTR)5)   /**< X509_EXTENSIONS of <wincrypt.h> */
#define TLX_WINCRYPT_CMS_SIGNER_INFO ((LPCSTR)501) /**< CMS_SIGNER_INFO of <wincrypt.h> */
#define TLX_WINCRYPT_OCSP_REQUEST ((LPCSTR)66)     /**< OCSP_REQUEST of <wincrypt.h> */
#define TLX_WINCRYPT_OCSP_RESPONSE ((LPCSTR)67)    /**< OCSP_RESPONSE of <wincrypt.h> */

#endif
#endif
