// The operations of validation on the valid-policy tree.
#pragma once

#include "trust/trust_records.hpp"

namespace tlx {

/// Makes a node with this valid policy, which is also its expected policy set; null when memory runs out.
VALID_POLICY_NODE *new_policy_node(const OBJECT_IDENTIFIER *policy, VALID_POLICY_NODE *parent) noexcept;

/// Adds a level without nodes below `deepest`, or turns a list without levels into one; null when memory runs
/// out.
node_LIST *append_level(node_LIST *deepest, u32 depth) noexcept;

node_LIST *deepest_level(node_LIST *list) noexcept;

/// Starts the tree in a list without levels: the root's level with one node, anyPolicy.
[[nodiscard]] bool start_policy_tree(node_LIST *list) noexcept;

/// A tree while validation extends it.
struct GrowingTree {
    node_LIST *deepest;  ///< its deepest level
    u32 nodes_left;      ///< how many nodes validation may still make
};

/// Extends the tree below its deepest level, which becomes the new level, and prunes the level above it. The
/// certificate at `position` (0 for the anchor's) has this certificatePolicies extension (null for none).
/// Returns a status of validate_certpath.
[[nodiscard]] u32 process_policies(GrowingTree &tree, u32 position, const X509_EXTENSION *extension) noexcept;

/// What intersect_policies leads to.
enum class Intersection : u8 { done, accepted_as_it_stands, no_memory };

/// Removes the nodes of the deepest level that the user does not accept. Frees the compared policies and
/// removes them from `user`. anyPolicy among them accepts the tree as it is.
[[nodiscard]] Intersection intersect_policies(node_LIST *list, OBJECT_IDENTIFIERS *user) noexcept;

/// Removes childless nodes from the deepest level up, and then levels without nodes. A list that loses all
/// levels becomes one without levels.
void prune_policy_tree(node_LIST **list) noexcept;

}  // namespace tlx
