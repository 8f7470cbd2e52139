// Requests for time stamps (RFC 3161, section 2.4.1).
#include <tlxcrypto/random.h>

#include "der/list_items.hpp"
#include "keyinfo/digest_identifier.hpp"
#include "message/timestamp.hpp"

using namespace tlx;

namespace {

/// Makes a request for a digest, or fills one anew. False when memory runs out; the caller's is unchanged
/// then.
bool make_request(CMS_TIMESTAMP_REQUEST **request, u32 digest_id, Bytes digest) noexcept {
    Owned<CMS_MESSAGE_IMPRINT> imprint(new_CMS_MESSAGE_IMPRINT());
    Owned<CMS_TIMESTAMP_REQUEST> made(new_CMS_TIMESTAMP_REQUEST());
    if (!imprint || !made) return false;
    imprint->hashAlgorithm = digest_algorithm(digest_id).release();
    imprint->hashedMessage = new_string(TLX_TAG_OCTET_STRING, digest);
    if (imprint->hashAlgorithm == nullptr || imprint->hashedMessage == nullptr) return false;
    made->version = 1;
    made->messageImprint = imprint.release();
    made->certReq = 1;
    deliver(std::move(made), request);
    return true;
}

}  // namespace

uint32_t generate_CMS_TIMESTAMP_REQUEST(CMS_TIMESTAMP_REQUEST **request, uint32_t digestId,
                                        const uint8_t *octets, uint32_t length) {
    u8 digest[TLX_DIGEST_MAX_LENGTH];
    u32 digest_length = 0;
    if (request == nullptr || (octets == nullptr && length != 0)) return 0x52C00049;
    if (!is_stamped(digestId)) return 0x52C0002B;
    const bool made = Digest(digestId, octets, length, digest, &digest_length) == 0 &&
                      make_request(request, digestId, {digest, digest_length});
    return made ? 0 : 0x52C0003C;
}

uint32_t generate_CMS_TIMESTAMP_REQUEST_of_digest(CMS_TIMESTAMP_REQUEST **request, uint32_t digestId,
                                                  const uint8_t *digest, uint32_t length) {
    if (request == nullptr || digest == nullptr) return 0x52C10049;
    if (!is_stamped(digestId) || get_DigestLength(digestId) != length) return 0x52C1002B;
    return make_request(request, digestId, {digest, length}) ? 0 : 0x52C1003C;
}

uint32_t generate_CMS_TIMESTAMP_REQUEST_nonce(CMS_TIMESTAMP_REQUEST *request, uint32_t octets) {
    constexpr u32 kMostOctets = 64;
    u8 random[kMostOctets];
    if (request == nullptr) return 0x52C20049;
    if (octets == 0 || octets > kMostOctets) return 0x52C2002B;
    BIGINT *nonce = RAND_BYTES(random, octets) == 0 ? decode_integer({random, octets}) : nullptr;
    if (nonce == nullptr) return 0x52C2003C;
    free_BIGINT(std::exchange(request->nonce, nonce));
    return 0;
}

uint32_t set_CMS_TIMESTAMP_REQUEST_policy(CMS_TIMESTAMP_REQUEST *request, const OBJECT_IDENTIFIER *policy) {
    if (request == nullptr || policy == nullptr) return 0x52C30049;
    const u32 failed =
        replace_by_copy<dup_OBJECT_IDENTIFIER, free_OBJECT_IDENTIFIER>(request->reqPolicy, policy);
    return failed == 0 ? 0 : 0x52C3003C;
}
