#include "verify/policy_graph.hpp"

#include <algorithm>
#include <new>

namespace tlx {
namespace {

/// An order of policies, whichever.
bool comes_before(Bytes a, Bytes b) noexcept {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
}
bool policy_comes_before(const Policy &a, const Policy &b) noexcept {
    return same(a.oid, b.oid) ? a.depth < b.depth : comes_before(a.oid, b.oid);
}
bool is_same_policy(const Policy &a, const Policy &b) noexcept {
    return same(a.oid, b.oid);
}
bool node_comes_before(const PolicyNode &a, const PolicyNode &b) noexcept {
    return comes_before(a.policy, b.policy);
}

const Policy *find_policy(const Array<Policy> &policies, Bytes oid) noexcept {
    const Policy *const found = std::lower_bound(
        policies.begin(), policies.end(), oid,
        [](const Policy &policy, Bytes each) noexcept { return comes_before(policy.oid, each); });
    return found != policies.end() && same(found->oid, oid) ? found : nullptr;
}

PolicyNode *find_node(Array<PolicyNode> &nodes, u32 count, Bytes policy) noexcept {
    PolicyNode *const end = nodes.begin() + count;
    PolicyNode *const found = std::lower_bound(
        nodes.begin(), end, policy,
        [](const PolicyNode &node, Bytes each) noexcept { return comes_before(node.policy, each); });
    return found != end && same(found->policy, policy) ? found : nullptr;
}

void sort_nodes(PolicyLevel &level) noexcept {
    std::sort(level.nodes.begin(), level.nodes.end(), node_comes_before);
}

template <typename Condition>
void remove_nodes(PolicyLevel &level, Condition condition) noexcept {
    const PolicyNode *end = std::remove_if(level.nodes.begin(), level.nodes.end(), condition);
    level.nodes.shrink(static_cast<u32>(end - level.nodes.begin()));
}

// certificatePolicies ::= SEQUENCE SIZE (1..MAX) OF PolicyInformation
// PolicyInformation ::= SEQUENCE {
//   policyIdentifier CertPolicyId, policyQualifiers SEQUENCE SIZE (1..MAX) OF PolicyQualifierInfo OPTIONAL }
// Stores the policies in order. No policy may stand twice.
Rule read_policies(Bytes value, Array<Policy> &policies) noexcept {
    StrictCursor list;
    if (!open_whole(value, id::kSequence, list) || list.at_end()) return Rule::kBadPolicies;
    while (!list.at_end()) {
        StrictCursor members;
        Element qualifiers;
        Policy policy;
        if (!list.enter(id::kSequence, members) || !members.next(id::kOid, policy.oid) ||
            !is_oid(policy.oid)) {
            return Rule::kBadPolicies;
        }
        if (!members.at_end() && (!members.next(id::kSequence, qualifiers) || qualifiers.contents.empty())) {
            return Rule::kBadPolicies;
        }
        if (!members.at_end()) return Rule::kBadPolicies;
        policy.qualifiers = qualifiers.whole;
        if (!policies.append(policy)) return Rule::kNoMemory;
    }
    std::sort(policies.begin(), policies.end(), policy_comes_before);
    const bool twice = std::adjacent_find(policies.begin(), policies.end(), is_same_policy) != policies.end();
    return twice ? Rule::kBadPolicies : Rule::kNone;
}

// PolicyMappings ::= SEQUENCE SIZE (1..MAX) OF SEQUENCE {
//   issuerDomainPolicy CertPolicyId, subjectDomainPolicy CertPolicyId }
// Neither may be anyPolicy. Stores pairs.
Rule read_mappings(Bytes value, Array<Bytes> &pairs) noexcept {
    StrictCursor list;
    if (!open_whole(value, id::kSequence, list) || list.at_end()) return Rule::kBadMappings;
    while (!list.at_end()) {
        StrictCursor members;
        if (!list.enter(id::kSequence, members)) return Rule::kBadMappings;
        for (int i = 0; i < 2; ++i) {
            Bytes policy;
            if (!members.next(id::kOid, policy) || !is_oid(policy)) return Rule::kBadMappings;
            if (same(policy, kAnyPolicy)) return Rule::kAnyPolicyMapped;
            if (!pairs.append(policy)) return Rule::kNoMemory;
        }
        if (!members.at_end()) return Rule::kBadMappings;
    }
    return Rule::kNone;
}

/// A policy of the next level with one that it comes from.
struct Descent {
    Bytes policy;
    Bytes parent;
};

bool descent_comes_before(const Descent &a, const Descent &b) noexcept {
    if (!same(a.policy, b.policy)) return comes_before(a.policy, b.policy);
    return comes_before(a.parent, b.parent);
}

/// Makes the nodes of a level from what they come from, in order.
bool fill_level(const Array<Descent> &descents, PolicyLevel &level) noexcept {
    for (const Descent &descent : descents) {
        const bool begins = level.nodes.empty() || !same(level.nodes.back().policy, descent.policy);
        if (begins && !level.nodes.append({descent.policy, {}, level.parents.size()})) {
            return false;
        }
        PolicyNode &node = level.nodes.back();
        const bool known = node.parents > 0 && same(level.parents.back(), descent.parent);
        if (known) continue;
        if (!level.parents.append(descent.parent)) return false;
        ++node.parents;
    }
    return true;
}

bool has_policy(Bytes list, Bytes policy) noexcept {
    StrictCursor in(list);
    Bytes each;
    while (!in.at_end() && in.next(id::kOid, each)) {
        if (same(each, policy)) return true;
    }
    return false;
}

}  // namespace

PolicyGraph::~PolicyGraph() {
    for (PolicyLevel *level : levels_) {
        level->~PolicyLevel();
        tlx_free(level);
    }
}

bool PolicyGraph::start() noexcept {
    void *memory = TLX_ALLOCATE(sizeof(PolicyLevel));
    if (memory == nullptr) return false;
    auto *level = new (memory) PolicyLevel;
    level->has_any = levels_.empty();
    if (levels_.append(level)) return true;
    level->~PolicyLevel();
    tlx_free(memory);
    return false;
}

bool PolicyGraph::spend(u32 nodes) noexcept {
    const bool enough = nodes <= budget_;
    budget_ -= enough ? nodes : budget_;
    return enough;
}

bool PolicyGraph::is_empty() const noexcept {
    return !levels_.empty() && !levels_.back()->has_any && levels_.back()->nodes.empty();
}

Rule PolicyGraph::add_policies(const CertificateView &certificate, bool any_policy_counts) noexcept {
    if (levels_.empty() && !start()) return Rule::kNoMemory;
    PolicyLevel &level = last();
    const ExtensionView &extension = certificate.extensions[kCertificatePolicies];
    if (!extension.present) {
        level.nodes.shrink(0);
        level.has_any = false;
        return Rule::kNone;
    }
    Array<Policy> policies;
    if (const Rule rule = read_policies(extension.value, policies); rule != Rule::kNone) return rule;
    if (!spend(policies.size())) return Rule::kPolicyBudget;
    const bool had_any = level.has_any;
    const Policy *any = any_policy_counts ? find_policy(policies, kAnyPolicy) : nullptr;
    level.has_any &= any != nullptr;
    if (any != nullptr) level.any_qualifiers = any->qualifiers;
    const auto source_of = [&](const PolicyNode &node) noexcept {
        const Policy *listed = find_policy(policies, node.policy);
        return listed != nullptr ? listed : any;
    };
    remove_nodes(level, [&](const PolicyNode &node) noexcept { return source_of(node) == nullptr; });
    for (PolicyNode &node : level.nodes) {
        node.qualifiers = source_of(node)->qualifiers;
    }
    const u32 inherited = level.nodes.size();
    for (const Policy &policy : policies) {
        if (!had_any || same(policy.oid, kAnyPolicy) ||
            find_node(level.nodes, inherited, policy.oid) != nullptr) {
            continue;
        }
        if (!level.nodes.append({.policy = policy.oid, .qualifiers = policy.qualifiers})) {
            return Rule::kNoMemory;
        }
    }
    sort_nodes(level);
    return Rule::kNone;
}

Rule PolicyGraph::map(PolicyLevel &level, Bytes mappings, bool may_map, Array<Bytes> &pairs) noexcept {
    if (const Rule rule = read_mappings(mappings, pairs); rule != Rule::kNone) return rule;
    const u32 present = level.nodes.size();
    for (u32 i = 0; i < pairs.size(); i += 2) {
        PolicyNode *node = find_node(level.nodes, present, pairs[i]);
        if (node != nullptr) {
            node->mapped = true;
        } else if (level.has_any && may_map &&
                   !level.nodes.append(
                       {.policy = pairs[i], .qualifiers = level.any_qualifiers, .mapped = true})) {
            return Rule::kNoMemory;
        }
    }
    if (!may_map) {
        remove_nodes(level, [](const PolicyNode &node) noexcept { return node.mapped; });
        pairs.shrink(0);
    }
    sort_nodes(level);
    const PolicyNode *end = std::unique(
        level.nodes.begin(), level.nodes.end(),
        [](const PolicyNode &a, const PolicyNode &b) noexcept { return same(a.policy, b.policy); });
    level.nodes.shrink(static_cast<u32>(end - level.nodes.begin()));
    return Rule::kNone;
}

Rule PolicyGraph::add_mappings(const CertificateView &certificate, bool may_map) noexcept {
    if (levels_.empty()) return Rule::kNoMemory;
    PolicyLevel &level = last();
    Array<Bytes> pairs;
    const ExtensionView &extension = certificate.extensions[kPolicyMappings];
    if (extension.present) {
        if (const Rule rule = map(level, extension.value, may_map, pairs); rule != Rule::kNone) return rule;
    }
    Array<Descent> descents;
    for (u32 i = 0; i < pairs.size(); i += 2) {
        if (find_node(level.nodes, level.nodes.size(), pairs[i]) == nullptr) continue;
        if (!descents.append({pairs[i + 1], pairs[i]})) return Rule::kNoMemory;
    }
    for (const PolicyNode &node : level.nodes) {
        if (!node.mapped && !descents.append({node.policy, node.policy})) return Rule::kNoMemory;
    }
    if (!spend(descents.size())) return Rule::kPolicyBudget;
    std::sort(descents.begin(), descents.end(), descent_comes_before);
    if (!start()) return Rule::kNoMemory;
    last().has_any = level.has_any;
    return fill_level(descents, last()) ? Rule::kNone : Rule::kNoMemory;
}

Rule PolicyGraph::intersect(Bytes user_policies, Array<Policy> &policies) noexcept {
    if (levels_.empty()) return Rule::kNoMemory;
    const bool takes_all = user_policies.empty() || has_policy(user_policies, kAnyPolicy);
    for (PolicyNode &node : last().nodes) {
        node.reached = true;
    }
    // From the target up: a node without parents is a policy of the anchor's domain.
    for (u32 depth = levels_.size(); depth-- > 0;) {
        PolicyLevel &level = *levels_[depth];
        for (const PolicyNode &node : level.nodes) {
            if (!node.reached) continue;
            if (node.parents == 0 && (takes_all || has_policy(user_policies, node.policy)) &&
                !policies.append({node.policy, node.qualifiers, depth})) {
                return Rule::kNoMemory;
            }
            for (u32 i = 0; i < node.parents; ++i) {
                Array<PolicyNode> &above = levels_[depth - 1]->nodes;
                PolicyNode *parent = find_node(above, above.size(), level.parents[node.first_parent + i]);
                if (parent != nullptr) parent->reached = true;
            }
        }
    }
    // anyPolicy at the end stands for each of the user's.
    StrictCursor users(takes_all ? Bytes() : user_policies);
    Bytes policy;
    const Bytes qualifiers = last().any_qualifiers;
    if (last().has_any && takes_all && !policies.append({kAnyPolicy, qualifiers})) return Rule::kNoMemory;
    while (last().has_any && !users.at_end() && users.next(id::kOid, policy)) {
        if (!policies.append({policy, qualifiers, levels_.size()})) return Rule::kNoMemory;
    }
    std::sort(policies.begin(), policies.end(), policy_comes_before);
    const Policy *end = std::unique(policies.begin(), policies.end(), is_same_policy);
    policies.shrink(static_cast<u32>(end - policies.begin()));
    return Rule::kNone;
}

}  // namespace tlx
