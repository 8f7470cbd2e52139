// The valid-policy tree: a list of levels, each with its nodes.
#include <tlxpki/ber.h>
#include <tlxpki/objects.h>

#include <cinttypes>
#include <cstdio>

#include "trust/policy_tree.hpp"

using namespace tlx;

namespace tlx {

VALID_POLICY_NODE *new_policy_node(const OBJECT_IDENTIFIER *policy, VALID_POLICY_NODE *parent) noexcept {
    Owned<VALID_POLICY_NODE> node(new_VALID_POLICY_NODE());
    if (!node) return nullptr;
    node->data = new_VALID_POLICY_DATA();
    if (node->data == nullptr) return nullptr;
    node->data->valid_policy = dup_OBJECT_IDENTIFIER(policy);
    node->data->expected_policy_set = new_STACK();
    if (node->data->valid_policy == nullptr || node->data->expected_policy_set == nullptr) return nullptr;
    Owned<ASN1_STRING> expected(dup_OBJECT_IDENTIFIER(policy));
    if (!expected || push_STACK_value(node->data->expected_policy_set, expected.get()) != 0) return nullptr;
    static_cast<void>(expected.release());
    node->parent = parent;
    return node.release();
}

node_LIST *append_level(node_LIST *deepest, u32 depth) noexcept {
    node_LIST *level = deepest->depth < 0 ? deepest : new_node_LIST();
    if (level == nullptr) return nullptr;
    if (level != deepest) deepest->next = level;
    level->depth = static_cast<i32>(depth);
    level->marker = TLX_NODE_LIST_MARKER;
    return level;
}

node_LIST *deepest_level(node_LIST *list) noexcept {
    while (list->next != nullptr) {
        list = list->next;
    }
    return list;
}

namespace {

VALID_POLICY_DATA *dup_data(const VALID_POLICY_DATA *data) noexcept {
    if (data == nullptr) return nullptr;
    Owned<VALID_POLICY_DATA> copy(new_VALID_POLICY_DATA());
    if (!copy) return nullptr;
    copy->criticality_indicator = data->criticality_indicator;
    copy->valid_policy = dup_OBJECT_IDENTIFIER(data->valid_policy);
    copy->expected_policy_set = dup_list<Oid>(data->expected_policy_set);
    const bool complete = (copy->valid_policy != nullptr) == (data->valid_policy != nullptr) &&
                          (copy->expected_policy_set != nullptr) == (data->expected_policy_set != nullptr);
    return complete ? copy.release() : nullptr;
}

/// The copy has the same parent, which is not copied.
void *dup_node(const void *value) noexcept {
    const auto *node = static_cast<const VALID_POLICY_NODE *>(value);
    Owned<VALID_POLICY_NODE> copy(new_VALID_POLICY_NODE());
    if (!copy) return nullptr;
    copy->child_count = node->child_count;
    copy->parent = node->parent;
    copy->data = dup_data(node->data);
    return (copy->data != nullptr) == (node->data != nullptr) ? copy.release() : nullptr;
}

void free_node(void *value) noexcept {
    free_VALID_POLICY_NODE(static_cast<VALID_POLICY_NODE *>(value));
}

}  // namespace
}  // namespace tlx

extern "C" {

VALID_POLICY_DATA *new_VALID_POLICY_DATA(void) {
    auto *data = TLX_NEW(VALID_POLICY_DATA);
    if (data != nullptr) data->criticality_indicator = -1;
    return data;
}

void free_VALID_POLICY_DATA(VALID_POLICY_DATA *data) {
    if (data == nullptr) return;
    free_OBJECT_IDENTIFIER(data->valid_policy);
    free_list<Oid>(data->expected_policy_set);
    tlx_free(data);
}

VALID_POLICY_NODE *new_VALID_POLICY_NODE(void) {
    return TLX_NEW(VALID_POLICY_NODE);
}

void free_VALID_POLICY_NODE(VALID_POLICY_NODE *node) {
    if (node == nullptr) return;
    free_VALID_POLICY_DATA(node->data);
    tlx_free(node);
}

VALID_POLICY_NODES *new_VALID_POLICY_NODES(void) {
    return new_STACK();
}

void free_VALID_POLICY_NODES(VALID_POLICY_NODES *nodes) {
    free_STACK_values(nodes, free_node);
}

node_LIST *new_node_LIST(void) {
    auto *list = TLX_NEW(node_LIST);
    if (list != nullptr) list->depth = -1;
    return list;
}

void free_node_LIST(node_LIST *list) {
    while (list != nullptr) {
        node_LIST *next = list->next;
        free_VALID_POLICY_NODES(list->nodes);
        tlx_free(list);
        list = next;
    }
}

node_LIST *reverse_node_LIST(node_LIST *list) {
    node_LIST *reversed = nullptr;
    while (list != nullptr) {
        node_LIST *next = list->next;
        list->next = reversed;
        reversed = list;
        list = next;
    }
    return reversed;
}

void remove_node_LIST(node_LIST *list, uint32_t n) {
    if (list == nullptr) return;
    if (n == 0) {
        free_node_LIST(list->next);
        free_VALID_POLICY_NODES(list->nodes);
        *list = {-1, 0, nullptr, nullptr};
        return;
    }
    node_LIST *above = list;
    while (above != nullptr && --n > 0) {
        above = above->next;
    }
    if (above == nullptr) return;
    free_node_LIST(above->next);
    above->next = nullptr;
}

uint32_t get_count_from_node_LIST(const node_LIST *list) {
    if (list == nullptr || list->depth < 0) return 0;
    u32 count = 0;
    for (; list != nullptr; list = list->next) {
        ++count;
    }
    return count;
}

uint32_t add_VALID_POLICY_TREE_LIST(node_LIST *list, const VALID_POLICY_NODES *nodes) {
    if (list == nullptr || nodes == nullptr) return 0x530B0049;
    OwnedNodes copy(dup_STACK_values(nodes, dup_node, free_node));
    const u32 count = get_count_from_node_LIST(list);
    node_LIST *level = copy ? append_level(count == 0 ? list : deepest_level(list), count) : nullptr;
    if (level == nullptr) return 0x530B003C;
    level->nodes = copy.release();
    return 0;
}

void print_VALID_POLICY_TREE_LIST(const node_LIST *list) {
    if (list == nullptr || list->marker != TLX_NODE_LIST_MARKER) return;
    for (; list != nullptr; list = list->next) {
        if (list->nodes == nullptr) continue;
        std::printf("[depth = %" PRId32 "] -----------------------\n", list->depth);
        const u32 count = get_STACK_count(list->nodes);
        for (u32 i = 0; i < count; ++i) {
            const auto *node = static_cast<const VALID_POLICY_NODE *>(get_STACK_value(list->nodes, i));
            const auto policy = text_of(node->data != nullptr ? node->data->valid_policy : nullptr);
            std::printf("[%" PRIu32 "] Valid Policy : %.*s\n", i, static_cast<int>(policy.size()),
                        policy.data());
        }
    }
}

}  // extern "C"
