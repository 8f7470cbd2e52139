// Reading nodes: headers, bounds, length forms, child access.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/allocation.hpp"
#include "support/octets.hpp"

namespace tlx_test {
namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;

class Nodes : public ::testing::Test {
    LeakCheck leaks_;
};

TEST_F(Nodes, ReadAndWrittenBack) {
    struct Case {
        const char *input, *written;
        std::uint32_t value_length, children;
    };
    const Case cases[] = {
        {"04 80 00 00", "04 80 00 00", 0, 0},
        {"30 03 02 01 05 DE AD", "30 03 02 01 05", 3, 1},
        // Only the identifier of end-of-contents octets is looked at; what is written is 00 00.
        {"30 80 02 01 05 00 07", "30 80 02 01 05 00 00", 3, 1},
        {"30 80 30 80 05 00 00 00 00 00", "30 80 30 80 05 00 00 00 00 00", 6, 1},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.input);
        const Octets input = hex(c.input);
        const Node bounded = node_of(c.input);
        const Node trusting(decodeToDERSequence(input.data()));
        const Node copy(dup_ASN1_UNIT(bounded.get()));
        for (const ASN1_UNIT *node : {bounded.get(), trusting.get(), copy.get()}) {
            EXPECT_EQ(hex_of(node), c.written);
            EXPECT_EQ(getASN1ValueLength(node), c.value_length);
            EXPECT_EQ(getSequenceChildNum(node), c.children);
            EXPECT_EQ(node->eoc, input[1] == 0x80 ? node->value + c.value_length : nullptr);
        }
    }
}

TEST_F(Nodes, NoPrefixOfAnElementIsRead) {
    const Octets whole = hex("30 80 24 80 04 82 00 01 AA 00 00 00 00");
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Octets prefix(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(decodeToDERSequence_n(prefix.data(), static_cast<std::uint32_t>(size)), nullptr) << size;
    }
}

TEST_F(Nodes, RefusedLengths) {
    for (const char *text :
         {"30 84 80 00 00 00", "30 84 FF FF FF FF", "30 85 00 00 00 00 01 00", "30 FF 00"}) {
        const Octets input = hex(text);
        EXPECT_EQ(decodeToDERSequence(input.data()), nullptr) << text;
        EXPECT_EQ(getASN1ValueLengthFromLO(input.data() + 1), kNone) << text;
        const Node parent = node_of("30 10 " + std::string(text) + "00 00 00 00 00 00 00 00 00 00 00 00 00");
        EXPECT_EQ(getChildType(parent.get(), 0), kNone) << text;
        EXPECT_EQ(getSequenceChildNum(parent.get()), 0U) << text;
    }
    // 2 GiB and no octet of it: believed only where the caller vouches for it.
    EXPECT_EQ(node_of("30 84 7F FF FF FF 00"), nullptr);
    EXPECT_EQ(getASN1ValueLengthFromLO(hex("84 7F FF FF FF").data()), 0x7FFFFFFFU);

    EXPECT_EQ(decodeToBERSequence(nullptr), nullptr);
    EXPECT_EQ(decodeToDERSequence_n(nullptr, 10), nullptr);
    EXPECT_EQ(getASN1ValueLengthFromLO(nullptr), kNone);
    EXPECT_EQ(getASN1LengthSize(nullptr), 0U);
    EXPECT_EQ(dup_ASN1_UNIT(nullptr), nullptr);
    const Node copy(dup_ASN1_UNIT(new_node().get()));
    EXPECT_EQ(copy->tag, nullptr);
    EXPECT_EQ(getASN1ValueLength(copy.get()), kNone);
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

TEST_F(Nodes, MeasuringIndefiniteContents) {
    const std::pair<const char *, std::uint32_t> cases[] = {
        {"00 00", 0},
        {"02 01 05 04 81 01 AA 00 00", 7},
        {"04 01 BB 24 80 04 01 AA 00 00 00 00", 10},
        // After an indefinite element every later one counts as indefinite: the OCTET STRING 04 02 below
        // takes in 05 00 and 00 00 instead of ending after two octets.
        {"24 80 04 01 AA 00 00 04 02 05 00 00 00 00 00", 13},
        // The rule starts anew within a nested indefinite length, and holds for the level it is met on.
        {"30 80 04 02 05 00 00 00 00 00", 8},
    };
    for (const auto &[contents, length] : cases) {
        EXPECT_EQ(getASN1IndefiniteValueLength(hex(contents).data()), length) << contents;
        EXPECT_EQ(getASN1ValueLengthFromLO(hex("80" + std::string(contents)).data()), length) << contents;
    }
    // Hence a definite element after an indefinite one is not read from bounded octets that it would fit.
    EXPECT_EQ(node_of("30 80 24 80 04 01 AA 00 00 04 01 BB 00 00"), nullptr);
    EXPECT_EQ(getSequenceChildNum(node_of("30 0A 24 80 04 01 AA 00 00 04 01 BB").get()), 2U);
}

TEST_F(Nodes, LengthOctets) {
    EXPECT_EQ(getASN1LengthSize(hex("80 00 00").data()), 1U);
    EXPECT_EQ(getASN1LengthSize(hex("82 01 00").data()), 3U);
    EXPECT_EQ(getASN1LengthSize(hex("85 00 00 00 00 01").data()), 6U);
    EXPECT_EQ(getASN1ValueLengthFromLO(hex("81 05").data()), 5U);
    EXPECT_EQ(getASN1ValueLengthFromLO(hex("84 00 00 01 07").data()), 263U);
    for (const std::uint32_t tag : {3U, 4U}) {
        const std::int32_t longest = tag == 3 ? 126 : 127;
        EXPECT_EQ(getASN1LengthForm(tag, longest), 0U);
        EXPECT_EQ(getASN1LengthForm(tag, longest + 1), 1U);
        EXPECT_EQ(getASN1LengthForm(tag, 0x7FFFFFFF), 1U);
    }
}

TEST_F(Nodes, SettingTheLengthForm) {
    const auto with_form = [](std::uint32_t form, const std::string &before) {
        const Node node = node_of(before);
        const std::string same = hex_of(node.get());
        const std::uint32_t status = setBERLengthForm(node.get(), form);
        const bool indefinite = node->length[0] == 0x80;
        EXPECT_EQ(node->eoc, indefinite ? node->value + getASN1ValueLength(node.get()) : nullptr);
        if (status == 0) return hex_of(node.get());
        EXPECT_EQ(status, 0x42100101U);
        return hex_of(node.get()) == same ? std::string("refused") : "refused and changed";
    };
    EXPECT_EQ(with_form(0, "30 81 03 02 01 05"), "30 03 02 01 05");
    EXPECT_EQ(with_form(0, "30 80 02 01 05 00 00"), "30 03 02 01 05");
    EXPECT_EQ(with_form(0, "30 81 80 " + std::string(256, '0')), "refused");
    EXPECT_EQ(with_form(1, "04 00"), "04 81 00");
    EXPECT_EQ(with_form(1, "30 82 00 03 02 01 05"), "30 82 00 03 02 01 05");
    EXPECT_EQ(with_form(1, "30 80 02 01 05 00 00"), "30 81 03 02 01 05");
    EXPECT_EQ(with_form(2, "30 82 00 03 02 01 05"), "30 80 02 01 05 00 00");
    EXPECT_EQ(with_form(2, "A0 00"), "A0 80 00 00");
    EXPECT_EQ(with_form(2, "04 01 AA"), "refused");
    EXPECT_EQ(with_form(3, "30 03 02 01 05"), "refused");
    EXPECT_EQ(setBERLengthForm(new_node().get(), 0), 0x42100101U);
}

/// What getDERChildAt returned, as text; frees it.
std::string shown(void *object, std::uint32_t expected) {
    if (object == nullptr) return "null";
    switch (expected) {
        case 1:
        case 5: {
            const tlx::OwnedOctets<std::uint8_t> octet(static_cast<std::uint8_t *>(object));
            return hex_of(octet.get(), 1);
        }
        case 2:
        case 10:
            return std::to_string(get_BIGINT_word(Number(static_cast<BIGINT *>(object)).get()));
        case 16:
        case 17:
        case 48:
        case 49:
        case 33:
            return "node " + hex_of(Node(static_cast<ASN1_UNIT *>(object)).get());
        default:
            return text_of(String(static_cast<ASN1_STRING *>(object)).get());
    }
}

Node parent_of(const char *child) {
    Octets octets = hex(child);
    octets.insert(octets.begin(), {0x30, static_cast<std::uint8_t>(octets.size())});
    return Node(decodeToDERSequence(octets.data()));
}

TEST_F(Nodes, ChildrenMatchWhatIsExpected) {
    struct Case {
        const char *child;
        std::uint32_t expected;
        const char *result;
    };
    const Case cases[] = {
        {"01 01 01", 1, "01"},
        {"02 01 05", 2, "5"},
        {"0A 01 05", 10, "5"},
        {"03 02 05 A0", 3, "type 3 extra 5: A0"},
        {"05 00", 5, "00"},
        // Only the low five bits are compared.
        {"30 03 02 01 05", 16, "node 30 03 02 01 05"},
        {"31 00", 17, "node 31 00"},
        {"24 03 04 01 AA", 4, "type 4 extra 0: 04 01 AA"},
        {"42 01 05", 2, "5"},
        // Context-specific and private children are taken for what is expected.
        {"80 01 05", 2, "5"},
        {"A3 03 02 01 05", 16, "node A3 03 02 01 05"},
        // 32: any type. 33: any string or time, as a node.
        {"03 02 05 A0", 32, "type 3 extra 5: A0"},
        {"17 0B 32 35 30 31 30 31 30 30 30 30 5A", 32, "type 23 extra 1: 32 35 30 31 30 31 30 30 30 30 5A"},
        {"30 03 02 01 05", 32, "type 48 extra 0: 02 01 05"},
        {"A0 03 02 01 05", 32, "type 160 extra 0: A0 03 02 01 05"},
        {"1A 01 41", 32, "type 26 extra 0: 41"},
        {"0C 01 41", 33, "node 0C 01 41"},
        {"38 03 04 01 5A", 33, "node 38 03 04 01 5A"},
    };
    for (const Case &c : cases) {
        const Node node = parent_of(c.child);
        std::uint32_t cursor = 0;
        EXPECT_EQ(shown(getDERChildAt(node.get(), 0, c.expected), c.expected), c.result) << c.child;
        EXPECT_EQ(shown(getBERChildOffset(node.get(), 0, c.expected, &cursor), c.expected), c.result)
            << c.child;
        EXPECT_EQ(getDERChildAt(node.get(), 1, c.expected), nullptr) << c.child;
    }
}

TEST_F(Nodes, ChildrenThatDoNotMatchAreMissing) {
    // BOOLEAN has the low five bits of 33, and others those of values that name no type: 34, 26, 0.
    const std::pair<const char *, std::uint32_t> unmatched[] = {
        {"01 02 01 01", 1},
        {"02 01 05", 10},
        {"02 00", 2},
        {"0C 01 41", 19},
        {"30 00", 49},
        {"80 02 01 01", 1},
        {"07 01 41", 32},
        {"00 00", 32},
        {"20 00", 32},
        {"01 01 FF", 33},
        {"02 01 05", 33},
        {"1F 00", 33},
        {"80 01 41", 33},
        {"02 01 05", 34},
        {"1A 01 41", 26},
        {"80 01 05", 0},
        {"02 01 05", 0xFFFFFFE2},
    };
    for (const auto &[child, expected] : unmatched)
        EXPECT_EQ(shown(getDERChildAt(parent_of(child).get(), 0, expected), expected), "null")
            << child << " as " << expected;
    EXPECT_EQ(getDERChildAt(new_node().get(), 0, 2), nullptr);
}

TEST_F(Nodes, CountsTheChildrenThatEndWithinTheirParent) {
    // End-of-contents octets are passed over. A universal type that is not supported makes the count 0.
    const std::pair<std::string, std::uint32_t> cases[] = {
        {"30 06 02 01 05 02 02 06 07", 1},
        {"30 04 02 01 05 02", 1},
        {"30 05 02 01 05 30 80", 1},
        {"30 07 02 01 05 30 80 00 00", 2},
        {"30 08 02 01 05 02 84 7F FF FF", 1},
        {"30 04 02 01 05 00", 1},
        {"30 08 02 01 05 00 00 02 01 06", 2},
        {"30 16 01 00 02 00 03 00 04 00 05 00 06 00 0A 00 0C 00 10 00 11 00 13 00", 11},
        {"30 16 14 00 16 00 17 00 18 00 1A 00 1E 00 30 00 A0 00 80 00 9F 00 47 00", 11},
        {"30 05 02 01 05 07 00", 0},
        {"30 05 02 01 05 1F 00", 0},
        {"30 05 02 01 05 32 00", 0},
    };
    for (const auto &[parent, count] : cases) {
        // The parent is followed by octets that an unbounded reader would take.
        const Node node(decodeToDERSequence(hex(parent + "00 00 00 00 00 00 00 00").data()));
        EXPECT_EQ(getSequenceChildNum(node.get()), count) << parent;
        if (count != 1) continue;
        EXPECT_EQ(getChildType(node.get(), 1), kNone) << parent;
    }
    EXPECT_EQ(getChildType(node_of("30 04 05 00 A1 00").get(), 1), 0xA1U);
    EXPECT_EQ(getSequenceChildNum(nullptr), 0U);
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
        EXPECT_EQ(getBERChildOffset(node.get(), 0, 2, &cursor), nullptr) << outside;
        EXPECT_EQ(cursor, outside);
    }
    EXPECT_EQ(getBERChildOffset(node.get(), 0, 2, nullptr), nullptr);
    cursor = 0;
    EXPECT_EQ(getDERChildOffset(nullptr, 0, 2, &cursor), nullptr);
}

TEST_F(Nodes, FailingAllocations) {
    const Node node = node_of("30 80 02 01 05 00 00");
    EXPECT_EQ(sweep_failing_allocations([&] { return Node(dup_ASN1_UNIT(node.get())) != nullptr; }), 4U);
    sweep_failing_allocations([] {
        const Node fresh = node_of("30 03 02 01 05");
        if (fresh == nullptr) return false;
        const std::uint32_t status = setBERLengthForm(fresh.get(), 2);
        tlx_fail_allocation(0);  // not for the texts compared here
        EXPECT_EQ(hex_of(fresh.get()), status == 0 ? "30 80 02 01 05 00 00" : "30 03 02 01 05");
        EXPECT_TRUE(status == 0 || status == 0x42100101) << std::hex << status;
        return status == 0;
    });
    const Node parent =
        node_of("30 19 01 01 FF 02 01 05 03 02 05 A0 05 00 06 01 2A 0C 01 41 30 00 17 01 5A 04 00");
    std::uint32_t index = 0;
    for (const std::uint32_t as : {1U, 2U, 3U, 5U, 6U, 12U, 16U, 23U, 4U}) {
        const auto read = [&] { return shown(getDERChildAt(parent.get(), index, as), as) != "null"; };
        EXPECT_GT(sweep_failing_allocations(read), 0U) << "child " << index;
        ++index;
    }
}

}  // namespace
}  // namespace tlx_test
