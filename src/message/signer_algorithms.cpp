#include "message/signer_algorithms.hpp"

#include <tlxcrypto/digest.h>
#include <tlxcrypto/rsa.h>
#include <tlxpki/objects.h>

#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"

namespace tlx {
namespace {

/// The identifier at the front of an AlgorithmIdentifier; null when it has none.
Owned<OBJECT_IDENTIFIER> identifier_of(Cursor &members) noexcept {
    Element identifier;
    if (!members.next(TLX_TAG_OBJECT_IDENTIFIER, identifier)) return nullptr;
    return Owned<OBJECT_IDENTIFIER>(decode_oid(identifier.contents));
}

/// The digest that an AlgorithmIdentifier names; 0 when it names none.
u32 digest_of(const Element &algorithm) noexcept {
    Cursor members(algorithm);
    return get_DigestID_from_OID(identifier_of(members).get());
}

/// The digest of MGF1, its parameter; 0 for another function.
u32 mgf_digest_of(const Element &algorithm) noexcept {
    Cursor members(algorithm);
    const auto function = identifier_of(members);
    Element digest;
    const bool is_mgf1 = oid_index(text_of(function.get())) == oid::kMgf1;
    return is_mgf1 && members.next(TLX_TAG_SEQUENCE, digest) ? digest_of(digest) : 0;
}

bool read_number(const Element &integer, u32 &number) noexcept {
    constexpr std::size_t kMostOctets = 3;
    if (integer.tag != TLX_TAG_INTEGER || integer.contents.empty() || integer.contents.size() > kMostOctets ||
        integer.contents[0] > 0x7F) {
        return false;
    }
    number = 0;
    for (const u8 octet : integer.contents) {
        number = number << 8 | octet;
    }
    return true;
}

bool read_pss_field(u8 number, const Element &value, PssSettings &settings) noexcept {
    u32 trailer = 0;
    switch (number) {
        case 0:
            settings.digest_id = digest_of(value);
            return settings.digest_id != 0;
        case 1:
            settings.mgf_digest_id = mgf_digest_of(value);
            return settings.mgf_digest_id != 0;
        case 2:
            return read_number(value, settings.salt_length);
        default:
            return number == 3 && read_number(value, trailer) && trailer == 1;
    }
}

/// An AlgorithmIdentifier with NULL parameters.
void encode_algorithm(Encoder &out, u32 row) noexcept {
    const auto sequence = out.sequence();
    out.oid(OID_LIST(static_cast<i32>(row))->dotted);
    out.null();
}

}  // namespace

Owned<X509_ALGO_IDENTIFIER> algorithm_with_null(u32 row) noexcept {
    Owned<X509_ALGO_IDENTIFIER> algorithm(new_X509_ALGO_IDENTIFIER());
    if (!algorithm) return nullptr;
    algorithm->algorithm = oid_of_row(static_cast<i32>(row)).release();
    const bool made = algorithm->algorithm != nullptr && set_X509_ALGO_IDENTIFIER_null(algorithm.get()) == 0;
    return made ? std::move(algorithm) : nullptr;
}

bool replace_algorithm(X509_ALGO_IDENTIFIER *&algorithm, u32 row) noexcept {
    auto made = algorithm_with_null(row);
    if (!made) return false;
    free_X509_ALGO_IDENTIFIER(algorithm);
    algorithm = made.release();
    return true;
}

u32 algorithm_row(const X509_ALGO_IDENTIFIER *algorithm) noexcept {
    return oid_index(text_of(get_X509_ALGO_IDENTIFIER_OID(algorithm)));
}

// RSASSA-PSS-params ::= SEQUENCE {
//     hashAlgorithm    [0] HashAlgorithm    DEFAULT sha1,
//     maskGenAlgorithm [1] MaskGenAlgorithm DEFAULT mgf1SHA1,
//     saltLength       [2] INTEGER          DEFAULT 20,
//     trailerField     [3] TrailerField     DEFAULT trailerFieldBC }
bool read_pss_parameters(const ASN1_UNIT *parameters, u32 signer_digest_id, PssSettings &settings) noexcept {
    settings = {signer_digest_id, TLX_DIGEST_SHA1, TLX_RSA_PSS_DEFAULT_SALT_LENGTH};
    Element sequence;
    if (parameters == nullptr) return true;
    if (!view_node(parameters, sequence)) return false;
    if (sequence.tag == TLX_TAG_NULL) return true;
    if (sequence.tag != kSequence) return false;
    settings.digest_id = TLX_DIGEST_SHA1;
    Cursor fields(sequence);
    for (u8 least = context(0); !fields.at_end();) {
        Element field;
        Element value;
        if (!fields.next(field) || field.tag < least || !only_child(field, value) ||
            !read_pss_field(field.number(), value, settings)) {
            return false;
        }
        least = static_cast<u8>(field.tag + 1);
    }
    return true;
}

ASN1_UNIT *make_pss_parameters(u32 digest_row, u32 salt_length) noexcept {
    Encoder out;
    const Owned<BIGINT> salt(new_BIGINT());
    if (!salt || set_BIGINT_word(salt.get(), salt_length) != 0) return nullptr;
    {
        const auto sequence = out.sequence();
        if (digest_row != oid::kSha1) {
            {
                const auto hash = out.nest(context(0));
                encode_algorithm(out, digest_row);
            }
            const auto mask = out.nest(context(1));
            const auto function = out.sequence();
            out.oid(OID_LIST(oid::kMgf1)->dotted);
            encode_algorithm(out, digest_row);
        }
        if (salt_length != TLX_RSA_PSS_DEFAULT_SALT_LENGTH) {
            const auto length = out.nest(context(2));
            out.integer(salt.get());
        }
    }
    return out.to_node();
}

}  // namespace tlx
