// Reading nodes: headers, bounds, length forms, child access.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/allocation.hpp"
#include "support/octets.hpp"

namespace tlx_test {
namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;

/// An indefinite length around `depth` - 1 others.
Octets nested_indefinite(unsigned depth) {
    Octets octets;
    for (unsigned i = 0; i < depth; ++i)
        octets.insert(octets.end(), {0x30, 0x80});
    octets.resize(octets.size() + std::size_t{2} * depth);
    octets.shrink_to_fit();
    return octets;
}

TEST(Nodes, ReadAndWrittenBack) {
    struct Case {
        const char *input, *written;
        std::uint32_t value_length, children;
    };
    const Case cases[] = {
        {"30 80 02 01 05 00 00", "30 80 02 01 05 00 00", 3, 1},
        {"30 03 02 01 05", "30 03 02 01 05", 3, 1},
        {"30 81 03 02 01 05", "30 81 03 02 01 05", 3, 1},
        {"30 84 00 00 00 03 02 01 05", "30 84 00 00 00 03 02 01 05", 3, 1},
        {"04 00", "04 00", 0, 0},
        {"04 80 00 00", "04 80 00 00", 0, 0},
        {"30 03 02 01 05 DE AD", "30 03 02 01 05", 3, 1},
        // Only the identifier of end-of-contents octets is looked at; what is written is 00 00.
        {"30 80 02 01 05 00 07", "30 80 02 01 05 00 00", 3, 1},
        {"30 80 30 80 05 00 00 00 00 00", "30 80 30 80 05 00 00 00 00 00", 6, 1},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.input);
        const LeakCheck leaks;
        const Octets input = hex(c.input);
        const Node bounded = node_of(c.input);
        const Node trusting(decodeToDERSequence(input.data()));
        const Node copy(dup_ASN1_UNIT(bounded.get()));
        for (const ASN1_UNIT *node : {bounded.get(), trusting.get(), copy.get()}) {
            ASSERT_NE(node, nullptr);
            EXPECT_EQ(hex_of(node), c.written);
            EXPECT_EQ(getASN1ValueLength(node), c.value_length);
            EXPECT_EQ(getSequenceChildNum(node), c.children);
            const bool indefinite = input[1] == 0x80;
            EXPECT_EQ(node->eoc, indefinite ? node->value + c.value_length : nullptr);
        }
    }
}

TEST(Nodes, NoPrefixOfAnElementIsRead) {
    const LeakCheck leaks;
    for (const char *text : {"30 06 02 01 05 02 01 06", "30 82 00 03 02 01 05",
                             "30 80 30 80 05 00 00 00 00 00", "30 80 24 80 04 01 AA 00 00 00 00"}) {
        const Octets whole = hex(text);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            // A copy of its own, so that a read past its end is one past the block.
            const Octets prefix(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_EQ(decodeToDERSequence_n(prefix.data(), static_cast<std::uint32_t>(size)), nullptr)
                << text << ", " << size << " octets";
        }
    }
}

TEST(Nodes, RefusedLengths) {
    const LeakCheck leaks;
    const char *const cases[] = {
        "30 84 80 00 00 00", "30 84 FF FF FF FF", "30 85 00 00 00 00 01 00", "30 FF 00", "30 8F 01",
    };
    for (const char *text : cases) {
        const Octets input = hex(text);
        EXPECT_EQ(decodeToDERSequence(input.data()), nullptr) << text;
        EXPECT_EQ(getASN1ValueLengthFromLO(input.data() + 1), kNone) << text;
        Octets nested = hex("30 10");
        nested.insert(nested.end(), input.begin(), input.end());
        nested.resize(18);
        const Node parent(decodeToDERSequence_n(nested.data(), 18));
        EXPECT_EQ(getChildType(parent.get(), 0), kNone) << text;
        EXPECT_EQ(getSequenceChildNum(parent.get()), 0U) << text;
    }
    // 2 GiB and no octet of it: believed only where the caller vouches for it.
    EXPECT_EQ(node_of("30 84 7F FF FF FF 00"), nullptr);
    EXPECT_EQ(getASN1ValueLengthFromLO(hex("84 7F FF FF FF").data()), 0x7FFFFFFFU);

    EXPECT_EQ(decodeToBERSequence(nullptr), nullptr);
    EXPECT_EQ(decodeToDERSequence_n(nullptr, 10), nullptr);
    EXPECT_EQ(getASN1ValueLengthFromLO(nullptr), kNone);
    EXPECT_EQ(getASN1IndefiniteValueLength(nullptr), kNone);
    EXPECT_EQ(getASN1ValueLength(nullptr), kNone);
    EXPECT_EQ(getASN1LengthSize(nullptr), 0U);
    EXPECT_EQ(dup_ASN1_UNIT(nullptr), nullptr);
    const Node empty = new_node();
    EXPECT_EQ(getASN1ValueLength(empty.get()), kNone);
    const Node copy(dup_ASN1_UNIT(empty.get()));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->tag, nullptr);
}

TEST(Nodes, IndefiniteLengthsNestTo64) {
    const LeakCheck leaks;
    for (const unsigned depth : {1U, 64U}) {
        const Octets octets = nested_indefinite(depth);
        const Node node(decodeToDERSequence(octets.data()));
        EXPECT_EQ(getASN1ValueLength(node.get()), 4 * depth - 4) << depth;
    }
    for (const unsigned depth : {65U, 100000U}) {
        const Octets octets = nested_indefinite(depth);
        EXPECT_EQ(decodeToDERSequence(octets.data()), nullptr) << depth;
        EXPECT_EQ(decodeToDERSequence_n(octets.data(), static_cast<std::uint32_t>(octets.size())), nullptr);
    }
}

TEST(Nodes, MeasuringIndefiniteContents) {
    struct Case {
        const char *contents;
        std::uint32_t length;
    };
    const Case cases[] = {
        {"00 00", 0},
        {"02 01 05 04 81 01 AA 00 00", 7},
        {"04 01 BB 24 80 04 01 AA 00 00 00 00", 10},
        // After an indefinite element every later one counts as indefinite: the OCTET STRING 04 02 below
        // takes in 05 00 and 00 00 instead of ending after two octets.
        {"24 80 04 01 AA 00 00 04 02 05 00 00 00 00 00", 13},
        // The rule starts anew within a nested indefinite length, and holds for the level it is met on.
        {"30 80 04 02 05 00 00 00 00 00", 8},
    };
    for (const Case &c : cases) {
        const Octets contents = hex(c.contents);
        EXPECT_EQ(getASN1IndefiniteValueLength(contents.data()), c.length) << c.contents;
        Octets length_octets = hex("80");
        length_octets.insert(length_octets.end(), contents.begin(), contents.end());
        EXPECT_EQ(getASN1ValueLengthFromLO(length_octets.data()), c.length) << c.contents;
    }
    // Hence a definite element after an indefinite one is not read from bounded octets that it would fit.
    EXPECT_EQ(node_of("30 80 24 80 04 01 AA 00 00 04 01 BB 00 00"), nullptr);
    EXPECT_EQ(getSequenceChildNum(node_of("30 0A 24 80 04 01 AA 00 00 04 01 BB").get()), 2U);
}

TEST(Nodes, LengthOctets) {
    struct Case {
        const char *octets;
        std::uint32_t size, value;
    };
    const Case cases[] = {
        {"00", 1, 0},
        {"7F", 1, 127},
        {"81 80", 2, 128},
        {"81 05", 2, 5},
        {"82 01 00", 3, 256},
        {"83 01 00 00", 4, 65536},
        {"80 00 00", 1, 0},
        {"84 00 00 00 07", 5, 7},
        {"84 FF FF FF FF", 5, kNone},
        {"85 00 00 00 00 01", 6, kNone},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(getASN1LengthSize(hex(c.octets).data()), c.size) << c.octets;
        EXPECT_EQ(getASN1ValueLengthFromLO(hex(c.octets).data()), c.value) << c.octets;
    }
    EXPECT_EQ(getASN1LengthForm(4, 127), 0U);
    EXPECT_EQ(getASN1LengthForm(4, 128), 1U);
    EXPECT_EQ(getASN1LengthForm(3, 126), 0U);
    EXPECT_EQ(getASN1LengthForm(3, 127), 1U);
    EXPECT_EQ(getASN1LengthForm(3, 0x7FFFFFFF), 1U);
}

TEST(Nodes, SettingTheLengthForm) {
    struct Case {
        const char *before;
        std::uint32_t form, status;
        const char *after;
    };
    const std::string long_contents(3 * 128, '0');
    const std::string long_node = "30 81 80 " + long_contents.substr(0, 2 * 128);
    const std::string long_node_spaced = hex_of(node_of(long_node).get());
    const Case cases[] = {
        {"30 03 02 01 05", 0, 0, "30 03 02 01 05"},
        {"30 81 03 02 01 05", 0, 0, "30 03 02 01 05"},
        {"30 80 02 01 05 00 00", 0, 0, "30 03 02 01 05"},
        {long_node.c_str(), 0, 0x42100101, long_node_spaced.c_str()},
        {"30 03 02 01 05", 1, 0, "30 81 03 02 01 05"},
        {"04 00", 1, 0, "04 81 00"},
        {"30 82 00 03 02 01 05", 1, 0, "30 82 00 03 02 01 05"},
        {"30 80 02 01 05 00 00", 1, 0, "30 81 03 02 01 05"},
        {"30 03 02 01 05", 2, 0, "30 80 02 01 05 00 00"},
        {"30 82 00 03 02 01 05", 2, 0, "30 80 02 01 05 00 00"},
        {"30 80 02 01 05 00 00", 2, 0, "30 80 02 01 05 00 00"},
        {"A0 00", 2, 0, "A0 80 00 00"},
        {"04 01 AA", 2, 0x42100101, "04 01 AA"},
        {"30 03 02 01 05", 3, 0x42100101, "30 03 02 01 05"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.before).substr(0, 40) + " form " + std::to_string(c.form));
        const LeakCheck leaks;
        const Node node = node_of(c.before);
        EXPECT_EQ(setBERLengthForm(node.get(), c.form), c.status);
        EXPECT_EQ(hex_of(node.get()), c.after);
        const bool indefinite = node->length[0] == 0x80;
        EXPECT_EQ(node->eoc, indefinite ? node->value + getASN1ValueLength(node.get()) : nullptr);
    }
    EXPECT_EQ(setBERLengthForm(nullptr, 0), 0x42100101U);
    EXPECT_EQ(setBERLengthForm(new_node().get(), 0), 0x42100101U);
}

/// What getDERChildAt returned, as text; frees it.
std::string shown(void *object, std::uint32_t expected) {
    if (object == nullptr) return "null";
    switch (expected) {
        case 1: {
            const std::string text = hex_of(static_cast<std::uint8_t *>(object), 1);
            tlx_free(object);
            return text;
        }
        case 2:
        case 10: {
            const Number number(static_cast<BIGINT *>(object));
            return std::to_string(get_BIGINT_word(number.get()));
        }
        case 5:
            tlx_free(object);
            return "marker";
        case 16:
        case 17:
        case 48:
        case 49:
        case 33: {
            const Node node(static_cast<ASN1_UNIT *>(object));
            return "node " + hex_of(node.get());
        }
        default: {
            const String string(static_cast<ASN1_STRING *>(object));
            return text_of(string.get());
        }
    }
}

TEST(ChildAccess, MatchingRule) {
    struct Case {
        const char *child;
        std::uint32_t expected;
        const char *result;
    };
    const Case cases[] = {
        {"01 01 01", 1, "01"},
        {"01 02 01 01", 1, "null"},
        {"02 01 05", 2, "5"},
        {"02 01 05", 10, "null"},
        {"0A 01 05", 10, "5"},
        {"02 00", 2, "null"},
        {"03 02 05 A0", 3, "type 3 extra 5: A0"},
        {"04 02 AB CD", 4, "type 4 extra 0: AB CD"},
        {"05 00", 5, "marker"},
        {"06 03 2A 86 48", 6, "type 6 extra 0: 31 2E 32 2E 38 34 30"},
        {"0C 01 41", 12, "type 12 extra 0: 41"},
        {"13 01 41", 19, "type 19 extra 0: 41"},
        {"14 01 41", 20, "type 20 extra 0: 41"},
        {"16 01 41", 22, "type 22 extra 0: 41"},
        {"1E 02 00 41", 30, "type 30 extra 0: 00 41"},
        {"17 01 5A", 23, "type 23 extra 0: 5A"},
        {"18 01 5A", 24, "type 24 extra 0: 5A"},
        {"0C 01 41", 19, "null"},
        // Only the low five bits are compared.
        {"30 03 02 01 05", 16, "node 30 03 02 01 05"},
        {"10 00", 48, "node 10 00"},
        {"31 00", 17, "node 31 00"},
        {"30 00", 49, "null"},
        {"24 03 04 01 AA", 4, "type 4 extra 0: 04 01 AA"},
        {"42 01 05", 2, "5"},
        // Context-specific and private children are taken for what is expected.
        {"80 01 05", 2, "5"},
        {"C7 01 05", 2, "5"},
        {"A3 03 02 01 05", 16, "node A3 03 02 01 05"},
        {"80 02 01 01", 1, "null"},
        // 32: any type.
        {"0C 01 41", 32, "type 12 extra 0: 41"},
        {"03 02 05 A0", 32, "type 3 extra 5: A0"},
        {"17 0B 32 35 30 31 30 31 30 30 30 30 5A", 32, "type 23 extra 1: 32 35 30 31 30 31 30 30 30 30 5A"},
        {"30 03 02 01 05", 32, "type 48 extra 0: 02 01 05"},
        {"A0 03 02 01 05", 32, "type 160 extra 0: A0 03 02 01 05"},
        {"1A 01 41", 32, "type 26 extra 0: 41"},
        {"07 01 41", 32, "null"},
        {"00 00", 32, "null"},
        {"20 00", 32, "null"},
        // 33: any string or time, as a node. BOOLEAN has its low five bits and is no such type.
        {"0C 01 41", 33, "node 0C 01 41"},
        {"03 02 05 A0", 33, "node 03 02 05 A0"},
        {"38 03 04 01 5A", 33, "node 38 03 04 01 5A"},
        {"01 01 FF", 33, "null"},
        {"02 01 05", 33, "null"},
        {"30 00", 33, "null"},
        {"1F 00", 33, "null"},
        {"80 01 41", 33, "null"},
        // Values that name no type, even where their low five bits do.
        {"02 01 05", 34, "null"},
        {"1A 01 41", 26, "null"},
        {"80 01 05", 0, "null"},
        {"02 01 05", 0xFFFFFFE2, "null"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.child) + " as " + std::to_string(c.expected));
        const LeakCheck leaks;
        Octets parent = hex(c.child);
        parent.insert(parent.begin(), {0x30, static_cast<std::uint8_t>(parent.size())});
        const Node node(decodeToDERSequence(parent.data()));
        EXPECT_EQ(shown(getDERChildAt(node.get(), 0, c.expected), c.expected), c.result);
        EXPECT_EQ(getDERChildAt(node.get(), 1, c.expected), nullptr);
        std::uint32_t cursor = 0;
        EXPECT_EQ(shown(getBERChildOffset(node.get(), 0, c.expected, &cursor), c.expected), c.result);
    }
    EXPECT_EQ(getDERChildAt(nullptr, 0, 2), nullptr);
    EXPECT_EQ(getDERChildAt(new_node().get(), 0, 2), nullptr);
}

TEST(ChildAccess, AChildThatReachesPastItsParentIsMissing) {
    struct Case {
        const char *parent;
        std::uint32_t children;
        std::uint32_t second_type;
    };
    const Case cases[] = {
        {"30 06 02 01 05 02 02 06 07", 1, kNone},    {"30 04 02 01 05 02", 1, kNone},
        {"30 05 02 01 05 30 80", 1, kNone},          {"30 07 02 01 05 30 80 00 00", 2, 0x30},
        {"30 08 02 01 05 02 84 7F FF FF", 1, kNone}, {"30 06 02 01 05 02 81 01", 1, kNone},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.parent);
        // The parent is followed by octets that an unbounded reader would take.
        const Octets octets = hex(std::string(c.parent) + "00 00 00 00 00 00 00 00");
        const Node parent(decodeToDERSequence(octets.data()));
        EXPECT_EQ(getSequenceChildNum(parent.get()), c.children);
        EXPECT_EQ(getChildType(parent.get(), 0), 0x02U);
        EXPECT_EQ(getChildType(parent.get(), 1), c.second_type);
    }
}

TEST(ChildAccess, CountingChildren) {
    struct Case {
        const char *contents;
        std::uint32_t count;
    };
    const Case cases[] = {
        {"", 0},
        {"01 00 02 00 03 00 04 00 05 00 06 00 0A 00 0C 00 10 00 11 00 13 00 14 00 16 00 17 00 18 00 1A 00 1E "
         "00",
         17},
        {"30 00 31 00 24 00 A0 00 80 00 C1 00 9F 00 47 00", 8},
        {"02 01 05 00 00 02 01 06", 2},  // end-of-contents octets are passed over
        {"02 01 05 00", 1},
        {"02 01 05 07 00", 0},  // a universal type that is not supported makes the count 0
        {"02 01 05 1F 00", 0},
        {"02 01 05 32 00", 0},
    };
    for (const Case &c : cases) {
        Octets octets = hex(c.contents);
        octets.insert(octets.begin(), {0x30, static_cast<std::uint8_t>(octets.size())});
        const Node node(decodeToDERSequence(octets.data()));
        EXPECT_EQ(getSequenceChildNum(node.get()), c.count) << c.contents;
    }
    EXPECT_EQ(getSequenceChildNum(nullptr), 0U);
    EXPECT_EQ(getChildType(nullptr, 0), kNone);
}

TEST(ChildAccess, Cursor) {
    const LeakCheck leaks;
    const Node node = node_of("30 0F 02 01 05 24 80 04 01 AA 00 00 02 01 06 05 00");
    std::uint32_t cursor = 0;
    const auto next = [&](std::uint32_t index, std::uint32_t expected) {
        return shown(getBERChildOffset(node.get(), index, expected, &cursor), expected);
    };
    EXPECT_EQ(next(0, 2), "5");
    EXPECT_EQ(cursor, 0U);  // which means "from the start" again, so that the index tells
    EXPECT_EQ(next(0, 2), "5");
    EXPECT_EQ(next(1, 4), "type 4 extra 0: 04 01 AA");
    EXPECT_EQ(cursor, 3U);
    EXPECT_EQ(next(0, 4), "null") << "an INTEGER comes next";
    EXPECT_EQ(cursor, 3U) << "a child that does not match is not passed";
    EXPECT_EQ(next(0, 2), "6");
    EXPECT_EQ(cursor, 10U);
    EXPECT_EQ(next(0, 5), "marker");
    EXPECT_EQ(cursor, 13U);
    EXPECT_EQ(next(0, 5), "null");
    EXPECT_EQ(cursor, 13U);

    for (const std::uint32_t outside : {15U, 16U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        cursor = outside;
        EXPECT_EQ(next(0, 2), "null") << outside;
        EXPECT_EQ(cursor, outside);
    }
    EXPECT_EQ(getBERChildOffset(node.get(), 0, 2, nullptr), nullptr);
    cursor = 0;
    EXPECT_EQ(getDERChildOffset(nullptr, 0, 2, &cursor), nullptr);
}

TEST(Nodes, FailingAllocations) {
    const Octets octets = hex("30 80 02 01 05 00 00");
    EXPECT_GT(
        sweep_failing_allocations([&] {
            const Node node(decodeToDERSequence_n(octets.data(), static_cast<std::uint32_t>(octets.size())));
            return node != nullptr;
        }),
        3U);
    const Node node = node_of("30 80 02 01 05 00 00");
    EXPECT_GT(sweep_failing_allocations([&] { return Node(dup_ASN1_UNIT(node.get())) != nullptr; }), 3U);
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
    const std::uint32_t expected[] = {1, 2, 3, 5, 6, 12, 16, 23, 4};
    for (std::uint32_t i = 0; i < std::size(expected); ++i) {
        EXPECT_GT(sweep_failing_allocations([&] {
                      return shown(getDERChildAt(parent.get(), i, expected[i]), expected[i]) != "null";
                  }),
                  0U)
            << "child " << i;
    }
}

}  // namespace
}  // namespace tlx_test
