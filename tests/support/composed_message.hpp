// Signed messages of CMS that are composed of parts in the notation of der_text.hpp, with signatures of
// libcrypto.
#pragma once

#include <algorithm>
#include <map>
#include <sstream>
#include <string>

#include "support/crypto_values.hpp"
#include "support/der_text.hpp"
#include "support/openssl_peer.hpp"
#include "support/rows.hpp"

namespace tlx_test {

/// How somebody signs: the name of the key, libcrypto's scheme and digest, and the algorithm identifiers.
struct SigningScheme {
    std::string key;
    openssl::RsaScheme scheme;
    std::string digest;
    std::string digest_algorithm, signature_algorithm;
};

inline const SigningScheme &signing_scheme(const std::string &name) {
    static const std::map<std::string, SigningScheme> kSchemes = {
        {"pss",
         {"rsa",
          {"SHA384", "SHA384", 48},
          "SHA384",
          "30{06:608648016503040202}",
          "30{06:2A864886F70D01010A 30{A0{30{06:608648016503040202}} A1{30{06:2A864886F70D010108 "
          "30{06:608648016503040202}}} A2{02:30}}}"}},
        {"p256", {"p256", {"SHA256", ""}, "SHA256", "30{06:608648016503040201}", "30{06:2A8648CE3D040302}"}},
        {"p256/sha3",
         {"p256", {"SHA3-256", ""}, "SHA3-256", "30{06:608648016503040208}", "30{06:60864801650304030A}"}},
        {"p384/sha3",
         {"p384", {"SHA3-384", ""}, "SHA3-384", "30{06:608648016503040209}", "30{06:60864801650304030B}"}},
        {"p521/sha3",
         {"p521", {"SHA3-512", ""}, "SHA3-512", "30{06:60864801650304020A}", "30{06:60864801650304030C}"}},
        {"ed25519", {"ed25519", {}, "SHA512", "30{06:608648016503040203}", "30{06:2B6570}"}},
        {"ed448", {"ed448", {}, "SHAKE256", "30{06:60864801650304020C}", "30{06:2B6571}"}},
    };
    return kSchemes.at(name);
}

/// Names, each with a "$" before it, and the text that they stand for.
using Parts = std::map<std::string, std::string>;

/// A text with what names stand for in their place. A longer name comes before one that it begins with.
inline std::string expanded(std::string text, const Parts &parts) {
    for (std::size_t at = 0; (at = text.find('$')) != std::string::npos;) {
        const auto part = std::find_if(parts.rbegin(), parts.rend(), [&](const auto &each) {
            return text.compare(at, each.first.size(), each.first) == 0;
        });
        if (part == parts.rend()) return "no name " + text.substr(at);
        text.replace(at, part->first.size(), part->second);
    }
    return text;
}

/// The parts of a message of "Content" and a line feed with one signer, named by its key identifier. What
/// $covered stands for is signed.
inline Parts message_parts(const SigningScheme &scheme, const Octets &certificate, const Octets &content) {
    const std::string cert = digits(certificate);
    const std::size_t extension = cert.find("0603551D0E04") + 16;  // the string in the extension
    const std::size_t size = 2 * hex(cert.substr(extension, 2))[0];
    return {
        {"$message", "30{$signedData A0{30{02:03 31{$digests} $content A0{$certificates} 31{$signers}}}}"},
        {"$signedData", "06:2A864886F70D010702"},
        {"$data", "06:2A864886F70D010701"},
        {"$digests", "$digest"},
        {"$digest", scheme.digest_algorithm},
        {"$content", "30{$data A0{04:$octets}}"},
        {"$octets", digits(content)},
        {"$certificates", "$certificate"},
        {"$certificate", "=" + cert},
        {"$signers", "30{02:03 $sid $digest $attributes $algorithm 04:$signature $unsigned}"},
        {"$sid", "80:" + cert.substr(extension + 2, size)},
        {"$attributes", "A0{$signed}"},
        {"$covered", "31{$signed}"},
        {"$signed", "$type $hash"},
        {"$type", "30{06:2A864886F70D010903 31{$data}}"},
        {"$hash", "30{06:2A864886F70D010904 31{04:$value}}"},
        {"$value", digits(openssl::digest(scheme.digest, content))},
        {"$algorithm", scheme.signature_algorithm},
        {"$unsigned", ""},
    };
}

/// Changes parts by a text such as "$signed=$type; $octets=00", and signs.
inline Octets compose_message(Parts parts, const std::string &changes, const SigningScheme &scheme,
                              const Octets &private_key) {
    std::istringstream all(changes);
    for (std::string change; std::getline(all, change, ';');) {
        const std::string text = trimmed(change);
        const std::size_t end = text.find('=');
        parts[text.substr(0, end)] = text.substr(end + 1);
    }
    const Octets covered = der(expanded("$covered", parts));
    parts["$signature"] = digits(openssl::sign(private_key, scheme.scheme, covered));
    return der(expanded("$message", parts));
}

}  // namespace tlx_test
