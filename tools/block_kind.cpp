#include "block_kind.hpp"

#include <algorithm>

#include "element.hpp"

namespace tool {

namespace {

/// The first identifier octets inside a SEQUENCE, in hexadecimal.
struct Shape {
    std::string_view tags;
    bool is_all;  ///< whether nothing may follow
    Kind kind;
};

/// Certificate, CertificationRequest and CertificateList are alike outside. SubjectPublicKeyInfo (RFC 5280),
/// RSAPublicKey and RSAPrivateKey (RFC 8017), ECPrivateKey with parameters (RFC 5915), PrivateKeyInfo and
/// EncryptedPrivateKeyInfo (RFC 5208), PFX with and without MacData (RFC 7292), ContentInfo (RFC 2315),
/// KISA's list of tokens, CertificateTrustList with a version and without, OCSPRequest and OCSPResponse (RFC
/// 6960). Time stamps have shapes of others: is_timestamp_request() and is_timestamp_response() tell them.
constexpr Shape kOuterShapes[] = {
    {"303003", true, Kind::kCertificate},  {"3003", true, Kind::kPublicKeyInfo},
    {"0202", true, Kind::kRsaPublic},      {"020202020202020202", false, Kind::kRsaPrivate},
    {"0204A0", false, Kind::kEcPrivate},   {"023004", false, Kind::kPkcs8},
    {"3004", true, Kind::kEncryptedPkcs8}, {"023030", true, Kind::kPkcs12},
    {"0230", true, Kind::kPkcs12},         {"06A0", true, Kind::kMessage},
    {"30303003", true, Kind::kTokenList},  {"30303004", true, Kind::kTokenList},
    {"300217", false, Kind::kTrustList},   {"300218", false, Kind::kTrustList},
    {"A0300217", false, Kind::kTrustList}, {"A0300218", false, Kind::kTrustList},
    {"30", true, Kind::kOcspRequest},      {"30A0", true, Kind::kOcspRequest},
    {"0A", true, Kind::kOcspResponse},     {"0AA0", true, Kind::kOcspResponse},
};

/// TBSCertificate with a version and without, TBSCertList without a version and with one, and
/// CertificationRequestInfo.
constexpr Shape kInnerShapes[] = {
    {"A002303030", false, Kind::kCertificate},  {"0230303030", false, Kind::kCertificate},
    {"303017", false, Kind::kRevocationList},   {"303018", false, Kind::kRevocationList},
    {"02303017", false, Kind::kRevocationList}, {"02303018", false, Kind::kRevocationList},
    {"023030A0", true, Kind::kRequest},         {"023030", true, Kind::kRequest},
};

/// In the order of Kind.
constexpr const char *kNames[] = {"a certificate",
                                  "a certificate request",
                                  "a certificate revocation list",
                                  "a public key",
                                  "an RSA public key",
                                  "an RSA private key",
                                  "an EC private key",
                                  "a PKCS #8 private key",
                                  "an encrypted PKCS #8 private key",
                                  "a PKCS #12 file",
                                  "a PKCS #7 or CMS message",
                                  "a certificate trust list",
                                  "a list of hardware tokens",
                                  "an OCSP request",
                                  "an OCSP response",
                                  "a time stamp request",
                                  "a time stamp response",
                                  ""};

struct Label {
    std::string_view text;
    Kind kind;
};

constexpr Label kLabels[] = {
    {"CERTIFICATE", Kind::kCertificate},
    {"X509 CERTIFICATE", Kind::kCertificate},
    {"CERTIFICATE REQUEST", Kind::kRequest},
    {"NEW CERTIFICATE REQUEST", Kind::kRequest},
    {"X509 CRL", Kind::kRevocationList},
    {"PUBLIC KEY", Kind::kPublicKeyInfo},
    {"RSA PUBLIC KEY", Kind::kRsaPublic},
    {"RSA PRIVATE KEY", Kind::kRsaPrivate},
    {"EC PRIVATE KEY", Kind::kEcPrivate},
    {"PRIVATE KEY", Kind::kPkcs8},
    {"ENCRYPTED PRIVATE KEY", Kind::kEncryptedPkcs8},
    {"PKCS7", Kind::kMessage},
    {"CMS", Kind::kMessage},
    {"OCSP REQUEST", Kind::kOcspRequest},
    {"OCSP RESPONSE", Kind::kOcspResponse},
};

/// The identifier octets in an element.
std::string tags_in(Octets element) {
    constexpr uint32_t kMost = 10;
    const Node node(decodeToDERSequence_n(element.data(), static_cast<uint32_t>(element.size())));
    std::string tags;
    for (uint32_t i = 0; i < std::min(getSequenceChildNum(node.get()), kMost); ++i) {
        const auto tag = static_cast<uint8_t>(getChildType(node.get(), i));
        tags += hex({&tag, 1});
    }
    return tags;
}

template <std::size_t N>
Kind kind_by(const Shape (&shapes)[N], const std::string &tags) {
    const auto *shape = std::find_if(shapes, shapes + N, [&tags](const Shape &row) {
        return row.is_all ? tags == row.tags : tags.starts_with(row.tags);
    });
    return shape == shapes + N ? Kind::kOther : shape->kind;
}

/// TimeStampReq is a version and a MessageImprint, which is AlgorithmIdentifier and OCTET STRING; a PFX has a
/// ContentInfo there.
bool is_timestamp_request(Octets element, const std::string &tags) {
    return tags.starts_with("0230") && tags_in(child_of(element, 1)) == "3004";
}

/// TimeStampResp is a PKIStatusInfo, which begins with an INTEGER, and perhaps a ContentInfo; OCSPRequest
/// begins with a TBSRequest, which has none.
bool is_timestamp_response(Octets element, const std::string &tags) {
    if (tags != "30" && tags != "3030") return false;
    const bool has_token = tags != "30";
    return tags_in(child_of(element, 0)).starts_with("02") &&
           (!has_token || tags_in(child_of(element, 1)) == "06A0");
}

}  // namespace

Kind kind_of(const Block &block) {
    const std::string tags = tags_in(block.octets);
    const Kind kind = kind_by(kOuterShapes, tags);
    if (is_timestamp_request(block.octets, tags)) return Kind::kTimestampRequest;
    if (is_timestamp_response(block.octets, tags)) return Kind::kTimestampResponse;
    if (kind != Kind::kCertificate) return kind;
    const Kind inner_kind = kind_by(kInnerShapes, tags_in(child_of(block.octets, 0)));
    return inner_kind == Kind::kOther ? kind : inner_kind;
}

std::string kind_name(Kind kind) {
    return kNames[static_cast<std::size_t>(kind)];
}

std::string block_name(const Block &block) {
    return block.label.empty() ? "the file" : "the " + block.label;
}

bool is_wrong_label(const std::string &label, Kind kind) {
    const auto *row = std::find_if(std::begin(kLabels), std::end(kLabels),
                                   [&label](const Label &known) { return known.text == label; });
    return row != std::end(kLabels) && row->kind != kind;
}

}  // namespace tool
