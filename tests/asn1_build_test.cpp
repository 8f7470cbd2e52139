// Building nodes: the BER and DER layers.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/allocation.hpp"
#include "support/octets.hpp"

namespace tlx_test {
namespace {

constexpr std::uint32_t kShort = TLX_FORM_SHORT;
constexpr std::uint32_t kLong = TLX_FORM_LONG;

/// A value as builders take it, with everything it needs kept alive.
struct Value {
    std::uint32_t tag;
    const void *value;
    std::uint32_t len;

    void *writable() const { return const_cast<void *>(value); }
    std::int32_t signed_len() const { return static_cast<std::int32_t>(len); }
};

/// One value of every kind, over what it needs.
class Values {
    std::uint8_t octet_ = 0x01;
    Number number_ = number_of("FF");
    String octets_ = string_of(4, hex("AB CD"));
    String bits_ = string_of(3, hex("A0"), 5);
    String oid_ = string_of(6, "1.2.840");
    String text_ = string_of(12, "A");
    Node node_ = node_of("30 80 05 00 00 00");

  public:
    Value boolean{1, &octet_, 1};
    Value integer{2, number_.get(), 2};
    Value null{5, nullptr, 0};
    Value octets{4, octets_.get(), 2};
    Value bits{3, bits_.get(), 1};
    Value oid{6, oid_.get(), 7};
    Value any{32, text_.get(), 0};
    Value node{16, node_.get(), 0};
};

std::string repeated_text(const std::string &part, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += part;
    return text;
}
std::string repeated(const std::string &octet, std::size_t count) {
    return repeated_text(" " + octet, count);
}

TEST(Encode, UniversalTypes) {
    const Values v;
    const String text200 = string_of(4, std::string(200, 'x'));
    const String long_oid = string_of(6, "1.2" + repeated_text(".3", 100));
    const String utc = string_of(23, "2501010000Z");
    const String generalized = string_of(24, "20250101000000Z");
    struct Case {
        Value value;
        std::uint32_t form;
        std::string result;  // "empty": refused with 0x42090101
    };
    const Case cases[] = {
        {v.boolean, kShort, "01 01 01"},
        {v.boolean, kLong, "01 81 01 01"},
        {v.integer, kShort, "02 02 00 FF"},
        {{10, v.integer.value, 1}, kShort, "0A 01 FF"},
        {v.bits, kShort, "03 02 05 A0"},
        {v.octets, kShort, "04 02 AB CD"},
        {{12, v.octets.value, 1}, kShort, "0C 01 AB"},
        {{4, v.octets.value, 0}, kShort, "04 00"},
        {v.null, kShort, "05 00"},
        {v.null, kLong, "05 81 00"},
        {v.oid, kShort, "06 03 2A 86 48"},
        {{6, long_oid.get(), 203}, kLong, "06 81 65 2A" + repeated("03", 100)},
        {{23, utc.get(), 11}, kShort, "17 0B 32 35 30 31 30 31 30 30 30 30 5A"},
        {{24, generalized.get(), 4}, kShort, "18 04 32 30 32 35"},
        {{19, text200.get(), 127}, kShort, "13 7F" + repeated("78", 127)},
        {{4, text200.get(), 200}, kLong, "04 81 C8" + repeated("78", 200)},
        {v.any, kShort, "0C 01 41"},

        {{4, text200.get(), 128}, kShort, "empty"},
        {{3, text200.get(), 127}, kShort, "empty"},  // 128 octets of contents
        {{4, v.octets.value, 3}, kShort, "empty"},   // more than the record has
        {{4, v.octets.value, 0xFFFFFFFF}, kLong, "empty"},
        {{4, nullptr, 0}, kShort, "empty"},
        {{32, nullptr, 0}, kShort, "empty"},
        {{1, v.boolean.value, 2}, kShort, "empty"},
        {{2, v.integer.value, 0}, kShort, "empty"},
        {{5, nullptr, 1}, kShort, "empty"},
        {{6, v.oid.value, 0}, kShort, "empty"},
        {{6, long_oid.get(), 203}, kShort, "empty"},  // the text counts, not the contents
        {{23, utc.get(), 0}, kShort, "empty"},
        {v.octets, TLX_FORM_INDEFINITE, "empty"},
        {v.octets, 3, "empty"},
        {v.node, kShort, "empty"},
        {{33, v.node.value, 0}, kShort, "empty"},
        {{26, v.octets.value, 2}, kShort, "empty"},
        {{0, v.octets.value, 2}, kShort, "empty"},
        {{0x104, v.octets.value, 2}, kShort, "empty"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE("tag " + std::to_string(c.value.tag) + " len " + std::to_string(c.value.len) + " form " +
                     std::to_string(c.form));
        const LeakCheck leaks;
        const bool refused = c.result == "empty";
        // What the node held before is gone in either case.
        const Node node = node_of("30 80 02 01 05 00 00");
        EXPECT_EQ(encodeToBER(node.get(), c.value.tag, c.value.value, c.value.signed_len(), c.form),
                  refused ? 0x42090101 : 0U);
        EXPECT_EQ(hex_of(node.get()), c.result);
        EXPECT_EQ(node->eoc, nullptr);

        const Node tagged = new_node();
        EXPECT_EQ(encodeToBER_CS(tagged.get(), 2, c.value.tag, c.value.value, c.value.signed_len(), c.form),
                  refused ? 0x420A0101 : 0U);
        EXPECT_EQ(hex_of(tagged.get()), refused ? "empty" : "82" + c.result.substr(2));
    }
    EXPECT_EQ(encodeToBER(nullptr, 5, nullptr, 0, 0), 0x42090101U);
    EXPECT_EQ(encodeToBER_CS(nullptr, 0, 5, nullptr, 0, 0), 0x420A0101U);
    EXPECT_EQ(encodeToBER_CS(new_node().get(), 0x100, 5, nullptr, 0, 0), 0x420A0101U);
    EXPECT_EQ(encodeToBER_CS(new_node().get(), 0xFFFFFFFF, 5, nullptr, 0, 0), 0x420A0101U);
}

TEST(Encode, AnyStringByItsType) {
    struct Case {
        std::int32_t type;
        const char *data;
        std::uint32_t form;
        const char *encoded, *appended;  // "empty": refused
    };
    const Case cases[] = {
        {2, "00 00 7F", kShort, "02 01 7F", "30 03 02 01 7F"},
        {2, "FF", kShort, "02 02 00 FF", "30 04 02 02 00 FF"},  // a number without a sign
        {2, "00 00", kShort, "02 01 00", "30 03 02 01 00"},
        {2, "", kShort, "empty", "empty"},
        {10, "80", kShort, "0A 02 00 80", "30 04 0A 02 00 80"},
        {1, "01", kShort, "01 01 01", "30 03 01 01 01"},
        {5, "", kShort, "05 00", "30 02 05 00"},
        {3, "A0", kShort, "03 02 00 A0", "30 04 03 02 00 A0"},
        {6, "31 2E 32", kShort, "06 01 2A", "30 03 06 01 2A"},
        {12, "", kShort, "0C 00", "30 02 0C 00"},
        {22, "41", kLong, "16 81 01 41", "30 04 16 81 01 41"},
        // Only appends wrap the octets of a SEQUENCE or SET, and take complete elements.
        {16, "05 00", kShort, "empty", "30 04 30 02 05 00"},
        {48, "05 00", kLong, "empty", "30 05 30 81 02 05 00"},
        {49, "05 00", TLX_FORM_INDEFINITE, "empty", "30 06 31 80 05 00 00 00"},
        {17, "", kShort, "empty", "30 02 31 00"},
        {0xA0, "A0 02 05 00", kShort, "empty", "30 04 A0 02 05 00"},
        {0x80, "80 80 04 00 00 00", kShort, "empty", "30 06 80 80 04 00 00 00"},
        {0xA0, "A1 02 05 00", kShort, "empty", "empty"},
        {0xA0, "A0 02 05 00 00", kShort, "empty", "empty"},
        {0xA0, "A0 03 05 00", kShort, "empty", "empty"},
        {12, "41", TLX_FORM_INDEFINITE, "empty", "empty"},
        {26, "41", kShort, "empty", "empty"},
        {-1, "41", kShort, "empty", "empty"},
        {0x10C, "41", kShort, "empty", "empty"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE("type " + std::to_string(c.type) + ": " + c.data);
        const LeakCheck leaks;
        const String string = string_of(c.type, hex(c.data));
        const Node node = new_node();
        const Node seq = new_node();
        const bool encodes = std::string(c.encoded) != "empty";
        EXPECT_EQ(encodeToBER(node.get(), 32, string.get(), 0, c.form), encodes ? 0 : 0x42090101U);
        EXPECT_EQ(hex_of(node.get()), c.encoded);
        const bool appends = std::string(c.appended) != "empty";
        EXPECT_EQ(addToBERSequence(seq.get(), 32, string.get(), 0, static_cast<std::int32_t>(c.form)),
                  appends ? 0 : 0x420B0101U);
        EXPECT_EQ(hex_of(seq.get()), c.appended);
    }
}

TEST(Append, Containers) {
    const LeakCheck leaks;
    const Values v;
    const Node seq = new_node();
    EXPECT_EQ(addToBERSequence(seq.get(), v.integer.tag, v.integer.value, v.integer.len, 0), 0U);
    EXPECT_EQ(hex_of(seq.get()), "30 04 02 02 00 FF");
    EXPECT_EQ(addToBERSequence(seq.get(), 16, v.node.value, 0, 99), 0U);  // the form is not for nodes
    EXPECT_EQ(hex_of(seq.get()), "30 0A 02 02 00 FF 30 80 05 00 00 00");
    EXPECT_EQ(addToBERSequence_CS(seq.get(), 3, 5, nullptr, 0, 1), 0U);
    EXPECT_EQ(hex_of(seq.get()), "A3 0D 02 02 00 FF 30 80 05 00 00 00 05 81 00");
    EXPECT_EQ(addToBERSequence(seq.get(), 5, nullptr, 0, 0), 0U);
    EXPECT_EQ(*seq->tag, 0xA3) << "a container keeps its identifier";
    EXPECT_EQ(addToBERSet(seq.get(), 5, nullptr, 0, 0), 0U);
    EXPECT_EQ(hex_of(seq.get()), "31 11 02 02 00 FF 30 80 05 00 00 00 05 81 00 05 00 05 00");

    // A container of indefinite length becomes definite; its end-of-contents octets go.
    const Node indefinite = node_of("30 80 02 01 05 00 00");
    EXPECT_EQ(addToBERSequence(indefinite.get(), 5, nullptr, 0, 0), 0U);
    EXPECT_EQ(hex_of(indefinite.get()), "30 05 02 01 05 05 00");
    EXPECT_EQ(indefinite->eoc, nullptr);
}

TEST(Append, LengthOctetsGrowWithTheContents) {
    const LeakCheck leaks;
    const std::string kilobyte(1000, 'x');
    const String string = string_of(4, kilobyte);
    const Node seq = new_node();
    std::size_t contents = 0;
    const auto append = [&](std::uint32_t len) {
        ASSERT_EQ(addToDERSequence(seq.get(), 4, string.get(), len), 0U);
        contents += 2 + len + (len > 127 ? len > 255 ? 2 : 1 : 0);
        ASSERT_EQ(getASN1ValueLength(seq.get()), contents);
    };
    append(125);
    EXPECT_EQ(hex_of(seq->length, getASN1LengthSize(seq->length)), "7F");
    append(0);
    EXPECT_EQ(hex_of(seq->length, getASN1LengthSize(seq->length)), "81 81");
    append(122);
    append(0);
    EXPECT_EQ(hex_of(seq->length, getASN1LengthSize(seq->length)), "81 FF");
    append(0);
    EXPECT_EQ(hex_of(seq->length, getASN1LengthSize(seq->length)), "82 01 01");
    while (contents < 65536)
        append(1000);
    EXPECT_EQ(getASN1LengthSize(seq->length), 4U);
    EXPECT_EQ(*seq->length, 0x83);
    EXPECT_EQ(getSequenceChildNum(seq.get()), 5U + 66U);
}

TEST(Append, ToItself) {
    const LeakCheck leaks;
    for (const std::uint32_t tag : {16U, 17U, 48U, 49U}) {
        const Node seq = node_of("30 03 02 01 05");
        EXPECT_EQ(addToBERSequence(seq.get(), tag, seq.get(), 0, 0), 0U);
        EXPECT_EQ(hex_of(seq.get()), "30 08 02 01 05 30 03 02 01 05");
    }
    const Node indefinite = node_of("30 80 02 01 05 00 00");
    EXPECT_EQ(addToDERSequence(indefinite.get(), 16, indefinite.get(), 0), 0U);
    EXPECT_EQ(hex_of(indefinite.get()), "30 0A 02 01 05 30 80 02 01 05 00 00");
    const Node taken_over = node_of("30 03 02 01 05");
    EXPECT_EQ(addToBERSequence(taken_over.get(), 33, taken_over.get(), 0, 0), 0x420B0101U);
    EXPECT_EQ(hex_of(taken_over.get()), "empty");
}

/// Each append operation under one shape, with the code it fails with.
struct Append {
    const char *name;
    std::uint32_t (*call)(ASN1_UNIT *seq, Value value);
    std::uint32_t code;
    std::uint8_t identifier;
    bool takes_nodes;
};
const Append kAppends[] = {
    {"BERSequence", [](ASN1_UNIT *seq, Value v) { return addToBERSequence(seq, v.tag, v.value, v.len, 0); },
     0x420B0101, 0x30, true},
    {"BERSequenceOf",
     [](ASN1_UNIT *seq, Value v) { return addToBERSequenceOf(seq, v.tag, v.value, v.len, 0); }, 0x420C0101,
     0x30, true},
    {"BERSet", [](ASN1_UNIT *seq, Value v) { return addToBERSet(seq, v.tag, v.value, v.len, 0); }, 0x420D0101,
     0x31, true},
    {"BERSetOf", [](ASN1_UNIT *seq, Value v) { return addToBERSetOf(seq, v.tag, v.value, v.len, 0); },
     0x420E0101, 0x31, true},
    {"BERSequence_CS",
     [](ASN1_UNIT *seq, Value v) { return addToBERSequence_CS(seq, 1, v.tag, v.value, v.len, 0); },
     0x420F0101, 0xA1, true},
    {"BERStringSequence",
     [](ASN1_UNIT *seq, Value v) { return addToBERStringSequence(seq, v.tag, v.value, v.len, 0); },
     0x42110101, 0x24, false},
    {"DERSequence", [](ASN1_UNIT *seq, Value v) { return addToDERSequence(seq, v.tag, v.writable(), v.len); },
     0x43040101, 0x30, true},
    {"DERSequenceOf",
     [](ASN1_UNIT *seq, Value v) { return addToDERSequenceOf(seq, v.tag, v.writable(), v.len); }, 0x43050101,
     0x30, true},
    {"DERSet", [](ASN1_UNIT *seq, Value v) { return addToDERSet(seq, v.tag, v.writable(), v.len); },
     0x43060101, 0x31, true},
    {"DERSetOf", [](ASN1_UNIT *seq, Value v) { return addToDERSetOf(seq, v.tag, v.writable(), v.len); },
     0x43070101, 0x31, true},
    {"DERSequence_CS",
     [](ASN1_UNIT *seq, Value v) { return addToDERSequence_CS(seq, 1, v.tag, v.writable(), v.len); },
     0x43080101, 0xA1, true},
};

TEST(Append, EveryOperationAppendsAndFailsWithItsOwnCode) {
    const Values v;
    const Value bad[] = {
        {1, nullptr, 1},  {23, nullptr, 11},      {4, nullptr, 1},        {16, nullptr, 0},
        {33, nullptr, 1}, {7, v.octets.value, 1}, {4, v.octets.value, 3}, {4, v.octets.value, 0x80000000},
    };
    const Node empty = new_node();
    for (const Append &append : kAppends) {
        SCOPED_TRACE(append.name);
        const LeakCheck leaks;
        const Node seq = new_node();
        EXPECT_EQ(append.call(seq.get(), v.octets), 0U);
        EXPECT_EQ(append.call(seq.get(), v.octets), 0U);
        EXPECT_EQ(hex_of(seq.get()), hex_of(&append.identifier, 1) + " 08 04 02 AB CD 04 02 AB CD");
        EXPECT_EQ(append.call(nullptr, v.octets), append.code);
        for (const Value &value : bad) {
            const Node filled = node_of("30 03 02 01 05");
            EXPECT_EQ(append.call(filled.get(), value), append.code) << "tag " << value.tag;
            EXPECT_EQ(hex_of(filled.get()), "empty") << "tag " << value.tag;
        }
        EXPECT_EQ(append.call(new_node().get(), {16, empty.get(), 0}), append.code) << "an empty child";
    }
    for (const std::uint32_t ctx : {0x100U, 0xFFFFFFFFU}) {
        EXPECT_EQ(addToBERSequence_CS(new_node().get(), ctx, 5, nullptr, 0, 0), 0x420F0101U);
        EXPECT_EQ(addToDERSequence_CS(new_node().get(), ctx, 5, nullptr, 0), 0x43080101U);
    }
}

TEST(Append, OwnershipOfNodes) {
    for (const Append &append : kAppends) {
        if (!append.takes_nodes) continue;
        SCOPED_TRACE(append.name);
        const LeakCheck leaks;
        for (const std::uint32_t tag : {16U, 17U, 48U, 49U}) {
            const Node child = node_of("04 01 AA");
            const Node seq = new_node();
            const Node broken = node_of("30 00");
            *broken->length = 0x85;  // a length that is refused
            EXPECT_EQ(append.call(seq.get(), {tag, child.get(), 0}), 0U);
            EXPECT_EQ(append.call(nullptr, {tag, child.get(), 0}), append.code);
            EXPECT_EQ(append.call(broken.get(), {tag, child.get(), 0}), append.code);
            EXPECT_EQ(hex_of(child.get()), "04 01 AA") << "still the caller's";
        }
        // With tag 33 the child is freed by the append, which LeakCheck and AddressSanitizer see.
        const Node seq = new_node();
        EXPECT_EQ(append.call(seq.get(), {33, node_of("04 01 AA").release(), 1}), 0U);
        EXPECT_EQ(hex_of(seq.get()), hex_of(&append.identifier, 1) + " 03 04 01 AA");
        EXPECT_EQ(append.call(nullptr, {33, node_of("04 01 AA").release(), 1}), append.code);
        EXPECT_EQ(append.call(nullptr, {33, node_of("04 01 AA").release(), 0}), append.code);
        const Node refused = node_of("30 00");
        *refused->length = 0x85;
        EXPECT_EQ(append.call(refused.get(), {33, node_of("04 01 AA").release(), 1}), append.code);
    }
    const LeakCheck leaks;
    EXPECT_EQ(addToBERStringSequence(new_node().get(), 33, node_of("04 00").release(), 0, 0), 0x42110101U);
    EXPECT_EQ(addToBERSequence_CS(new_node().get(), 0x100, 33, node_of("04 00").release(), 0, 0),
              0x420F0101U);
}

TEST(Append, EmptyLists) {
    const LeakCheck leaks;
    const Values v;
    const Value empties[] = {{2, nullptr, 0}, {1, nullptr, 0}, {5, nullptr, 0}, {4, v.octets.value, 0}};
    for (const Value &value : empties) {
        SCOPED_TRACE("tag " + std::to_string(value.tag));
        const Node node = node_of("30 03 02 01 05");  // what was there is lost
        EXPECT_EQ(addToBERSequenceOf(node.get(), value.tag, value.value, 0, 0), 0U);
        EXPECT_EQ(hex_of(node.get()), "10 00");
        EXPECT_EQ(addToBERSetOf(node.get(), value.tag, value.value, 0, 0), 0U);
        EXPECT_EQ(hex_of(node.get()), "11 00");
        EXPECT_EQ(addToDERSequenceOf(node.get(), value.tag, value.writable(), 0), 0U);
        EXPECT_EQ(hex_of(node.get()), "10 00");
        EXPECT_EQ(addToDERSetOf(node.get(), value.tag, value.writable(), 0), 0U);
        EXPECT_EQ(hex_of(node.get()), "11 00");
        EXPECT_EQ(getSequenceChildNum(node.get()), 0U);
    }
    const Node consumed = new_node();
    EXPECT_EQ(addToBERSequenceOf(consumed.get(), 33, node_of("04 00").release(), 0, 0), 0U);
    EXPECT_EQ(hex_of(consumed.get()), "10 00") << "a node with tag 33 is appended only with a len";
    const Node list = new_node();
    EXPECT_EQ(addToBERSequenceOf(list.get(), 16, v.node.value, 0, 0), 0U);
    EXPECT_EQ(hex_of(list.get()), "30 06 30 80 05 00 00 00");
}

TEST(Append, StringSegments) {
    const LeakCheck leaks;
    const String whole = string_of(3, hex("AB CD"), 0);
    const String last = string_of(3, hex("A0"), 5);
    const Node bits = new_node();
    EXPECT_EQ(addToBERStringSequence(bits.get(), 3, whole.get(), 2, 0), 0U);
    EXPECT_EQ(addToBERStringSequence(bits.get(), 3, last.get(), 1, 0), 0U);
    EXPECT_EQ(hex_of(bits.get()), "23 09 03 03 00 AB CD 03 02 05 A0");
    EXPECT_EQ(addToBERStringSequence(bits.get(), 3, whole.get(), 2, 0), 0x42110101U);
    EXPECT_EQ(hex_of(bits.get()), "empty");

    struct Case {
        const char *before;
        std::uint32_t tag;
        const char *after;  // "empty": refused
    };
    const Case cases[] = {
        {"24 03 04 01 AA", 4, "24 07 04 01 AA 04 02 AB CD"},
        {"2C 00", 12, "2C 04 0C 02 AB CD"},
        {"24 03 04 01 AA", 12, "empty"},
        {"30 00", 16, "empty"},
        {"22 00", 2, "empty"},
        {"23 04 03 02 00 AA", 3, "23 09 03 02 00 AA 03 03 00 AB CD"},
        {"23 02 03 00", 3, "empty"},
        {"23 03 03 02 00", 3, "empty"},
        {"23 03 04 01 00", 3, "empty"},
    };
    for (const Case &c : cases) {
        const Node seq = node_of(c.before);
        const bool refused = std::string(c.after) == "empty";
        EXPECT_EQ(addToBERStringSequence(seq.get(), c.tag, whole.get(), 2, 0), refused ? 0x42110101 : 0U);
        EXPECT_EQ(hex_of(seq.get()), c.after) << c.before;
    }
}

TEST(Der, CheckRewritesTheValue) {
    struct Case {
        const char *text;
        std::uint32_t status;
        const char *after;
        std::uint32_t len;
    };
    const Case cases[] = {
        {"250102030405Z", 0, "250102030405Z", 13},
        {"250102030405+0900", 0, "250102030405Z", 13},  // the offset goes, the digits stay
        {"250102030405-0900", 0, "250102030405Z", 13},
        {"2501020304Z", 0x43010101, "2501020304Z", 11},
        {"2501020304+0900", 0x43010101, "2501020304+0900", 15},
        {"251302030405+0900", 0x43010101, "251302030405+0900", 17},
        {"garbage of another length", 0, "garbage of another length", 25},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text);
        const LeakCheck leaks;
        const String time = string_of(23, c.text);
        auto len = static_cast<std::uint32_t>(time->length);
        EXPECT_EQ(checkDER(23, time.get(), &len), c.status);
        EXPECT_EQ(len, c.len);
        EXPECT_EQ(text_of(time.get()).substr(0, 7), "type 23");
        EXPECT_STREQ(reinterpret_cast<const char *>(time->data), c.after);
        EXPECT_EQ(time->length, static_cast<std::int32_t>(c.len));
    }
    for (const int value : {0x00, 0x01, 0x80, 0xFF}) {
        auto octet = static_cast<std::uint8_t>(value);
        std::uint32_t len = 1;
        EXPECT_EQ(checkDER(1, &octet, &len), 0U);
        EXPECT_EQ(octet, value == 0 ? 0x00 : 0xFF);
    }
    std::uint32_t len = 11;
    EXPECT_EQ(checkDER(1, nullptr, &len), 0x43010101U);
    EXPECT_EQ(checkDER(23, nullptr, &len), 0x43010101U);
    EXPECT_EQ(checkDER(24, nullptr, &len), 0U);
    EXPECT_EQ(checkDER(32, nullptr, nullptr), 0U);
}

TEST(Der, CanonicalFormAndShortestLength) {
    const LeakCheck leaks;
    const String minutes = string_of(23, "2501020304+0900");
    const String offset = string_of(23, "250102030405+0900");
    const String string = string_of(4, std::string(200, 'x'));
    const String oid = string_of(6, "1.2" + repeated_text(".3", 100));
    const String number = string_of(2, hex("80" + repeated("00", 126)));
    std::uint8_t yes = 0x01;
    struct Case {
        Value value;
        std::string result;
    };
    const Case cases[] = {
        {{1, &yes, 1}, "01 01 FF"},
        {{23, minutes.get(), 15}, "empty"},
        {{23, offset.get(), 17}, "17 0D 32 35 30 31 30 32 30 33 30 34 30 35 5A"},
        {{4, string.get(), 127}, "04 7F" + repeated("78", 127)},
        {{4, string.get(), 200}, "04 81 C8" + repeated("78", 200)},
        {{3, string.get(), 126}, "03 7F 00" + repeated("78", 126)},
        {{3, string.get(), 127}, "03 81 80 00" + repeated("78", 127)},
        // The length form follows the contents, not the text or record that they come from.
        {{6, oid.get(), 203}, "06 65 2A" + repeated("03", 100)},
        {{32, number.get(), 127}, "02 81 80 00 80" + repeated("00", 126)},
        {{24, minutes.get(), 15}, "18 0F 32 35 30 31 30 32 30 33 30 34 2B 30 39 30 30"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE("tag " + std::to_string(c.value.tag) + " len " + std::to_string(c.value.len));
        const bool refused = c.result == "empty";
        const Node node = new_node();
        EXPECT_EQ(encodeToDER(node.get(), c.value.tag, c.value.writable(), c.value.signed_len()),
                  refused ? 0x43020101 : 0U);
        EXPECT_EQ(hex_of(node.get()), c.result);
        if (c.value.tag == 23) continue;  // rewritten by now
        EXPECT_EQ(encodeToDER_CS(node.get(), 0, c.value.tag, c.value.writable(), c.value.signed_len()), 0U);
        EXPECT_EQ(hex_of(node.get()), "80" + c.result.substr(2));
    }
    EXPECT_EQ(yes, 0xFF) << "the caller's value is rewritten";
    EXPECT_EQ(offset->length, 13);
    EXPECT_EQ(offset->extra, 1);

    const Node seq = new_node();
    EXPECT_EQ(addToDERSequence(seq.get(), 4, string.get(), 200), 0U);
    EXPECT_EQ(hex_of(seq.get()), "30 81 CB 04 81 C8" + repeated("78", 200));
    EXPECT_EQ(addToDERSequence(seq.get(), 23, minutes.get(), 15), 0x43040101U);
    EXPECT_EQ(hex_of(seq.get()), "empty");
    EXPECT_EQ(encodeToDER(nullptr, 5, nullptr, 0), 0x43020101U);
    EXPECT_EQ(encodeToDER(seq.get(), 1, nullptr, 1), 0x43020101U);
    EXPECT_EQ(encodeToDER_CS(seq.get(), 0x100, 5, nullptr, 0), 0x43030101U);
    // Times inside a record of any type pass as they are.
    const String any = string_of(23, "2501020304+0900");
    EXPECT_EQ(addToDERSequence(seq.get(), 32, any.get(), 15), 0U);
    EXPECT_EQ(hex_of(seq.get()), "30 11 17 0F 32 35 30 31 30 32 30 33 30 34 2B 30 39 30 30");
}

TEST(Build, FailingAllocations) {
    const Values v;
    for (const Append &append : kAppends) {
        SCOPED_TRACE(append.name);
        EXPECT_GT(sweep_failing_allocations([&] {
                      const Node seq = new_node();
                      if (seq == nullptr) return false;
                      const std::uint32_t status = append.call(seq.get(), v.octets);
                      if (status != 0) {
                          EXPECT_EQ(status, append.code);
                          EXPECT_EQ(seq->tag, nullptr);
                      }
                      return status == 0;
                  }),
                  3U);
    }
    for (const Append &append : kAppends) {
        if (std::string(append.name).find("Of") == std::string::npos) continue;
        EXPECT_EQ(sweep_failing_allocations([&] {
                      const Node seq = new_node();
                      if (seq == nullptr) return false;
                      const std::uint32_t status = append.call(seq.get(), {2, nullptr, 0});
                      EXPECT_TRUE(status == 0 || status == append.code) << append.name;
                      EXPECT_EQ(seq->tag == nullptr, status != 0);
                      return status == 0;
                  }),
                  3U);
    }
    for (const Value &value : {v.boolean, v.integer, v.null, v.octets, v.bits, v.oid, v.any}) {
        SCOPED_TRACE("tag " + std::to_string(value.tag));
        EXPECT_GT(sweep_failing_allocations([&] {
                      const Node node = new_node();
                      if (node == nullptr) return false;
                      const std::uint32_t status =
                          encodeToDER(node.get(), value.tag, value.writable(), value.signed_len());
                      EXPECT_TRUE(status == 0 || status == 0x43020101) << std::hex << status;
                      EXPECT_EQ(node->tag == nullptr, status != 0);
                      return status == 0;
                  }),
                  3U);
    }
    // Growing past one length octet, with a child that is taken over, and a time that is rewritten.
    const Octets filled = hex("30 7F 04 7D" + repeated("78", 125));
    EXPECT_GT(sweep_failing_allocations([&] {
                  const Node seq(decodeToDERSequence(filled.data()));
                  if (seq == nullptr) return false;
                  ASN1_UNIT *child = node_of("04 01 AA").release();
                  const std::uint32_t status = addToDERSequence(seq.get(), 33, child, 0);
                  if (status != 0) {
                      EXPECT_EQ(status, 0x43040101U);
                  }
                  return status == 0;
              }),
              8U);
    const String time = string_of(23, "250102030405+0900");
    std::uint32_t len = 17;
    EXPECT_GT(sweep_failing_allocations([&] {
                  const std::uint32_t status = checkDER(23, time.get(), &len);
                  if (status != 0) {
                      EXPECT_EQ(status, 0x43010101U);
                      EXPECT_EQ(len, 17U);
                      EXPECT_EQ(time->length, 17);
                  }
                  return status == 0;
              }),
              1U);
    EXPECT_EQ(len, 13U);
}

}  // namespace
}  // namespace tlx_test
