// Building nodes: the BER and DER layers.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/allocation.hpp"
#include "support/octets.hpp"

namespace tlx_test {
namespace {

constexpr std::uint32_t kShort = TLX_FORM_SHORT;
constexpr std::uint32_t kLong = TLX_FORM_LONG;
constexpr std::uint32_t kIndefinite = TLX_FORM_INDEFINITE;

/// A value as builders take it.
struct Value {
    std::uint32_t tag;
    const void *value;
    std::uint32_t len;

    void *writable() const { return const_cast<void *>(value); }
    std::int32_t signed_len() const { return static_cast<std::int32_t>(len); }
};

std::string repeated(const std::string &part, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += part;
    return text;
}

/// What values point to.
const std::uint8_t kOne = 0x01;
const Number kNumber = number_of("FF");
const String kOctets = string_of(4, hex("AB CD"));
const String kBits = string_of(3, hex("A0 C0"), 5);
const String kOid = string_of(6, "1.2.840");
const String kText = string_of(12, "A");
const String kText200 = string_of(4, std::string(200, 'x'));
const String kLongOid = string_of(6, "1.2" + repeated(".3", 100));
const Node kNode = node_of("30 80 05 00 00 00");

class Build : public ::testing::Test {
    LeakCheck leaks_;
};

TEST_F(Build, EncodesUniversalTypes) {
    const auto check = [](const Value &v, std::uint32_t form, const std::string &result) {
        SCOPED_TRACE(testing::Message() << "tag " << v.tag << " len " << v.len << " form " << form);
        const bool ok = result != "empty";
        // What the node held before is gone in either case.
        const Node node = node_of("30 80 02 01 05 00 00");
        EXPECT_EQ(encodeToBER(node.get(), v.tag, v.value, v.signed_len(), form), ok ? 0 : 0x42090101U);
        EXPECT_EQ(hex_of(node.get()), result);
        EXPECT_EQ(encodeToBER_CS(node.get(), 2, v.tag, v.value, v.signed_len(), form), ok ? 0 : 0x420A0101U);
        EXPECT_EQ(hex_of(node.get()), ok ? "82" + result.substr(2) : "empty");
        EXPECT_EQ(node->eoc, nullptr);
    };
    check({1, &kOne, 1}, kLong, "01 81 01 01");
    check({2, kNumber.get(), 2}, kShort, "02 02 00 FF");
    check({3, kBits.get(), 1}, kShort, "03 02 05 A0");
    check({4, kOctets.get(), 0}, kShort, "04 00");
    check({5, nullptr, 0}, kLong, "05 81 00");
    check({6, kOid.get(), 7}, kShort, "06 03 2A 86 48");
    check({23, kText.get(), 1}, kShort, "17 01 41");
    check({32, kText.get(), 0}, kShort, "0C 01 41");
    check({19, kText200.get(), 127}, kShort, "13 7F" + repeated(" 78", 127));
    check({4, kText200.get(), 200}, kLong, "04 81 C8" + repeated(" 78", 200));
    check({4, kOctets.get(), 0xFFFFFFFF}, kLong, "empty");
    check({4, kOctets.get(), 2}, kIndefinite, "empty");
    check({4, kOctets.get(), 2}, 3, "empty");
    // More than a length of one octet holds (of an identifier the text counts) or the value has; values and
    // types that there are not.
    const Value refused[] = {
        {4, kText200.get(), 128}, {3, kText200.get(), 127}, {6, kLongOid.get(), 128},  {4, kOctets.get(), 3},
        {4, nullptr, 0},          {32, nullptr, 0},         {16, kNode.get(), 0},      {33, kNode.get(), 0},
        {26, kOctets.get(), 2},   {0, kOctets.get(), 2},    {0x104, kOctets.get(), 2},
    };
    for (const Value &value : refused)
        check(value, kShort, "empty");
    EXPECT_EQ(encodeToBER(nullptr, 5, nullptr, 0, 0), 0x42090101U);
    EXPECT_EQ(encodeToBER_CS(nullptr, 0, 5, nullptr, 0, 0), 0x420A0101U);
    EXPECT_EQ(encodeToBER_CS(new_node().get(), 0x100, 5, nullptr, 0, 0), 0x420A0101U);
}

TEST_F(Build, EncodesAnyStringByItsType) {
    struct Case {
        std::int32_t type;
        const char *data;
        std::uint32_t form;
        std::string encoded, appended;
    };
    const Case cases[] = {
        {2, "00 00 7F", kShort, "02 01 7F", "30 03 02 01 7F"},
        {2, "00 00", kShort, "02 01 00", "30 03 02 01 00"},
        {2, "", kShort, "02 01 00", "30 03 02 01 00"},
        {10, "80", kShort, "0A 02 00 80", "30 04 0A 02 00 80"},  // a number without a sign
        {1, "01", kShort, "01 01 01", "30 03 01 01 01"},
        {6, "31 2E 32", kShort, "06 01 2A", "30 03 06 01 2A"},
        {22, "41", kLong, "16 81 01 41", "30 04 16 81 01 41"},
        // Only appends wrap the octets of a SEQUENCE or SET, and take complete elements.
        {16, "05 00", kShort, "empty", "30 04 30 02 05 00"},
        {48, "05 00", kLong, "empty", "30 05 30 81 02 05 00"},
        {49, "05 00", kIndefinite, "empty", "30 06 31 80 05 00 00 00"},
        {0xA0, "A0 02 05 00", kShort, "empty", "30 04 A0 02 05 00"},
        {0x80, "80 80 04 00 00 00", kShort, "empty", "30 06 80 80 04 00 00 00"},
        {0xA0, "A1 02 05 00", kShort, "empty", "empty"},
        {0xA0, "A0 02 05 00 00", kShort, "empty", "empty"},
        {12, "41", kIndefinite, "empty", "empty"},
        {26, "41", kShort, "empty", "empty"},
        {-1, "41", kShort, "empty", "empty"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << "type " << c.type << ": " << c.data);
        const String string = string_of(c.type, hex(c.data));
        const Node node = new_node();
        const Node seq = new_node();
        EXPECT_EQ(encodeToBER(node.get(), 32, string.get(), 0, c.form),
                  c.encoded != "empty" ? 0 : 0x42090101U);
        EXPECT_EQ(hex_of(node.get()), c.encoded);
        EXPECT_EQ(addToBERSequence(seq.get(), 32, string.get(), 0, static_cast<std::int32_t>(c.form)),
                  c.appended != "empty" ? 0 : 0x420B0101U);
        EXPECT_EQ(hex_of(seq.get()), c.appended);
    }
}

TEST_F(Build, AppendsToContainers) {
    // A container of indefinite length becomes definite; its end-of-contents octets go.
    const Node seq = node_of("30 80 02 01 05 00 00");
    EXPECT_EQ(addToBERSequence(seq.get(), 16, kNode.get(), 0, 99), 0U);  // the form is not for nodes
    EXPECT_EQ(hex_of(seq.get()), "30 09 02 01 05 30 80 05 00 00 00");
    EXPECT_EQ(seq->eoc, nullptr);
    EXPECT_EQ(addToBERSequence_CS(seq.get(), 3, 5, nullptr, 0, 1), 0U);
    EXPECT_EQ(addToBERSequence(seq.get(), 5, nullptr, 0, 0), 0U);
    EXPECT_EQ(hex_of(seq.get()), "A3 0E 02 01 05 30 80 05 00 00 00 05 81 00 05 00") << "keeps its identifier";
    EXPECT_EQ(addToBERSet(seq.get(), 5, nullptr, 0, 0), 0U);
    EXPECT_EQ(*seq->tag, 0x31);
}

TEST_F(Build, LengthOctetsGrowWithTheContents) {
    const String zeros = string_of(4, std::string(65536, '\0'));
    const Node seq = new_node();
    const std::pair<std::uint32_t, const char *> steps[] = {
        {125, "7F"}, {0, "81 81"}, {122, "81 FD"}, {0, "81 FF"}, {0, "82 01 01"}, {65536, "83 01 01 06"}};
    for (const auto &[len, length] : steps) {
        ASSERT_EQ(addToDERSequence(seq.get(), 4, zeros.get(), len), 0U);
        EXPECT_EQ(hex_of(seq->length, getASN1LengthSize(seq->length)), length);
    }
    EXPECT_EQ(getSequenceChildNum(seq.get()), std::size(steps));
}

TEST_F(Build, AppendsANodeToItself) {
    for (const std::uint32_t tag : {16U, 17U, 48U, 49U}) {
        const Node seq = node_of("30 80 02 01 05 00 00");
        EXPECT_EQ(addToBERSequence(seq.get(), tag, seq.get(), 0, 0), 0U);
        EXPECT_EQ(hex_of(seq.get()), "30 0A 02 01 05 30 80 02 01 05 00 00");
    }
    const Node taken_over = node_of("30 03 02 01 05");
    EXPECT_EQ(addToBERSequence(taken_over.get(), 33, taken_over.get(), 0, 0), 0x420B0101U);
    EXPECT_EQ(hex_of(taken_over.get()), "empty");
}

/// Each append operation under one shape: the code it fails with, the container's identifier, and that of
/// the empty list it makes.
struct Append {
    std::uint32_t (*call)(ASN1_UNIT *seq, Value v);
    std::uint32_t code;
    std::uint8_t identifier, empty_list = 0;
};
constexpr std::uint8_t kStrings = 0x24;
#define BER(name) [](ASN1_UNIT *seq, Value v) { return addToBER##name(seq, v.tag, v.value, v.len, 0); }
#define DER(name) [](ASN1_UNIT *seq, Value v) { return addToDER##name(seq, v.tag, v.writable(), v.len); }
const Append kAppends[] = {
    {BER(Sequence), 0x420B0101, 0x30},
    {BER(SequenceOf), 0x420C0101, 0x30, 0x10},
    {BER(Set), 0x420D0101, 0x31},
    {BER(SetOf), 0x420E0101, 0x31, 0x11},
    {[](ASN1_UNIT *seq, Value v) { return addToBERSequence_CS(seq, 1, v.tag, v.value, v.len, 0); },
     0x420F0101, 0xA1},
    {BER(StringSequence), 0x42110101, kStrings},
    {DER(Sequence), 0x43040101, 0x30},
    {DER(SequenceOf), 0x43050101, 0x30, 0x10},
    {DER(Set), 0x43060101, 0x31},
    {DER(SetOf), 0x43070101, 0x31, 0x11},
    {[](ASN1_UNIT *seq, Value v) { return addToDERSequence_CS(seq, 1, v.tag, v.writable(), v.len); },
     0x43080101, 0xA1},
};

TEST_F(Build, EveryAppendWorksAndFailsWithItsOwnCode) {
    const Node empty = new_node();
    const Value bad[] = {
        {1, nullptr, 1},      {23, nullptr, 11},     {4, nullptr, 1},       {16, nullptr, 0},
        {33, nullptr, 1},     {7, kOctets.get(), 1}, {4, kOctets.get(), 3}, {4, kOctets.get(), 0x80000000},
        {16, empty.get(), 0},
    };
    for (const Append &append : kAppends) {
        SCOPED_TRACE(append.code);
        const Node seq = new_node();
        EXPECT_EQ(append.call(seq.get(), {4, kOctets.get(), 2}), 0U);
        EXPECT_EQ(append.call(seq.get(), {4, kOctets.get(), 2}), 0U);
        EXPECT_EQ(hex_of(seq.get()), hex_of(&append.identifier, 1) + " 08 04 02 AB CD 04 02 AB CD");
        EXPECT_EQ(append.call(nullptr, {4, kOctets.get(), 2}), append.code);
        for (const Value &value : bad) {
            const Node filled = node_of("30 03 02 01 05");
            EXPECT_EQ(append.call(filled.get(), value), append.code) << "tag " << value.tag;
            EXPECT_EQ(hex_of(filled.get()), "empty") << "tag " << value.tag;
        }
    }
    EXPECT_EQ(addToBERSequence_CS(new_node().get(), 0x100, 5, nullptr, 0, 0), 0x420F0101U);
    EXPECT_EQ(addToDERSequence_CS(new_node().get(), 0x100, 5, nullptr, 0), 0x43080101U);
}

TEST_F(Build, OwnershipOfNodes) {
    const auto broken = [] {
        Node node = node_of("30 00");
        *node->length = 0x85;  // a length that is refused
        return node;
    };
    const Node child = node_of("04 01 AA");
    for (const Append &append : kAppends) {
        SCOPED_TRACE(append.code);
        const std::uint32_t done = append.identifier == kStrings ? append.code : 0;
        const Node seq = new_node();
        for (const std::uint32_t tag : {16U, 17U, 48U, 49U}) {
            EXPECT_EQ(append.call(seq.get(), {tag, child.get(), 0}), done);
            EXPECT_EQ(append.call(nullptr, {tag, child.get(), 0}), append.code);
            EXPECT_EQ(append.call(broken().get(), {tag, child.get(), 0}), append.code);
        }
        // With tag 33 the append frees the child, which LeakCheck and AddressSanitizer see.
        EXPECT_EQ(append.call(seq.get(), {33, dup_ASN1_UNIT(child.get()), 1}), done);
        EXPECT_EQ(append.call(nullptr, {33, dup_ASN1_UNIT(child.get()), 1}), append.code);
        EXPECT_EQ(append.call(nullptr, {33, dup_ASN1_UNIT(child.get()), 0}), append.code);
        EXPECT_EQ(append.call(broken().get(), {33, dup_ASN1_UNIT(child.get()), 1}), append.code);
    }
    EXPECT_EQ(hex_of(child.get()), "04 01 AA") << "still the caller's";
}

TEST_F(Build, EmptyLists) {
    for (const Append &append : kAppends) {
        if (append.empty_list == 0) continue;
        const Value empties[] = {
            {2, nullptr, 0},
            {1, nullptr, 0},
            {5, nullptr, 0},
            {4, kOctets.get(), 0},
            {33, node_of("04 00").release(), 0}};  // a node with tag 33 is appended only with a len
        for (const Value &value : empties) {
            const Node node = node_of("30 03 02 01 05");  // what was there is lost
            EXPECT_EQ(append.call(node.get(), value), 0U);
            EXPECT_EQ(hex_of(node.get()), hex_of(&append.empty_list, 1) + " 00") << "tag " << value.tag;
        }
        const Node list = new_node();
        EXPECT_EQ(append.call(list.get(), {16, kNode.get(), 0}), 0U);
        EXPECT_EQ(hex_of(list.get()), hex_of(&append.identifier, 1) + " 06 30 80 05 00 00 00");
    }
}

TEST_F(Build, AppendsStringSegments) {
    const auto appended = [](const char *before, std::uint32_t tag, const String &value) {
        const Node seq = node_of(before);
        const std::uint32_t status = addToBERStringSequence(seq.get(), tag, value.get(), 2, 0);
        EXPECT_EQ(status, seq->tag == nullptr ? 0x42110101 : 0U);
        return hex_of(seq.get());
    };
    EXPECT_EQ(appended("24 03 04 01 AA", 4, kOctets), "24 07 04 01 AA 04 02 AB CD");
    EXPECT_EQ(appended("23 04 03 02 00 AA", 3, kBits), "23 09 03 02 00 AA 03 03 05 A0 C0");
    EXPECT_EQ(appended("24 03 04 01 AA", 12, kOctets), "empty");
    EXPECT_EQ(appended("30 00", 16, kOctets), "empty");
    // Only the last segment may end within an octet.
    for (const char *before : {"23 04 03 02 05 A0", "23 02 03 00", "23 03 03 02 00", "23 03 04 01 00"})
        EXPECT_EQ(appended(before, 3, kBits), "empty") << before;
}

TEST_F(Build, CheckDerRewritesTheValue) {
    // The offset goes, the digits stay. Times without seconds are refused.
    const std::pair<const char *, const char *> times[] = {
        {"250102030405Z", "250102030405Z"},
        {"250102030405+0900", "250102030405Z"},
        {"250102030405-0900", "250102030405Z"},
        {"2501020304Z", nullptr},
        {"2501020304+0900", nullptr},
        {"251302030405+0900", nullptr},
        {"garbage of another length", "garbage of another length"}};
    for (const auto &[text, after] : times) {
        const String time = string_of(23, text);
        auto len = static_cast<std::uint32_t>(time->length);
        EXPECT_EQ(checkDER(23, time.get(), &len), after != nullptr ? 0 : 0x43010101U) << text;
        EXPECT_EQ(std::string(reinterpret_cast<const char *>(time->data), len),
                  after != nullptr ? after : text);
        EXPECT_EQ(time->length, static_cast<std::int32_t>(len));
    }
    std::uint32_t len = 1;
    for (const int value : {0x00, 0x01, 0x80, 0xFF}) {
        auto octet = static_cast<std::uint8_t>(value);
        EXPECT_EQ(checkDER(1, &octet, &len), 0U);
        EXPECT_EQ(octet, value == 0 ? 0x00 : 0xFF);
    }
    EXPECT_EQ(checkDER(1, nullptr, &len), 0x43010101U);
    EXPECT_EQ(checkDER(23, nullptr, &len), 0x43010101U);
    EXPECT_EQ(checkDER(24, nullptr, &len), 0U);
    EXPECT_EQ(checkDER(32, nullptr, nullptr), 0U);
}

TEST_F(Build, DerHasTheCanonicalFormAndShortestLength) {
    const String minutes = string_of(23, "2501020304+0900");
    const String offset = string_of(23, "250102030405+0900");
    const String number = string_of(2, hex("80" + repeated("00", 126)));
    std::uint8_t yes = 0x01;
    const std::pair<Value, std::string> cases[] = {
        {{1, &yes, 1}, "01 01 FF"},
        {{23, minutes.get(), 15}, "empty"},
        {{23, offset.get(), 17}, "17 0D 32 35 30 31 30 32 30 33 30 34 30 35 5A"},
        {{3, kText200.get(), 126}, "03 7F 00" + repeated(" 78", 126)},
        // The length form follows the contents, not the text or record that they come from.
        {{3, kText200.get(), 127}, "03 81 80 00" + repeated(" 78", 127)},
        {{6, kLongOid.get(), 203}, "06 65 2A" + repeated(" 03", 100)},
        {{32, number.get(), 127}, "02 81 80 00 80" + repeated(" 00", 126)},
        // Times inside a record of any type pass as they are.
        {{32, minutes.get(), 15}, "17 0F 32 35 30 31 30 32 30 33 30 34 2B 30 39 30 30"},
    };
    const Node node = new_node();
    for (const auto &[v, result] : cases) {
        SCOPED_TRACE(testing::Message() << "tag " << v.tag << " len " << v.len);
        EXPECT_EQ(encodeToDER(node.get(), v.tag, v.writable(), v.signed_len()),
                  result == "empty" ? 0x43020101 : 0U);
        EXPECT_EQ(hex_of(node.get()), result);
        if (v.tag == 23) continue;  // rewritten by now
        EXPECT_EQ(encodeToDER_CS(node.get(), 0, v.tag, v.writable(), v.signed_len()), 0U);
        EXPECT_EQ(hex_of(node.get()), "80" + result.substr(2));
    }
    EXPECT_EQ(yes, 0xFF) << "the caller's value is rewritten";
    EXPECT_EQ(text_of(offset.get()).substr(0, 15), "type 23 extra 1");

    EXPECT_EQ(encodeToDER(node.get(), 1, nullptr, 1), 0x43020101U);
    EXPECT_EQ(encodeToDER_CS(node.get(), 0x100, 5, nullptr, 0), 0x43030101U);
    EXPECT_EQ(addToDERSequence(node.get(), 23, minutes.get(), 15), 0x43040101U);
}

TEST_F(Build, FailingAllocations) {
    // Each gives the code and leaves the node empty. The node grows past one length octet.
    const auto sweep = [](auto call, std::uint32_t code) {
        const auto run = [&] {
            const Node node = node_of("30 7F 04 7D" + repeated("78", 125));
            if (node == nullptr) return false;
            const std::uint32_t status = call(node.get());
            EXPECT_EQ(status, node->tag == nullptr ? code : 0);
            return status == 0;
        };
        EXPECT_GT(sweep_failing_allocations(run), 5U) << std::hex << code;
    };
    for (const Append &append : kAppends) {
        if (append.identifier == kStrings) continue;  // it appends as the others do
        for (const Value &v : {Value{4, kOctets.get(), 2}, {16, kNode.get(), 1}, {2, kNumber.get(), 0}}) {
            if (v.len == 0 && append.empty_list == 0) continue;
            sweep([&](ASN1_UNIT *seq) { return append.call(seq, v); }, append.code);
        }
    }
    for (const Value &v : {Value{2, kNumber.get(), 2}, {4, kOctets.get(), 2}, {6, kOid.get(), 7}})
        sweep([&](ASN1_UNIT *to) { return encodeToDER(to, v.tag, v.writable(), v.signed_len()); },
              0x43020101);
    const String time = string_of(23, "250102030405+0900");
    EXPECT_EQ(sweep_failing_allocations([&] {
                  std::uint32_t len = 17;
                  const std::uint32_t status = checkDER(23, time.get(), &len);
                  EXPECT_EQ(status, time->length == 17 ? 0x43010101 : 0U);
                  return status == 0;
              }),
              3U);
}

}  // namespace
}  // namespace tlx_test
