// Reading of certificates in DER alone, comparison of names, keys and algorithms, as verification sees them.

#include "support/allocation.hpp"
#include "support/der_text.hpp"
#include "support/rows.hpp"
#include "verify/certificate_view.hpp"
#include "verify/name_match.hpp"
#include "verify/public_key.hpp"

namespace tlx_test {
namespace {

/// A certificate of version 3 with five extensions; the numbers in it are what the rows change.
const std::string kCertificate =
    "30{30{A0{02:02} 02:05 30{06:2B6570} 30{31{30{06:550403 0C:41}}}"
    " 30{17:3235303130323033303430355A 18:32303530303130323033303430355A}"
    " 30{31{30{06:550403 13:42}}} 30{30{06:2B6570} 03:000102}"
    " A3{30{30{06:551D0E 04{04:AABB}} 30{06:551D0F 01:FF 04{03:0106}}"
    " 30{06:551D13 01:FF 04{30{01:FF 02:03}}} 30{06:551D23 04{30{80:CCDD}}}"
    " 30{06:551D24 01:FF 04{30{80:01 81:02}}}}}} 30{06:2B6570} 03:00AABB}";

std::string name_of(tlx::Rule rule) {
    switch (rule) {
#define RULE(name, status, section, text) \
    case tlx::Rule::name:                 \
        return #name;
#include "verify/rules.inc"
#undef RULE
        default:
            return "none";
    }
}

/// The first rule that the certificate above breaks with a part of it changed.
std::string read_changed(const Row &row) {
    std::string text = kCertificate;
    if (!row[1].empty()) text.replace(text.find(row[1]), row[1].size(), row[2]);
    const Octets octets = der(text);
    tlx::CertificateView view;
    return name_of(tlx::read_certificate(octets, row.number(3), view));
}

std::string compare(const Row &row) {
    const Octets a = der(row[1]);
    const Octets b = der(row[2]);
    if (!tlx::is_name(a) || !tlx::is_name(b)) return "no name";
    const tlx::SipHash::Key key = {{1, 2}};
    tlx::SipHash hashes[2] = {tlx::SipHash(key), tlx::SipHash(key)};
    tlx::hash_name(hashes[0], key, a);
    tlx::hash_name(hashes[1], key, b);
    EXPECT_EQ(tlx::are_equal_names(a, b), tlx::are_equal_names(b, a));
    EXPECT_EQ(hashes[0].value() == hashes[1].value(), tlx::are_equal_names(a, b));
    return tlx::are_equal_names(a, b) ? "equal" : tlx::is_name_within(a, b) ? "within" : "different";
}

/// What an AlgorithmIdentifier stands for: the digest, and for PSS those of the mask and the salt.
std::string read_signature_algorithm(const Row &row) {
    const Octets octets = der(row[1]);
    tlx::StrictCursor in(octets);
    tlx::AlgorithmView view;
    tlx::SignatureAlgorithm algorithm;
    if (!tlx::read_algorithm(in, view)) return "none";
    const tlx::Rule rule = tlx::read_signature_algorithm(view, algorithm);
    if (rule != tlx::Rule::kNone) return name_of(rule);
    std::string text = std::to_string(static_cast<unsigned>(algorithm.kind)) + " " +
                       status_text(algorithm.curve != 0 ? algorithm.curve : algorithm.digest_id);
    if (algorithm.is_pss)
        text += " " + status_text(algorithm.mgf_digest_id) + " " + std::to_string(algorithm.salt_length);
    return text;
}

/// What becomes of a SubjectPublicKeyInfo: kind and bits, or the rule.
std::string read_key(const Row &row) {
    const Octets algorithm_octets = der(row[1]);
    const Octets octets = der(row[2]);
    tlx::StrictCursor in(algorithm_octets);
    tlx::AlgorithmView algorithm;
    if (!tlx::read_algorithm(in, algorithm)) return "none";
    tlx::PublicKey key;
    const tlx::Rule rule = tlx::make_key(algorithm, octets, key);
    if (rule != tlx::Rule::kNone) return name_of(rule);
    const tlx::Rule checked = tlx::check_key(key);
    return std::to_string(static_cast<unsigned>(key.kind)) + " " + std::to_string(key.bits) + " " +
           name_of(checked);
}

TEST(VerifyReader, Rows) {
    expect_rows("verify_reader.txt", {{"certificate", {read_changed}},
                                      {"names", {compare}},
                                      {"algorithm", {read_signature_algorithm}},
                                      {"key", {read_key, {"kNoMemory"}}}});
}

TEST(VerifyReader, ViewsHoldEveryMember) {
    const Octets octets = der(kCertificate);
    tlx::CertificateView view;
    ASSERT_EQ(tlx::read_certificate(octets, 0, view), tlx::Rule::kNone);
    const auto text = [](tlx::Bytes bytes) { return hex_of(bytes.data(), bytes.size()); };
    EXPECT_EQ(view.version, 3U);
    EXPECT_EQ(text(view.serial) + "; " + text(view.signature) + "; " + text(view.key), "05; AA BB; 01 02");
    EXPECT_EQ(text(view.subject), "31 0A 30 08 06 03 55 04 03 13 01 42");
    EXPECT_EQ(view.not_before, 1735787045) << "2025-01-02 03:04:05";
    EXPECT_EQ(view.not_after, 2524705445) << "2050-01-02 03:04:05";
    EXPECT_EQ(text(view.subject_key) + "; " + text(view.authority_key), "AA BB; CC DD");
    EXPECT_TRUE(view.is_ca);
    EXPECT_EQ(view.path_length, 3U);
    EXPECT_EQ(view.key_usage, tlx::kKeyCertSign | tlx::kCrlSign);
    EXPECT_EQ(view.require_explicit_policy, 1U);
    EXPECT_EQ(view.inhibit_policy_mapping, 2U);
    EXPECT_EQ(view.inhibit_any_policy, tlx::kUnlimited);
    EXPECT_TRUE(view.extensions[tlx::kPolicyConstraints].critical);
    EXPECT_FALSE(view.extensions[tlx::kAuthorityKeyIdentifier].critical);
}

// Every cut and every changed octet is refused or read within its bounds, which the sanitizers watch.
TEST(VerifyReader, ReadsNothingBeyondAnyEnd) {
    const Octets whole = der(kCertificate);
    tlx::CertificateView view;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Octets cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_NE(tlx::read_certificate(cut, 0, view), tlx::Rule::kNone) << size;
    }
    for (std::size_t i = 0; i < whole.size(); ++i) {
        for (const std::uint8_t change :
             {std::uint8_t{0x01}, std::uint8_t{0x1F}, std::uint8_t{0x20}, std::uint8_t{0x80}}) {
            Octets changed = whole;
            changed[i] ^= change;
            if (tlx::read_certificate(changed, 0, view) != tlx::Rule::kNone) continue;
            EXPECT_TRUE(tlx::is_name_within(view.issuer, {}));
            EXPECT_EQ(view.whole.size(), whole.size());
        }
    }
}

}  // namespace
}  // namespace tlx_test
