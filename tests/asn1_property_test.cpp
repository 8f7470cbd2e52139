// Whole trees: random ones against a writer of the test's own, and DER that the openssl program made, taken
// apart and put together again.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <algorithm>
#include <random>

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/octets.hpp"

namespace tlx_test {
namespace {

constexpr std::uint8_t kSequence = 0x30;
constexpr std::uint8_t kSet = 0x31;

void append(Octets &to, const Octets &octets) {
    to.insert(to.end(), octets.begin(), octets.end());
}

Octets length_octets(std::size_t length, std::uint32_t form) {
    if (form == TLX_FORM_INDEFINITE) return {0x80};
    if (form == TLX_FORM_SHORT && length < 0x80) return {static_cast<std::uint8_t>(length)};
    Octets digits;
    for (std::size_t rest = length; rest > 0 || digits.empty(); rest >>= 8)
        digits.insert(digits.begin(), static_cast<std::uint8_t>(rest));
    digits.insert(digits.begin(), static_cast<std::uint8_t>(0x80 + digits.size()));
    return digits;
}

/// What the tests know about a tree without asking the library.
struct Tree {
    std::uint8_t identifier = 0;
    Octets contents;             // of a leaf
    std::vector<Tree> children;  // of a container
    std::uint32_t form = TLX_FORM_SHORT;

    bool container() const { return (identifier & 0x20) != 0; }
    Octets encoding() const {
        Octets inner = contents;
        for (const Tree &child : children)
            append(inner, child.encoding());
        Octets octets = {identifier};
        append(octets, length_octets(inner.size(), form));
        append(octets, inner);
        if (form == TLX_FORM_INDEFINITE) octets.insert(octets.end(), {0x00, 0x00});
        return octets;
    }
};

class Forest {
  public:
    explicit Forest(std::uint32_t seed) : random_(seed) {}

    Tree tree(unsigned depth) {
        Tree tree;
        const std::uint8_t identifiers[] = {kSequence, kSet, context()};
        tree.identifier = identifiers[below(3)];
        const unsigned count = depth == 0 ? 1 : 1 + below(6);
        for (unsigned i = 0; i < count; ++i)
            tree.children.push_back(depth > 0 && below(3) == 0 ? this->tree(depth - 1) : leaf());
        tree.form = form(tree.children);
        return tree;
    }
    unsigned below(unsigned limit) { return bits() % limit; }

  private:
    std::uint32_t bits() { return static_cast<std::uint32_t>(random_()); }
    std::uint8_t context() { return static_cast<std::uint8_t>(0xA0 | below(31)); }

    /// Any form; but inside an indefinite length no definite length may follow an indefinite one.
    std::uint32_t form(const std::vector<Tree> &children) {
        const auto indefinite = [](const Tree &child) { return child.form == TLX_FORM_INDEFINITE; };
        const bool readable = std::is_partitioned(children.begin(), children.end(),
                                                  [&](const Tree &child) { return !indefinite(child); });
        return below(readable ? 3 : 2);
    }

    Tree leaf() {
        constexpr std::uint8_t kTypes[] = {1, 2, 3, 4, 5, 6, 10, 12, 19, 20, 22, 23, 24, 30};
        Tree leaf;
        leaf.identifier = kTypes[below(std::size(kTypes))];
        switch (leaf.identifier) {
            case 1:
                leaf.contents = {static_cast<std::uint8_t>(below(2) * 0xFF)};
                break;
            case 2:
            case 10: {  // not negative, no octet more than it takes
                leaf.contents = octets(1 + below(20));
                if (leaf.contents[0] >= 0x80 || leaf.contents[0] == 0)
                    leaf.contents.insert(leaf.contents.begin(), leaf.contents[0] == 0 ? 0x01 : 0x00);
                break;
            }
            case 3:
                leaf.contents = octets(1 + below(20));
                leaf.contents[0] %= 8;
                break;
            case 5:
                break;
            case 6:
                leaf.contents = object_identifier();
                break;
            case 23:  // of a length that DER takes as it is
            case 24:
                leaf.contents = octets(1 + below(10));
                break;
            default:
                leaf.contents = octets(below(5) == 0 ? below(400) : below(20));
        }
        return leaf;
    }

    Octets octets(unsigned count) {
        Octets octets(count);
        for (std::uint8_t &octet : octets)
            octet = static_cast<std::uint8_t>(bits());
        return octets;
    }

    Octets object_identifier() {
        Octets contents = {static_cast<std::uint8_t>(below(128))};
        for (unsigned i = below(8); i > 0; --i) {
            const std::uint32_t arc = bits() >> (1 + below(31));
            for (int shift = 28; shift > 0; shift -= 7) {
                if ((arc >> shift) != 0)
                    contents.push_back(static_cast<std::uint8_t>(0x80 | ((arc >> shift) & 0x7F)));
            }
            contents.push_back(static_cast<std::uint8_t>(arc & 0x7F));
        }
        return contents;
    }

    std::mt19937 random_;
};

/// Appends a value that getDERChildAt returned, and frees it.
std::uint32_t append_value(ASN1_UNIT *seq, std::uint32_t tag, void *value) {
    switch (tag) {
        case 1:
        case 5: {
            const tlx::OwnedOctets<void> owner(value);
            return addToDERSequence(seq, tag, tag == 5 ? nullptr : value, tag == 5 ? 0 : 1);
        }
        case 2:
        case 10: {
            const Number number(static_cast<BIGINT *>(value));
            return addToDERSequence(seq, tag, value, get_BIGINT_der_length(number.get()));
        }
        default: {
            const String string(static_cast<ASN1_STRING *>(value));
            return addToDERSequence(seq, tag, value, static_cast<std::uint32_t>(string->length));
        }
    }
}

bool is_typed(std::uint32_t identifier) {
    constexpr std::uint32_t kTypes[] = {1, 2, 3, 4, 5, 6, 10, 12, 19, 20, 22, 23, 24, 30};
    return std::find(std::begin(kTypes), std::end(kTypes), identifier) != std::end(kTypes);
}

/// Takes a container apart into typed values and puts them together again in DER. Null when something is
/// missing or refused.
Node rebuilt(const ASN1_UNIT *node) {
    Node copy = new_node();
    std::uint32_t cursor = 0;
    const std::uint32_t count = getSequenceChildNum(node);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t type = getChildType(node, i);
        const bool container = (type & 0x20) != 0;
        const std::uint32_t as_leaf = is_typed(type) ? type : 32;
        const std::uint32_t expected = !container ? as_leaf : type == kSet ? 17 : 16;
        void *child = getBERChildOffset(node, i, expected, &cursor);
        if (child == nullptr) return nullptr;
        std::uint32_t status = 0;
        if (container) {
            const Node owner(static_cast<ASN1_UNIT *>(child));
            const Node inner = rebuilt(owner.get());
            status = inner == nullptr ? 1 : addToDERSequence(copy.get(), 16, inner.get(), 0);
        } else {
            status = append_value(copy.get(), expected, child);
        }
        if (status != 0) return nullptr;
    }
    if (count == 0) return Node(dup_ASN1_UNIT(node));
    *copy->tag = *node->tag;
    return copy;
}

/// The same tree with every length in its shortest form.
Tree in_der(Tree tree) {
    tree.form = TLX_FORM_SHORT;
    for (Tree &child : tree.children)
        child = in_der(child);
    return tree;
}

/// Builds the tree as a caller would, from the leaves up.
Node built(const Tree &tree) {
    Node node = new_node();
    for (const Tree &child : tree.children) {
        if (child.container()) {
            EXPECT_EQ(addToBERSequence(node.get(), 33, built(child).release(), 0, 0), 0U);
            continue;
        }
        const Octets encoding = child.encoding();
        const Node leaf(decodeToDERSequence(encoding.data()));
        EXPECT_EQ(addToBERSequence(node.get(), 16, leaf.get(), 0, 0), 0U);
    }
    *node->tag = tree.identifier;
    if (tree.form != TLX_FORM_SHORT) {
        EXPECT_EQ(setBERLengthForm(node.get(), tree.form), 0U);
    }
    return node;
}

Octets encoding_of(const ASN1_UNIT *node) {
    std::uint8_t *octets = nullptr;
    const std::uint32_t size = ASN1_to_binary(node, &octets);
    if (size == 0xFFFFFFFF) return {};
    const tlx::OwnedOctets<std::uint8_t> owner(octets);
    return {octets, octets + size};
}

TEST(RandomTrees, BuiltReadAndTakenApart) {
    const LeakCheck leaks;
    Forest forest(20260721);
    for (int round = 0; round < 2000; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const Tree tree = forest.tree(5);
        const Octets encoding = tree.encoding();
        ASSERT_EQ(encoding_of(built(tree).get()), encoding);

        const Node read(decodeToDERSequence_n(encoding.data(), static_cast<std::uint32_t>(encoding.size())));
        ASSERT_EQ(encoding_of(read.get()), encoding);
        ASSERT_EQ(getSequenceChildNum(read.get()), tree.children.size());
        const Node again = rebuilt(read.get());
        ASSERT_NE(again, nullptr);
        ASSERT_EQ(encoding_of(again.get()), in_der(tree).encoding());

        const auto cut = forest.below(static_cast<unsigned>(encoding.size()));
        const Octets prefix(encoding.begin(), encoding.begin() + static_cast<std::ptrdiff_t>(cut));
        ASSERT_EQ(decodeToDERSequence_n(prefix.data(), cut), nullptr) << cut << " octets";
    }
}

class OpensslDer : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!folder_.succeeds("openssl version")) GTEST_SKIP() << "no openssl program";
    }

    void expect_rebuilt(const std::string &name) {
        const std::string path = folder_.path(name);
        const LeakCheck leaks;
        std::uint8_t *octets = nullptr;
        std::uint32_t size = 0;
        ASSERT_EQ(File_to_binary(path.c_str(), &octets, &size), 0U);
        const tlx::OwnedOctets<std::uint8_t> owner(octets);
        ASSERT_GT(size, 2U);
        const Node node(decodeToDERSequence_n(octets, size));
        ASSERT_NE(node, nullptr);
        ASSERT_EQ(encoding_of(node.get()), Octets(octets, octets + size));
        const Node again = rebuilt(node.get());
        ASSERT_NE(again, nullptr);
        EXPECT_EQ(encoding_of(again.get()), Octets(octets, octets + size));
    }

    const CommandFolder folder_;
};

TEST_F(OpensslDer, OfGeneratedStructures) {
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
p = EXPLICIT:2,UTF8:text
q = EXPLICIT:30,SEQWRAP,SETWRAP,OCTWRAP,BITWRAP,INTEGER:70000
r = SET:members
s = SEQUENCE:none
t = IMPLICIT:3,SEQUENCE:members
[members]
a = INTEGER:0
b = SEQUENCE:leaves
[leaves]
a = INTEGER:127
b = INTEGER:128
[none]
)");
    ASSERT_TRUE(folder_.succeeds("openssl asn1parse -noout -genconf conf -out der"));
    expect_rebuilt("der");
}

TEST_F(OpensslDer, OfEveryInstalledCertificate) {
    const std::string bundle = "/etc/ssl/certs/ca-certificates.crt";
    if (!folder_.succeeds("test -e " + bundle)) GTEST_SKIP() << "no " << bundle;
    // One structure that holds them all.
    ASSERT_TRUE(folder_.succeeds("openssl crl2pkcs7 -nocrl -certfile " + bundle + " -outform DER -out der"));
    expect_rebuilt("der");
}

}  // namespace
}  // namespace tlx_test
