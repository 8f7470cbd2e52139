// What the openssl program made: taken apart and put together again in DER, read and written in BER.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/octets.hpp"

namespace tlx_test {
namespace {

/// Appends a value that getDERChildAt returned, and frees it.
std::uint32_t append_value(ASN1_UNIT *seq, std::uint32_t tag, void *value) {
    if (tag == 1 || tag == 5) {
        const tlx::OwnedOctets<void> owner(value);
        return addToDERSequence(seq, tag, tag == 5 ? nullptr : value, tag == 5 ? 0 : 1);
    }
    if (tag == 2 || tag == 10) {
        const Number number(static_cast<BIGINT *>(value));
        return addToDERSequence(seq, tag, value, get_BIGINT_der_length(number.get()));
    }
    const String string(static_cast<ASN1_STRING *>(value));
    return addToDERSequence(seq, tag, value, static_cast<std::uint32_t>(string->length));
}

/// Takes a container apart into typed values and puts them together again in DER. Null when something is
/// missing or refused.
Node rebuilt(const ASN1_UNIT *node) {
    Node copy = new_node();
    std::uint32_t cursor = 0;
    const std::uint32_t count = getSequenceChildNum(node);
    if (count == 0) return Node(dup_ASN1_UNIT(node));
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t type = getChildType(node, i);
        const bool container = (type & 0x20) != 0;
        const std::uint32_t expected = container ? (type == 0x31 ? 17 : 16) : type < 0x20 ? type : 32;
        void *child = getBERChildOffset(node, i, expected, &cursor);
        if (child == nullptr) return nullptr;
        if (!container) {
            if (append_value(copy.get(), expected, child) != 0) return nullptr;
            continue;
        }
        const Node inner = rebuilt(Node(static_cast<ASN1_UNIT *>(child)).get());
        if (addToDERSequence(copy.get(), 16, inner.get(), 0) != 0) return nullptr;
    }
    *copy->tag = *node->tag;
    return copy;
}

Octets encoding_of(const ASN1_UNIT *node) {
    std::uint8_t *octets = nullptr;
    const std::uint32_t size = ASN1_to_binary(node, &octets);
    if (size == 0xFFFFFFFF) return {};
    const tlx::OwnedOctets<std::uint8_t> owner(octets);
    return {octets, octets + size};
}

class OpensslOutput : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!folder_.succeeds("openssl version")) GTEST_SKIP() << "no openssl program";
    }

    /// The element in the file "out"; no part of a short one is read.
    Octets out() const {
        const std::string text = folder_.read("out");
        const Octets octets(text.begin(), text.end());
        const Node node(decodeToDERSequence_n(octets.data(), static_cast<std::uint32_t>(octets.size())));
        EXPECT_EQ(encoding_of(node.get()), octets);
        for (std::size_t size = 0; size < std::min<std::size_t>(octets.size(), 2000); ++size) {
            // A copy of its own, so that a read past its end is one past the block.
            const Octets prefix(octets.begin(), octets.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_EQ(decodeToDERSequence_n(prefix.data(), static_cast<std::uint32_t>(size)), nullptr)
                << size;
        }
        return octets;
    }

    void expect_rebuilt() const {
        const LeakCheck leaks;
        const Octets octets = out();
        const Node node(decodeToDERSequence(octets.data()));
        EXPECT_EQ(encoding_of(rebuilt(node.get()).get()), octets);
    }

    const CommandFolder folder_;
};

TEST_F(OpensslOutput, OfGeneratedStructures) {
    folder_.write("conf", R"(asn1 = SEQUENCE:top
[top]
a = BOOLEAN:TRUE
b = INTEGER:0x00FFEEDDCCBBAA99887766554433221100
c = ENUMERATED:3
d = FORMAT:HEX,BITSTRING:A0B0
e = FORMAT:HEX,OCTETSTRING:00FF
f = NULL
g = OID:2.5.4.999.4294967
h = UTF8:text
i = PRINTABLE:text
j = T61:text
k = IA5:text
l = FORMAT:UTF8,BMP:text
m = UTC:250102030405Z
n = GENTIME:20250102030405Z
o = IMPLICIT:1,INTEGER:5
q = EXPLICIT:30,SEQWRAP,SETWRAP,OCTWRAP,BITWRAP,INTEGER:70000
r = SET:members
s = SEQUENCE:none
[members]
a = INTEGER:127
b = INTEGER:128
[none]
)");
    ASSERT_TRUE(folder_.succeeds("openssl asn1parse -noout -genconf conf -out out"));
    expect_rebuilt();
}

TEST_F(OpensslOutput, OfEveryInstalledCertificate) {
    const std::string bundle = "/etc/ssl/certs/ca-certificates.crt";
    if (!folder_.succeeds("test -e " + bundle)) GTEST_SKIP() << "no " << bundle;
    // One structure that holds them all.
    ASSERT_TRUE(folder_.succeeds("openssl crl2pkcs7 -nocrl -certfile " + bundle + " -outform DER -out out"));
    expect_rebuilt();
}

TEST_F(OpensslOutput, InIndefiniteLengths) {
    folder_.write("text", std::string(10000, 'x'));
    ASSERT_TRUE(folder_.succeeds("openssl cms -data_create -stream -binary -in text -outform DER -out out"));
    const Octets octets = out();
    EXPECT_EQ(hex_of(octets.data(), 2), "30 80");
    const Node node(decodeToDERSequence(octets.data()));
    EXPECT_EQ(getSequenceChildNum(node.get()), 2U);
    EXPECT_EQ(getChildType(node.get(), 1), 0xA0U);
}

}  // namespace
}  // namespace tlx_test
