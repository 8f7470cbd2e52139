/** @file
 * Linkage of the functions of libtlxcrypto.
 */
#ifndef TLXCRYPTO_EXPORT_H
#define TLXCRYPTO_EXPORT_H

#if defined(_WIN32) && !defined(TLX_STATIC)
#ifdef TLXCRYPTO_API_BUILD
#define TLXCRYPTO_API __declspec(dllexport)
#else
#define TLXCRYPTO_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define TLXCRYPTO_API __attribute__((visibility("default")))
#else
#define TLXCRYPTO_API
#endif

#ifdef __cplusplus
#define TLX_BEGIN_DECLS extern "C" {
#define TLX_END_DECLS }
#else
#define TLX_BEGIN_DECLS
#define TLX_END_DECLS
#endif

#endif
