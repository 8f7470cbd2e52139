/* Prints the tree of ASN.1 elements in each PEM block of a file, or in a DER file: show_nodes FILE */
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

static int show_block(const ENCODED_BLOCK *block) {
    if (block->label[0] != '\0') printf("%s, line %u\n", block->label, (unsigned)block->line);
    if (block->status != 0) {
        STATUS_TEXT text;
        get_STATUS_TEXT(block->status, &text);
        printf("cannot be read: 0x%08X, %s\n", (unsigned)block->status, text.sentence);
        return 1;
    }
    ASN1_UNIT *node = decodeToDERSequence_n(block->contents, block->contents_len);
    if (node == NULL) {
        printf("no element that can be shown\n");
        return 1;
    }
    printf("%02X, %u octets, %u children\n", *node->tag, (unsigned)getASN1ValueLength(node),
           (unsigned)getSequenceChildNum(node));
    show_children(node, 1);
    free_ASN1_UNIT(node);
    return 0;
}

int main(int argc, char **argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s FILE\n", argv[0]);
        return 2;
    }
    ENCODED_BLOCKS *blocks = NULL;
    if (readENCODED_BLOCKS_from_File(argv[1], &blocks) != 0) {
        fprintf(stderr, "%s: cannot be read\n", argv[1]);
        return 2;
    }
    int result = 0;
    for (uint32_t i = 0; i < get_ENCODED_BLOCKS_count(blocks); ++i)
        if (show_block(get_ENCODED_BLOCKS_child(blocks, i)) != 0) result = 1;
    free_ENCODED_BLOCKS(blocks);
    return result;
}
