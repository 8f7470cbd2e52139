// Applies each certificate, and at the end the user's own set, to the valid-policy tree.
#include <tlxpki/ber.h>
#include <tlxpki/objects.h>
#include <tlxpki/x509v3.h>

#include <algorithm>

#include "der/oid_text.hpp"
#include "trust/extension.hpp"
#include "trust/policy_set.hpp"
#include "trust/policy_tree.hpp"

namespace tlx {

void PolicySet::sort() noexcept {
    std::sort(entries_.get(), entries_.get() + count_, [](const Entry &a, const Entry &b) {
        const int order = a.text.compare(b.text);
        return order != 0 ? order < 0 : a.place < b.place;
    });
}

const PolicySet::Entry *PolicySet::find(std::string_view text) const noexcept {
    const Entry *begin = entries_.get();
    const Entry *end = begin + count_;
    const Entry *found = std::lower_bound(
        begin, end, text, [](const Entry &entry, std::string_view wanted) { return entry.text < wanted; });
    return found != end && found->text == text ? found : nullptr;
}

namespace {

constexpr std::string_view kAnyPolicy = "2.5.29.32.0";

VALID_POLICY_NODE *node_at(const VALID_POLICY_NODES *nodes, u32 index) noexcept {
    return static_cast<VALID_POLICY_NODE *>(get_STACK_value(nodes, index));
}

/// Removes the nodes for which `unwanted` is true, and lowers their parents' child counts. The scan goes on
/// by `step` after a removal: 1 tests every node, 2 skips the one behind a removed node.
template <typename Unwanted>
void remove_nodes(VALID_POLICY_NODES *nodes, u32 step, Unwanted unwanted) noexcept {
    if (nodes == nullptr) return;
    u32 kept = 0;
    u32 next = 0;
    for (u32 i = 0; i < nodes->count; ++i) {
        VALID_POLICY_NODE *node = node_at(nodes, i);
        if (i == next && unwanted(*node)) {
            if (node->parent != nullptr) --node->parent->child_count;
            free_VALID_POLICY_NODE(node);
            next = i + step;
        } else {
            if (i == next) ++next;
            nodes->values[kept++] = node;
        }
    }
    nodes->count = kept;
}

Owned<OBJECT_IDENTIFIER> new_oid(std::string_view dotted) noexcept {
    return Owned<OBJECT_IDENTIFIER>(
        new_string(TLX_TAG_OBJECT_IDENTIFIER, {reinterpret_cast<const u8 *>(dotted.data()), dotted.size()}));
}

bool childless(const VALID_POLICY_NODE &node) noexcept {
    return node.child_count < 1;
}

/// The policies of a certificate, each once, in the order of the certificate.
class CertificatePolicies {
  public:
    CertificatePolicies() noexcept = default;
    ~CertificatePolicies() { free_OBJECT_IDENTIFIERS(list_); }
    CertificatePolicies(const CertificatePolicies &) = delete;
    CertificatePolicies &operator=(const CertificatePolicies &) = delete;

    [[nodiscard]] u32 read(const X509_EXTENSION *extension) noexcept;
    [[nodiscard]] bool contains(std::string_view text) const noexcept { return set_.contains(text); }
    [[nodiscard]] u32 count() const noexcept { return get_STACK_count(list_); }
    /// The policy at a place; null when an earlier place holds the same.
    [[nodiscard]] const OBJECT_IDENTIFIER *at(u32 i) const noexcept {
        return set_.is_first(text_of(item(i)), i) ? item(i) : nullptr;
    }

  private:
    [[nodiscard]] const OBJECT_IDENTIFIER *item(u32 i) const noexcept {
        return static_cast<const OBJECT_IDENTIFIER *>(get_STACK_value(list_, i));
    }
    [[nodiscard]] u32 read_policy(const Element &info) noexcept;

    OBJECT_IDENTIFIERS *list_ = nullptr;
    PolicySet set_;
};

// PolicyInformation ::= SEQUENCE {
//     policyIdentifier CertPolicyId,
//     policyQualifiers SEQUENCE SIZE (1..MAX) OF PolicyQualifierInfo OPTIONAL }
// The qualifiers are ignored.
u32 CertificatePolicies::read_policy(const Element &info) noexcept {
    Element identifier;
    char text[kMaxDottedText + 1];
    u32 length = 0;
    if (!Cursor(info).next(TLX_TAG_OBJECT_IDENTIFIER, identifier)) return 0x530A0047;
    // An identifier whose text loses octets would equal another policy.
    if (!oid_to_text(identifier.contents, text, length)) return 0x530A0047;
    Owned<OBJECT_IDENTIFIER> policy(new_oid({text, length}));
    if (!policy || push_STACK_value(list_, policy.get()) != 0) return 0x5307003C;
    static_cast<void>(policy.release());
    return 0;
}

// CertificatePolicies ::= SEQUENCE SIZE (1..MAX) OF PolicyInformation
u32 CertificatePolicies::read(const X509_EXTENSION *extension) noexcept {
    if (extension == nullptr) return 0;
    Element sequence;
    if (!read_extension(extension, sequence) || !sequence.matches(TLX_TAG_SEQUENCE)) return 0x530A0047;
    list_ = new_OBJECT_IDENTIFIERS();
    if (list_ == nullptr) return 0x5307003C;
    Cursor infos(sequence);
    do {
        Element info;
        if (!infos.next(TLX_TAG_SEQUENCE, info)) return 0x530A0047;
        if (const u32 status = read_policy(info); status != 0) return status;
    } while (!infos.at_end());
    return set_.build(count(), [this](u32 i) { return item(i); }) ? 0 : 0x5307003C;
}

u32 add_child(GrowingTree &tree, VALID_POLICY_NODE *parent, const OBJECT_IDENTIFIER *policy) noexcept {
    if (tree.nodes_left == 0) return 0x53100047;
    node_LIST *level = tree.deepest;
    if (level->nodes == nullptr) level->nodes = new_VALID_POLICY_NODES();
    Owned<VALID_POLICY_NODE> child(new_policy_node(policy, parent));
    if (!child || push_STACK_value(level->nodes, child.get()) != 0) return 0x5307003C;
    static_cast<void>(child.release());
    --tree.nodes_left;
    ++parent->child_count;
    return 0;
}

/// Adds a child for every policy of a certificate.
u32 add_all(GrowingTree &tree, VALID_POLICY_NODE *parent, const CertificatePolicies &policies) noexcept {
    for (u32 i = 0; i < policies.count(); ++i) {
        const OBJECT_IDENTIFIER *policy = policies.at(i);
        if (policy == nullptr) continue;
        if (const u32 status = add_child(tree, parent, policy); status != 0) return status;
    }
    return 0;
}

/// Adds the children of one node (RFC 5280, section 6.1.3 (d)).
u32 add_children(GrowingTree &tree, VALID_POLICY_NODE *parent, const CertificatePolicies &policies) noexcept {
    const STACK *expected = parent->data->expected_policy_set;
    for (u32 k = 0; k < get_STACK_count(expected); ++k) {
        const auto *policy = static_cast<const OBJECT_IDENTIFIER *>(get_STACK_value(expected, k));
        u32 status = 0;
        if (text_of(policy) == kAnyPolicy) {
            status = add_all(tree, parent, policies);
        } else if (policies.contains(text_of(policy))) {
            status = add_child(tree, parent, policy);
        }
        if (status != 0) return status;
    }
    return 0;
}

}  // namespace

bool start_policy_tree(node_LIST *list) noexcept {
    const Owned<OBJECT_IDENTIFIER> any(new_oid(kAnyPolicy));
    if (!any || append_level(list, 0) == nullptr) return false;
    list->nodes = new_VALID_POLICY_NODES();
    Owned<VALID_POLICY_NODE> root(new_policy_node(any.get(), nullptr));
    if (list->nodes == nullptr || !root || push_STACK_value(list->nodes, root.get()) != 0) return false;
    static_cast<void>(root.release());
    return true;
}

u32 process_policies(GrowingTree &tree, u32 position, const X509_EXTENSION *extension) noexcept {
    CertificatePolicies policies;
    if (const u32 status = policies.read(extension); status != 0) return status;
    node_LIST *above = tree.deepest;
    // The level of the certificate above is missing when that is self-issued and not the anchor's.
    if (static_cast<u32>(above->depth) + 1 != position) return 0x53100049;
    node_LIST *level = append_level(above, static_cast<u32>(above->depth) + 1);
    if (level == nullptr) return 0x5307003C;
    tree.deepest = level;

    const u32 parents = policies.count() > 0 ? get_STACK_count(above->nodes) : 0;
    for (u32 i = 0; i < parents; ++i) {
        const u32 status = add_children(tree, node_at(above->nodes, i), policies);
        if (status != 0) return status;
    }
    // The scan skips the node behind a removed one, so a childless one there stays in the caller's tree.
    remove_nodes(above->nodes, 2, childless);
    if (get_STACK_count(above->nodes) == 0) {
        free_VALID_POLICY_NODES(above->nodes);
        above->nodes = nullptr;
    }

    const i32 criticality = extension != nullptr && extension->critical != 0 ? -1 : 0;
    for (u32 i = 0; i < get_STACK_count(level->nodes); ++i) {
        node_at(level->nodes, i)->data->criticality_indicator = criticality;
    }
    return 0;
}

Intersection intersect_policies(node_LIST *list, OBJECT_IDENTIFIERS *user) noexcept {
    node_LIST *deepest = deepest_level(list);
    if (get_STACK_count(deepest->nodes) == 0) return Intersection::done;

    const auto policy_at = [user](u32 i) {
        return static_cast<OBJECT_IDENTIFIER *>(get_STACK_value(user, i));
    };
    const u32 count = get_STACK_count(user);
    u32 compared = 0;
    while (compared < count && text_of(policy_at(compared)) != kAnyPolicy) {
        ++compared;
    }
    const bool any_policy = compared < count;
    if (!any_policy) {
        PolicySet accepted;
        if (!accepted.build(count, policy_at)) return Intersection::no_memory;
        // All nodes behind a kept one are also kept.
        bool kept = false;
        remove_nodes(deepest->nodes, 1, [&](const VALID_POLICY_NODE &node) {
            kept = kept || accepted.contains(text_of(node.data->valid_policy));
            return !kept;
        });
    }
    for (u32 i = 0; i < compared; ++i) {
        free_OBJECT_IDENTIFIER(policy_at(i));
    }
    if (compared > 0) {
        std::copy(user->values + compared, user->values + count, user->values);
        user->count = count - compared;
    }
    return any_policy ? Intersection::accepted_as_it_stands : Intersection::done;
}

void prune_policy_tree(node_LIST **list) noexcept {
    node_LIST *deepest_first = reverse_node_LIST(*list);
    for (node_LIST *level = deepest_first->next; level != nullptr; level = level->next) {
        remove_nodes(level->nodes, 1, childless);
    }
    node_LIST *kept = nullptr;
    node_LIST *spare = nullptr;
    while (deepest_first != nullptr) {
        node_LIST *level = deepest_first;
        deepest_first = level->next;
        node_LIST *&destination = get_STACK_count(level->nodes) > 0 ? kept : spare;
        level->next = destination;
        destination = level;
    }
    if (kept == nullptr) {
        // The head stays, as a list without levels.
        kept = spare;
        spare = nullptr;
        remove_node_LIST(kept, 0);
    }
    free_node_LIST(spare);
    *list = kept;
}

}  // namespace tlx
