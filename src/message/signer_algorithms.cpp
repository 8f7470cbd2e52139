#include "message/signer_algorithms.hpp"

#include <tlxcrypto/digest.h>
#include <tlxcrypto/rsa.h>

#include "asn1/oid_lookup.hpp"

namespace tlx {
namespace {

constexpr u32 kTrailerBc = 1;

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

}  // namespace

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
    settings = {};
    settings.digests.digest_id = signer_digest_id;
    Element sequence;
    if (parameters == nullptr) return true;
    if (!view_node(parameters, sequence)) return false;
    if (sequence.tag == TLX_TAG_NULL) return true;
    if (sequence.tag != kSequence) return false;
    settings.digests = {};
    u32 trailer = kTrailerBc;
    Cursor fields(sequence);
    return settings.digests.read(fields) && read_field(fields, 2, read_number, settings.salt_length) &&
           read_field(fields, 3, read_number, trailer) && trailer == kTrailerBc && fields.at_end();
}

ASN1_UNIT *make_pss_parameters(u32 digest_id) noexcept {
    const u32 salt_length = get_DigestLength(digest_id);
    Encoder out;
    {
        const auto parameters = out.sequence();
        RsaDigests{digest_id, digest_id}.write(out);
        if (salt_length != TLX_RSA_PSS_DEFAULT_SALT_LENGTH) {
            const auto field = out.nest(context(2));
            out.small_integer(static_cast<u8>(salt_length));
        }
    }
    return out.to_node();
}

}  // namespace tlx
