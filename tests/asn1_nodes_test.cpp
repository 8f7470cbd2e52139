// Reading nodes: headers, bounds, length forms, child access.

#include "support/allocation.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

constexpr std::uint32_t kNone = 0xFFFFFFFF;

/// What getDERChildAt returned, as text; frees it.
std::string shown(void *object, std::uint32_t expected) {
    const Child child(object, expected);
    if (object == nullptr) return "null";
    if (child.octet != nullptr) return hex_of(child.octet.get(), 1);
    if (child.number != nullptr) return std::to_string(get_BIGINT_word(child.number.get()));
    return child.node != nullptr ? "node " + hex_of(child.node.get()) : text_of(child.string.get());
}

/// A node as it is written; null for a null one. Copies are the same, and end-of-contents octets are known.
std::string written(const Node &node) {
    if (node == nullptr) return "null";
    if (node->tag == nullptr) return "empty";
    const Node copy(dup_ASN1_UNIT(node.get()));
    if (copy == nullptr) return "null";
    const std::string text = hex_of(node.get());
    for (const ASN1_UNIT *each : {node.get(), copy.get()}) {
        const bool indefinite = *each->length == 0x80;
        if (each->eoc != (indefinite ? each->value + getASN1ValueLength(each) : nullptr)) return "eoc";
    }
    const std::string same = hex_of(copy.get());
    return text == "empty" || same == text || same == "empty" ? text : "the copy differs";
}

std::string measure(const Row &row) {
    const std::uint32_t length = getASN1IndefiniteValueLength(hex(row[1]).data());
    if (getASN1ValueLengthFromLO(hex("80" + row[1]).data()) != length) return "another length by its octet";
    return length == kNone ? "refused" : std::to_string(length);
}

std::string form(const Row &row) {
    const Node node = row[2] == "empty" ? new_node() : node_of(row[2]);
    if (node == nullptr) return "null";
    const std::uint32_t status = setBERLengthForm(node.get(), row.number(1));
    tlx_fail_allocation(0);  // not for the texts compared here
    if (status == 0) return written(node);
    EXPECT_EQ(written(node), row[2]) << "unchanged";
    return status_text(status);
}

std::string children(const Row &row) {
    const Node node = node_of(row[1]);
    if (node == nullptr) return "null";
    std::string text = std::to_string(getSequenceChildNum(node.get())) + ":";
    for (std::uint32_t i = 0, type = 0; (type = getChildType(node.get(), i)) != kNone; ++i) {
        const auto identifier = static_cast<std::uint8_t>(type);
        text += " " + hex_of(&identifier, 1);
    }
    return text;
}

std::string child(const Row &row) {
    Octets octets = hex(row[1]);
    octets.insert(octets.begin(), {0x30, static_cast<std::uint8_t>(octets.size())});
    const Node parent(decodeToBERSequence(octets.data()));
    if (parent == nullptr) return "null";
    const std::uint32_t expected = row.number(2);
    std::uint32_t cursor = 0;
    const std::string result = shown(getDERChildAt(parent.get(), 0, expected), expected);
    tlx_fail_allocation(0);
    EXPECT_EQ(shown(getBERChildOffset(parent.get(), 0, expected, &cursor), expected), row[3]);
    EXPECT_EQ(shown(getDERChildAt(parent.get(), 1, expected), expected), "null");
    return result;
}

using Nodes = LeakFreeTest;

TEST_F(Nodes, Rows) {
    const auto read = [](const Row &row) { return written(node_of(row[1])); };
    const auto read_without_length = [](const Row &row) {
        return written(Node(decodeToDERSequence(hex(row[1]).data())));
    };
    const auto length_octets = [](const Row &row) {
        return std::to_string(getASN1LengthSize(hex(row[1]).data()));
    };
    const auto length = [](const Row &row) {
        return status_text(getASN1ValueLengthFromLO(hex(row[1]).data()));
    };
    const auto shorter_form = [](const Row &row) {
        return std::to_string(getASN1LengthForm(row.number(1), static_cast<std::int32_t>(row.number(2))));
    };
    expect_rows("nodes.txt", {{"read", {read, {"null", "empty"}}},
                              {"read without length", {read_without_length, {"null", "empty"}}},
                              {"measure", {measure}},
                              {"length octets", {length_octets}},
                              {"length", {length}},
                              {"shorter form", {shorter_form}},
                              {"form", {form, {"null", "42100101"}}},
                              {"children", {children, {"null"}}},
                              {"child", {child, {"null", "node empty"}}}});
}

/// No prefix of an element is read, and the element is the same within a container of either form.
TEST_F(Nodes, EveryElementWithinBounds) {
    for (const Row &row : read_rows("nodes.txt")) {
        if (row[0] != "read" || row[2] == "null") continue;
        SCOPED_TRACE(row.place);
        const Octets whole = hex(row[2]);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            // A copy of its own, so that a read past its end is one past the block.
            const Octets prefix(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_EQ(decodeToDERSequence_n(prefix.data(), static_cast<std::uint32_t>(size)), nullptr);
        }
        const auto size = static_cast<std::uint8_t>(whole.size() + 5);
        for (const std::string &parent : {"30" + hex_of(&size, 1) + "05 00" + row[2] + "02 01 05",
                                          "30 80 05 00" + row[2] + "02 01 05 00 00"}) {
            const Node node = node_of(parent);
            EXPECT_EQ(getSequenceChildNum(node.get()), 3U);
            EXPECT_EQ(shown(getDERChildAt(node.get(), 2, 2), 2), "5");
            const std::string child = shown(getDERChildAt(node.get(), 1, 16), 16);
            EXPECT_EQ(child, whole[0] == 0x30 ? "node " + row[2] : "null");
        }
    }
}

TEST_F(Nodes, IndefiniteLengthsNestTo64) {
    for (const std::uint32_t depth : {1U, 64U, 65U, 100000U}) {
        Octets octets;
        for (std::uint32_t i = 0; i < depth; ++i)
            octets.insert(octets.end(), {0x30, 0x80});
        octets.resize(4 * std::size_t{depth});
        octets.shrink_to_fit();
        const Node trusting(decodeToDERSequence(octets.data()));
        const Node bounded(decodeToDERSequence_n(octets.data(), 4 * depth));
        EXPECT_EQ(getASN1ValueLength(trusting.get()), depth > 64 ? kNone : 4 * depth - 4) << depth;
        EXPECT_EQ(getASN1ValueLength(bounded.get()), depth > 64 ? kNone : 4 * depth - 4) << depth;
    }
}

TEST_F(Nodes, CursorOverChildren) {
    const Node node = node_of("30 0F 02 01 05 24 80 04 01 AA 00 00 02 01 06 05 00");
    std::uint32_t cursor = 0;
    struct {
        std::uint32_t index, expected;
        const char *result;
        std::uint32_t cursor;
    } const steps[] = {
        {0, 2, "5", 0},  // which means "from the start" again, so that the index tells
        {0, 2, "5", 0},     {1, 4, "type 4 extra 0: 04 01 AA", 3},
        {0, 4, "null", 3},  // an INTEGER comes next; a child that does not match is not passed
        {0, 2, "6", 10},    {0, 5, "00", 13},
        {0, 5, "null", 13},
    };
    for (const auto &step : steps) {
        EXPECT_EQ(shown(getBERChildOffset(node.get(), step.index, step.expected, &cursor), step.expected),
                  step.result);
        EXPECT_EQ(cursor, step.cursor);
    }
    for (const std::uint32_t outside : {15U, 16U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        cursor = outside;
        EXPECT_EQ(getDERChildOffset(node.get(), 0, 2, &cursor), nullptr) << outside;
        EXPECT_EQ(cursor, outside);
    }
    EXPECT_EQ(getBERChildOffset(node.get(), 0, 2, nullptr), nullptr);
}

TEST_F(Nodes, NullsAndEmptyNodes) {
    EXPECT_EQ(decodeToBERSequence(nullptr), nullptr);
    EXPECT_EQ(decodeToDERSequence_n(nullptr, 10), nullptr);
    EXPECT_EQ(getASN1IndefiniteValueLength(nullptr), kNone);
    EXPECT_EQ(getASN1ValueLengthFromLO(nullptr), kNone);
    EXPECT_EQ(getASN1LengthSize(nullptr), 0U);
    EXPECT_EQ(dup_ASN1_UNIT(nullptr), nullptr);
    const Node empty(dup_ASN1_UNIT(new_node().get()));
    EXPECT_EQ(empty->tag, nullptr);
    std::uint32_t cursor = 0;
    for (const ASN1_UNIT *node : {empty.get(), static_cast<ASN1_UNIT *>(nullptr)}) {
        EXPECT_EQ(getASN1ValueLength(node), kNone);
        EXPECT_EQ(getSequenceChildNum(node), 0U);
        EXPECT_EQ(getChildType(node, 0), kNone);
        EXPECT_EQ(getBERChildAt(node, 0, 2), nullptr);
        EXPECT_EQ(getBERChildOffset(node, 0, 2, &cursor), nullptr);
    }
}

}  // namespace
