/** @file
 * Names that are types here and macros of Windows' <wincrypt.h>, which <windows.h> includes: X509_CERT,
 * X509_NAME and X509_EXTENSIONS.
 *
 * Both headers can be used in one file. As types, the names are the library's from the last inclusion of this
 * header on: it undefines the macros. Every header of the library that uses the names includes it, so nothing
 * need be done where <windows.h> comes first. Where it comes later, include this header, or <tlxpki.h>, once
 * more after it; for that they may be included any number of times.
 *
 *     #include <tlxpki.h>
 *     #include <windows.h>
 *     #include <tlxpki/wincrypt.h>
 *
 * The macros are names of structures for CryptDecodeObjectEx and its like. Their values are kept here under
 * other names.
 */
#ifdef _WIN32
#undef X509_CERT
#undef X509_NAME
#undef X509_EXTENSIONS

#ifndef TLXPKI_WINCRYPT_H
#define TLXPKI_WINCRYPT_H

#define TLX_WINCRYPT_X509_CERT ((LPCSTR)1)       /**< X509_CERT of <wincrypt.h> */
#define TLX_WINCRYPT_X509_NAME ((LPCSTR)7)       /**< X509_NAME of <wincrypt.h> */
#define TLX_WINCRYPT_X509_EXTENSIONS ((LPCSTR)5) /**< X509_EXTENSIONS of <wincrypt.h> */

#endif
#endif
