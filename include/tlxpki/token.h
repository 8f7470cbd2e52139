/** @file
 * Tokens, smart cards and security modules through their PKCS #11 modules, in a few calls: finding the token,
 * logging in, finding certificates and keys, and signing and decrypting with keys that never leave it.
 *
 * A program may open several modules. A module needs to export nothing but C_GetFunctionList. This is apart
 * from the one module and the wrappers of <tlxpki/pkcs11.h>, and includes no Cryptoki header.
 *
 *     TOKEN_MODULE *module = NULL;
 *     TOKEN_SESSION *session = NULL;
 *     status = open_TOKEN_MODULE("/usr/lib/softhsm/libsofthsm2.so", &module);
 *     if (status == 0) status = open_TOKEN_SESSION(module, "my token", &session);
 *     if (status == 0) status = login_TOKEN(session, pin, pin_len);
 *
 * - Failure: functions return 0, or a status. When a function of the module fails, this is 0x49200000 plus
 * its CK_RV (0x492000A0 for CKR_PIN_INCORRECT), or 0x4920FFFF for a vendor's own CK_RV; get_STATUS_TEXT()
 * knows them. The status of a module goes up unchanged also through what signs and decrypts with its keys.
 * Output arguments are unchanged on failure.
 * - What a module returns is not trusted: lengths are checked, and so is every signature. A module runs in
 * the process of the program, however, and can do there what it likes.
 * - Ownership: open_ and find_ functions make what the matching close_ or free_ function ends. A module stays
 *   loaded as long as it has open sessions, and a session stays open as long as there are keys of it.
 * - Threads: one session, its objects and its keys are for one thread at a time; sessions may be used at once
 *   on several threads when the module can be (it is initialised with CKF_OS_LOCKING_OK). Logging in and out
 *   counts for all sessions of the program with that token.
 * - Standard: PKCS #11 2.40 (OASIS Standard).
 */
#ifndef TLXPKI_TOKEN_H
#define TLXPKI_TOKEN_H

#include <tlxpki/x509_types.h>

TLX_BEGIN_DECLS

/** A module that is loaded. */
typedef struct TOKEN_MODULE TOKEN_MODULE;
/** A session with a token. */
typedef struct TOKEN_SESSION TOKEN_SESSION;
/** Objects that were found. */
typedef struct TOKEN_OBJECTS TOKEN_OBJECTS;

/** A slot with a token in it. Texts are the module's, without the spaces at their end; they should be UTF-8.
 */
typedef struct TOKEN_INFO {
    uint64_t slotId;
    char label[33];
    char manufacturer[33];
    char model[17];
    char serialNumber[17];
    uint64_t flags; /**< CKF_ bits of a token, such as CKF_LOGIN_REQUIRED and CKF_USER_PIN_LOCKED */
} TOKEN_INFO;

/** Kinds of objects. */
enum { TLX_TOKEN_CERTIFICATE = 1, TLX_TOKEN_PRIVATE_KEY = 2, TLX_TOKEN_PUBLIC_KEY = 3 };

/** What to look for. Members that are null or 0 say nothing. */
typedef struct TOKEN_OBJECT_QUERY {
    uint32_t kind;            /**< TLX_TOKEN_; 0 for all three */
    const char *label;        /**< CKA_LABEL */
    const uint8_t *id;        /**< CKA_ID, which a certificate and its keys share */
    uint32_t idLength;        /**< octets */
    const X509_NAME *subject; /**< CKA_SUBJECT, which not every module keeps for keys */
} TOKEN_OBJECT_QUERY;

/** An object of a token. Its list owns it. */
typedef struct TOKEN_OBJECT {
    uint64_t handle; /**< CK_OBJECT_HANDLE, good as long as the session */
    uint32_t kind;   /**< TLX_TOKEN_ */
    char *label;     /**< with a NUL at its end; empty when there is none */
    uint8_t *id;     /**< null when there is none */
    uint32_t idLength;
} TOKEN_OBJECT;

/**
 * Loads a module and initialises it. A module that is open is opened once more: it is the same handle, which
 * is closed as often as it was opened. A program that has the module initialised by other means keeps it so:
 * closing does not finalise it then.
 * @param path as _load_pkcs11_module() takes it
 * @return 0; 0x49170049 for a null argument; 0x49170047 for a file that cannot be loaded or does not export
 * C_GetFunctionList, and on Windows for want of memory for its path; 0x49170048 for a module of a version
 * other than 2 and 3; 0x4917003C when memory runs out; 0x4920.... by the module
 */
TLXPKI_API uint32_t open_TOKEN_MODULE(const char *path, TOKEN_MODULE **out);
/** Finalises and unloads a module, when it was closed as often as opened and its last session is closed.
 * Ignores null. */
TLXPKI_API void close_TOKEN_MODULE(TOKEN_MODULE *module);

/**
 * Lists the slots that have a token. A slot whose token cannot be read is left out.
 * @param tokens receives an array, freed with tlx_free(); it may have no entry
 * @param count  receives the number of its entries
 * @return 0; 0x49180049 for a null argument; 0x4918003C when memory runs out; 0x4918001C when the module
 * names more than 10000 slots; 0x4920.... by the module
 */
TLXPKI_API uint32_t list_TOKENS(TOKEN_MODULE *module, TOKEN_INFO **tokens, uint32_t *count);

/**
 * Opens a session with the token of a label, for reading. Its slot is found anew, and tokens that are not
 * initialised do not count.
 * @param label null when there is one token alone
 * @return 0; 0x49190049 for a null module or out; 0x49190047 when there is no such token; 0x4919001C when
 * there are several; 0x4919003C when memory runs out; a status of list_TOKENS(); 0x4920.... by the module
 */
TLXPKI_API uint32_t open_TOKEN_SESSION(TOKEN_MODULE *module, const char *label, TOKEN_SESSION **out);
/** The same with the token of a slot. The statuses 0x49190047 and 0x4919001C do not occur. */
TLXPKI_API uint32_t open_TOKEN_SESSION_slot(TOKEN_MODULE *module, uint64_t slot_id, TOKEN_SESSION **out);
/** Closes a session, when its last key is freed. Ignores null. */
TLXPKI_API void close_TOKEN_SESSION(TOKEN_SESSION *session);

/**
 * Logs the user in.
 * @param pin     octets in the encoding of the token, mostly UTF-8, which the caller wipes; null for a token
 * with a PIN pad of its own (CKF_PROTECTED_AUTHENTICATION_PATH)
 * @param pin_len octets
 * @return 0; 0x491A0049 for a null session, and for a null PIN with a length; 0x4920.... by the module:
 * 0x492000A0 for a wrong PIN, 0x492000A4 for one that is locked, 0x49200100 when the program has logged in
 * already (then nothing checks the PIN)
 */
TLXPKI_API uint32_t login_TOKEN(TOKEN_SESSION *session, const char *pin, uint32_t pin_len);
/** Logs the user out. Private objects are out of reach then. Returns 0; 0x491B0049 for null; 0x4920.... by
 * the module. */
TLXPKI_API uint32_t logout_TOKEN(TOKEN_SESSION *session);

/**
 * Finds objects: certificates first, then private keys, then public keys. Most tokens show private keys after
 * logging in only.
 * @param query null for all objects
 * @param out   receives a list, which may be empty, freed with free_TOKEN_OBJECTS() before the session closes
 * @return 0; 0x491C0049 for a null session or out; 0x491C0048 for another kind; 0x491C001C when the module
 * finds more than 10000 objects, or gives a label or an identifier of more than 65536 octets; 0x491C003C when
 * memory runs out and for a name that cannot be encoded; 0x4920.... by the module
 */
TLXPKI_API uint32_t find_TOKEN_OBJECTS(TOKEN_SESSION *session, const TOKEN_OBJECT_QUERY *query,
                                       TOKEN_OBJECTS **out);
/** Frees a list. Ignores null. */
TLXPKI_API void free_TOKEN_OBJECTS(TOKEN_OBJECTS *objects);
/** The number of objects; 0 for null. */
TLXPKI_API uint32_t get_TOKEN_OBJECTS_count(const TOKEN_OBJECTS *objects);
/** An object by its zero-based place, which the list owns; null when there is none. */
TLXPKI_API const TOKEN_OBJECT *get_TOKEN_OBJECTS_child(const TOKEN_OBJECTS *objects, int32_t index);

/**
 * Reads a certificate.
 * @param object of the kind TLX_TOKEN_CERTIFICATE
 * @param cert   receives a new certificate, freed with free_X509_CERT()
 * @return 0; 0x491D0049 for a null argument; 0x491D0048 for another kind; 0x491D001C for a value of more than
 * 1 MiB; 0x491D003C when memory runs out; a status of readDER_from_Buffer(), also for an empty value;
 * 0x4920.... by the module
 */
TLXPKI_API uint32_t get_TOKEN_certificate(TOKEN_SESSION *session, const TOKEN_OBJECT *object,
                                          X509_CERT **cert);

/**
 * Asks the user for a PIN, for a key that wants it before each use (CKA_ALWAYS_AUTHENTICATE).
 * @param pin     has room for *pin_len octets, which are wiped later
 * @param pin_len receives the octets
 * @return 0, or a status, which goes up
 */
typedef uint32_t (*TOKEN_PIN_FUNCTION)(void *context, char *pin, uint32_t *pin_len);

/**
 * Makes a private key that computes on the token, for everything that takes a private key
 * (<tlxcrypto/rsa_external.h>): signing with PKCS #1 v1.5 and PSS, decrypting with PKCS #1 v1.5 and OAEP, as
 * far as the token has them. The public numbers come from the private key, or the public key or certificate
 * with its identifier.
 * @param object of the kind TLX_TOKEN_PRIVATE_KEY
 * @param ask    asks for the PIN of a key that wants it before each use; null when there is nobody to ask:
 * such a key needs a PIN pad then, and otherwise fails with 0x49200101
 * @param context handed to ask
 * @param key    receives a new key of the kind TLX_KEY_RSA, freed with free_ASYMMETRIC_KEY(). It keeps the
 * session open
 * @return 0; 0x491E0049 for a null argument but ask and context; 0x491E0048 for another kind and a key that
 * is not RSA; 0x491E0047 when its public numbers are nowhere to be found; 0x491E001C for numbers of more than
 * 2048 octets; 0x491E003C when memory runs out; 0x4920.... by the module
 */
TLXPKI_API uint32_t get_TOKEN_key(TOKEN_SESSION *session, const TOKEN_OBJECT *object, TOKEN_PIN_FUNCTION ask,
                                  void *context, ASYMMETRIC_KEY **key);

TLX_END_DECLS

#endif
