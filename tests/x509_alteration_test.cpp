// Certificates that somebody altered after they were signed, in ways that do not come back when they are
// written.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <functional>

#include "support/allocation.hpp"
#include "support/x509_files.hpp"
#include "trust/trust_records.hpp"

namespace tlx_test {
namespace {

/// An element that can be taken apart and changed.
struct Tree {
    Octets header;
    std::vector<Tree> children;
    Octets contents;  // of a primitive element; of a constructed one, what is appended to the children

    static std::size_t header_size(const Octets &der, std::size_t at) {
        return der[at + 1] < 0x80 ? 2 : 2U + (der[at + 1] & 0x7FU);
    }
    static Tree parse(const Octets &der, std::size_t &at) {
        Tree tree;
        const std::size_t size = header_size(der, at);
        std::size_t length = size == 2 ? der[at + 1] : 0;
        for (std::size_t i = 2; i < size; ++i)
            length = length << 8 | der[at + i];
        tree.header = {der.begin() + static_cast<std::ptrdiff_t>(at),
                       der.begin() + static_cast<std::ptrdiff_t>(at + size)};
        const std::size_t end = at + size + length;
        at += size;
        if ((tree.tag() & 0x20) == 0) {
            tree.contents = {der.begin() + static_cast<std::ptrdiff_t>(at),
                             der.begin() + static_cast<std::ptrdiff_t>(end)};
            at = end;
        }
        while (at < end)
            tree.children.push_back(parse(der, at));
        return tree;
    }
    [[nodiscard]] std::uint8_t tag() const { return header[0]; }
    /// With lengths as DER wants them, but for a length octet that an alteration left in the header by
    /// itself.
    [[nodiscard]] Octets encode() const {
        Octets inside;
        for (const Tree &child : children) {
            const Octets each = child.encode();
            inside.insert(inside.end(), each.begin(), each.end());
        }
        inside.insert(inside.end(), contents.begin(), contents.end());
        Octets out = {tag()};
        const auto size = inside.size();
        if (header.size() == 2 && header[1] == 0x80) {
            out.push_back(0x80);
            inside.insert(inside.end(), {0, 0});
        } else if (padded_length) {
            out.insert(out.end(),
                       {0x84, 0, 0, static_cast<std::uint8_t>(size >> 8), static_cast<std::uint8_t>(size)});
        } else if (size < 0x80) {
            out.push_back(static_cast<std::uint8_t>(size));
        } else if (size < 0x100) {
            out.insert(out.end(), {0x81, static_cast<std::uint8_t>(size)});
        } else {
            out.insert(out.end(),
                       {0x82, static_cast<std::uint8_t>(size >> 8), static_cast<std::uint8_t>(size)});
        }
        out.insert(out.end(), inside.begin(), inside.end());
        return out;
    }
    bool padded_length = false;

    Tree &at(std::initializer_list<std::size_t> path) {
        Tree *tree = this;
        for (const std::size_t index : path)
            tree = &tree->children.at(index);
        return *tree;
    }
};

Tree element(std::uint8_t tag, Octets contents) {
    return {{tag, 0}, {}, std::move(contents)};
}
const Tree kNull = element(5, {});

using Alteration = std::function<void(Tree &)>;
// Places in a certificate.
constexpr std::initializer_list<std::size_t> kTbs = {0}, kVersion = {0, 0}, kSerial = {0, 1},
                                             kInnerAlgorithm = {0, 2}, kSubject = {0, 5}, kWrapper = {0, 7},
                                             kExtensions = {0, 7, 0}, kOuterAlgorithm = {1}, kSignature = {2};
/// sha1WithRSAEncryption by its other identifier, 1.3.14.3.2.29.
const Octets kAlias = {0x2B, 0x0E, 0x03, 0x02, 0x1D};

Tree &last_rdn(Tree &cert) {
    return cert.at(kSubject).children.back();
}

/// The first extension that is critical.
Tree &critical(Tree &cert) {
    for (Tree &each : cert.at(kExtensions).children)
        if (each.children.size() == 3) return each;
    throw std::out_of_range("no critical extension");
}

struct Case {
    const char *name;
    Alteration alter;
    enum { decodes, comes_back, refused } outcome = decodes;
};
const Case kCases[] = {
    {"second type and value in an RDN",
     [](Tree &c) {
         Tree other = last_rdn(c).at({0});
         other.at({1}).contents = {'a', 'd', 'm', 'i', 'n'};
         last_rdn(c).children.push_back(other);
     }},
    {"third member in a type and value", [](Tree &c) { last_rdn(c).at({0}).children.push_back(kNull); }},
    {"2^32 added to an arc of an extension's identifier",
     [](Tree &c) {
         c.at(kExtensions).at({0, 0}).contents = {0x55, 0x1D, 0x90, 0x80, 0x80, 0x80, 0x23};
     },
     Case::refused},
    {"padded arc",
     [](Tree &c) {
         c.at(kExtensions).at({0, 0}).contents = {0x55, 0x1D, 0x80, 0x23};
     }},
    {"second extensions wrapper", [](Tree &c) { c.at(kTbs).children.push_back(c.at(kWrapper)); }},
    {"second SEQUENCE in the wrapper", [](Tree &c) { c.at(kWrapper).children.push_back(c.at(kExtensions)); }},
    {"padded serial number",
     [](Tree &c) { c.at(kSerial).contents.insert(c.at(kSerial).contents.begin(), 0); }},
    {"length with leading zeros", [](Tree &c) { c.padded_length = true; }},
    {"indefinite length",
     [](Tree &c) {
         c.at(kTbs).header = {0x30, 0x80};
     }},
    {"indefinite length of the whole",
     [](Tree &c) {
         c.header = {0x30, 0x80};
     }},
    {"another class", [](Tree &c) { c.at(kSerial).header[0] = 0x82; }},
    {"BOOLEAN 01 for FF", [](Tree &c) { critical(c).at({1}).contents = {1}; }},
    {"extra member in the version wrapper", [](Tree &c) { c.at(kVersion).children.push_back(kNull); }},
    {"parameters of the inner algorithm", [](Tree &c) { c.at(kInnerAlgorithm).at({1}).header[0] = 0x04; }},
    {"parameters of the outer algorithm", [](Tree &c) { c.at(kOuterAlgorithm).children.pop_back(); }},
    {"element after the signature", [](Tree &c) { c.children.push_back(kNull); }},
    {"00 00 inside the certificate",
     [](Tree &c) {
         c.contents = {0, 0};
     }},
    {"00 00 inside the signed part",
     [](Tree &c) {
         c.at(kTbs).contents = {0, 0};
     }},
    {"unused bits of the signature", [](Tree &c) { c.at(kSignature).contents[0] = 4; }, Case::comes_back},
    {"another outer algorithm", [](Tree &c) { c.at(kOuterAlgorithm).at({0}).contents = kAlias; },
     Case::comes_back},
};

Octets altered(const Octets &der, const Alteration &alter) {
    std::size_t at = 0;
    Tree tree = Tree::parse(der, at);
    alter(tree);
    return tree.encode();
}

Octets chain_file(const std::string &name) {
    return read_pem_file(TLX_TEST_DATA "/chains/" + name).at(0);
}

/// The status of building and validating a path from the octets of three certificates.
std::uint32_t path_status(const Octets &root, const Octets &ca, const Octets &user) {
    const OwnedCert certs[] = {certificate_of(root), certificate_of(ca), certificate_of(user)};
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

TEST(AlteredCertificate, DoesNotVerify) {
    const LeakCheck leaks;
    const Octets root = chain_file("root.pem");
    const Octets ca = chain_file("ca.pem");
    const Octets user = chain_file("user.pem");
    ASSERT_EQ(path_status(root, ca, user), 0U);
    ASSERT_EQ(altered(user, [](Tree &) {}), user);
    const OwnedCert issuer = certificate_of(ca);
    for (const Case &c : kCases) {
        SCOPED_TRACE(c.name);
        const Octets der = altered(user, c.alter);
        const OwnedCert cert = certificate_of(der);
        ASSERT_EQ(cert == nullptr, c.outcome == Case::refused);
        if (!cert) continue;
        std::uint32_t length = 0;
        const std::uint8_t *received = get_X509_received(cert.get(), &length);
        EXPECT_EQ(Octets(received, received + length), der);
        EXPECT_EQ(check_X509_received(cert.get()), c.outcome == Case::comes_back ? 0U : 0x46300048U);
        EXPECT_EQ(verify_SIG_X509_CERT(cert.get(), get_X509_SPKI(issuer.get())), TLX_RSA_BAD_SIGNATURE);
        EXPECT_EQ(path_status(root, ca, der), 0x53100054U);
    }
}

TEST(AlteredCertificate, OfAnAuthorityDoesNotVerify) {
    const Octets root = chain_file("root.pem");
    const Octets ca = chain_file("ca.pem");
    const Octets user = chain_file("user.pem");
    for (const Alteration &alter : {kCases[0].alter, kCases[6].alter, kCases[11].alter})
        EXPECT_EQ(path_status(root, altered(ca, alter), user), 0x53100054U);
}

// What was received counts until somebody changes the certificate through a setter or signs it.
TEST(AlteredCertificate, SettersDropWhatWasReceived) {
    const LeakCheck leaks;
    const OwnedCert cert = certificate_of(chain_file("user.pem"));
    const OwnedCert issuer = certificate_of(chain_file("ca.pem"));
    const OwnedCert copy(dup_X509_CERT(cert.get()));
    EXPECT_EQ(copy->receivedLength, cert->receivedLength);
    EXPECT_NE(copy->received, cert->received);
    copy->tbsCertificate->version = 1;
    EXPECT_EQ(check_X509_received(copy.get()), 0x46300048U) << "a change behind the setters' back";
    EXPECT_EQ(set_X509_version(copy.get(), 2), 0U);
    EXPECT_EQ(get_X509_received(copy.get(), nullptr), nullptr);
    EXPECT_EQ(check_X509_received(copy.get()), 0U);
    EXPECT_EQ(verify_SIG_X509_CERT(copy.get(), get_X509_SPKI(issuer.get())), 0U);
    EXPECT_EQ(check_X509_received(nullptr), 0x46300049U);
}

}  // namespace
}  // namespace tlx_test
