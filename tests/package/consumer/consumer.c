#include <stdio.h>
#include <string.h>
#include <tlxpki.h>

int main(void) {
    OBJECT_IDENTIFIER *oid = get_OBJECT_IDENTIFIER("sha256", 0);
    int good = oid != NULL && strcmp((const char *)oid->data, "2.16.840.1.101.3.4.2.1") == 0;
    free_OBJECT_IDENTIFIER(oid);
    good = good && strcmp(get_PkiVersion(), "5.1.42") == 0 && tlx_live_blocks() == 0;
    printf("C program over tlxpki %s: %s\n", get_PkiVersion(), good ? "good" : "wrong");
    return good ? 0 : 1;
}
