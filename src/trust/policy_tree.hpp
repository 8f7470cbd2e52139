// What validation does with the valid-policy tree.
#pragma once

#include "trust/codecs.hpp"

namespace tlx {

/// A node with this valid policy, which is also its expected policy set; null when memory runs out.
VALID_POLICY_NODE *new_policy_node(const OBJECT_IDENTIFIER *policy, VALID_POLICY_NODE *parent) noexcept;

/// A level without nodes below `deepest`, or made of it when it is a list without levels; null when memory
/// runs out.
node_LIST *append_level(node_LIST *deepest, u32 depth) noexcept;

node_LIST *deepest_level(node_LIST *list) noexcept;

/// Starts the tree in a list without levels: the root's level with one node, anyPolicy.
[[nodiscard]] bool start_policy_tree(node_LIST *list) noexcept;

/// A tree while certificates are processed.
struct GrowingTree {
    node_LIST *deepest;  ///< its deepest level
    u32 nodes_left;      ///< how many nodes may still be made
};

/// Extends the tree below its deepest level, which the new level becomes, for the certificate at `position`
/// (0 for the anchor's) with this certificatePolicies extension (null for none), and prunes the level above
/// it. A status of validate_certpath.
[[nodiscard]] u32 process_policies(GrowingTree &tree, u32 position, const X509_EXTENSION *extension) noexcept;

/// What intersect_policies leads to.
enum class Intersection : u8 { done, accepted_as_it_stands, no_memory };

/// Removes the nodes of the deepest level that the user does not accept. The policies that were compared are
/// taken out of `user` and freed. anyPolicy among them accepts the tree as it stands.
[[nodiscard]] Intersection intersect_policies(node_LIST *list, OBJECT_IDENTIFIERS *user) noexcept;

/// Removes what has become childless, from the deepest level up, and the levels that are left without nodes.
/// A list that loses all of them becomes one without levels.
void prune_policy_tree(node_LIST **list) noexcept;

}  // namespace tlx
