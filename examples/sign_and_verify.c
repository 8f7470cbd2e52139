/* Signs the octets of a file with RSA and KCDSA and verifies the signatures: sign_and_verify FILE [RSA.key]
 * Without a key file (PKCS #1, not encrypted) it makes an RSA key; the KCDSA key is always new. */
#include <stdio.h>
#include <tlxpki.h>

enum { RSA_BITS = 2048, RSA_EXPONENT = 65537, RSA_LONGEST = 2048, PSS_SALT_LENGTH = 32 };
enum { KCDSA_P_BITS = 2048, KCDSA_Q_BITS = 224 };

typedef struct MESSAGE {
    uint8_t *octets;
    uint32_t len;
} MESSAGE;

/* A verification returns 0 for a good signature, TLX_RSA_BAD_SIGNATURE or TLX_KCDSA_BAD_SIGNATURE for a wrong
   one, and other statuses for a key that cannot be used and for wrong arguments. */
static uint32_t report(const char *scheme, uint32_t good, uint32_t altered, uint32_t expected) {
    STATUS_TEXT good_text;
    STATUS_TEXT altered_text;
    get_STATUS_TEXT(good, &good_text);
    get_STATUS_TEXT(altered, &altered_text);
    printf("%s: %u, %s; altered: %u, %s\n", scheme, (unsigned)good, good_text.reason, (unsigned)altered,
           altered_text.reason);
    return good == 0 && altered == expected ? 0 : 1;
}

static uint32_t try_rsa(const char *scheme, const RSA_UNIT *private_key, const RSA_UNIT *public_key,
                        uint32_t mode, const MESSAGE *message) {
    uint8_t signature[RSA_LONGEST];
    uint32_t len = 0;
    if (get_RSA_length(private_key) > sizeof signature) return 1;
    uint32_t status =
        sign_RSA(private_key, TLX_DIGEST_SHA256, mode, message->octets, message->len, signature, &len);
    if (status != 0) return status;
    uint32_t good =
        verify_RSA(public_key, TLX_DIGEST_SHA256, mode, message->octets, message->len, signature, len);
    signature[len - 1] ^= 1;
    uint32_t altered =
        verify_RSA(public_key, TLX_DIGEST_SHA256, mode, message->octets, message->len, signature, len);
    return report(scheme, good, altered, TLX_RSA_BAD_SIGNATURE);
}

static uint32_t rsa(const char *key_path, const MESSAGE *message) {
    /* Who verifies has the public key alone. */
    RSA_UNIT *private_key = new_RSA_UNIT();
    RSA_UNIT *public_key = new_RSA_UNIT();
    uint32_t status = key_path != NULL ? readPKCS1_from_File(private_key, NULL, 0, key_path)
                                       : gen_RSA_UNIT(private_key, RSA_BITS, RSA_EXPONENT);
    if (status == 0)
        status = set_RSA_UNIT_public(public_key, get_RSA_UNIT_number(private_key, TLX_RSA_N),
                                     get_RSA_UNIT_number(private_key, TLX_RSA_E));
    if (status == 0)
        status = try_rsa("RSA PKCS #1 v1.5", private_key, public_key, TLX_RSA_MODE_PKCS1, message);

    /* PSS: both sides have to agree on the digest of MGF1 and the length of the salt. */
    if (status == 0) status = set_RSA_UNIT_PSS(private_key, TLX_DIGEST_SHA256, PSS_SALT_LENGTH);
    if (status == 0) status = set_RSA_UNIT_PSS(public_key, TLX_DIGEST_SHA256, PSS_SALT_LENGTH);
    if (status == 0) status = try_rsa("RSA PSS", private_key, public_key, TLX_RSA_MODE_PSS, message);
    free_RSA_UNIT(public_key);
    free_RSA_UNIT(private_key);
    return status;
}

static uint32_t try_kcdsa(const KCDSA *private_key, const KCDSA *public_key, const MESSAGE *message) {
    uint8_t r[TLX_KCDSA_MAX_LENGTH];
    uint8_t s[TLX_KCDSA_MAX_LENGTH];
    uint32_t r_len = 0;
    uint32_t s_len = 0;
    uint32_t status =
        sign_KCDSA_data(private_key, TLX_DIGEST_SHA224, message->octets, message->len, r, &r_len, s, &s_len);
    if (status != 0) return status;
    uint32_t good =
        verify_KCDSA_data(public_key, TLX_DIGEST_SHA224, message->octets, message->len, r, r_len, s, s_len);
    s[s_len - 1] ^= 1;
    uint32_t altered =
        verify_KCDSA_data(public_key, TLX_DIGEST_SHA224, message->octets, message->len, r, r_len, s, s_len);
    return report("KCDSA", good, altered, TLX_KCDSA_BAD_SIGNATURE);
}

static uint32_t kcdsa(const MESSAGE *message) {
    KCDSA *private_key = new_KCDSA();
    KCDSA *public_key = new_KCDSA();
    uint32_t status = gen_KCDSA_params(private_key, KCDSA_P_BITS, KCDSA_Q_BITS, TLX_DIGEST_SHA224);
    if (status == 0) status = gen_KCDSA_key(private_key);
    if (status == 0)
        status = set_KCDSA_params(public_key, get_KCDSA_number(private_key, TLX_KCDSA_P),
                                  get_KCDSA_number(private_key, TLX_KCDSA_Q),
                                  get_KCDSA_number(private_key, TLX_KCDSA_G));
    if (status == 0) status = set_KCDSA_public(public_key, get_KCDSA_number(private_key, TLX_KCDSA_Y));
    if (status == 0) status = try_kcdsa(private_key, public_key, message);
    free_KCDSA(public_key);
    free_KCDSA(private_key);
    return status;
}

int main(int argc, char **argv) {
    if (argc < 2 || argc > 3) {
        fprintf(stderr, "usage: %s FILE [RSA.key]\n", argv[0]);
        return 2;
    }
    MESSAGE message = {NULL, 0};
    if (File_to_binary(argv[1], &message.octets, &message.len) != 0) {
        fprintf(stderr, "%s: cannot be read\n", argv[1]);
        return 2;
    }
    uint32_t status = rsa(argc == 3 ? argv[2] : NULL, &message);
    if (status == 0) status = kcdsa(&message);
    if (status != 0) {
        STATUS_TEXT text;
        get_STATUS_TEXT(status, &text);
        fprintf(stderr, "failed: 0x%08X, %s\n", (unsigned)status, text.sentence);
    }
    tlx_free(message.octets);
    return status == 0 ? 0 : 1;
}
