/* Makes keys for a CA and a user, and issues a self-signed certificate of the CA and one of the user below
 * it: issue_certificates CA.pem CA.key USER.pem USER.key */
#include <stdio.h>
#include <tlxpki.h>

enum { KEY_BITS = 2048, KEY_EXPONENT = 65537, SERIAL_LENGTH = 16, CA_YEARS = 10, USER_YEARS = 1 };
static const char CA_NAME[] = "Example CA";
static const char USER_NAME[] = "홍길동";
static const char USER_EMAIL[] = "user@example.com";
static const char POLICY[] = "2.999.1";

typedef struct IDENTITY {
    X509_CERT *cert;
    ASYMMETRIC_KEY *key; /* with the private key */
} IDENTITY;

static uint32_t set_key(IDENTITY *identity) {
    RSA_UNIT *unit = new_RSA_UNIT();
    X509_PUBKEY *public_key = new_X509_PUBKEY();
    uint32_t status = gen_RSA_UNIT(unit, KEY_BITS, KEY_EXPONENT);
    if (status == 0) status = set_ASYMMETRIC_KEY(identity->key, TLX_KEY_RSA, unit);
    if (status == 0) status = set_X509_PUBKEY_rsa(public_key, unit);
    if (status == 0) status = set_X509_pub_key(identity->cert, public_key);
    free_X509_PUBKEY(public_key);
    free_RSA_UNIT(unit);
    return status;
}

static uint32_t set_serial(X509_CERT *cert) {
    uint8_t octets[SERIAL_LENGTH];
    if (RAND_BYTES(octets, sizeof octets) != 0) return 1;
    octets[0] |= 0x40; /* so that it is not zero */
    BIGINT *serial = binary_to_BIGINT(octets, sizeof octets);
    uint32_t status = set_X509_serial(cert, serial);
    free_BIGINT(serial);
    return status;
}

static uint32_t set_subject(X509_CERT *cert, const char *common_name) {
    X509_NAME *name = new_X509_NAME();
    uint32_t status =
        add_X509_NAME_child_OID_index(name, TLX_OID_COUNTRY_NAME, TLX_TAG_PRINTABLE_STRING, "KR", -1, -1);
    if (status == 0)
        status = add_X509_NAME_child_OID_index(name, TLX_OID_COMMON_NAME, TLX_TAG_UTF8_STRING, common_name,
                                               -1, -1);
    if (status == 0) status = set_X509_subject(cert, name);
    free_X509_NAME(name);
    return status;
}

static uint32_t set_validity(X509_CERT *cert, int32_t years) {
    ASN1_TIME *calendar = getCurrentGMTime();
    X509_TIME *time = new_X509_TIME();
    uint32_t status = set_X509_TIME(time, calendar);
    if (status == 0) status = set_X509_notBefore(cert, time);
    if (status == 0) status = add_ASN1_TIME_years(calendar, years);
    if (status == 0) status = set_X509_TIME(time, calendar);
    if (status == 0) status = set_X509_notAfter(cert, time);
    free_X509_TIME(time);
    free_ASN1_TIME(calendar);
    return status;
}

/* Adds an extension and frees it; null means that it could not be made. */
static uint32_t add_extension(X509_EXTENSIONS *extensions, X509_EXTENSION *extension) {
    uint32_t status = add_X509_EXTENSION(extensions, extension, -1);
    free_X509_EXTENSION(extension);
    return status;
}

static uint32_t add_key_extensions(X509_EXTENSIONS *extensions, const X509_CERT *cert, uint32_t uses) {
    KEY_USAGE *usage = named_bits_to_BIT_STRING(uses);
    SUBJECT_KEYID *id = create_SUBJECT_KEYID(get_X509_SPKI(cert));
    uint32_t status = add_extension(extensions, TLX_CREATE_EXTENSION(KEY_USAGE, TLX_OID_KEY_USAGE, 1, usage));
    if (status == 0)
        status = add_extension(extensions,
                               TLX_CREATE_EXTENSION(SUBJECT_KEYID, TLX_OID_SUBJECT_KEY_IDENTIFIER, 0, id));
    free_SUBJECT_KEYID(id);
    free_KEY_USAGE(usage);
    return status;
}

static uint32_t add_basic_constraints(X509_EXTENSIONS *extensions) {
    BASIC_CONSTRAINTS *constraints = new_BASIC_CONSTRAINTS();
    if (constraints != NULL) constraints->cA = 0xFF;
    uint32_t status = add_extension(
        extensions, TLX_CREATE_EXTENSION(BASIC_CONSTRAINTS, TLX_OID_BASIC_CONSTRAINTS, 1, constraints));
    free_BASIC_CONSTRAINTS(constraints);
    return status;
}

static uint32_t add_authority(X509_EXTENSIONS *extensions, const X509_CERT *ca) {
    AUTHORITY_KEYID *authority = create_AUTHORITY_KEYID(ca, TLX_KEYID_KEY | TLX_KEYID_ISSUER_AND_SERIAL);
    uint32_t status = add_extension(
        extensions, TLX_CREATE_EXTENSION(AUTHORITY_KEYID, TLX_OID_AUTHORITY_KEY_IDENTIFIER, 0, authority));
    free_AUTHORITY_KEYID(authority);
    return status;
}

static uint32_t add_policy(X509_EXTENSIONS *extensions) {
    CERTIFICATE_POLICIES *policies = new_CERTIFICATE_POLICIES();
    POLICY_INFO *policy = new_POLICY_INFO();
    if (policy != NULL) policy->policyIdentifier = text_to_OBJECT_IDENTIFIER(POLICY);
    uint32_t status = add_CERTIFICATE_POLICIES_child(policies, policy, -1);
    if (status == 0)
        status = add_extension(extensions, TLX_CREATE_EXTENSION(CERTIFICATE_POLICIES,
                                                                TLX_OID_CERTIFICATE_POLICIES, 0, policies));
    free_POLICY_INFO(policy);
    free_CERTIFICATE_POLICIES(policies);
    return status;
}

static uint32_t add_email(X509_EXTENSIONS *extensions) {
    GENERAL_NAMES *names = new_GENERAL_NAMES();
    GENERAL_NAME *email = create_GENERAL_NAME(TLX_GENERAL_NAME_RFC822_NAME, USER_EMAIL, -1);
    uint32_t status = add_GENERAL_NAMES_child(names, email, -1);
    if (status == 0)
        status = add_extension(extensions,
                               TLX_CREATE_EXTENSION(GENERAL_NAMES, TLX_OID_SUBJECT_ALT_NAME, 0, names));
    free_GENERAL_NAME(email);
    free_GENERAL_NAMES(names);
    return status;
}

static uint32_t set_ca_extensions(X509_CERT *cert) {
    X509_EXTENSIONS *extensions = new_X509_EXTENSIONS();
    uint32_t status = add_basic_constraints(extensions);
    if (status == 0)
        status = add_key_extensions(extensions, cert, TLX_KEY_USAGE_KEY_CERT_SIGN | TLX_KEY_USAGE_CRL_SIGN);
    if (status == 0) status = set_X509_extensions(cert, extensions);
    free_X509_EXTENSIONS(extensions);
    return status;
}

static uint32_t set_user_extensions(X509_CERT *cert, const X509_CERT *ca) {
    X509_EXTENSIONS *extensions = new_X509_EXTENSIONS();
    uint32_t status = add_authority(extensions, ca);
    if (status == 0)
        status = add_key_extensions(extensions, cert,
                                    TLX_KEY_USAGE_DIGITAL_SIGNATURE | TLX_KEY_USAGE_NON_REPUDIATION);
    if (status == 0) status = add_policy(extensions);
    if (status == 0) status = add_email(extensions);
    if (status == 0) status = set_X509_extensions(cert, extensions);
    free_X509_EXTENSIONS(extensions);
    return status;
}

/* Everything but issuer, extensions and signature. */
static uint32_t set_members(IDENTITY *identity, const char *common_name, int32_t years) {
    OBJECT_IDENTIFIER *algorithm = index_to_OBJECT_IDENTIFIER(TLX_OID_SHA256_WITH_RSA);
    uint32_t status = set_key(identity);
    if (status == 0) status = set_X509_version(identity->cert, 2); /* version 3 */
    if (status == 0) status = set_serial(identity->cert);
    if (status == 0) status = set_X509_signature(identity->cert, algorithm);
    if (status == 0) status = set_subject(identity->cert, common_name);
    if (status == 0) status = set_validity(identity->cert, years);
    free_OBJECT_IDENTIFIER(algorithm);
    return status;
}

static uint32_t issue(IDENTITY *ca, IDENTITY *user) {
    uint32_t status = set_members(ca, CA_NAME, CA_YEARS);
    if (status == 0) status = set_X509_issuer(ca->cert, get_X509_subject(ca->cert));
    if (status == 0) status = set_ca_extensions(ca->cert);
    if (status == 0) status = gen_SIG_X509_Cert(ca->cert, ca->key);

    if (status == 0) status = set_members(user, USER_NAME, USER_YEARS);
    if (status == 0) status = set_X509_issuer(user->cert, get_X509_subject(ca->cert));
    if (status == 0) status = set_user_extensions(user->cert, ca->cert);
    if (status == 0) status = gen_SIG_X509_Cert(user->cert, ca->key);
    return status;
}

/* The key file is for its owner alone. A password in place of NULL encrypts it. */
static int write_files(const IDENTITY *identity, const char *cert_path, const char *key_path) {
    const char *failed = NULL;
    if (TLX_WRITE_PEM_FILE(X509_CERT, identity->cert, "CERTIFICATE", cert_path) == 0xFFFFFFFF)
        failed = cert_path;
    else if (writePKCS1PrivateKey_to_File(identity->key->key, NULL, 0, key_path) != 0)
        failed = key_path;
    if (failed != NULL) fprintf(stderr, "%s: cannot be written\n", failed);
    return failed != NULL;
}

int main(int argc, char **argv) {
    if (argc != 5) {
        fprintf(stderr, "usage: %s CA.pem CA.key USER.pem USER.key\n", argv[0]);
        return 2;
    }
    IDENTITY ca = {new_X509_CERT(), new_ASYMMETRIC_KEY()};
    IDENTITY user = {new_X509_CERT(), new_ASYMMETRIC_KEY()};
    uint32_t status = issue(&ca, &user);
    if (status != 0) {
        STATUS_TEXT text;
        get_STATUS_TEXT(status, &text);
        fprintf(stderr, "no certificates: 0x%08X, %s\n", (unsigned)status, text.sentence);
    }
    int result = status != 0 || write_files(&ca, argv[1], argv[2]) || write_files(&user, argv[3], argv[4]);

    free_ASYMMETRIC_KEY(user.key);
    free_X509_CERT(user.cert);
    free_ASYMMETRIC_KEY(ca.key);
    free_X509_CERT(ca.cert);
    return result;
}
