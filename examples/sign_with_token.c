/* Signs a file with a key that stays on its token, as a PKCS #7 message that other programs verify.
 *
 *     sign_with_token MODULE LABEL PIN CONTENT MESSAGE
 *
 * MODULE is the PKCS #11 module of the token, LABEL that of its certificate and key. A program of your own
 * asks for the PIN, for command lines can be seen by others. */
#include <stdio.h>
#include <string.h>
#include <tlxpki.h>

/* Says what a status means, and hands it on. */
static uint32_t told(const char *what, uint32_t status) {
    STATUS_TEXT text;
    if (status != 0 && get_STATUS_TEXT(status, &text) == 0) {
        fprintf(stderr, "%s: 0x%08X, %s\n", what, (unsigned)status, text.sentence);
    }
    return status;
}

/* Finds the one object of a kind with a label. */
static uint32_t find(TOKEN_SESSION *session, uint32_t kind, const char *label, TOKEN_OBJECTS **objects) {
    TOKEN_OBJECT_QUERY query = {0};
    query.kind = kind;
    query.label = label;
    uint32_t status = find_TOKEN_OBJECTS(session, &query, objects);
    if (status == 0 && get_TOKEN_OBJECTS_count(*objects) != 1) status = 1;
    return told(kind == TLX_TOKEN_CERTIFICATE ? "the certificate" : "the key", status);
}

/* Makes the message. */
static uint32_t sign(const X509_CERT *cert, const ASYMMETRIC_KEY *key, const char *content,
                     const char *path) {
    uint8_t *octets = NULL;
    uint32_t length = 0;
    uint32_t status = File_to_binary(content, &octets, &length);
    P7_CONTENT_INFO *message = new_P7_CONTENT_INFO();
    if (status == 0) status = set_PKCS7_Type(message, TLX_OID_PKCS7_SIGNED_DATA);
    if (status == 0) status = add_PKCS7_Certificate(message, cert);
    if (status == 0 && add_PKCS7_Signature(message, cert, key, TLX_OID_SHA256) == NULL) status = 1;
    if (status == 0) status = sign_PKCS7_withAttributes(message, octets, (int32_t)length, 0, NULL);
    if (status == 0 && writeDER_to_FILE(message, TLX_ENCODER(P7_CONTENT_INFO_to_Seq), path) == 0xFFFFFFFF) {
        status = 1;
    }
    free_P7_CONTENT_INFO(message);
    tlx_free(octets);
    return told("signing", status);
}

/* Signs with what the token has under a label. */
static uint32_t sign_with(TOKEN_SESSION *session, const char *label, const char *content, const char *path) {
    TOKEN_OBJECTS *certs = NULL;
    TOKEN_OBJECTS *keys = NULL;
    X509_CERT *cert = NULL;
    ASYMMETRIC_KEY *key = NULL;
    uint32_t status = find(session, TLX_TOKEN_CERTIFICATE, label, &certs);
    if (status == 0) status = find(session, TLX_TOKEN_PRIVATE_KEY, label, &keys);
    if (status == 0) {
        status =
            told("the certificate", get_TOKEN_certificate(session, get_TOKEN_OBJECTS_child(certs, 0), &cert));
    }
    if (status == 0) {
        status = told("the key", get_TOKEN_key(session, get_TOKEN_OBJECTS_child(keys, 0), NULL, NULL, &key));
    }
    if (status == 0) status = sign(cert, key, content, path);
    free_ASYMMETRIC_KEY(key);
    free_X509_CERT(cert);
    free_TOKEN_OBJECTS(keys);
    free_TOKEN_OBJECTS(certs);
    return status;
}

int main(int argc, char **argv) {
    if (argc != 6) {
        fprintf(stderr, "usage: sign_with_token MODULE LABEL PIN CONTENT MESSAGE\n");
        return 2;
    }
    TOKEN_MODULE *module = NULL;
    TOKEN_SESSION *session = NULL;
    uint32_t status = told(argv[1], open_TOKEN_MODULE(argv[1], &module));
    if (status == 0) status = told("the token", open_TOKEN_SESSION(module, NULL, &session));
    if (status == 0) status = told("logging in", login_TOKEN(session, argv[3], (uint32_t)strlen(argv[3])));
    if (status == 0) status = sign_with(session, argv[2], argv[4], argv[5]);
    close_TOKEN_SESSION(session);
    close_TOKEN_MODULE(module);
    return status == 0 ? 0 : 1;
}
