// The valid policies of a path (RFC 9618, which replaces the tree of RFC 5280 by a graph that does not
// explode).
#pragma once

#include "verify/array.hpp"
#include "verify/certificate_view.hpp"

namespace tlx {

/// A policy as a certificate has it.
struct Policy {
    Bytes oid;
    Bytes qualifiers;  ///< the whole SEQUENCE; empty when there is none
    u32 depth = 0;     ///< of the certificate: how many are between it and the anchor
};

/// A policy at one depth.
struct PolicyNode {
    Bytes policy;
    Bytes qualifiers;
    u32 first_parent = 0;  ///< in the parents of the level: policies of the level above that it comes from
    u32 parents = 0;       ///< none: it comes from anyPolicy
    bool mapped = false;
    bool reached = false;
};

/// The policies at one depth, in order.
struct PolicyLevel {
    Array<PolicyNode> nodes;
    Array<Bytes> parents;
    bool has_any = false;
    Bytes any_qualifiers;
};

/// One certificate after the other, from below the anchor to the target.
class PolicyGraph {
  public:
    explicit PolicyGraph(u32 budget) noexcept : budget_(budget) {}
    ~PolicyGraph();
    PolicyGraph(const PolicyGraph &) = delete;
    PolicyGraph &operator=(const PolicyGraph &) = delete;

    /// RFC 5280, section 6.1.3 (d) and (e). kNone, kBadPolicies, kPolicyBudget or kNoMemory.
    [[nodiscard]] Rule add_policies(const CertificateView &certificate, bool any_policy_counts) noexcept;
    /// RFC 5280, section 6.1.4 (a) and (b); begins the next level. kNone, kBadMappings, kPolicyBudget or
    /// kNoMemory.
    [[nodiscard]] Rule add_mappings(const CertificateView &certificate, bool may_map) noexcept;

    /// Whether no policy is left.
    [[nodiscard]] bool is_empty() const noexcept;
    /// RFC 5280, section 6.1.5 (g): stores the policies, in the anchor's domain, that are among the user's.
    /// Without any of the user's, all policies are. The qualifiers are those of the certificate that is
    /// nearest to the anchor. kNone or kNoMemory.
    [[nodiscard]] Rule intersect(Bytes user_policies, Array<Policy> &policies) noexcept;

  private:
    [[nodiscard]] bool start() noexcept;
    PolicyLevel &last() noexcept { return *levels_.back(); }
    [[nodiscard]] Rule map(PolicyLevel &level, Bytes mappings, bool may_map, Array<Bytes> &pairs) noexcept;
    [[nodiscard]] bool spend(u32 nodes) noexcept;

    Array<PolicyLevel *> levels_;
    u32 budget_;
};

/// anyPolicy, 2.5.29.32.0
constexpr u8 kAnyPolicyOctets[] = {0x55, 0x1D, 0x20, 0x00};
constexpr Bytes kAnyPolicy(kAnyPolicyOctets);

}  // namespace tlx
