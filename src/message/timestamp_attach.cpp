// Time stamps among the attributes of a signer (RFC 3161, appendix A).
#include <tlxpki/objects.h>
#include <tlxpki/x509_attribute.h>

#include "message/attribute_order.hpp"
#include "message/signer_attributes.hpp"
#include "message/timestamp.hpp"

using namespace tlx;

namespace {

/// Appends a token to attributes, which stay in the order of DER. False when memory runs out, and when one
/// cannot be encoded.
bool append_token(X509_ATTRIBUTES *attributes, const CMS_CONTENT_INFO *token) noexcept {
    ASN1_UNIT *made = nullptr;
    static_cast<void>(CMS_CONTENT_INFO_to_Seq(token, &made));
    const Owned<ASN1_UNIT> node(made);
    const Owned<OBJECT_IDENTIFIER> type(text_to_OBJECT_IDENTIFIER(attribute_id::kTimeStampToken.data()));
    return node && type &&
           add_X509_ATTRIBUTES_child_OID(attributes, type.get(), kSequence, node.get(), -1) == 0 &&
           sort_attributes(attributes);
}

}  // namespace

uint32_t add_CMS_SIGNER_INFO_timestamp(CMS_SIGNER_INFO *signer, const CMS_CONTENT_INFO *token) {
    if (signer == nullptr || signer->signature == nullptr || token == nullptr) return 0x52C80049;
    CMS_TST_INFO *decoded = nullptr;
    u32 status = decode_CMS_TST_INFO(token, &decoded);
    const Owned<CMS_TST_INFO> info(decoded);
    if (status != 0) return status;
    const Bytes signature = octets_of(signer->signature);
    status = match_CMS_MESSAGE_IMPRINT(info->messageImprint, signature.data(), size_of(signature));
    if (status != 0) return status;
    OwnedAttributes attributes(signer->unsignedAttrs == nullptr ? new_X509_ATTRIBUTES()
                                                                : dup_X509_ATTRIBUTES(signer->unsignedAttrs));
    if (!attributes || !append_token(attributes.get(), token)) return 0x52C8003C;
    free_X509_ATTRIBUTES(std::exchange(signer->unsignedAttrs, attributes.release()));
    return 0;
}
