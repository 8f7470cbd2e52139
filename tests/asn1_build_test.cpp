// Building nodes: the BER and DER layers.

#include "support/allocation.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

/// Hexadecimal text in which a run of nine or more octets is written as "00*9".
std::string folded(const std::string &text) {
    std::string result;
    for (std::size_t at = 0, count = 1; at < text.size(); at += 3 * count, count = 1) {
        while (at + 3 * count < text.size() && text.compare(at, 2, text, at + 3 * count, 2) == 0)
            ++count;
        if (count < 9) count = 1;
        result += (at > 0 ? " " : "") + text.substr(at, 2) + (count > 1 ? "*" + std::to_string(count) : "");
    }
    return result;
}
/// Text in which the `unit` characters before "*9" were written once for nine times.
std::string unfolded(std::string text, std::size_t unit) {
    for (std::size_t star = 0; (star = text.find('*')) != text.npos;) {
        std::size_t digits = 0;
        std::string all;
        for (int left = std::stoi(text.substr(star + 1), &digits); left > 1; --left)
            all += text.substr(star - unit, unit);
        text.replace(star, 1 + digits, all);
    }
    return text;
}

/// A value as a row has it: "null", "self", "empty" or octets for nodes, one octet for a BOOLEAN, digits for
/// a number, "type:text" for a string.
struct Value {
    Value(std::uint32_t tag, const std::string &text, ASN1_UNIT *self = nullptr) {
        if (text == "null") return;
        if (text == "self") {
            pointer = self;
        } else if (takes_node(tag)) {
            node = text == "empty" ? new_node() : node_of(unfolded(text, 2));
            pointer = tag == 33 ? node.release() : node.get();  // an append frees the one
        } else if (tag == 1) {
            pointer = &(octet = hex(text)[0]);
        } else if (tag == 2 || tag == 10) {
            number = number_of(text.c_str());
            pointer = number.get();
        } else {
            const std::size_t colon = text.find(':');
            const int type = std::stoi(text, nullptr, 0);
            string = string_of(type, unfolded(text.substr(colon + 1), 1), type == 3 ? 5 : 0);
            if (octets(string.get()) != "(null)") pointer = string.get();
        }
    }
    Node node;
    String string;
    Number number;
    std::uint8_t octet = 0;
    void *pointer = nullptr;
};

/// The node, or "refused" for the status of that; the node is empty then.
std::string outcome(const ASN1_UNIT *node, std::uint32_t status, std::uint32_t code) {
    EXPECT_EQ(status == 0, node != nullptr && node->tag != nullptr) << status_text(status);
    EXPECT_TRUE(node == nullptr || node->eoc == nullptr);
    const std::string text = hex_of(node);  // "empty" for want of memory
    if (status == 0) return text == "empty" ? text : folded(text);
    return status == code ? "refused" : status_text(status);
}

/// What the row expects when both results are that, the second with an identifier of its own; else the one
/// that is not.
std::string agreed(const Row &row, const std::string &result, const std::string &other,
                   const std::string &identifier) {
    const std::string &expected = row.fields.back();
    if (result != expected) return result;
    return other == (expected == "refused" ? expected : identifier + expected.substr(2)) ? expected : other;
}

std::string encode(const Row &row) {
    const std::uint32_t tag = row.number(1), form = row.number(4);
    const auto len = static_cast<std::int32_t>(row.number(3));
    Value value(tag, row[2]);
    const Node owner(tag == 33 ? static_cast<ASN1_UNIT *>(value.pointer) : nullptr);
    // What the node held before is gone in either case.
    const Node node = node_of("30 80 02 01 05 00 00"), other = new_node();
    const std::uint32_t status = encodeToBER(node.get(), tag, value.pointer, len, form);
    const std::uint32_t other_status = encodeToBER_CS(other.get(), 2, tag, value.pointer, len, form);
    return agreed(row, outcome(node.get(), status, 0x42090101),
                  outcome(other.get(), other_status, 0x420A0101), "82");
}

std::string encode_in_der(const Row &row) {
    const std::uint32_t tag = row.number(1);
    const auto len = static_cast<std::int32_t>(row.number(3));
    const Node node = new_node(), other = new_node();
    Value value(tag, row[2]), same(tag, row[2]);
    const std::uint32_t status = encodeToDER(node.get(), tag, value.pointer, len);
    const std::uint32_t other_status = encodeToDER_CS(other.get(), 0, tag, same.pointer, len);
    return agreed(row, outcome(node.get(), status, 0x43020101),
                  outcome(other.get(), other_status, 0x43030101), "80");
}

std::string check(const Row &row) {
    const std::uint32_t tag = row.number(1);
    Value value(tag, row[2]);
    auto len = value.string != nullptr ? static_cast<std::uint32_t>(value.string->length) : 1;
    const std::uint32_t status = checkDER(tag, value.pointer, &len);
    EXPECT_EQ(len, value.string != nullptr ? static_cast<std::uint32_t>(value.string->length) : 1);
    if (status != 0) return status_text(status);
    if (value.pointer == nullptr) return "null";
    return tag == 1 ? hex_of(&value.octet, 1) : octets(value.string.get());
}

/// An append operation in both layers: the codes it fails with, the identifier of its containers, and that of
/// the empty list it makes.
struct Append {
    const char *names;  // that rows use for it
    std::uint32_t (*ber)(ASN1_UNIT *, std::uint32_t, const void *, std::uint32_t, std::int32_t);
    std::uint32_t ber_code;
    std::uint32_t (*der)(ASN1_UNIT *, std::uint32_t, void *, std::uint32_t);
    std::uint32_t der_code;
    std::uint8_t identifier, empty_list = 0;
};
constexpr auto kBerExplicit = [](ASN1_UNIT *seq, std::uint32_t tag, const void *value, std::uint32_t len,
                                 std::int32_t form) {
    return addToBERSequence_CS(seq, 1, tag, value, len, form);
};
constexpr auto kDerExplicit = [](ASN1_UNIT *seq, std::uint32_t tag, void *value, std::uint32_t len) {
    return addToDERSequence_CS(seq, 1, tag, value, len);
};
const Append kAppends[] = {
    {"all, nodes, sequences", addToBERSequence, 0x420B0101, addToDERSequence, 0x43040101, 0x30},
    {"all, nodes, sequences, lists", addToBERSequenceOf, 0x420C0101, addToDERSequenceOf, 0x43050101, 0x30,
     0x10},
    {"all, nodes", addToBERSet, 0x420D0101, addToDERSet, 0x43060101, 0x31},
    {"all, nodes, lists", addToBERSetOf, 0x420E0101, addToDERSetOf, 0x43070101, 0x31, 0x11},
    {"all, nodes", kBerExplicit, 0x420F0101, kDerExplicit, 0x43080101, 0xA1},
    {"all, octet segments", addToBERStringSequence, 0x42110101, nullptr, 0, 0x24},
    {"bit segments", addToBERStringSequence, 0x42110101, nullptr, 0, 0x23},
};

Node container(const std::string &text, std::uint8_t identifier) {
    if (text == "none") return nullptr;
    if (text == "empty") return new_node();
    Node node = node_of(hex_of(&identifier, 1) + (text == "broken" ? "00" : unfolded(text, 2)));
    if (text == "broken" && node != nullptr) *node->length = 0xFF;  // a length that is refused
    return node;
}

std::string append(const Row &row) {
    const std::uint32_t tag = row.number(4), len = row.number(6);
    const std::string &expected = row.fields.back();
    unsigned operations = 0;
    for (const Append &each : kAppends) {
        if (std::string(each.names).find(row[1]) == std::string::npos) continue;
        for (const bool in_der : {false, true}) {
            if (in_der ? each.der == nullptr || (row[2] != "0" && row[2] != "DER") : row[2] == "DER")
                continue;
            ++operations;
            const Node seq = container(row[3], each.identifier);
            Value value(tag, row[5], seq.get());
            const std::uint32_t status = in_der ? each.der(seq.get(), tag, value.pointer, len)
                                                : each.ber(seq.get(), tag, value.pointer, len,
                                                           static_cast<std::int32_t>(row.number(2)));
            const std::uint32_t code = in_der ? each.der_code : each.ber_code;
            const std::string result = outcome(seq.get(), status, code);
            const std::uint8_t *identifier = expected == "00" ? &each.empty_list : &each.identifier;
            if (result != (expected == "refused" ? expected : hex_of(identifier, 1) + " " + expected))
                return result + " by " + status_text(code);
        }
    }
    return operations > 0 ? expected : "no operation";
}

using Build = LeakFreeTest;

TEST_F(Build, Rows) {
    std::set<std::string> refusals;
    for (const Append &each : kAppends)
        for (const std::uint32_t code : {each.ber_code, each.der_code})
            refusals.insert({"refused by " + status_text(code), "empty by " + status_text(code)});
    expect_rows("build.txt", {{"encode", {encode, {"refused", "empty"}}},
                              {"encode in DER", {encode_in_der, {"refused", "empty"}}},
                              {"check", {check, {"43010101", "null"}}},
                              {"append", {append, refusals}}});
}

TEST_F(Build, IdentifiersAndALongLength) {
    const Node seq = node_of("30 80 02 01 05 00 00");
    EXPECT_EQ(addToBERSequence_CS(seq.get(), 3, 5, nullptr, 0, 1), 0U);
    EXPECT_EQ(addToBERSequence(seq.get(), 5, nullptr, 0, 0), 0U);
    EXPECT_EQ(hex_of(seq.get()), "A3 08 02 01 05 05 81 00 05 00") << "keeps its identifier";
    EXPECT_EQ(addToBERSet(seq.get(), 5, nullptr, 0, 0), 0U);
    EXPECT_EQ(*seq->tag, 0x31);

    EXPECT_EQ(encodeToBER(nullptr, 5, nullptr, 0, 0), 0x42090101U);
    EXPECT_EQ(encodeToBER_CS(nullptr, 0, 5, nullptr, 0, 0), 0x420A0101U);
    EXPECT_EQ(encodeToBER_CS(seq.get(), 0x100, 5, nullptr, 0, 0), 0x420A0101U);
    EXPECT_EQ(encodeToDER_CS(seq.get(), 0x100, 5, nullptr, 0), 0x43030101U);
    EXPECT_EQ(addToBERSequence_CS(seq.get(), 0x100, 5, nullptr, 0, 0), 0x420F0101U);
    EXPECT_EQ(addToDERSequence_CS(seq.get(), 0x100, 5, nullptr, 0), 0x43080101U);
    EXPECT_EQ(hex_of(seq.get()), "empty");
    EXPECT_EQ(addToDERSequence(seq.get(), 4, string_of(4, Octets(65536)).get(), 65536), 0U);
    EXPECT_EQ(hex_of(seq->length, getASN1LengthSize(seq->length)), "83 01 00 05")
        << "grows with the contents";
}

/// A caller's value is rewritten in its canonical form. In a record of any type it is left alone.
TEST_F(Build, CanonicalValuesAreTheCallers) {
    const Node node = new_node();
    Value octet(1, "01"), offset(23, "23:250102030405+0900"), any(32, "23:250102030405+0900");
    EXPECT_EQ(encodeToDER(node.get(), 1, octet.pointer, 1), 0U);
    EXPECT_EQ(octet.octet, 0xFF);
    EXPECT_EQ(encodeToDER(node.get(), 23, offset.pointer, 17), 0U);
    EXPECT_EQ(text_of(offset.string.get()).substr(0, 15), "type 23 extra 1");
    EXPECT_EQ(encodeToDER(node.get(), 32, any.pointer, 17), 0U);
    EXPECT_EQ(any.string->length, 17);
}

}  // namespace
