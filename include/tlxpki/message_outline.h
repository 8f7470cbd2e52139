/** @file
 * What a message consists of beside its content, which may have any size: signed, enveloped, encrypted,
 * authenticated, digested and signed-and-enveloped data of PKCS #7 and CMS (RFC 2315; RFC 5652; RFC 5083),
 * read in pieces of any length. Nothing is verified or decrypted.
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
 * Takes the next octets of the message, in DER or BER.
 * @param octets may be null when len is 0
 * @return 0; 0x52A80049 for a null argument; 0x52A8004F for octets that are no element, for what nests deeper
 * than 64 elements, and for octets after the message; 0x52A80048 for another content type and an element that
 * is missing or does not belong at its place; 0x52A80047 when more than held_limit octets are not content;
 * 0x52A8003C when memory runs out
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

TLX_END_DECLS

#endif
