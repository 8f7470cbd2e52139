/** @file
 * Linkage of the functions of libtlxpki.
 */
#ifndef TLXPKI_EXPORT_H
#define TLXPKI_EXPORT_H

#include <tlxcrypto/export.h>

#if defined(_WIN32) && !defined(TLX_STATIC)
#ifdef TLXPKI_API_BUILD
#define TLXPKI_API __declspec(dllexport)
#else
#define TLXPKI_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define TLXPKI_API __attribute__((visibility("default")))
#else
#define TLXPKI_API
#endif

#endif
