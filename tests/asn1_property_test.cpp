// What the openssl program made: taken apart and put together again in DER, read and written in BER.

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/octets.hpp"

namespace {

using namespace tlx_test;

/// Appends a value that getDERChildAt returned, and frees it.
std::uint32_t append_value(ASN1_UNIT *seq, std::uint32_t tag, void *value) {
    const Child child(value, tag);
    if (child.octet != nullptr)
        return addToDERSequence(seq, tag, tag == 5 ? nullptr : value, tag == 5 ? 0 : 1);
    if (child.number != nullptr)
        return addToDERSequence(seq, tag, value, get_BIGINT_der_length(child.number.get()));
    return addToDERSequence(seq, tag, value, static_cast<std::uint32_t>(child.string->length));
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

class OpensslOutput : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!folder_.succeeds("openssl version")) GTEST_SKIP() << "no openssl program";
    }

    /// What a command writes into the file "out". It is read as it is, and no part of a short one is read.
    Octets made_by(const std::string &command) const {
        folder_.run("openssl " + command + " -out out");
        const std::string text = folder_.read("out");
        const Octets octets(text.begin(), text.end());
        const Node node(decodeToDERSequence_n(octets.data(), static_cast<std::uint32_t>(octets.size())));
        EXPECT_EQ(hex_of(node.get()), hex_of(octets.data(), octets.size()));
        for (std::size_t size = 0; size < std::min<std::size_t>(octets.size(), 2000); ++size) {
            // A copy of its own, so that a read past its end is one past the block.
            const Octets prefix(octets.begin(), octets.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_EQ(decodeToDERSequence_n(prefix.data(), static_cast<std::uint32_t>(size)), nullptr)
                << size;
        }
        return octets;
    }

    void expect_rebuilt(const std::string &command) const {
        const Octets octets = made_by(command);
        const LeakCheck leaks;
        const Node node(decodeToDERSequence(octets.data()));
        EXPECT_EQ(hex_of(rebuilt(node.get()).get()), hex_of(octets.data(), octets.size()));
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
    expect_rebuilt("asn1parse -noout -genconf conf");
}

TEST_F(OpensslOutput, OfEveryInstalledCertificate) {
    const std::string bundle = "/etc/ssl/certs/ca-certificates.crt";
    if (!folder_.succeeds("test -e " + bundle)) GTEST_SKIP() << "no " << bundle;
    // One structure that holds them all.
    expect_rebuilt("crl2pkcs7 -nocrl -certfile " + bundle + " -outform DER");
}

/// The identifiers of an element and of the elements in it: "30(02 30(06 05))".
std::string outline(const ASN1_UNIT *node) {
    std::string text = hex_of(node->tag, 1) + "(";
    for (std::uint32_t i = 0, type = 0; (type = getChildType(node, i)) != 0xFFFFFFFF; ++i) {
        const auto identifier = static_cast<std::uint8_t>(type);
        const std::uint32_t as = type == 0x24 ? 33 : type >= 0x80 ? 16 : type & 0x1F;
        const Node child(static_cast<ASN1_UNIT *>((type & 0x20) != 0 ? getDERChildAt(node, i, as) : nullptr));
        text += (i > 0 ? " " : "") + (child != nullptr ? outline(child.get()) : hex_of(&identifier, 1));
    }
    return text + ")";
}

std::uint32_t decode_outline(const ASN1_UNIT *node, void **out) {
    *static_cast<std::string *>(*out) = outline(node);
    return 0;
}

/// RFC 5652 and RFC 5083, streamed: the content has an indefinite length, what follows it a definite one.
TEST_F(OpensslOutput, InIndefiniteLengths) {
    folder_.write("text", std::string(5000, 'x'));
    const std::string key = TLX_TEST_DATA "/keys/rsa-0.pem";
    folder_.run("openssl req -x509 -subj /CN=a -key " + key + " -out certificate");
    const std::string in = " -stream -binary -in text -outform ";
    struct {
        std::string command, outline;
        bool without_length;  // whether it is also read without its length
    } const cases[] = {
        {"cms -data_create", "30(06 A0(24(04 04)))", true},
        {"cms -sign -nodetach -noattr -nocerts -signer certificate -inkey " + key,
         "30(06 A0(30(02 31(30(06)) 30(06 A0(24(04 04))) 31(30(02 30(30(31(30(06 0C))) 02) 30(06) 30(06 05) "
         "04)))))",
         false},
        {"cms -encrypt -aes-128-gcm -recip certificate",
         "30(06 A0(30(02 31(30(02 30(30(31(30(06 0C))) 02) 30(06 05) 04)) 30(06 30(06 30(04 02)) A0(04 04)) "
         "04)))",
         false},
    };
    for (const auto &each : cases) {
        const Octets octets = made_by(each.command + in + "DER");
        EXPECT_EQ(hex_of(octets.data(), 2), "30 80") << each.command;
        EXPECT_EQ(Node(decodeToDERSequence(octets.data())) != nullptr, each.without_length) << each.command;
        std::string found;
        void *out = &found;
        EXPECT_EQ(readDER_from_File(&out, decode_outline, folder_.path("out").c_str()), 0U);
        EXPECT_EQ(found, each.outline);
        folder_.run("openssl " + each.command + in + "PEM -out out");
        found = "";
        EXPECT_EQ(readPEM_from_File(&out, decode_outline, folder_.path("out").c_str()), 0U);
        EXPECT_EQ(found, each.outline);
    }
}

}  // namespace
