// What the compatible rules say of each target.
#include <map>

#include "path_report.hpp"
#include "status.hpp"
#include "target_report.hpp"
#include "verify.hpp"

namespace tool {

namespace {

using PolicyChildren = std::multimap<const VALID_POLICY_NODE *, const VALID_POLICY_NODE *>;

/// The nodes of all levels by their parents, in their order.
PolicyChildren policy_children(const node_LIST *tree) {
    PolicyChildren children;
    for (const node_LIST *level = tree; level != nullptr; level = level->next) {
        for (uint32_t i = 0; i < get_STACK_count(level->nodes); ++i) {
            const auto *node = static_cast<const VALID_POLICY_NODE *>(get_STACK_value(level->nodes, i));
            children.emplace(node->parent, node);
        }
    }
    return children;
}

Json describe_policies_below(const PolicyChildren &children, const VALID_POLICY_NODE *parent) {
    Json nodes = Json::array();
    const auto [first, last] = children.equal_range(parent);
    for (auto child = first; child != last; ++child) {
        Json node = oid_json(child->second->data->valid_policy);
        node["critical"] = child->second->data->criticality_indicator == -1;
        node["below"] = describe_policies_below(children, child->second);
        nodes.push_back(std::move(node));
    }
    return nodes;
}

Json meaning_of(const Verdict &verdict) {
    Json json = status_json(verdict.status);
    if (!verdict.reason.empty()) {
        json["reason"] = verdict.reason;
        json.erase("detail");
    }
    return json;
}

std::string preamble_of(const Verdict &verdict) {
    if (verdict.status == kOutsideValidity) {
        return "A certificate is outside its validity period; the path as far as it goes:";
    }
    return verdict.built ? "" : "No path to a trust anchor; as far as it goes:";
}

}  // namespace

TargetReport report_verdict(const LoadedCertificate &target, const Verdict &verdict) {
    Json json = {{"source", target.source},
                 {"subject", name_text(get_X509_subject(target.cert.get()))},
                 {"valid", verdict.is_valid()},
                 {"status", meaning_of(verdict)}};
    if (!verdict.hint.empty()) json["hint"] = verdict.hint;
    if (!verdict.warnings.empty()) json["warnings"] = verdict.warnings;
    json["path"] = Json::array();
    for (const Link &link : verdict.links()) {
        json["path"].push_back(describe_path_certificate(link.cert, link.mark));
    }
    if (verdict.is_valid()) {
        json["policies"] = describe_policies_below(policy_children(verdict.policies.get()), nullptr);
        // The root of the tree belongs to the anchor, whose policies are ignored.
        for (Json &root : json["policies"]) {
            root.erase("critical");
        }
    }
    return {std::move(json), preamble_of(verdict)};
}

}  // namespace tool
