// The virtual identifier of a Korean certificate (KCAC.TG.SIVID).
#include <tlxcrypto/digest.h>
#include <tlxpki/kisa_identity.h>
#include <tlxpki/objects.h>
#include <tlxpki/x509v3.h>

#include <algorithm>

#include "asn1/oid_lookup.hpp"
#include "x509/extension_records.hpp"

using namespace tlx;

namespace {

constexpr std::size_t kRandomLength = 20;

enum class Outcome : u8 { computed, bad_number, unknown_hash, no_memory };

/// Copies the digits of a number and leaves out hyphens. False for any other character, and for no digits.
bool copy_digits(Bytes number, SecretBytes &digits, std::size_t &count) noexcept {
    count = 0;
    for (const u8 character : number) {
        if (character == '-') continue;
        if (character < '0' || character > '9') return false;
        digits.data()[count++] = character;
    }
    return count != 0;
}

// HashContent ::= SEQUENCE { idn PrintableString, randomNum BIT STRING }
bool digest_content(u32 digest_id, Bytes digits, const BIT_STRING *random, u8 *digest, u32 &len) noexcept {
    constexpr std::size_t kHeaders = 16;
    SecretEncoder content;
    content.buffer().reserve(digits.size() + kRandomLength + kHeaders);
    {
        const auto sequence = content.sequence();
        content.primitive(TLX_TAG_PRINTABLE_STRING, digits);
        content.bit_string(random);
    }
    return content.ok() && Digest(digest_id, content.bytes().data(), static_cast<u32>(content.bytes().size()),
                                  digest, &len) == 0;
}

/// VID = H (H (HashContent))
Outcome compute(const OBJECT_IDENTIFIER *hash_alg, Bytes number, const BIT_STRING *random,
                u8 (&vid)[TLX_DIGEST_MAX_LENGTH], u32 &len) noexcept {
    const u32 digest_id = get_DigestID_from_OID(hash_alg);
    if (get_DigestLength(digest_id) == 0) return Outcome::unknown_hash;
    SecretBytes digits(number.size());
    std::size_t count = 0;
    if (!digits) return Outcome::no_memory;
    if (octets_of(random).size() != kRandomLength || random->extra != 0) return Outcome::bad_number;
    if (!copy_digits(number, digits, count)) return Outcome::bad_number;
    u8 once[TLX_DIGEST_MAX_LENGTH];
    const bool computed = digest_content(digest_id, {digits.data(), count}, random, once, len) &&
                          Digest(digest_id, once, len, vid, &len) == 0;
    tlx_wipe(once, sizeof once);
    return computed ? Outcome::computed : Outcome::no_memory;
}

/// The identity data of a certificate; null when it has none that can be read.
Owned<KISA_IDENTIFY_DATA> identity_of(const X509_CERT *cert) noexcept {
    void *decoded = nullptr;
    const X509_EXTENSIONS *extensions =
        cert->tbsCertificate == nullptr ? nullptr : cert->tbsCertificate->extensions;
    if (decode_X509_EXTENSION_by_OID_index(extensions, TLX_OID_SUBJECT_ALT_NAME,
                                           TLX_DECODER(Seq_to_GENERAL_NAMES), &decoded) != 0) {
        return nullptr;
    }
    const std::unique_ptr<GENERAL_NAMES, FreeWith<free_GENERAL_NAMES>> names(
        static_cast<GENERAL_NAMES *>(decoded));
    KISA_IDENTIFY_DATA *data = nullptr;
    if (get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES(names.get(), &data) != 0) return nullptr;
    return Owned<KISA_IDENTIFY_DATA>(data);
}

}  // namespace

uint32_t gen_KISA_VID(const OBJECT_IDENTIFIER *hash_alg, const char *number, uint32_t number_len,
                      const BIT_STRING *random, VID **out) {
    if (hash_alg == nullptr || number == nullptr || random == nullptr || out == nullptr) return 0x47600049;
    u8 vid[TLX_DIGEST_MAX_LENGTH];
    u32 len = 0;
    switch (compute(hash_alg, {reinterpret_cast<const u8 *>(number), number_len}, random, vid, len)) {
        case Outcome::computed:
            break;
        case Outcome::bad_number:
            return 0x4760002B;
        case Outcome::unknown_hash:
            return 0x47600048;
        default:
            return 0x4760003C;
    }
    Owned<VID> made(new_VID());
    if (!made) return 0x4760003C;
    made->hashAlg = dup_OBJECT_IDENTIFIER(hash_alg);
    made->virtualID = new_string(TLX_TAG_OCTET_STRING, {vid, len});
    if (made->hashAlg == nullptr || made->virtualID == nullptr) return 0x4760003C;
    deliver(std::move(made), out);
    return 0;
}

uint32_t verify_KISA_VID(const X509_CERT *cert, const char *number, uint32_t number_len,
                         const BIT_STRING *random) {
    if (cert == nullptr || number == nullptr || random == nullptr) return 0x47610049;
    const Owned<KISA_IDENTIFY_DATA> identity = identity_of(cert);
    if (!identity || identity->vid == nullptr || identity->vid->virtualID == nullptr) return 0x47610047;
    u8 vid[TLX_DIGEST_MAX_LENGTH];
    u32 len = 0;
    switch (compute(identity->vid->hashAlg, {reinterpret_cast<const u8 *>(number), number_len}, random, vid,
                    len)) {
        case Outcome::computed:
            return std::ranges::equal(Bytes(vid, len), octets_of(identity->vid->virtualID)) ? 0 : 0x4761005E;
        case Outcome::bad_number:
            return 0x4761002B;
        case Outcome::unknown_hash:
            return 0x47610048;
        default:
            return 0x4761003C;
    }
}
