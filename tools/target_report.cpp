#include "target_report.hpp"

#include <algorithm>
#include <iostream>

#include "failure.hpp"
#include "path_report.hpp"

namespace tool {

namespace {

bool is_valid(const Json &document) {
    return document["valid"].get<bool>();
}

std::vector<std::string> warnings_of(const Json &document) {
    return document.value("warnings", std::vector<std::string>());
}

/// The nodes of a policy tree, each with those below it.
void print_nodes(std::ostream &out, const Json &nodes, const std::string &indent) {
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const bool last = i + 1 == nodes.size();
        out << indent << (last ? "└── " : "├── ") << printable(oid_line(nodes[i])) << '\n';
        print_nodes(out, nodes[i]["below"], indent + (last ? "    " : "│   "));
    }
}

/// The roots of a tree, or a list of dotted texts.
void print_policies(std::ostream &out, const Json &policies) {
    out << "\nPolicies\n";
    for (const Json &policy : policies) {
        if (policy.is_object()) {
            out << "  " << printable(oid_line(policy)) << '\n';
            print_nodes(out, policy["below"], "  ");
            continue;
        }
        const std::string dotted = policy.get<std::string>();
        const std::string name = short_name(dotted);
        out << "  ";
        if (name.empty()) {
            out << dotted << '\n';
        } else {
            out << name << " (" << dotted << ")\n";
        }
    }
    if (policies.empty()) out << "  none\n";
}

/// Says so when revocation was looked up for no certificate below the anchor's.
void print_unchecked(std::ostream &out, const Json &path) {
    const bool is_strict =
        std::all_of(path.begin(), path.end(), [](const Json &each) { return each.contains("revocation"); });
    if (is_strict && path.size() > 1 && std::none_of(path.begin(), path.end(), is_revocation_known)) {
        out << "\nRevocation\n  not checked\n";
    }
}

void print_report(std::ostream &out, const TargetReport &report) {
    const Json &document = report.document;
    const bool valid = is_valid(document);
    if (!report.preamble.empty()) out << report.preamble << "\n\n";
    print_path(out, document);
    if (valid) {
        print_policies(out, document["policies"]);
        print_unchecked(out, document["path"]);
    }
    out << '\n'
        << printable(document["source"].get<std::string>()) << ": "
        << (valid ? coloured("valid", Colour::kGreen) : coloured("NOT VALID", Colour::kRed)) << '\n';
    Json meaning = document["status"];
    if (document.contains("hint")) meaning["hint"] = document["hint"];
    print_text(out, meaning, 2);
}

std::string report_line(const Json &document) {
    const auto text = [](const Json &value) { return printable(value.get<std::string>()); };
    const Json &status = document["status"];
    std::string line = mark_text(is_valid(document) ? Mark::kGood : Mark::kFailed) + " " +
                       status["code"].get<std::string>() + " " + text(document["source"]) + ": " +
                       printable(shown_subject(document["subject"]));
    if (!is_valid(document)) line += ": " + text(status["reason"]);
    return document.contains("hint") ? line + " (" + text(document["hint"]) + ")" : line;
}

using Verify = std::function<TargetReport(std::size_t)>;

/// Each of these returns how many targets are valid.
std::size_t print_one(const Verify &verify, Warner &warner) {
    const TargetReport report = verify(0);
    print_report(std::cout, report);
    warner.tell(warnings_of(report.document));
    return is_valid(report.document) ? 1 : 0;
}

std::size_t print_several(std::size_t count, const Verify &verify, Warner &warner) {
    const Progress progress(count);
    std::size_t valid = 0;
    for (std::size_t i = 0; i < count; ++i) {
        progress.show(i);
        const Json document = verify(i).document;
        valid += is_valid(document) ? 1U : 0U;
        progress.clear();
        std::cout << report_line(document) << std::endl;
        warner.tell(warnings_of(document));
    }
    std::cout << '\n' << count << " certificates: " << valid << " valid, " << count - valid << " not valid\n";
    return valid;
}

std::size_t print_as_json(std::size_t count, const Verify &verify, Warner &warner) {
    Json documents = Json::array();
    std::size_t valid = 0;
    for (std::size_t i = 0; i < count; ++i) {
        documents.push_back(verify(i).document);
        valid += is_valid(documents.back()) ? 1U : 0U;
        warner.tell(warnings_of(documents.back()));
    }
    print_json(std::cout,
               {{"targets", std::move(documents)}, {"valid", valid}, {"not_valid", count - valid}});
    return valid;
}

}  // namespace

int report_targets(std::size_t count, const Verify &verify, bool as_json, Warner &warner) {
    const std::size_t valid = as_json      ? print_as_json(count, verify, warner)
                              : count == 1 ? print_one(verify, warner)
                                           : print_several(count, verify, warner);
    return valid == count ? kGood : kNotValid;
}

}  // namespace tool
