// Adding recipients to a message.
#include <tlxpki/objects.h>
#include <tlxpki/pkcs1_param.h>
#include <tlxpki/pkcs7_encrypt.h>

#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"
#include "message/envelope.hpp"
#include "message/key_scheme.hpp"
#include "message/signed_members.hpp"

using namespace tlx;

namespace {

/// A recipient of a certificate; null without an algorithm, for a certificate without a name, a number or a
/// known key, and when memory runs out.
Owned<P7_RECIPIENT_INFO> make_recipient(const X509_CERT *cert,
                                        Owned<X509_ALGO_IDENTIFIER> algorithm) noexcept {
    Owned<P7_RECIPIENT_INFO> recipient(new_P7_RECIPIENT_INFO());
    if (!recipient) return nullptr;
    recipient->issuerAndSerialNumber = issuer_and_serial_of(cert).release();
    recipient->version = new_BIGINT();
    recipient->keyEncryptionAlgorithm = algorithm.release();
    recipient->publicKey = dup_ASYMMETRIC_KEY(get_X509_PUBKEY_key(get_X509_SPKI(cert)));
    const bool complete = recipient->issuerAndSerialNumber != nullptr &&
                          recipient->keyEncryptionAlgorithm != nullptr && recipient->publicKey != nullptr &&
                          set_BIGINT_word(recipient->version, 0) == 0;
    return complete ? std::move(recipient) : nullptr;
}

/// Null for parameters that cannot be encoded, and when memory runs out.
Owned<X509_ALGO_IDENTIFIER> make_algorithm(u32 mode, const RSAES_OAEP_PARAM *oaep) noexcept {
    constexpr RSAES_OAEP_PARAM kDefaults = {};
    if (!is_oaep(mode)) return make_key_algorithm(KeyScheme());
    Owned<X509_ALGO_IDENTIFIER> algorithm(new_X509_ALGO_IDENTIFIER());
    if (!algorithm) return nullptr;
    algorithm->algorithm = index_to_OBJECT_IDENTIFIER(oid::kRsaesOaep);
    const RSAES_OAEP_PARAM *param = oaep != nullptr ? oaep : &kDefaults;
    const bool complete = algorithm->algorithm != nullptr &&
                          set_X509_ALGO_IDENTIFIER_with_RSAES_OAEP_PARAM(algorithm.get(), param) == 0;
    return complete ? std::move(algorithm) : nullptr;
}

}  // namespace

uint32_t set_PKCS7_P7_RECIPIENT_INFO(P7_RECIPIENT_INFO *recipient, const X509_CERT *cert, uint32_t mode,
                                     const RSAES_OAEP_PARAM *oaep) {
    if (recipient == nullptr || cert == nullptr || !is_rsaes_mode(mode)) return 1;
    const Owned<P7_RECIPIENT_INFO> fresh = make_recipient(cert, make_algorithm(mode, oaep));
    KeyScheme scheme;
    if (!fresh) return 1;
    // init_PKCS7_Encrypt() encrypts with plain OAEP, whatever is written here.
    if (!read_key_scheme(fresh->keyEncryptionAlgorithm, scheme) || !scheme.is_plain()) return 1;
    std::swap(*recipient, *fresh);
    return 0;
}

uint32_t add_PKCS7_P7_RECIPIENT_INFO(P7_CONTENT_INFO *info, P7_RECIPIENT_INFO *recipient) {
    Envelope envelope;
    if (recipient == nullptr || find_envelope(info, envelope) != 0 || envelope.recipients == nullptr) {
        return 1;
    }
    if (!append_value(*envelope.recipients, recipient)) return 1;
    forget_received(*info);
    return 0;
}

uint32_t add_PKCS7_Recipient_withEncryptedAlgorithm(P7_CONTENT_INFO *info, const X509_CERT *cert,
                                                    uint32_t mode, const RSAES_OAEP_PARAM *oaep) {
    Owned<P7_RECIPIENT_INFO> recipient(new_P7_RECIPIENT_INFO());
    if (set_PKCS7_P7_RECIPIENT_INFO(recipient.get(), cert, mode, oaep) != 0) return 1;
    if (add_PKCS7_P7_RECIPIENT_INFO(info, recipient.get()) != 0) return 1;
    static_cast<void>(recipient.release());
    return 0;
}

uint32_t add_PKCS7_Recipient_OAEP(P7_CONTENT_INFO *info, const X509_CERT *cert, uint32_t digest_id,
                                  uint32_t mgf_digest_id, const uint8_t *label, uint32_t label_len) {
    if (cert == nullptr || (label == nullptr && label_len != 0)) return 1;
    const KeyScheme scheme{TLX_RSAES_MODE_OAEP, {digest_id, mgf_digest_id}, {label, label_len}};
    Owned<P7_RECIPIENT_INFO> recipient = make_recipient(cert, make_key_algorithm(scheme));
    if (!recipient) return 1;
    if (add_PKCS7_P7_RECIPIENT_INFO(info, recipient.get()) != 0) return 1;
    static_cast<void>(recipient.release());
    return 0;
}

uint32_t add_PKCS7_Recipient(P7_CONTENT_INFO *info, const X509_CERT *cert) {
    return add_PKCS7_Recipient_withEncryptedAlgorithm(info, cert, TLX_RSAES_MODE_NONE_GIVEN, nullptr);
}
