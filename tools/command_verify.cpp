// tlxpki verify: builds and validates paths, and prints a tree for one target or a line each for several.
#include <iostream>
#include <map>

#include "commands.hpp"
#include "describe.hpp"
#include "failure.hpp"
#include "status.hpp"
#include "terminal.hpp"
#include "verify.hpp"

namespace tool {

namespace {

Json describe_link(const Link &link) {
    constexpr const char *kStates[] = {"ok", "failed", "not checked"};
    return {{"subject", name_text(get_X509_subject(link.cert))},
            {"serial", number_hex(get_X509_serial(link.cert))},
            {"not_before", time_text(get_X509_notBefore(link.cert))},
            {"not_after", time_text(get_X509_notAfter(link.cert))},
            {"key", key_line(get_X509_SPKI(link.cert))},
            {"signature_algorithm", algorithm_name(get_X509_sig_alg(link.cert))},
            {"state", kStates[static_cast<std::size_t>(link.mark)]}};
}

/// The start of an entry's first line at some depth of a tree, and that of its other lines.
std::string branch(std::size_t depth) {
    return depth == 0 ? "" : std::string(4 * (depth - 1), ' ') + "└── ";
}
std::string below(std::size_t depth, bool has_children) {
    return std::string(4 * depth, ' ') + (has_children ? "│   " : "    ");
}

void print_links(std::ostream &out, const std::vector<Link> &links) {
    for (std::size_t depth = 0; depth < links.size(); ++depth) {
        const Json link = describe_link(links[depth]);
        const auto text = [&link](const char *key) { return printable(link[key].get<std::string>()); };
        const std::string start = below(depth, depth + 1 < links.size());
        out << branch(depth) << mark_text(links[depth].mark) << ' '
            << printable(shown_name(get_X509_subject(links[depth].cert))) << '\n'
            << start << "valid      " << text("not_before") << " to " << text("not_after") << '\n'
            << start << "key        " << text("key") << '\n'
            << start << "signature  " << text("signature_algorithm") << '\n';
    }
}

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

void print_policies(std::ostream &out, const Json &nodes, const std::string &indent) {
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const bool last = i + 1 == nodes.size();
        out << indent << (last ? "└── " : "├── ") << printable(oid_line(nodes[i])) << '\n';
        print_policies(out, nodes[i]["below"], indent + (last ? "    " : "│   "));
    }
}

Json meaning_of(const Verdict &verdict) {
    Json json = status_json(verdict.status);
    if (!verdict.reason.empty()) {
        json["reason"] = verdict.reason;
        json.erase("detail");
    }
    return json;
}

Json describe_verdict(const LoadedCertificate &target, const Verdict &verdict) {
    Json json = {{"source", target.source},
                 {"subject", name_text(get_X509_subject(target.cert.get()))},
                 {"valid", verdict.is_valid()},
                 {"status", meaning_of(verdict)}};
    if (!verdict.hint.empty()) json["hint"] = verdict.hint;
    if (!verdict.warnings.empty()) json["warnings"] = verdict.warnings;
    json["path"] = Json::array();
    for (const Link &link : verdict.links()) {
        json["path"].push_back(describe_link(link));
    }
    if (verdict.is_valid()) {
        json["policies"] = describe_policies_below(policy_children(verdict.policies.get()), nullptr);
        // The root of the tree belongs to the anchor, whose policies are ignored.
        for (Json &root : json["policies"]) {
            root.erase("critical");
        }
    }
    return json;
}

void print_verdict(std::ostream &out, const LoadedCertificate &target, const Verdict &verdict) {
    if (verdict.status == kOutsideValidity) {
        out << "A certificate is outside its validity period; the path as far as it goes:\n\n";
    } else if (!verdict.built) {
        out << "No path to a trust anchor; as far as it goes:\n\n";
    }
    print_links(out, verdict.links());
    if (verdict.is_valid()) {
        out << "\nPolicies\n";
        const Json policies = describe_policies_below(policy_children(verdict.policies.get()), nullptr);
        for (const Json &root : policies) {
            out << "  " << printable(oid_line(root)) << '\n';
            print_policies(out, root["below"], "  ");
        }
        if (policies.empty()) out << "  none\n";
    }
    out << '\n'
        << printable(target.source) << ": "
        << (verdict.is_valid() ? coloured("valid", Colour::kGreen) : coloured("NOT VALID", Colour::kRed))
        << '\n';
    Json meaning = meaning_of(verdict);
    if (!verdict.hint.empty()) meaning["hint"] = verdict.hint;
    print_text(out, meaning, 2);
}

std::string verdict_line(const LoadedCertificate &target, const Verdict &verdict) {
    std::string line = mark_text(verdict.is_valid() ? Mark::kGood : Mark::kFailed) + " " +
                       code_text(verdict.status) + " " +
                       printable(target.source + ": " + shown_name(get_X509_subject(target.cert.get())));
    if (!verdict.is_valid()) line += ": " + printable(meaning_of(verdict)["reason"].get<std::string>());
    return verdict.hint.empty() ? line : line + " (" + printable(verdict.hint) + ")";
}

std::size_t verify_several(const Verifier &verifier, const std::vector<LoadedCertificate> &targets,
                           Warner &warner) {
    const Progress progress(targets.size());
    std::size_t valid = 0;
    for (std::size_t i = 0; i < targets.size(); ++i) {
        progress.show(i);
        const Verdict verdict = verifier.verify(targets[i].cert.get());
        valid += verdict.is_valid() ? 1U : 0U;
        progress.clear();
        std::cout << verdict_line(targets[i], verdict) << std::endl;
        warner.tell(verdict.warnings);
    }
    std::cout << '\n'
              << targets.size() << " certificates: " << valid << " valid, " << targets.size() - valid
              << " not valid\n";
    return valid;
}

std::size_t verify_one(const Verifier &verifier, const LoadedCertificate &target, Warner &warner) {
    const Verdict verdict = verifier.verify(target.cert.get());
    print_verdict(std::cout, target, verdict);
    warner.tell(verdict.warnings);
    return verdict.is_valid() ? 1U : 0U;
}

std::size_t verify_to_json(const Verifier &verifier, const std::vector<LoadedCertificate> &targets,
                           Warner &warner) {
    Json verdicts = Json::array();
    std::size_t valid = 0;
    for (const LoadedCertificate &target : targets) {
        const Verdict verdict = verifier.verify(target.cert.get());
        valid += verdict.is_valid() ? 1U : 0U;
        verdicts.push_back(describe_verdict(target, verdict));
        warner.tell(verdict.warnings);
    }
    print_json(std::cout,
               {{"targets", std::move(verdicts)}, {"valid", valid}, {"not_valid", targets.size() - valid}});
    return valid;
}

}  // namespace

int run_verify(const VerifyOptions &options) {
    std::vector<LoadedCertificate> targets;
    for (const std::string &path : options.targets) {
        for (LoadedCertificate &loaded : load_certificates(path)) {
            targets.push_back(std::move(loaded));
        }
    }
    const Verifier verifier(options, targets);
    Warner warner;
    warner.tell(verifier.warnings());
    const std::size_t valid = options.json          ? verify_to_json(verifier, targets, warner)
                              : targets.size() == 1 ? verify_one(verifier, targets[0], warner)
                                                    : verify_several(verifier, targets, warner);
    return valid == targets.size() ? kGood : kNotValid;
}

}  // namespace tool
