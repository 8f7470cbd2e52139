/** @file
 * Messages of any size in constant memory: signed data of PKCS #7 and CMS (RFC 2315, section 9; RFC 5652,
 * section 5) that comes in pieces of any length, with content of any length up to 2^63 octets.
 *
 * The content is given out as it comes; everything else of a message is held up to a limit. Lengths may be
 * definite or indefinite, and strings may be cut into segments of segments. Elements nest 64 deep at most.
 *
 * Octets are given out by a function of the caller, so that the output of one engine may be the input of the
 * next. A status of it that is not 0 stops the engine, whose operation returns it.
 *
 * - Failure: an operation that fails ends the message, and later ones return its status again. One that is
 *   called too early, or with a null argument, changes nothing.
 * - Ownership: what settings point to has to outlive what is made with them. new_ functions copy the settings
 *   themselves.
 * - Threads: distinct engines may be used at the same time; one engine by one thread at a time.
 */
#ifndef TLXPKI_MESSAGE_STREAM_H
#define TLXPKI_MESSAGE_STREAM_H

#include <tlxpki/cms_types.h>
#include <tlxpki/pkcs7_sign.h>

TLX_BEGIN_DECLS

#define TLX_MESSAGE_HELD_LIMIT 524288U       /**< octets of everything that is not content, by default */
#define TLX_MESSAGE_HELD_BACK_LIMIT 1048576U /**< octets of content that are held back at most */

/**
 * Takes octets that an engine gives out.
 * @param context the one of the settings
 * @param octets  valid during the call; len is never 0
 * @return 0 to go on; any other status stops the engine
 */
typedef uint32_t (*MESSAGE_OUTPUT)(void *context, const uint8_t *octets, uint32_t len);

/**
 * Gives the whole content of a message once more, such as a file that is mapped into memory.
 * @param octets receives the content, which has to stay as it is until final_SIGNED_MESSAGE_READER() returns
 * @param len    receives how many octets it has
 * @return 0; any other status when the content is not available
 */
typedef uint32_t (*MESSAGE_CONTENT)(void *context, const uint8_t **octets, uint64_t *len);

/** How a signed message is read. Zeros stand for the defaults. Without an output the reader checks, and gives
 * nothing out. */
typedef struct SIGNED_MESSAGE_READER_SETTINGS {
    MESSAGE_OUTPUT output;            /**< gets the content once every signer is verified; until then the
                                         reader holds it back */
    MESSAGE_OUTPUT unverified_output; /**< gets the content piece by piece, before anybody knows whether it
                                         counts: the result of final_SIGNED_MESSAGE_READER() says so */
    void *context;                    /**< handed to the output */
    uint32_t held_limit;              /**< octets of everything but content; 0 for TLX_MESSAGE_HELD_LIMIT */
    uint32_t held_back_limit;         /**< octets of content that are held back; 0 for
                                         TLX_MESSAGE_HELD_BACK_LIMIT, which is the most */
    const X509_CERTIFICATES *pool;    /**< further certificates; may be null */
    const VERIFY_STORE *store;        /**< anchors and intermediates; null checks no paths */
    const VERIFY_SETTINGS *settings;  /**< those of paths, whose profile also judges the signers' own
                                         algorithms when there is a store; null for the defaults with the
                                         purpose TLX_PURPOSE_SIGNING */
    MESSAGE_CONTENT content_again;    /**< asked by final_SIGNED_MESSAGE_READER() for content that was not
                                         kept, and that a signature cannot be verified without; may be null */
    void *content_again_context;      /**< handed to it */
} SIGNED_MESSAGE_READER_SETTINGS;

/** A signed message that is being read. */
typedef struct SIGNED_MESSAGE_READER SIGNED_MESSAGE_READER;

/** Begins to read a message; freed with free_SIGNED_MESSAGE_READER(). Null for null settings, with both
 * outputs, for a held_back_limit above TLX_MESSAGE_HELD_BACK_LIMIT, and when memory runs out. */
TLXPKI_API SIGNED_MESSAGE_READER *new_SIGNED_MESSAGE_READER(const SIGNED_MESSAGE_READER_SETTINGS *settings);
/** Frees a reader. Ignores null. */
TLXPKI_API void free_SIGNED_MESSAGE_READER(SIGNED_MESSAGE_READER *reader);

/**
 * Takes the next octets of the message, in DER or BER.
 * @param octets may be null when len is 0
 * @return 0; 0x52800049 for a null argument; 0x5280004F for octets that are no element, for what nests deeper
 * than 64 elements, and for octets after the message; 0x52800048 for another content type than signed data
 * and an element that is missing or does not belong at its place; 0x52800047 when more than held_limit octets
 * are not content; 0x5280001C for more than 8 distinct digests in digestAlgorithms; 0x5280003C when memory
 * runs out; 0x52810047 when the content is longer than held_back_limit and an output wants it verified; a
 * status of X509_ALGO_IDENTIFIERS for digestAlgorithms that cannot be decoded; a status of the output
 */
TLXPKI_API uint32_t update_SIGNED_MESSAGE_READER(SIGNED_MESSAGE_READER *reader, const uint8_t *octets,
                                                 uint32_t len);
/**
 * Takes the next octets of the content of a detached message, whose own octets come first. The content is not
 * given out unless there is an output.
 * @param octets not null, also when len is 0, which gives content without octets
 * @return 0; 0x52810049 for a null argument; 0x5281002B before the message is complete; 0x5281001C when the
 * message has its content; 0x52810047 as for update_SIGNED_MESSAGE_READER(); 0x5280003C when memory runs out;
 * a status of the output
 */
TLXPKI_API uint32_t update_SIGNED_MESSAGE_READER_content(SIGNED_MESSAGE_READER *reader, const uint8_t *octets,
                                                         uint32_t len);
/**
 * Ends the message and verifies its signers, as verify_PKCS7_Signers_ex() does. Content that was held back is
 * given out when the result is 0.
 *
 * Signers of CMS may have keys of RSA (PKCS #1 v1.5 and PSS), ECDSA, EdDSA (RFC 8419), DSA and KCDSA, with
 * SHA-2, SHA-3 and older digests. Lists and OCSP responses that the message carries (RFC 5940) count for
 * paths. A signer may be named by a key identifier that several certificates have: up to 8 are tried. Which
 * is the signer's, the attributes of RFC 5035 decide, then the signature, then the path. Its
 * countersignatures decide nothing. Time stamps of signatures count as verify_PKCS7_Signers() says.
 *
 * One pass has its limits, which are findings about a signer. Its digest has to be among digestAlgorithms,
 * which stand before the content: otherwise contentStatus is 0x52820047. Content is kept when it fits
 * held_limit or is held back. For other content, without attributes, contentStatus is 0x4B30002B whenever the
 * content is one SET, and two kinds of signatures take content_again, whose octets have to have the digest of
 * the content that was read. One is that of EdDSA, which goes over octets in one piece; without them its
 * signatureStatus is 0x52820012. The other is that of KCDSA, whose digest begins with the key: it is computed
 * for the keys of the first 8 KCDSA certificates of the pool, and for any other key signatureStatus is
 * 0x52820048 without the content.
 *
 * @param reports receives a new list in place of *reports, which is freed, when signers were checked; may be
 * null
 * @return 0; 0x52820049 for a null reader; 0x5282004F when the message is not complete; 0x5282002B for a
 * message without signers; 0x52820104 for an unknown member and a content type that cannot be decoded, and
 * when memory runs out for it; 0x5282003B for a detached message without content; 0x5282003C when memory runs
 * out; 0x4B30003C as verify_PKCS7_Signers_ex() returns it; a status of P7_SIGNED_DATA for members that
 * neither PKCS #7 nor CMS has; the status of the first signer that fails; a status of the output. Afterwards
 * all operations return 0x5282001C
 */
TLXPKI_API uint32_t final_SIGNED_MESSAGE_READER(SIGNED_MESSAGE_READER *reader, P7_SIGNER_REPORTS **reports);
/** Returns 1 when the message is complete, 0 before and for null. */
TLXPKI_API uint32_t is_SIGNED_MESSAGE_READER_complete(const SIGNED_MESSAGE_READER *reader);
/** Returns 1 when the message is complete and carries no content, so that it takes
 * update_SIGNED_MESSAGE_READER_content(); otherwise 0. */
TLXPKI_API uint32_t is_SIGNED_MESSAGE_READER_detached(const SIGNED_MESSAGE_READER *reader);

/* ---- Writing ---- */

/** Forms of a message. */
enum {
    TLX_MESSAGE_INDEFINITE = 0, /**< indefinite lengths, and the content in segments of 65536 octets */
    TLX_MESSAGE_DER = 1,        /**< DER; the size of the content is told beforehand */
    TLX_MESSAGE_DETACHED = 2    /**< DER without the content */
};

/** Formats of a message that is made of signers. A message of CMS whose members PKCS #7 has is one of PKCS #7
 * also. */
enum {
    TLX_MESSAGE_FORMAT_ANY = 0,  /**< that of PKCS #7 where it suffices, otherwise of CMS */
    TLX_MESSAGE_FORMAT_PKCS7 = 1 /**< what PKCS #7 does not have is refused */
};

/**
 * Signs octets where the key is, such as in a token.
 * @param algorithm how: also the digest is in it, or for rsaEncryption and KCDSA that of the signer
 * @param signature receives a new string as make_SIGNATURE() makes it; the writer frees it
 * @return 0 to go on; any other status stops the writer
 */
typedef uint32_t (*MESSAGE_SIGN)(void *context, const X509_ALGO_IDENTIFIER *algorithm, const uint8_t *octets,
                                 uint32_t len, OCTET_STRING **signature);

/**
 * Makes the unsigned attributes of a signer, such as a time stamp, once its signature is known.
 * @param attributes receives a new list, which the writer frees, or stays null for none
 * @return 0 to go on; any other status stops the writer
 */
typedef uint32_t (*MESSAGE_UNSIGNED_ATTRIBUTES)(void *context, const uint8_t *signature, uint32_t len,
                                                X509_ATTRIBUTES **attributes);

/**
 * A signer: a key of RSA, ECDSA, EdDSA or KCDSA with its certificate. Zeros stand for the defaults. It has
 * the attributes contentType, messageDigest and signingTime.
 */
typedef struct MESSAGE_SIGNER {
    const X509_CERT *certificate;
    const ASYMMETRIC_KEY *key;     /**< the private key; null when sign is there instead */
    MESSAGE_SIGN sign;             /**< signs in place of a key */
    void *sign_context;            /**< handed to it */
    uint32_t digest_id;            /**< TLX_DIGEST_; 0 for SHA-256, on larger curves the digest of their
                                      size, and for EdDSA the one that it has */
    uint32_t pss;                  /**< nonzero for RSASSA-PSS: the digest also in MGF1, a salt as long */
    uint32_t by_key_identifier;    /**< nonzero names the certificate by its subject key identifier, not by
                                      issuer and serial number */
    uint32_t bare;                 /**< nonzero signs data itself, without attributes: a key of RSA, ECDSA or
                                      KCDSA that is at hand */
    uint32_t signing_certificate;  /**< nonzero adds signingCertificateV2 with SHA-256 (RFC 5035) */
    uint32_t algorithm_protection; /**< nonzero adds CMSAlgorithmProtection (RFC 6211) */
    const X509_ATTRIBUTES *attributes; /**< further signed attributes, none of those above; may be null */
    MESSAGE_UNSIGNED_ATTRIBUTES unsigned_attributes; /**< null for none; excludes TLX_MESSAGE_DER */
    void *unsigned_attributes_context;               /**< handed to it */
} MESSAGE_SIGNER;

/** How a signed message is written: one that is there, or one that is made of signers. */
typedef struct SIGNED_MESSAGE_WRITER_SETTINGS {
    MESSAGE_OUTPUT output;          /**< gets the message */
    void *context;                  /**< handed to the output */
    const P7_CONTENT_INFO *message; /**< signed data without content, with its signers
                                       (add_PKCS7_Signature()), certificates and revocation lists; copied.
                                       Null with signers */
    uint32_t form;                  /**< TLX_MESSAGE_ */
    uint64_t size;                  /**< octets of the content for TLX_MESSAGE_DER, otherwise ignored */
    uint32_t bare;                  /**< nonzero signs without attributes, or with those that signers have; 0
                                       as sign_PKCS7_withAttributes() does */
    const ASN1_TIME *time;          /**< the signing time, in UTC; null for the present. It has to outlive the
                                       writer */
    const MESSAGE_SIGNER *signers;  /**< in place of a message, which bare does not concern then. They and the
                                       members that follow have to outlive the writer */
    uint32_t signer_count;          /**< of signers; 0 with a message */
    uint32_t format;                /**< TLX_MESSAGE_FORMAT_ */
    const OBJECT_IDENTIFIER *content_type;  /**< null for data */
    const X509_CERTIFICATES *certificates;  /**< those that the message carries; may be null */
    const CMS_REVOCATION_INFOS *revocation; /**< likewise */
} SIGNED_MESSAGE_WRITER_SETTINGS;

/** A signed message that is being written. */
typedef struct SIGNED_MESSAGE_WRITER SIGNED_MESSAGE_WRITER;

/** Begins to write a message; freed with free_SIGNED_MESSAGE_WRITER(). Null for null settings, without an
 * output, with neither a message nor signers or with both, for another form or format, a size of 2^62 or
 * more, and when memory runs out. */
TLXPKI_API SIGNED_MESSAGE_WRITER *new_SIGNED_MESSAGE_WRITER(const SIGNED_MESSAGE_WRITER_SETTINGS *settings);
/** Frees a writer. Ignores null. */
TLXPKI_API void free_SIGNED_MESSAGE_WRITER(SIGNED_MESSAGE_WRITER *writer);

/**
 * Takes the next octets of the content. The first call begins the message.
 * @param octets may be null when len is 0
 * @return 0; 0x52830049 for a null argument; 0x52830048 for a message that is not signed data or has content,
 * and for one of version 0 that is to be signed with attributes; 0x5283001C for more octets than the size;
 * 0x5283003C when memory runs out, for a member that cannot be encoded, and for a digest that is not
 * available; a status of init_PKCS7_Sign() or sign_PKCS7_withAttributes(); a status of the output
 * @return of signers also 0x52830048 for one without a certificate or with other than one of key and sign, a
 * digest or scheme that its key does not have, a bare one that is not possible, attributes of its own that it
 * makes itself, and more than 8 digests; 0x52830047 for a certificate without the identifier; 0x52830106 for
 * what PKCS #7 does not have; 0x52830012 in DER for unsigned attributes
 */
TLXPKI_API uint32_t update_SIGNED_MESSAGE_WRITER(SIGNED_MESSAGE_WRITER *writer, const uint8_t *octets,
                                                 uint32_t len);
/**
 * Signs, and writes the rest of the message.
 * @return 0; 0x52840049 for a null writer; 0x5284001C for fewer octets than the size; 0x52840047 when 64
 * signatures have other lengths than the one that is reserved; 0x52840048 for a public key, and one that is
 * not of the kind of its certificate; 0x52840054 for a signature that does not verify with the certificate;
 * a status of the functions of signers and of an external key; 0x5284003C when memory runs out, and
 * when a member cannot be encoded; a status of update_SIGNED_MESSAGE_WRITER(), final_PKCS7_Sign() or
 * sign_PKCS7_withAttributes(); a status of the output. Afterwards all operations return 0x5284002B
 */
TLXPKI_API uint32_t final_SIGNED_MESSAGE_WRITER(SIGNED_MESSAGE_WRITER *writer);

/* ---- PEM ---- */

#define TLX_PEM_LABEL_MAX_LENGTH 64 /**< characters of a label at most */

/** A PEM text that is being read. */
typedef struct PEM_READER PEM_READER;
/** A PEM text that is being written. */
typedef struct PEM_WRITER PEM_WRITER;

/** Begins to read a text; freed with free_PEM_READER(). Null for a null output, and when memory runs out.
 * @param output gets the octets of the first block, piece by piece; what stands before and after is ignored
 */
TLXPKI_API PEM_READER *new_PEM_READER(MESSAGE_OUTPUT output, void *context);
/** Frees a reader. Ignores null. */
TLXPKI_API void free_PEM_READER(PEM_READER *reader);
/**
 * Takes the next characters of a text. Lines end with a line feed, and spaces, tabs and carriage returns in
 * the body are ignored.
 * @param text may be null when len is 0
 * @return 0; 0x52850049 for a null argument; 0x52850048 for a body that is no Base64 (RFC 4648, section 4),
 * encapsulated headers, and a last line without the label of the first one; a status of the output
 */
TLXPKI_API uint32_t update_PEM_READER(PEM_READER *reader, const char *text, uint32_t len);
/** Ends the text, whose last line needs no line feed.
 * @return 0; 0x52860049 for a null reader; 0x5286004F for a text without a complete block; a status of
 * update_PEM_READER(). Afterwards all operations return 0x5286002B */
TLXPKI_API uint32_t final_PEM_READER(PEM_READER *reader);
/** Returns the label of the block, such as "PKCS7", which the reader owns; empty before its first line is
 * complete, null for null. */
TLXPKI_API const char *get_PEM_READER_label(const PEM_READER *reader);

/** Begins to write a text as encode_PEM() does, with lines of 64 characters; freed with free_PEM_WRITER().
 * Null for a null argument, an empty label and one of more than TLX_PEM_LABEL_MAX_LENGTH characters or with
 * others than printable ASCII, and when memory runs out.
 * @param label such as "PKCS7"; copied */
TLXPKI_API PEM_WRITER *new_PEM_WRITER(const char *label, MESSAGE_OUTPUT output, void *context);
/** Frees a writer. Ignores null. */
TLXPKI_API void free_PEM_WRITER(PEM_WRITER *writer);
/** Takes the next octets.
 * @param octets may be null when len is 0
 * @return 0; 0x52870049 for a null argument; 0x5287003C when memory runs out; a status of the output */
TLXPKI_API uint32_t update_PEM_WRITER(PEM_WRITER *writer, const uint8_t *octets, uint32_t len);
/** Writes the rest of the text. Returns 0; 0x52880049 for a null writer; a status of update_PEM_WRITER(); a
 * status of the output. Afterwards all operations return 0x5288002B. */
TLXPKI_API uint32_t final_PEM_WRITER(PEM_WRITER *writer);

TLX_END_DECLS

#endif
