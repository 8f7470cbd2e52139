/* A program for the other compiler of this system, with nothing but the library: no C library either. */
#include <tlxpki.h>

int start(void);

int start(void) {
    const char *text = "2.16.840.1.101.3.4.2.1";
    OBJECT_IDENTIFIER *oid = get_OBJECT_IDENTIFIER("sha256", 0);
    int good = oid != 0 && tlx_live_blocks() != 0;
    int i;
    for (i = 0; good && text[i] != 0; ++i)
        good = oid->data[i] == (uint8_t)text[i];
    free_OBJECT_IDENTIFIER(oid);
    return good && tlx_live_blocks() == 0 ? 42 : 1;
}
