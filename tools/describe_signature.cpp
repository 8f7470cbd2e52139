#include "describe.hpp"
#include "element.hpp"

namespace tool {

namespace {

/// The algorithm of an AlgorithmIdentifier.
std::string algorithm_in(Octets identifier) {
    const Octets oid = child_of(identifier, 0);
    if (oid.empty() || oid[0] != TLX_TAG_OBJECT_IDENTIFIER) return "unknown";
    const Oid decoded(decodeToBERObjectIdentifier(oid.data()));
    return algorithm_name(decoded.get());
}

std::string number_in(Octets integer) {
    if (integer.empty() || integer[0] != TLX_TAG_INTEGER) return "unknown";
    const Owned<BIGINT, free_BIGINT> number(decodeToBERInteger(integer.data()));
    return number_text(number.get());
}

}  // namespace

/// RSASSA-PSS-params  ::=  SEQUENCE  {
///      hashAlgorithm     [0] HashAlgorithm DEFAULT sha1Identifier,
///      maskGenAlgorithm  [1] MaskGenAlgorithm DEFAULT mgf1SHA1Identifier,
///      saltLength        [2] INTEGER DEFAULT 20,
///      trailerField      [3] INTEGER DEFAULT 1  }
Json describe_pss(Octets parameters) {
    constexpr std::size_t kFields = 4;
    enum : uint8_t { kHash = 0xA0, kMaskGeneration = 0xA1, kSaltLength = 0xA2, kTrailerField = 0xA3 };
    Json json = {{"digest", "sha1"},
                 {"mask_generation", "mgf1"},
                 {"mask_digest", "sha1"},
                 {"salt_length", "20"},
                 {"trailer_field", "1"}};
    for (std::size_t i = 0; i < kFields; ++i) {
        const Octets field = child_of(parameters, i);
        if (field.empty()) break;
        const Octets value = child_of(field, 0);
        if (field[0] == kHash) json["digest"] = algorithm_in(value);
        if (field[0] == kMaskGeneration) {
            json["mask_generation"] = algorithm_in(value);
            json["mask_digest"] = algorithm_in(child_of(value, 1));
        }
        if (field[0] == kSaltLength) json["salt_length"] = number_in(value);
        if (field[0] == kTrailerField) json["trailer_field"] = number_in(value);
    }
    return json;
}

}  // namespace tool
