// The algorithms of key encryption: rsaEncryption, and id-RSAES-OAEP with its parameters (RFC 4055, section
// 4).
#include "message/key_scheme.hpp"

#include <tlxcrypto/random.h>
#include <tlxpki/objects.h>

#include "asn1/oid_lookup.hpp"

using namespace tlx;

namespace {

bool read_label(const Element &element, Bytes &label) noexcept {
    AlgorithmElement source;
    if (!source.read(element) || source.row != oid::kPSpecified) return false;
    if (!source.has_parameters()) return true;
    label = source.parameters.contents;
    return source.parameters.tag == TLX_TAG_OCTET_STRING;
}

// RSAES-OAEP-params ::= SEQUENCE {
//     hashFunc      [0] AlgorithmIdentifier DEFAULT sha1Identifier,
//     maskGenFunc   [1] AlgorithmIdentifier DEFAULT mgf1SHA1Identifier,
//     pSourceFunc   [2] AlgorithmIdentifier DEFAULT pSpecifiedEmptyIdentifier }
bool read_oaep(const ASN1_UNIT *parameters, KeyScheme &scheme) noexcept {
    Element element;
    if (!view_node(parameters, element) || element.tag != kSequence) return false;
    Cursor members(element);
    return scheme.digests.read(members) && read_field(members, 2, read_label, scheme.label) &&
           members.at_end();
}

/// What is the default is not written.
void write_oaep(Encoder &out, const KeyScheme &scheme) noexcept {
    const auto parameters = out.sequence();
    scheme.digests.write(out);
    if (!scheme.label.empty()) {
        const auto wrapper = out.nest(context(2));
        const auto algorithm = out.sequence();
        out.oid(OID_LIST(oid::kPSpecified)->dotted);
        out.primitive(TLX_TAG_OCTET_STRING, scheme.label);
    }
}

/// Direction 0 encrypts, 1 decrypts. A status of the unit.
u32 prepare_unit(RSA_UNIT *unit, const KeyScheme &scheme, u32 direction) noexcept {
    if (!is_oaep(scheme.mode)) return init_RSAES(unit, scheme.mode, direction, 0);
    return init_RSAES_OAEP(unit, direction, scheme.digests.digest_id, scheme.digests.mgf_digest_id,
                           scheme.label.data(), size_of(scheme.label));
}

/// Decrypts a key of unknown length. A random one takes the place of what has no padding of PKCS #1 v1.5.
u32 decrypt_any(const RSA_UNIT *unit, Bytes sealed, bool is_pkcs1, std::span<u8> key, u32 &key_len) noexcept {
    key_len = static_cast<u32>(key.size());
    const u32 status = decrypt_RSAES(unit, key.data(), &key_len, sealed.data(), size_of(sealed));
    if (status == 0 || status > TLX_RSA_BAD_KEY || !is_pkcs1 || key.size() < kRandomKeyLength) return status;
    key_len = kRandomKeyLength;
    return RAND_BYTES(key.data(), key_len);
}

}  // namespace

Owned<X509_ALGO_IDENTIFIER> tlx::make_key_algorithm(const KeyScheme &scheme) noexcept {
    if (!is_oaep(scheme.mode)) return algorithm_with_null(oid::kRsaEncryption);
    Owned<X509_ALGO_IDENTIFIER> algorithm(new_X509_ALGO_IDENTIFIER());
    if (!algorithm) return nullptr;
    Encoder parameters;
    write_oaep(parameters, scheme);
    algorithm->algorithm = index_to_OBJECT_IDENTIFIER(oid::kRsaesOaep);
    algorithm->parameters = parameters.to_node();
    const bool complete = algorithm->algorithm != nullptr && algorithm->parameters != nullptr;
    return complete ? std::move(algorithm) : nullptr;
}

bool tlx::read_key_scheme(const X509_ALGO_IDENTIFIER *algorithm, KeyScheme &scheme) noexcept {
    if (algorithm == nullptr) return false;
    scheme = {};
    switch (oid_index(text_of(algorithm->algorithm))) {
        case oid::kRsaEncryption:
            return true;
        case oid::kRsaesOaep:
            scheme.mode = TLX_RSAES_MODE_OAEP;
            return read_oaep(algorithm->parameters, scheme);
        default:
            return false;
    }
}

u32 tlx::encrypt_key(const RSA_UNIT *unit, const KeyScheme &scheme, Bytes key, OCTET_STRING *&encrypted,
                     u32 no_memory) noexcept {
    // A copy, so that several threads may encrypt for one key.
    const Owned<RSA_UNIT> own(dup_RSA_UNIT(unit));
    const OwnedOctets<u8> octets(static_cast<u8 *>(TLX_ALLOCATE(std::size_t{get_RSA_length(unit)} + 1)));
    if (!own || !octets) return no_memory;
    if (const u32 status = prepare_unit(own.get(), scheme, 0); status != 0) return status;
    u32 len = 0;
    const u32 status = encrypt_RSAES(own.get(), octets.get(), &len, key.data(), size_of(key));
    if (status != 0) return status;
    OCTET_STRING *made = new_string(TLX_TAG_OCTET_STRING, {octets.get(), len});
    if (made == nullptr) return no_memory;
    free_ASN1_STRING(encrypted);
    encrypted = made;
    return 0;
}

u32 tlx::decrypt_key(const RSA_UNIT *unit, const X509_ALGO_IDENTIFIER *algorithm, Bytes sealed, u32 expected,
                     std::span<u8> key, u32 &key_len, const KeyStatuses &statuses) noexcept {
    if (expected > key.size()) return statuses.not_decrypted;
    // A copy, so that several threads may use one key.
    const Owned<RSA_UNIT> own(dup_RSA_UNIT(unit));
    if (!own) return statuses.no_memory;
    KeyScheme scheme;
    if (!read_key_scheme(algorithm, scheme)) return statuses.unknown_scheme;
    if (prepare_unit(own.get(), scheme, 1) != 0) return statuses.no_memory;
    key_len = expected;
    const bool is_pkcs1 = !is_oaep(scheme.mode);
    const u32 status = is_pkcs1 && expected != 0 ? decrypt_RSAES_key(own.get(), key.data(), expected,
                                                                     sealed.data(), size_of(sealed))
                                                 : decrypt_any(own.get(), sealed, is_pkcs1, key, key_len);
    if (status > TLX_RSA_BAD_KEY) return status;
    return status == 0 && (expected == 0 || key_len == expected) ? 0 : statuses.not_decrypted;
}
