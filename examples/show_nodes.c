/* Prints the tree of ASN.1 elements in a PEM file. */
#include <stdio.h>
#include <tlxpki.h>

enum { DEEPEST = 32 };

/* Prints the value of an object identifier with its name. */
static void show_object_identifier(const ASN1_UNIT *parent, uint32_t index) {
    OBJECT_IDENTIFIER *oid = getDERChildAt(parent, index, TLX_TAG_OBJECT_IDENTIFIER);
    if (oid != NULL)
        printf("  %s (%s)", oid->data, ln_from_index((int32_t)index_from_OBJECT_IDENTIFIER(oid)));
    free_OBJECT_IDENTIFIER(oid);
}

static void show_children(const ASN1_UNIT *node, int depth) {
    uint32_t count = getSequenceChildNum(node);
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t type = getChildType(node, i);
        printf("%*s%02X", 2 * depth, "", (unsigned)type);
        if (type == TLX_TAG_OBJECT_IDENTIFIER) show_object_identifier(node, i);
        printf("\n");
        if ((type & 0x20) == 0 || depth == DEEPEST) continue;
        /* A context-specific child has any type that we ask for. */
        ASN1_UNIT *child = getDERChildAt(node, i, type == TLX_TAG_SET_OCTET ? TLX_TAG_SET : TLX_TAG_SEQUENCE);
        show_children(child, depth + 1);
        free_ASN1_UNIT(child);
    }
}

int main(int argc, char **argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s FILE.pem\n", argv[0]);
        return 2;
    }
    uint8_t *text = NULL;
    uint32_t len = 0;
    if (File_to_binary(argv[1], &text, &len) != 0) {
        fprintf(stderr, "%s: cannot be read\n", argv[1]);
        return 2;
    }
    uint8_t *der = NULL;
    uint32_t der_len = decode_PEM((const char *)text, (int32_t)len, &der);
    tlx_free(text);
    ASN1_UNIT *node = der_len > 0 ? decodeToDERSequence_n(der, der_len) : NULL;
    tlx_free(der);
    if (node == NULL) {
        fprintf(stderr, "%s: no PEM text of a DER element\n", argv[1]);
        return 2;
    }
    printf("%02X, %u octets, %u children\n", *node->tag, (unsigned)getASN1ValueLength(node),
           (unsigned)getSequenceChildNum(node));
    show_children(node, 1);
    free_ASN1_UNIT(node);
    return 0;
}
