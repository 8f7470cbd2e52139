// Node trees from hostile octets: every child under every expected type, written back and rebuilt. Complete
// elements also by the functions that know no length.
#include <algorithm>
#include <cstring>

#include "values.hpp"

namespace {

using namespace fuzz;

constexpr std::uint32_t kMostChildren = 16;
constexpr unsigned kMostNodes = 20;

/// Every type, and values that name none.
constexpr std::uint32_t kExpected[] = {0,  1,  2,  3,  4,  5,  6,  10, 12, 16, 17, 19,        20,
                                       22, 23, 24, 26, 30, 31, 32, 33, 34, 48, 49, 0xFFFFFFE2};

/// Without its length a complete element is read no further than it reaches, if at all.
void check_without_length(const std::uint8_t *octets, std::uint32_t size, std::uint32_t contents) {
    // A block of its own, so that a read past its end is seen.
    const Octets element(octets, octets + size);
    const Node node(decodeToDERSequence(element.data()));
    const std::uint32_t length = getASN1ValueLengthFromLO(element.data() + 1);
    require(getASN1ValueLength(node.get()) == length);
    require(length == contents || (element[1] == 0x80 && (length < contents || length == 0xFFFFFFFF)));
}

/// Writing a node gives the octets that were read, and reading them gives the node.
void check_round_trip(const ASN1_UNIT *node) {
    const std::string text = octets_of(node);
    const auto *octets = reinterpret_cast<const std::uint8_t *>(text.data());
    const auto size = static_cast<std::uint32_t>(text.size());
    const Node again = node_of(octets, size);
    require(again != nullptr && getASN1ValueLength(again.get()) == getASN1ValueLength(node));
    require(std::memcmp(again->value, node->value, getASN1ValueLength(node)) == 0);
    require(decodeToDERSequence_n(octets, size - 1) == nullptr);
    check_without_length(octets, size, getASN1ValueLength(node));
}

void check_length_forms(const ASN1_UNIT *node) {
    const std::uint32_t size = getASN1ValueLength(node);
    const Node copy(dup_ASN1_UNIT(node));
    for (const std::uint32_t form : {2U, 1U, 0U, 2U, 0U}) {
        const std::uint32_t status = setBERLengthForm(copy.get(), form);
        require(status == 0 || status == 0x42100101);
        require(getASN1ValueLength(copy.get()) == size);
        require(std::memcmp(copy->value, node->value, size) == 0);
    }
}

/// A container rebuilt from the children has all of them.
void check_appending(const ASN1_UNIT *node, std::uint32_t count) {
    const Node container(new_ASN1_UNIT());
    std::uint32_t appended = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        void *child = getDERChildAt(node, i, 16);
        if (child == nullptr) continue;
        require(addToDERSequence(container.get(), 33, child, 0) == 0);
        require(getChildType(container.get(), appended++) == (getChildType(node, i)));
    }
    if (appended > 0) require(addToDERSequence(container.get(), 16, container.get(), 0) == 0);
}

/// `budget` bounds the time that one input takes.
void walk(const ASN1_UNIT *node, unsigned &budget) {
    if (budget == 0) return;
    --budget;
    check_round_trip(node);
    check_length_forms(node);
    const std::uint32_t count = std::min(getSequenceChildNum(node), kMostChildren);
    check_appending(node, count);
    std::uint32_t cursor = 0;
    for (std::uint32_t i = 0; i <= count; ++i) {
        const std::uint32_t type = getChildType(node, i);
        for (const std::uint32_t expected : kExpected) {
            void *value = getDERChildAt(node, i, expected);
            const Child owner(value, expected);
            require(value == nullptr || type != 0xFFFFFFFF);
        }
        const std::uint32_t before = cursor;
        void *next = getBERChildOffset(node, i, type & 0x1F, &cursor);
        const Child owner(next, type & 0x1F);
        require(next != nullptr || cursor == before);
        const Node child(static_cast<ASN1_UNIT *>(getDERChildAt(node, i, (type & 0x1F) == 17 ? 17 : 16)));
        if (child != nullptr) walk(child.get(), budget);
    }
}

std::uint32_t decode(const ASN1_UNIT *node, void **) {
    unsigned budget = kMostNodes;
    walk(node, budget);
    return 0;
}

/// Any offset is safe.
void check_cursors(const ASN1_UNIT *node, const std::uint8_t *octets, std::size_t size) {
    for (std::size_t i = 0; i < std::min<std::size_t>(size, 16); ++i) {
        std::uint32_t cursor = octets[i];
        const Child child(getBERChildOffset(node, 0, 32, &cursor), 32);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0 || size > 4096) return 0;
    const auto before = tlx_live_blocks();
    const auto len = static_cast<std::uint32_t>(size);
    void *unused = nullptr;
    const std::uint32_t status = readDER_from_Buffer(&unused, decode, data, len);
    const Node node(decodeToDERSequence_n(data, len));
    require((status == 0) == (node != nullptr) && (status == 0 || status == 0x4300004F));
    if (node != nullptr) check_cursors(node.get(), data, size);
    require(tlx_live_blocks() == before + (node != nullptr ? 4 : 0));
    return 0;
}
