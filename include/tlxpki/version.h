/** @file
 * The version of the library.
 */
#ifndef TLXPKI_VERSION_H
#define TLXPKI_VERSION_H

#include <tlxpki/export.h>

TLX_BEGIN_DECLS

/** Returns "5.1.42", a constant text. */
TLXPKI_API const char *get_PkiVersion(void);

TLX_END_DECLS

#endif
