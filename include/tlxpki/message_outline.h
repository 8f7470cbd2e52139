/** @file
 * What a message consists of beside its content, which may have any size: signed, enveloped, encrypted,
 * authenticated, digested and signed-and-enveloped data of PKCS #7 and CMS (RFC 2315; RFC 5652; RFC 5083),
 * read in pieces of any length, and written again with its content. Nothing is verified or decrypted.
 *
 * What <tlxpki/message_stream.h> says of pieces, failure and threads holds here as well.
 */
#ifndef TLXPKI_MESSAGE_OUTLINE_H
#define TLXPKI_MESSAGE_OUTLINE_H

#include <tlxpki/message_stream.h>

TLX_BEGIN_DECLS

/** A message whose outline is being read. */
typedef struct MESSAGE_OUTLINE MESSAGE_OUTLINE;

/** Begins to read a message; freed with free_MESSAGE_OUTLINE(). Null when memory runs out.
 * @param held_limit octets of everything but content; 0 for TLX_MESSAGE_HELD_LIMIT */
TLXPKI_API MESSAGE_OUTLINE *new_MESSAGE_OUTLINE(uint32_t held_limit);
/** Frees an outline. Ignores null. */
TLXPKI_API void free_MESSAGE_OUTLINE(MESSAGE_OUTLINE *outline);

/**
 * Gives the content out from now on as it comes, before anybody knows whether it counts; encrypted where it
 * is encrypted.
 * @param output null for not at all
 * @param context handed to the output
 * @return 0; 0x52AA0049 for a null outline
 */
TLXPKI_API uint32_t set_MESSAGE_OUTLINE_output(MESSAGE_OUTLINE *outline, MESSAGE_OUTPUT output,
                                               void *context);

/**
 * Takes the next octets of the message, in DER or BER.
 * @param octets may be null when len is 0
 * @return 0; 0x52A80049 for a null argument; 0x52A8004F for octets that are no element, for what nests deeper
 * than 64 elements, and for octets after the message; 0x52A80048 for another content type and an element that
 * is missing or does not belong at its place; 0x52A80047 when more than held_limit octets are not content;
 * 0x52A8003C when memory runs out; a status of the output
 */
TLXPKI_API uint32_t update_MESSAGE_OUTLINE(MESSAGE_OUTLINE *outline, const uint8_t *octets, uint32_t len);

/**
 * Writes the message without its content: the members as received, in elements of definite lengths. A record
 * takes it as a message whose content is missing.
 * @param octets receives the encoding, which the caller frees with tlx_free()
 * @param len receives its length in octets
 * @param content_size receives how many octets the content has, encrypted ones where it is encrypted;
 * UINT64_MAX for a message without content
 * @return 0; 0x52A90049 for a null argument; 0x52A9002B before the message is complete; 0x52A9003C when
 * memory runs out
 */
TLXPKI_API uint32_t write_MESSAGE_OUTLINE(const MESSAGE_OUTLINE *outline, uint8_t **octets, uint32_t *len,
                                          uint64_t *content_size);

/** Returns the tag of the element whose contents octets the content is: TLX_TAG_OCTET_STRING, for messages of
 * PKCS #7 also another one. 0 before the message is complete, for one without content and for null. */
TLXPKI_API uint32_t get_MESSAGE_OUTLINE_content_tag(const MESSAGE_OUTLINE *outline);

/* ---- Writing ---- */

/** How an outline is written with its content. */
typedef struct OUTLINE_WRITER_SETTINGS {
    MESSAGE_OUTPUT output;  /**< gets the message */
    void *context;          /**< handed to the output */
    const uint8_t *message; /**< a message without its content, in DER, as write_MESSAGE_OUTLINE() and the
                               records write it; copied */
    uint32_t len;           /**< of it, in octets */
    uint32_t form;          /**< TLX_MESSAGE_; a detached message is written as it is */
    uint64_t size;          /**< octets of the content for TLX_MESSAGE_DER, otherwise ignored */
    uint32_t content_tag;   /**< 0 for TLX_TAG_OCTET_STRING; another one for TLX_MESSAGE_DER alone */
} OUTLINE_WRITER_SETTINGS;

/** A message that is being written around its content. */
typedef struct OUTLINE_WRITER OUTLINE_WRITER;

/** Begins to write a message; freed with free_OUTLINE_WRITER(). Null for null settings, without an output,
 * for octets that are no message without content, another form, a size of 2^62 or more, a tag that is not
 * possible, and when memory runs out. */
TLXPKI_API OUTLINE_WRITER *new_OUTLINE_WRITER(const OUTLINE_WRITER_SETTINGS *settings);
/** Frees a writer. Ignores null. */
TLXPKI_API void free_OUTLINE_WRITER(OUTLINE_WRITER *writer);

/**
 * Takes the next octets of the content. The first call begins the message.
 * @param octets may be null when len is 0
 * @return 0; 0x52AB0049 for a null argument; 0x52AB001C for more octets than the size; 0x52AB003C when memory
 * runs out; a status of the output
 */
TLXPKI_API uint32_t update_OUTLINE_WRITER(OUTLINE_WRITER *writer, const uint8_t *octets, uint32_t len);
/**
 * Writes the rest of the message.
 * @return 0; 0x52AC0049 for a null writer; 0x52AC001C for fewer octets than the size; 0x52AC003C when memory
 * runs out; a status of update_OUTLINE_WRITER() or of the output. Afterwards all operations return 0x52AC002B
 */
TLXPKI_API uint32_t final_OUTLINE_WRITER(OUTLINE_WRITER *writer);

TLX_END_DECLS

#endif
