#include <tlxpki/version.h>

const char *get_PkiVersion(void) {
    return TLX_PROJECT_VERSION;
}
