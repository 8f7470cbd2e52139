// How an algorithm identifier of password-based encryption (RFC 8018, RFC 7292) encrypts.
#include <tlxpki/pkcs5.h>

#include "describe.hpp"
#include "element.hpp"

namespace tool {

namespace {

/// The name of the algorithm in an AlgorithmIdentifier.
std::string algorithm_in(Octets identifier) {
    const Octets element = child_of(identifier, 0);
    if (element.empty() || element[0] != TLX_TAG_OBJECT_IDENTIFIER) return "unknown";
    const Oid oid(decodeToBERObjectIdentifier(element.data()));
    return oid_line(oid_json(oid.get()));
}

/// PBES2-params ::= SEQUENCE {
///     keyDerivationFunc AlgorithmIdentifier, encryptionScheme AlgorithmIdentifier }
/// PBKDF2-params ::= SEQUENCE {
///     salt OCTET STRING, iterationCount INTEGER, keyLength INTEGER OPTIONAL,
///     prf AlgorithmIdentifier DEFAULT algid-hmacWithSHA1 }
void add_pbes2(Json &json, const PKCS8_SCHEME &scheme, Octets parameters) {
    const std::string_view cipher = scheme.cipher;
    json["cipher"] = cipher.empty() ? algorithm_in(child_of(parameters, 1)) : std::string(cipher);
    const Octets derivation = child_of(parameters, 0);
    if (scheme.iterations == 0) {
        json["derivation"] = algorithm_in(derivation);
        return;
    }
    const std::string_view prf = scheme.prf;
    const std::vector<Octets> members = children_of(child_of(derivation, 1));
    json["function"] =
        prf.empty() && !members.empty() ? algorithm_in(members.back()) : "hmac-" + std::string(prf);
}

}  // namespace

Json describe_encryption(const X509_ALGO_IDENTIFIER *algorithm) {
    const auto container = made<Owned<PKCS8, free_PKCS8>>(new_PKCS8());
    container->encryptionAlgorithm = dup_X509_ALGO_IDENTIFIER(algorithm);
    PKCS8_SCHEME scheme = {};
    if (get_PKCS8_scheme(container.get(), &scheme) != 0) {
        return {{"scheme", oid_line(oid_json(get_X509_ALGO_IDENTIFIER_OID(algorithm)))}};
    }
    Json json = {{"scheme", scheme.scheme}};
    if (std::string_view(scheme.scheme) == "pbes2") {
        uint8_t *octets = nullptr;
        const uint32_t size = ASN1_to_binary(get_X509_ALGO_IDENTIFIER_parameters(algorithm), &octets);
        const Owned<uint8_t, tlx_free> owner(octets);
        if (octets != nullptr) add_pbes2(json, scheme, {octets, size});
    }
    if (scheme.iterations != 0) json["iterations"] = scheme.iterations;
    return json;
}

}  // namespace tool
