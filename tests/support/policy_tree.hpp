// Lists of policies and policy trees as text.
#pragma once

#include <tlxpki/cpv.h>

#include <algorithm>
#include <string>
#include <vector>

#include "octets.hpp"

namespace tlx_test {

/// The policies of a list: "1.2.3.1 1.2.3.2"; "null" without one.
inline std::string text_of_policies(const OBJECT_IDENTIFIERS *list) {
    if (list == nullptr) return "null";
    std::string text;
    for (std::uint32_t i = 0; i < get_STACK_count(list); ++i)
        text += (i > 0 ? " " : "") + octets(static_cast<ASN1_STRING *>(get_STACK_value(list, i)));
    return text;
}

inline std::vector<VALID_POLICY_NODE *> nodes_of(const node_LIST *level) {
    std::vector<VALID_POLICY_NODE *> nodes(level == nullptr ? 0 : get_STACK_count(level->nodes));
    for (std::size_t i = 0; i < nodes.size(); ++i)
        nodes[i] =
            static_cast<VALID_POLICY_NODE *>(get_STACK_value(level->nodes, static_cast<std::uint32_t>(i)));
    return nodes;
}

/// The tree in one line, each level after its depth: "0: 2.5.29.32.0; 1: 1.2.3.1! 1.2.3.2". "!" means
/// critical. A "?" precedes what is wrong: a level without its marker, a count of children, a foreign parent.
inline std::string text_of_tree(const node_LIST *tree) {
    if (tree == nullptr) return "null";
    if (tree->depth < 0) return tree->nodes == nullptr && tree->next == nullptr ? "no levels" : "?head";
    std::string text;
    std::vector<VALID_POLICY_NODE *> above;
    for (const node_LIST *level = tree; level != nullptr; level = level->next) {
        text += (level == tree ? "" : "; ") + std::to_string(level->depth) + ":";
        if (level->marker != TLX_NODE_LIST_MARKER) text += " ?marker";
        if (level->nodes == nullptr) text += " null";
        const auto nodes = nodes_of(level);
        const auto below = nodes_of(level->next);
        for (const VALID_POLICY_NODE *node : nodes) {
            const std::string policy = octets(node->data->valid_policy);
            const std::string expected = text_of_policies(node->data->expected_policy_set);
            text += " " + policy + (node->data->criticality_indicator != 0 && level != tree ? "!" : "");
            if (expected != policy) text += " expecting " + expected;
            const auto is_child = [node](const VALID_POLICY_NODE *each) { return each->parent == node; };
            if (std::count_if(below.begin(), below.end(), is_child) != node->child_count) text += " ?count";
            const auto parent = std::find(above.begin(), above.end(), node->parent);
            if (level == tree ? node->parent != nullptr : parent == above.end()) text += " ?parent";
        }
        above = nodes;
    }
    return text;
}

}  // namespace tlx_test
