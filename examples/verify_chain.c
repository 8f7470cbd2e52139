/* Verifies a certificate that a CA below a root issued: verify_chain ROOT.pem CA.pem USER.pem */
#include <stdio.h>
#include <tlxpki.h>

static int explain(const char *what, uint32_t status) {
    STATUS_TEXT text;
    get_STATUS_TEXT(status, &text);
    fprintf(stderr, "%s: 0x%08X, %s\n", what, (unsigned)status, text.sentence);
    return 2;
}

static void print_result(const VERIFY_RESULT *result) {
    VERIFY_FINDING finding;
    for (uint32_t i = 0; get_VERIFY_RESULT_finding(result, i, &finding) == 0; ++i) {
        printf("not valid: 0x%08X, certificate %u: %s (RFC 5280, %s)\n", (unsigned)finding.status,
               (unsigned)finding.certificate, finding.text, finding.section);
    }
    if (get_VERIFY_RESULT_finding_count(result) > 0) return;
    printf("valid, %u certificates\n", (unsigned)get_VERIFY_RESULT_path_count(result));
    OBJECT_IDENTIFIER *policy = NULL;
    for (uint32_t i = 0; get_VERIFY_RESULT_policy(result, i, &policy) == 0; ++i)
        printf("policy %s\n", (const char *)policy->data);
    free_OBJECT_IDENTIFIER(policy);
}

/* A store is made once, and then serves every verification, on any thread. */
static int verify(const ENCODED_BLOCK *root, const ENCODED_BLOCK *ca, const ENCODED_BLOCK *user) {
    VERIFY_STORE *store = new_VERIFY_STORE();
    uint32_t status = add_VERIFY_STORE_anchor(store, root->contents, root->contents_len, 0);
    if (status == 0) status = add_VERIFY_STORE_certificate(store, ca->contents, ca->contents_len, 0);

    /* What is not set has its safe default. */
    VERIFY_SETTINGS settings = {.purpose = TLX_PURPOSE_SIGNING, .explicit_policy = 1};
    VERIFY_RESULT *result = NULL;
    if (status == 0)
        status = verify_CERTIFICATE(store, NULL, user->contents, user->contents_len, &settings, &result);
    if (result != NULL)
        print_result(result);
    else
        explain("cannot verify", status);

    free_VERIFY_RESULT(result);
    free_VERIFY_STORE(store);
    return status == 0 ? 0 : 1;
}

int main(int argc, char **argv) {
    if (argc != 4) {
        fprintf(stderr, "usage: %s ROOT.pem CA.pem USER.pem\n", argv[0]);
        return 2;
    }
    /* Files of PEM or DER; the first block of each counts. */
    ENCODED_BLOCKS *files[3] = {NULL};
    int result = 0;
    for (int i = 0; i < 3; ++i) {
        const uint32_t status = readENCODED_BLOCKS_from_File(argv[i + 1], &files[i]);
        if (status != 0) result = explain(argv[i + 1], status);
    }
    if (result == 0)
        result = verify(get_ENCODED_BLOCKS_child(files[0], 0), get_ENCODED_BLOCKS_child(files[1], 0),
                        get_ENCODED_BLOCKS_child(files[2], 0));
    for (int i = 0; i < 3; ++i)
        free_ENCODED_BLOCKS(files[i]);
    return result;
}
