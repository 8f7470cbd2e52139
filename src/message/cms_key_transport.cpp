// Key transport (RFC 5652, section 6.2.1; RFC 3370, section 4.2.1; RFC 4055, section 4).
#include "message/cms_keys.hpp"
#include "message/key_scheme.hpp"

using namespace tlx;

namespace {

KeyScheme scheme_of(const CMS_RECIPIENT_SETTINGS &settings) noexcept {
    if (settings.pkcs1_v15 != 0) return {};
    const u32 digest_id = settings.oaep_digest_id != 0 ? settings.oaep_digest_id : TLX_DIGEST_SHA256;
    const u32 mgf_digest_id = settings.oaep_mgf_digest_id != 0 ? settings.oaep_mgf_digest_id : digest_id;
    return {TLX_RSAES_MODE_OAEP,
            {digest_id, mgf_digest_id},
            {settings.oaep_label, settings.oaep_label == nullptr ? 0 : settings.oaep_label_len}};
}

/// What the padding takes of the modulus (RFC 8017, sections 7.1.1 and 7.2.1).
u32 padding_of(const KeyScheme &scheme) noexcept {
    return is_oaep(scheme.mode) ? 2 * get_DigestLength(scheme.digests.digest_id) + 2 : 11;
}

// RecipientIdentifier ::= CHOICE {
//     issuerAndSerialNumber IssuerAndSerialNumber, subjectKeyIdentifier [0] SubjectKeyIdentifier }
CMS_CERT_IDENTIFIER *make_identifier(const X509_CERT *cert, bool by_key_identifier) noexcept {
    Owned<CMS_CERT_IDENTIFIER> made(new_CMS_CERT_IDENTIFIER());
    if (!made) return nullptr;
    Bytes identifier;
    made->type = by_key_identifier ? TLX_CMS_BY_KEY_IDENTIFIER : TLX_CMS_BY_ISSUER_AND_SERIAL;
    if (!by_key_identifier) {
        made->value.issuerAndSerialNumber = issuer_and_serial_of(cert).release();
    } else if (find_key_identifier(cert, identifier)) {
        made->value.subjectKeyIdentifier = make_octets(identifier);
    }
    return made->value.any != nullptr ? made.release() : nullptr;
}

bool names(const CMS_CERT_IDENTIFIER &identifier, const X509_CERT *cert) noexcept {
    return identifier.type == TLX_CMS_BY_KEY_IDENTIFIER
               ? is_named(cert, identifier.value.subjectKeyIdentifier)
               : is_named(cert, identifier.value.issuerAndSerialNumber);
}

u32 seal(const KeyScheme &scheme, const RSA_UNIT *unit, Bytes key, CMS_KEY_TRANS_RECIPIENT &out) noexcept {
    out.keyEncryptionAlgorithm = make_key_algorithm(scheme).release();
    if (out.keyEncryptionAlgorithm == nullptr) return 0x52B0003C;
    const u32 status = encrypt_key(unit, scheme, key, out.encryptedKey, 0x52B0003C);
    if (status == TLX_RSA_BAD_KEY) return 0x52B00047;
    return status == 0 ? 0 : 0x52B0003C;
}

}  // namespace

u32 tlx::open_key_transport(const CMS_KEY_TRANS_RECIPIENT &recipient, const CMS_KEY_HOLDER &holder,
                            u32 expected_len, OpenedKey &key) noexcept {
    constexpr KeyStatuses kStatuses = {0x52B1003C, 0x52B10048, 0x52B10012};
    const RSA_UNIT *unit = rsa_unit(holder.private_key);
    if (recipient.rid == nullptr || recipient.keyEncryptionAlgorithm == nullptr ||
        recipient.encryptedKey == nullptr) {
        return 0x52B10049;
    }
    if (unit == nullptr || !names(*recipient.rid, holder.certificate)) return 0x52B10047;
    return decrypt_key(unit, recipient.keyEncryptionAlgorithm, octets_of(recipient.encryptedKey),
                       expected_len, key.octets, key.len, kStatuses);
}

u32 tlx::make_key_transport(const CMS_RECIPIENT_SETTINGS &settings, Bytes key,
                            CMS_RECIPIENT_INFO &out) noexcept {
    const RSA_UNIT *unit = rsa_unit(get_X509_PUBKEY_key(get_X509_SPKI(settings.certificate)));
    const bool by_key_identifier = settings.by_key_identifier != 0;
    if (unit == nullptr || !can_be_named(settings.certificate, by_key_identifier)) return 0x52B00047;
    const KeyScheme scheme = scheme_of(settings);
    if (!names_rsa_digest(scheme.digests.digest_id) || !names_rsa_digest(scheme.digests.mgf_digest_id)) {
        return 0x52B00048;
    }
    if (key.size() + padding_of(scheme) > get_RSA_length(unit)) return 0x52B0001C;
    CMS_KEY_TRANS_RECIPIENT *made = new_CMS_KEY_TRANS_RECIPIENT();
    out.type = TLX_CMS_KEY_TRANSPORT;
    out.value.ktri = made;
    if (made == nullptr) return 0x52B0003C;
    made->version = by_key_identifier ? 2 : 0;
    made->rid = make_identifier(settings.certificate, by_key_identifier);
    return made->rid == nullptr ? 0x52B0003C : seal(scheme, unit, key, *made);
}
