// Signature values of ECDSA and KCDSA, and certificates that somebody altered after they were signed, in ways
// that do not come back when they are written.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/allocation.hpp"
#include "support/der_text.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"
#include "support/x509_files.hpp"
#include "trust/trust_records.hpp"

namespace tlx_test {
namespace {

Octets chain_file(const std::string &name) {
    return read_pem_file(TLX_TEST_DATA "/chains/" + name + ".pem").at(0);
}

/// Elements in the notation of der_text.hpp.
std::string text_of(const std::uint8_t *at, const std::uint8_t *end) {
    std::string text;
    while (at < end) {
        const std::uint8_t tag = *at++;
        std::size_t length = *at++;
        for (std::size_t octets = length < 0x80 ? 0 : std::exchange(length, 0) & 0x7F; octets > 0; --octets)
            length = length << 8 | *at++;
        std::string contents = (tag & 0x20) != 0 ? text_of(at, at + length) : hex_of(at, length);
        if ((tag & 0x20) == 0) std::erase(contents, ' ');
        text += (text.empty() ? "" : " ") + hex_of(&tag, 1);
        text += (tag & 0x20) != 0 ? "{" + contents + "}" : ":" + contents;
        at += length;
    }
    return text;
}

/// The certificate with the changes of a row.
Octets altered(const Octets &original, const Row &row) {
    std::string text = text_of(original.data(), original.data() + original.size());
    for (std::size_t i = 1; i <= row.count(); ++i) {
        const std::size_t arrow = row[i].find(" => ");
        const std::string from = row[i].substr(0, arrow);
        EXPECT_EQ(text.find(from), text.rfind(from)) << "one place";
        text.replace(text.find(from), from.size(), row[i].substr(arrow + 4));
    }
    return der(text);
}

Octets received_octets(const X509_CERT *cert) {
    std::uint8_t *octets = nullptr;
    const std::uint32_t length = get_X509_received(cert, &octets);
    const tlx::OwnedOctets<std::uint8_t> owner(octets);
    return {octets, octets + length};
}

/// The status of building and validating a path from the octets of two certificates under the root.
std::uint32_t path_status(const Octets &ca, const Octets &user) {
    const OwnedCert certs[] = {certificate_of(chain_file("root")), certificate_of(ca), certificate_of(user)};
    const tlx::Owned<TRUST_ANCHOR> anchor(create_TRUST_ANCHOR_from_X509_CERT(certs[0].get()));
    const std::unique_ptr<TRUST_ANCHORS, tlx::FreeWith<free_TRUST_ANCHORS>> anchors(new_TRUST_ANCHORS());
    const tlx::OwnedCertificates pool(new_X509_CERTIFICATES());
    EXPECT_EQ(add_TRUST_ANCHORS(anchors.get(), anchor.get()), 0U);
    for (const OwnedCert *cert : {&certs[1], &certs[0]})
        EXPECT_EQ(add_X509_CERTIFICATES(pool.get(), cert->get()), 0U);
    X509_CERTIFICATES *path = nullptr;
    std::uint32_t status = build_certPath(pool.get(), anchors.get(), certs[2].get(), &path);
    const tlx::OwnedCertificates owner(path);
    node_LIST *policies = nullptr;
    if (status == 0) status = validate_certpath(path, nullptr, &policies);
    free_node_LIST(policies);
    return status;
}

/// The statuses of what was received, of the signature and of the path; or that the certificate is refused.
std::string statuses(const Row &row) {
    const bool is_user = row[0] == "user";
    const Octets der = altered(chain_file(row[0]), row);
    const OwnedCert cert = certificate_of(der);
    if (!cert) return "refused";
    EXPECT_EQ(received_octets(cert.get()), der);
    const OwnedCert issuer = certificate_of(chain_file(is_user ? "ca" : "root"));
    const std::uint32_t path =
        is_user ? path_status(chain_file("ca"), der) : path_status(der, chain_file("user"));
    return status_text(check_X509_received(cert.get())) + " " +
           status_text(verify_SIG_X509_CERT(cert.get(), get_X509_SPKI(issuer.get()))) + " " +
           status_text(path);
}

TEST(AlteredCertificate, DoesNotVerify) {
    expect_rows("x509_alteration.txt", {{"user", {statuses}}, {"ca", {statuses}}});
}

// What was received counts until somebody changes the certificate through a setter or signs it.
TEST(AlteredCertificate, SettersDropWhatWasReceived) {
    const LeakCheck leaks;
    const OwnedCert cert = certificate_of(chain_file("user"));
    const OwnedCert issuer = certificate_of(chain_file("ca"));
    const OwnedCert copy(dup_X509_CERT(cert.get()));
    EXPECT_EQ(received_octets(copy.get()), chain_file("user"));
    copy->tbsCertificate->version = 1;
    EXPECT_EQ(check_X509_received(copy.get()), 0x46300048U) << "a change behind the setters' back";
    EXPECT_EQ(set_X509_version(copy.get(), 2), 0U);
    EXPECT_EQ(received_octets(copy.get()), Octets());
    EXPECT_EQ(check_X509_received(copy.get()), 0U);
    EXPECT_EQ(verify_SIG_X509_CERT(copy.get(), get_X509_SPKI(issuer.get())), 0U);
    EXPECT_EQ(check_X509_received(nullptr), 0x46300049U);
}

std::int32_t size_of(const Octets &octets) {
    return static_cast<std::int32_t>(octets.size());
}

/// The octets, which are freed; the status for none.
std::string taken(std::uint8_t *octets, std::uint32_t size, std::uint32_t status) {
    const tlx::OwnedOctets<std::uint8_t> owner(octets);
    return octets != nullptr ? hex_of(octets, size) : status_text(status);
}

/// Encodes r and s in hexadecimal.
template <typename Encode>
std::string encoded(const std::string &r_digits, const std::string &s_digits, Encode encode) {
    const Octets r = hex(r_digits);
    const Octets s = hex(s_digits);
    std::uint8_t *out = nullptr;
    std::uint32_t len = 0;
    const std::uint32_t status = encode(&out, &len, r.data(), size_of(r), s.data(), size_of(s));
    return taken(out, len, status);
}

Operation encode_kcdsa(decltype(&encode_KCDSASignatureValue) encode) {
    const auto with_status = [encode](std::uint8_t **out, std::uint32_t *len, auto... numbers) {
        return *len = encode(out, numbers...);
    };
    return {[with_status](const Row &row) { return encoded(row[1], row[2], with_status); }, {"4F00003C"}};
}

/// "r, s", or the status.
std::string decoded(decltype(&decode_KCDSASignatureValue) decode, const std::string &der) {
    const Node node = node_of(der);
    std::uint8_t *r = nullptr;
    std::uint8_t *s = nullptr;
    std::uint32_t r_len = 0;
    std::uint32_t s_len = 0;
    const std::uint32_t status = decode(&r, &r_len, &s, &s_len, node.get());
    EXPECT_EQ(r != nullptr && s != nullptr, status == 0);
    const std::string first = taken(r, r_len, status);
    const std::string second = taken(s, s_len, status);
    return status == 0 ? first + ", " + second : first;
}

Operation decode(decltype(&decode_KCDSASignatureValue) function, const char *no_memory, const char *no_node) {
    return {[function](const Row &row) { return decoded(function, row[1]); }, {no_memory, no_node}};
}

TEST(SignatureValue, Rows) {
    const auto encode = [](const Row &row) { return encoded(row[1], row[2], encode_ECDSASignatureValue); };
    expect_rows("signature_value.txt",
                {{"encode ECDSA", {encode, {"462E003C", "462E0104"}}},
                 {"encode KCDSA", encode_kcdsa(encode_KCDSASignatureValue)},
                 {"encode KCDSA, old name", encode_kcdsa(encode_KCDSASignatrueValue)},
                 {"decode ECDSA", decode(decode_ECDSASignatureValue, "462F0104", "462F0049")},
                 {"decode KCDSA", decode(decode_KCDSASignatureValue, "00000001", "00000001")},
                 {"decode KCDSA, old name", decode(decode_KCDSASignatrueValue, "00000001", "00000001")}});
    std::uint8_t *out = nullptr;
    const std::uint8_t octet = 1;
    EXPECT_EQ(encode_KCDSASignatureValue(&out, &octet, -1, &octet, 1), 0x4F00002BU);
}

}  // namespace
}  // namespace tlx_test
