/** @file
 * Messages of any size in constant memory, continued: enveloped, encrypted, authenticated, authenticated-and-
 * enveloped and digested data of CMS (RFC 5652, sections 6 to 9; RFC 5083), and enveloped and encrypted data
 * of PKCS #7 (RFC 2315, sections 10 and 13), in pieces of any length.
 *
 * What <tlxpki/message_stream.h> says of pieces, outputs, failure, ownership and threads holds here as well.
 *
 * Content is encrypted by the ciphers of seal_PKCS7(), or by AES and ARIA in Galois/Counter Mode (RFC 5084,
 * RFC 5794) in authenticated-and-enveloped data. Signed-and-enveloped data of PKCS #7 is left to
 * open_PKCS7().
 */
#ifndef TLXPKI_MESSAGE_ENVELOPE_H
#define TLXPKI_MESSAGE_ENVELOPE_H

#include <tlxpki/cms_keys.h>
#include <tlxpki/message_stream.h>

TLX_BEGIN_DECLS

/** Content types of messages. */
enum {
    TLX_MESSAGE_OTHER = 0, /**< none of these */
    TLX_MESSAGE_DATA = 1,
    TLX_MESSAGE_SIGNED_DATA = 2,
    TLX_MESSAGE_ENVELOPED_DATA = 3,
    TLX_MESSAGE_SIGNED_AND_ENVELOPED_DATA = 4,
    TLX_MESSAGE_DIGESTED_DATA = 5,
    TLX_MESSAGE_ENCRYPTED_DATA = 6,
    TLX_MESSAGE_AUTHENTICATED_DATA = 7,
    TLX_MESSAGE_AUTH_ENVELOPED_DATA = 8
};

/**
 * Names the content type of a message by its first octets, for a choice of the engine that reads it. 64
 * octets are enough unless lengths are written with more octets than they need.
 * @param octets in DER or BER, and whatever follows them
 * @param type   receives TLX_MESSAGE_
 * @return 0; 0x52A50049 for a null argument; 0x52A5002B when the content type is not complete; 0x52A5004F for
 * octets that are no message
 */
TLXPKI_API uint32_t get_MESSAGE_type(const uint8_t *octets, uint32_t len, uint32_t *type);

/* ---- Reading ---- */

/** How a message is read. Zeros stand for the defaults. Without an output the reader checks, and gives
 * nothing out. */
typedef struct ENVELOPED_MESSAGE_READER_SETTINGS {
    MESSAGE_OUTPUT output; /**< gets the content once the whole message is decrypted, and its code or
                              digest verified; until then the reader holds it back */
    MESSAGE_OUTPUT unverified_output; /**< gets the content piece by piece, before anybody knows whether it
                                         counts: the result of final_ENVELOPED_MESSAGE_READER() says so */
    void *context;                    /**< handed to the output */
    uint32_t held_limit;              /**< octets of everything but content; 0 for TLX_MESSAGE_HELD_LIMIT */
    uint32_t held_back_limit;         /**< octets of content that are held back; 0 for
                                         TLX_MESSAGE_HELD_BACK_LIMIT, which is the most */
    uint32_t as_message;          /**< nonzero gives content of another type than data out as a message, in
                                     the ContentInfo that such content lacks, with indefinite lengths: for
                                     signed data, what a SIGNED_MESSAGE_READER takes */
    const CMS_KEY_HOLDER *holder; /**< whose recipient is sought among those of at most 32768 octets, whose
                                     derivations from a password share one bound; may be null. A key agreement
                                     may have any number of keys: it counts with one of them at a time */
    const uint8_t *key;           /**< key_len octets: the key that content is encrypted or authenticated
                                     with, in place of one for a recipient; may be null */
    uint32_t key_len;
} ENVELOPED_MESSAGE_READER_SETTINGS;

/** A message that is being read. */
typedef struct ENVELOPED_MESSAGE_READER ENVELOPED_MESSAGE_READER;

/** Begins to read a message; freed with free_ENVELOPED_MESSAGE_READER(). Null for null settings, with both
 * outputs, for a held_back_limit above TLX_MESSAGE_HELD_BACK_LIMIT, and when memory runs out. */
TLXPKI_API ENVELOPED_MESSAGE_READER *new_ENVELOPED_MESSAGE_READER(
    const ENVELOPED_MESSAGE_READER_SETTINGS *settings);
/** Wipes and frees a reader. Ignores null. */
TLXPKI_API void free_ENVELOPED_MESSAGE_READER(ENVELOPED_MESSAGE_READER *reader);

/**
 * Takes the next octets of the message, in DER or BER.
 * @param octets may be null when len is 0
 * @return 0; 0x52A00049 for a null argument; 0x52A0004F for octets that are no element, for what nests deeper
 * than 64 elements, and for octets after the message; 0x52A00048 for a content type that this reader is not
 * for and an element that is missing or does not belong at its place; 0x52A00012 for signed-and-enveloped
 * data; 0x52A0001C when more than held_limit octets are not content; 0x52A00104 for an algorithm that is
 * unknown or does not fit the content type, when it or a member before the content cannot be decoded, and
 * when the holder is none of the recipients that can be decoded, but some cannot; 0x52A00114 for a cipher in
 * CCM mode, which keeps the content encrypted; 0x52A0002B without a key and without a holder where one is
 * needed; 0x52A00047 when the holder is no recipient; 0x52A00028 for a key
 * whose length is not that of the cipher's; a status of open_CMS_RECIPIENT_INFO() other than 0x52B10047 and
 * 0x52B10012, when no recipient opens; 0x52A0003C when memory runs out, and for
 * more content than the cipher takes; 0x52A10047 when the content is longer than held_back_limit and an
 * output wants it verified; a status of the output
 */
TLXPKI_API uint32_t update_ENVELOPED_MESSAGE_READER(ENVELOPED_MESSAGE_READER *reader, const uint8_t *octets,
                                                    uint32_t len);
/**
 * Takes the next octets of the content of a detached message, whose own octets come first: ciphertext, or
 * what is authenticated or digested.
 * @param octets not null, also when len is 0, which gives content without octets
 * @return 0; 0x52A10049 for a null argument; 0x52A1002B before the message is complete; 0x52A1001C when the
 * message has its content; 0x52A10047 and 0x52A0003C as for update_ENVELOPED_MESSAGE_READER(); a status of
 * the output
 */
TLXPKI_API uint32_t update_ENVELOPED_MESSAGE_READER_content(ENVELOPED_MESSAGE_READER *reader,
                                                            const uint8_t *octets, uint32_t len);
/**
 * Ends the message. Content that was held back is given out when the result is 0.
 *
 * Attributes that are authenticated have to hold the content type, and those of authenticated data also the
 * digest of the content (RFC 5652, section 9.2). Without such attributes content of another type than data is
 * refused, because nothing authenticates its type.
 * @return 0; 0x52A20049 for a null reader; 0x52A2004F when the message is not complete; 0x52A2003B for a
 * detached message without content; 0x52A20012 for content that does not decrypt: the key is another one, or
 * the message was altered; 0x52A20054 for another code of authenticated data; 0x52A2005E for another digest;
 * 0x52A20106 for an attribute with another content type; 0x52A2002B for an attribute that is missing, or not
 * there once with one value; 0x52A20104 for members after the content that do not belong there; 0x52A2003C
 * when memory runs out; a status of the output. Afterwards all operations return 0x52A2001C
 */
TLXPKI_API uint32_t final_ENVELOPED_MESSAGE_READER(ENVELOPED_MESSAGE_READER *reader);

/** Returns the content type of the message, TLX_MESSAGE_; TLX_MESSAGE_OTHER before it is known and for null.
 */
TLXPKI_API uint32_t get_ENVELOPED_MESSAGE_READER_type(const ENVELOPED_MESSAGE_READER *reader);
/** Returns 1 when the content type of the message is one that authenticates its content under a key, so that
 * a final result of 0 says who may have written it; 0 for enveloped, encrypted and digested data, whose
 * content anybody may have altered, before the type is known and for null. */
TLXPKI_API uint32_t is_ENVELOPED_MESSAGE_READER_authenticated(const ENVELOPED_MESSAGE_READER *reader);
/** Returns the type of the content, which the caller frees, as it stands in the message; null before the
 * content begins, and when memory runs out. */
TLXPKI_API OBJECT_IDENTIFIER *get_ENVELOPED_MESSAGE_READER_content_type(
    const ENVELOPED_MESSAGE_READER *reader);
/** Returns 1 when the message is complete, 0 before and for null. */
TLXPKI_API uint32_t is_ENVELOPED_MESSAGE_READER_complete(const ENVELOPED_MESSAGE_READER *reader);
/** Returns 1 when the message is complete and carries no content, so that it takes
 * update_ENVELOPED_MESSAGE_READER_content(); otherwise 0. */
TLXPKI_API uint32_t is_ENVELOPED_MESSAGE_READER_detached(const ENVELOPED_MESSAGE_READER *reader);

/**
 * Makes the record of a message that was read, without its content: recipients, originator, algorithms and
 * attributes. It takes memory for all members, which may be 40 times held_limit.
 * @param out receives a new record in place of *out, which is freed
 * @return 0; 0x52A60049 for a null argument; 0x52A6002B before the message is complete; 0x52A6003C when
 * memory runs out; a status of Seq_to_CMS_CONTENT_INFO()
 */
TLXPKI_API uint32_t get_ENVELOPED_MESSAGE_READER_message(const ENVELOPED_MESSAGE_READER *reader,
                                                         CMS_CONTENT_INFO **out);

/* ---- Writing ---- */

/** How a message is written. Members that a content type has no use for are ignored. What pointers point to
 * has to outlive the writer. */
typedef struct ENVELOPED_MESSAGE_WRITER_SETTINGS {
    MESSAGE_OUTPUT output; /**< gets the message */
    void *context;         /**< handed to the output */
    uint32_t type;         /**< TLX_MESSAGE_ENVELOPED_DATA, _ENCRYPTED_DATA, _AUTH_ENVELOPED_DATA,
                              _AUTHENTICATED_DATA or _DIGESTED_DATA */
    uint32_t form;         /**< TLX_MESSAGE_INDEFINITE or TLX_MESSAGE_DER; TLX_MESSAGE_DETACHED as well for
                              digested and authenticated data */
    uint64_t size;         /**< octets of the content for TLX_MESSAGE_DER, otherwise ignored */
    const char *algorithm; /**< a name of get_MESSAGE_cipher_name(): GCM for authenticated-and-enveloped data,
                              another cipher for enveloped and encrypted data; "sha256", "sha384", "sha512" or
                              "sha224" for digested data, and for HMAC of authenticated data */
    const OBJECT_IDENTIFIER *content_type; /**< of the content; null for data */
    const uint8_t *key;                    /**< key_len octets of the cipher's length, or of the digest's for
                                              HMAC; null for a random key */
    uint32_t key_len;                      /**< encrypted data needs a key */
    const CMS_RECIPIENT_SETTINGS *recipients; /**< who learns the key: recipient_count, at least one, for all
                                                 types but encrypted and digested data */
    uint32_t recipient_count;
    const CMS_ORIGINATOR_INFO *originator;   /**< of messages with recipients; may be null */
    const X509_ATTRIBUTES *attributes;       /**< authenticated with the content; null for none, unless the
                                                content type has to be. The writer adds contentType, and in
                                                authenticated data messageDigest */
    const X509_ATTRIBUTES *other_attributes; /**< unprotected or unauthenticated; may be null */
} ENVELOPED_MESSAGE_WRITER_SETTINGS;

/** A message that is being written. */
typedef struct ENVELOPED_MESSAGE_WRITER ENVELOPED_MESSAGE_WRITER;

/** Returns the name of a cipher for ENVELOPED_MESSAGE_WRITER_SETTINGS, which the library owns: those of
 * get_PKCS7_cipher_name(), then those in Galois/Counter Mode, such as "aes-256-gcm"; null after the last. */
TLXPKI_API const char *get_MESSAGE_cipher_name(uint32_t index);

/** Begins to write a message; freed with free_ENVELOPED_MESSAGE_WRITER(). Null for null settings, without an
 * output or an algorithm, for another type or form, a size of 2^62 or more, and when memory runs out. */
TLXPKI_API ENVELOPED_MESSAGE_WRITER *new_ENVELOPED_MESSAGE_WRITER(
    const ENVELOPED_MESSAGE_WRITER_SETTINGS *settings);
/** Wipes and frees a writer. Ignores null. */
TLXPKI_API void free_ENVELOPED_MESSAGE_WRITER(ENVELOPED_MESSAGE_WRITER *writer);

/**
 * Takes the next octets of the content. The first call begins the message, with the versions that RFC 5652
 * wants: when all recipients are of RSA with PKCS #1 v1.5 by issuer and serial number, and there is no
 * originator and no attribute, enveloped data is that of PKCS #7.
 * @param octets may be null when len is 0
 * @return 0; 0x52A30049 for a null argument; 0x52A30048 for an algorithm that is unknown or of another
 * content type, and without random octets; 0x52A30028 for a key of another length; 0x52A3002B for encrypted
 * data without a key; 0x52A30047 without recipients; 0x52A3001C for more octets than the size, or than
 * TLX_AEAD_MAX_MESSAGE_LENGTH in Galois/Counter Mode; 0x52A3003C when memory runs out, and for a member that
 * cannot be encoded; a status of make_CMS_RECIPIENT_INFO(); a status of the output
 */
TLXPKI_API uint32_t update_ENVELOPED_MESSAGE_WRITER(ENVELOPED_MESSAGE_WRITER *writer, const uint8_t *octets,
                                                    uint32_t len);
/**
 * Writes the rest of the message.
 * @return 0; 0x52A40049 for a null writer; 0x52A4001C for fewer octets than the size; 0x52A4003C when memory
 * runs out; a status of update_ENVELOPED_MESSAGE_WRITER(); a status of the output. Afterwards all operations
 * return 0x52A4002B
 */
TLXPKI_API uint32_t final_ENVELOPED_MESSAGE_WRITER(ENVELOPED_MESSAGE_WRITER *writer);

TLX_END_DECLS

#endif
