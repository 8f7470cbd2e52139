#include "oid_names.hpp"

#include <tlxpki.h>

#include <algorithm>
#include <cctype>
#include <charconv>

namespace tool {

namespace {

/// RFC 5480, RFC 5639, RFC 5758, RFC 8410, RFC 8692, FIPS 202, ETSI EN 319 412-1, RFC 6960; of password-based
/// encryption RFC 8018, RFC 7914, RFC 7292, RFC 4357, RFC 9215, RFC 5084; of CMS RFC 3211, RFC 3274, RFC
/// 3394, RFC 4010, RFC 5035, RFC 5083, RFC 5753, RFC 5794, RFC 5940, RFC 6211, RFC 8418, RFC 8419.
constexpr OidName kNames[] = {
    {"organizationIdentifier", "organizationIdentifier", "2.5.4.97"},
    {"X25519", "X25519", "1.3.101.110"},
    {"X448", "X448", "1.3.101.111"},
    {"Ed25519", "Ed25519", "1.3.101.112"},
    {"Ed448", "Ed448", "1.3.101.113"},
    {"ecdsa-with-SHA224", "ecdsa-with-SHA224", "1.2.840.10045.4.3.1"},
    {"ecdsa-with-SHA384", "ecdsa-with-SHA384", "1.2.840.10045.4.3.3"},
    {"ecdsa-with-SHA512", "ecdsa-with-SHA512", "1.2.840.10045.4.3.4"},
    {"P-256", "NIST P-256, prime256v1", "1.2.840.10045.3.1.7"},
    {"P-384", "NIST P-384, secp384r1", "1.3.132.0.34"},
    {"P-521", "NIST P-521, secp521r1", "1.3.132.0.35"},
    {"SHA512-256", "sha512-256", "2.16.840.1.101.3.4.2.6"},
    {"SHA3-224", "sha3-224", "2.16.840.1.101.3.4.2.7"},
    {"SHA3-256", "sha3-256", "2.16.840.1.101.3.4.2.8"},
    {"SHA3-384", "sha3-384", "2.16.840.1.101.3.4.2.9"},
    {"SHA3-512", "sha3-512", "2.16.840.1.101.3.4.2.10"},
    {"SHAKE128", "shake128", "2.16.840.1.101.3.4.2.11"},
    {"SHAKE256", "shake256", "2.16.840.1.101.3.4.2.12"},
    {"ecdsa-with-SHA3-256", "ecdsa-with-SHA3-256", "2.16.840.1.101.3.4.3.10"},
    {"ecdsa-with-SHA3-384", "ecdsa-with-SHA3-384", "2.16.840.1.101.3.4.3.11"},
    {"ecdsa-with-SHA3-512", "ecdsa-with-SHA3-512", "2.16.840.1.101.3.4.3.12"},
    {"RSA-SHA3-256", "sha3-256WithRSAEncryption", "2.16.840.1.101.3.4.3.14"},
    {"RSA-SHA3-384", "sha3-384WithRSAEncryption", "2.16.840.1.101.3.4.3.15"},
    {"RSA-SHA3-512", "sha3-512WithRSAEncryption", "2.16.840.1.101.3.4.3.16"},
    {"brainpoolP256r1", "brainpoolP256r1", "1.3.36.3.3.2.8.1.1.7"},
    {"brainpoolP384r1", "brainpoolP384r1", "1.3.36.3.3.2.8.1.1.11"},
    {"brainpoolP512r1", "brainpoolP512r1", "1.3.36.3.3.2.8.1.1.13"},
    {"PBMAC1", "PBMAC1", "1.2.840.113549.1.5.14"},
    {"scrypt", "scrypt", "1.3.6.1.4.1.11591.4.11"},
    {"hmacWithSHA224", "hmacWithSHA224", "1.2.840.113549.2.8"},
    {"hmacWithSHA256", "hmacWithSHA256", "1.2.840.113549.2.9"},
    {"hmacWithSHA384", "hmacWithSHA384", "1.2.840.113549.2.10"},
    {"hmacWithSHA512", "hmacWithSHA512", "1.2.840.113549.2.11"},
    {"hmacWithSHA512-224", "hmacWithSHA512-224", "1.2.840.113549.2.12"},
    {"hmacWithSHA512-256", "hmacWithSHA512-256", "1.2.840.113549.2.13"},
    {"RC5-CBC-PAD", "rc5-cbc-pad", "1.2.840.113549.3.9"},
    {"AES-128-GCM", "aes-128-gcm", "2.16.840.1.101.3.4.1.6"},
    {"AES-192-GCM", "aes-192-gcm", "2.16.840.1.101.3.4.1.26"},
    {"AES-256-GCM", "aes-256-gcm", "2.16.840.1.101.3.4.1.46"},
    {"AES-128-CCM", "aes-128-ccm", "2.16.840.1.101.3.4.1.7"},
    {"AES-192-CCM", "aes-192-ccm", "2.16.840.1.101.3.4.1.27"},
    {"AES-256-CCM", "aes-256-ccm", "2.16.840.1.101.3.4.1.47"},
    {"AES-128-wrap", "aes-128-wrap", "2.16.840.1.101.3.4.1.5"},
    {"AES-192-wrap", "aes-192-wrap", "2.16.840.1.101.3.4.1.25"},
    {"AES-256-wrap", "aes-256-wrap", "2.16.840.1.101.3.4.1.45"},
    {"SEED-wrap", "npki-app-cmsSeed-wrap", "1.2.410.200004.7.1.1.1"},
    {"ARIA-128-CBC", "aria-128-cbc", "1.2.410.200046.1.1.2"},
    {"ARIA-192-CBC", "aria-192-cbc", "1.2.410.200046.1.1.7"},
    {"ARIA-256-CBC", "aria-256-cbc", "1.2.410.200046.1.1.12"},
    {"ARIA-128-GCM", "aria-128-gcm", "1.2.410.200046.1.1.34"},
    {"ARIA-192-GCM", "aria-192-gcm", "1.2.410.200046.1.1.35"},
    {"ARIA-256-GCM", "aria-256-gcm", "1.2.410.200046.1.1.36"},
    {"dhSinglePass-stdDH-sha1kdf", "dhSinglePass-stdDH-sha1kdf-scheme", "1.3.133.16.840.63.0.2"},
    {"dhSinglePass-stdDH-sha224kdf", "dhSinglePass-stdDH-sha224kdf-scheme", "1.3.132.1.11.0"},
    {"dhSinglePass-stdDH-sha256kdf", "dhSinglePass-stdDH-sha256kdf-scheme", "1.3.132.1.11.1"},
    {"dhSinglePass-stdDH-sha384kdf", "dhSinglePass-stdDH-sha384kdf-scheme", "1.3.132.1.11.2"},
    {"dhSinglePass-stdDH-sha512kdf", "dhSinglePass-stdDH-sha512kdf-scheme", "1.3.132.1.11.3"},
    {"dhSinglePass-cofactorDH-sha1kdf", "dhSinglePass-cofactorDH-sha1kdf-scheme", "1.3.133.16.840.63.0.3"},
    {"dhSinglePass-cofactorDH-sha224kdf", "dhSinglePass-cofactorDH-sha224kdf-scheme", "1.3.132.1.14.0"},
    {"dhSinglePass-cofactorDH-sha256kdf", "dhSinglePass-cofactorDH-sha256kdf-scheme", "1.3.132.1.14.1"},
    {"dhSinglePass-cofactorDH-sha384kdf", "dhSinglePass-cofactorDH-sha384kdf-scheme", "1.3.132.1.14.2"},
    {"dhSinglePass-cofactorDH-sha512kdf", "dhSinglePass-cofactorDH-sha512kdf-scheme", "1.3.132.1.14.3"},
    {"dhSinglePass-stdDH-hkdf-sha256", "dhSinglePass-stdDH-hkdf-sha256-scheme", "1.2.840.113549.1.9.16.3.19"},
    {"dhSinglePass-stdDH-hkdf-sha384", "dhSinglePass-stdDH-hkdf-sha384-scheme", "1.2.840.113549.1.9.16.3.20"},
    {"dhSinglePass-stdDH-hkdf-sha512", "dhSinglePass-stdDH-hkdf-sha512-scheme", "1.2.840.113549.1.9.16.3.21"},
    {"id-alg-PWRI-KEK", "key encryption with a password", "1.2.840.113549.1.9.16.3.9"},
    {"id-shake256-len", "shake256-len", "2.16.840.1.101.3.4.2.18"},
    {"id-ct-compressedData", "compressed data", "1.2.840.113549.1.9.16.1.9"},
    {"id-ct-authEnvelopedData", "authenticated-enveloped data", "1.2.840.113549.1.9.16.1.23"},
    {"id-ri-ocsp-response", "OCSP response", "1.3.6.1.5.5.7.16.2"},
    {"id-aa-signingCertificateV2", "signing certificate v2", "1.2.840.113549.1.9.16.2.47"},
    {"CMSAlgorithmProtect", "CMS algorithm protection", "1.2.840.113549.1.9.52"},
    {"GOST-94", "GOST R 34.11-94", "1.2.643.2.2.9"},
    {"HMAC-GOST-94", "HMAC of GOST R 34.11-94", "1.2.643.2.2.10"},
    {"GOST-89", "GOST 28147-89", "1.2.643.2.2.21"},
    {"GOST-2012-256", "GOST R 34.11-2012, 256 bits", "1.2.643.7.1.1.2.2"},
    {"GOST-2012-512", "GOST R 34.11-2012, 512 bits", "1.2.643.7.1.1.2.3"},
    {"HMAC-GOST-2012-256", "HMAC of GOST R 34.11-2012, 256 bits", "1.2.643.7.1.1.4.1"},
    {"HMAC-GOST-2012-512", "HMAC of GOST R 34.11-2012, 512 bits", "1.2.643.7.1.1.4.2"},
    {"Magma-CTR-ACPKM", "magma-ctr-acpkm", "1.2.643.7.1.1.5.1.1"},
    {"Kuznyechik-CTR-ACPKM", "kuznyechik-ctr-acpkm", "1.2.643.7.1.1.5.2.1"},
};

std::string lower(std::string text) {
    for (char &c : text) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return text;
}

/// All rows and entries of which a name passes a test. The registry's rows without an identifier that are
/// named "(null)" or nothing do not count.
template <typename Test>
OidMatches all_with_name(Test passes) {
    OidMatches matches;
    for (int32_t i = 1; i < TLX_OID_COUNT; ++i) {
        const OID_ROW *row = OID_LIST(i);
        const bool named = std::string_view(row->short_name) != "(null)";
        if (named && (passes(row->short_name) || passes(row->long_name))) matches.rows.push_back(i);
    }
    for (const OidName &name : kNames) {
        if (passes(name.short_name) || passes(name.long_name)) matches.names.push_back(&name);
    }
    return matches;
}

OidMatches find_exactly(const std::string &text) {
    const auto size = static_cast<uint32_t>(text.size());
    for (const auto look_up : {index_from_oid_string, index_from_sn, index_from_ln}) {
        if (const uint32_t index = look_up(text.data(), size)) return {{static_cast<int32_t>(index)}, {}};
    }
    for (const OidName &name : kNames) {
        if (text == name.dotted || text == name.short_name || text == name.long_name) return {{}, {&name}};
    }
    return {};
}

}  // namespace

const OidName *find_oid_name(const std::string &dotted) {
    const auto *name = std::find_if(std::begin(kNames), std::end(kNames),
                                    [&dotted](const OidName &row) { return row.dotted == dotted; });
    return name == std::end(kNames) ? nullptr : name;
}

OidMatches find_oids(const std::string &text) {
    int32_t index = 0;
    const char *end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, index);
    if (text.empty() || (parsed == end && error == std::errc::result_out_of_range)) return {};
    if (parsed == end) return index < 0 || index >= TLX_OID_COUNT ? OidMatches{} : OidMatches{{index}, {}};

    OidMatches matches = find_exactly(text);
    const std::string wanted = lower(text);
    if (matches.empty()) matches = all_with_name([&](const char *name) { return lower(name) == wanted; });
    if (!matches.empty()) return matches;
    return all_with_name([&](const char *name) { return lower(name).find(wanted) != std::string::npos; });
}

}  // namespace tool
