/* Verifies a certificate that a CA below a root issued: verify_chain ROOT.pem CA.pem USER.pem */
#include <stdio.h>
#include <tlxpki.h>

static void explain(const char *what, uint32_t status) {
    STATUS_TEXT text;
    get_STATUS_TEXT(status, &text);
    fprintf(stderr, "%s: 0x%08X, %s\n", what, (unsigned)status, text.sentence);
}

static X509_CERT *read_certificate(const char *path) {
    X509_CERT *cert = NULL;
    uint32_t status = TLX_READ_PEM_FILE(X509_CERT, &cert, path);
    if (status != 0) explain(path, status);
    return cert;
}

static uint32_t verify(const X509_CERT *root, const X509_CERT *ca, const X509_CERT *user) {
    /* We trust the root's name and key. build_certPath() takes the first issuer in the pool that fits, so CAs
       come before the root. Both lists keep copies. */
    TRUST_ANCHOR *anchor = create_TRUST_ANCHOR_from_X509_CERT(root);
    TRUST_ANCHORS *anchors = new_TRUST_ANCHORS();
    X509_CERTIFICATES *pool = new_X509_CERTIFICATES();
    uint32_t status = add_TRUST_ANCHORS(anchors, anchor);
    if (status == 0) status = add_X509_CERTIFICATES(pool, ca);
    if (status == 0) status = add_X509_CERTIFICATES(pool, root);

    /* The functions make a record for each null pointer, and we free it. */
    X509_CERTIFICATES *path = NULL;
    node_LIST *policies = NULL;
    if (status == 0) status = build_certPath(pool, anchors, user, &path);
    if (status == 0) status = validate_certpath(path, NULL, &policies);
    if (status == 0) {
        printf("valid, %u certificates\n", (unsigned)get_X509_CERTIFICATES_count(path));
        print_VALID_POLICY_TREE_LIST(policies);
    } else {
        explain("not valid", status);
    }

    free_node_LIST(policies);
    free_X509_CERTIFICATES(path);
    free_X509_CERTIFICATES(pool);
    free_TRUST_ANCHORS(anchors);
    free_TRUST_ANCHOR(anchor);
    return status;
}

int main(int argc, char **argv) {
    if (argc != 4) {
        fprintf(stderr, "usage: %s ROOT.pem CA.pem USER.pem\n", argv[0]);
        return 2;
    }
    X509_CERT *root = read_certificate(argv[1]);
    X509_CERT *ca = read_certificate(argv[2]);
    X509_CERT *user = read_certificate(argv[3]);
    int result = 2;
    if (root != NULL && ca != NULL && user != NULL) result = verify(root, ca, user) == 0 ? 0 : 1;

    free_X509_CERT(user);
    free_X509_CERT(ca);
    free_X509_CERT(root);
    return result;
}
