// Describes certificates, keys and extensions.
#pragma once

#include "document.hpp"
#include "owned.hpp"

namespace tool {

/// A key on one line: "RSA 2048 bits", "KCDSA 2048 bits", "EC prime256v1 256 bits".
[[nodiscard]] std::string key_line(const X509_PUBKEY *key);

/// A public key with its size, curve and numbers.
[[nodiscard]] Json describe_public_key(const X509_PUBKEY *key);

/// An RSA key, without the secret numbers of a private one.
[[nodiscard]] Json describe_rsa_key(const RSA_UNIT *key);

/// An extension with its decoded value, or as "hex" when it is unknown or cannot be decoded.
[[nodiscard]] Json describe_extension(const X509_EXTENSION *extension);

[[nodiscard]] Json describe_general_name(const GENERAL_NAME *name);
[[nodiscard]] Json describe_general_names(const GENERAL_NAMES *names);

/// Certificate policies with their qualifiers.
[[nodiscard]] Json describe_policies(const CERTIFICATE_POLICIES *policies);

/// The names of the bits that are set.
template <std::size_t N>
Json describe_bits(const BIT_STRING *bits, const char *const (&names)[N]) {
    Json set = Json::array();
    for (std::size_t i = 0; i < N; ++i) {
        if ((get_BIT_STRING_named_bits(bits) >> i & 1) != 0) set.push_back(names[i]);
    }
    return set;
}

[[nodiscard]] Json describe_trust_list(const CERT_TRUST_LIST *list);
/// KISA's list of hardware tokens.
[[nodiscard]] Json describe_token_list(const KISA_HSM_SIGNATURE_VALUE *list);

/// The description of each item of a list.
template <typename List, typename Item>
Json describe_items(const List *list, uint32_t (*count)(const List *), Item *(*child)(const List *, int32_t),
                    Json (*describe)(const Item *)) {
    Json items = Json::array();
    for (uint32_t i = 0; i < count(list); ++i) {
        items.push_back(describe(child(list, static_cast<int32_t>(i))));
    }
    return items;
}

/// The parameters of an RSASSA-PSS signature (RFC 4055, section 3.1), given their element.
[[nodiscard]] Json describe_pss(Octets parameters);

/// How an algorithm of password-based encryption encrypts: the scheme and, of PBES2, the cipher, the function
/// and the iterations, by name.
[[nodiscard]] Json describe_encryption(const X509_ALGO_IDENTIFIER *algorithm);

/// A certificate in few words, as one of several.
[[nodiscard]] Json describe_certificate_briefly(const X509_CERT *cert);

/// A certificate, with digests of the octets it was read from.
[[nodiscard]] Json describe_certificate(const X509_CERT *cert, Octets der);

/// Prints what "tlxpki show" describes: members, then extensions, entries, digests and notes.
void print_object(std::ostream &out, Json object);

}  // namespace tool
