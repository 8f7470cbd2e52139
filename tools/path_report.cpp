#include "path_report.hpp"

#include <algorithm>

#include "describe.hpp"

namespace tool {

namespace {

constexpr const char *kStates[] = {"ok", "failed", "not checked"};

Mark mark_of(const Json &state) {
    const auto *found = std::find(std::begin(kStates), std::end(kStates), state.get<std::string>());
    return static_cast<Mark>(found - std::begin(kStates));
}

/// The start of an entry's first line at some depth of a tree, and that of its other lines.
std::string branch(std::size_t depth) {
    return depth == 0 ? "" : std::string(4 * (depth - 1), ' ') + "└── ";
}
std::string below(std::size_t depth, bool has_children) {
    return std::string(4 * depth, ' ') + (has_children ? "│   " : "    ");
}

void print_details(std::ostream &out, const Json &certificate, const std::string &start) {
    const auto text = [&certificate](const char *key) {
        return printable(certificate[key].get<std::string>());
    };
    out << start << "valid      " << text("not_before") << " to " << text("not_after") << '\n'
        << start << "key        " << text("key") << '\n'
        << start << "signature  " << text("signature_algorithm") << '\n';
}

/// Where it was looked up: "good, by a list", or why nothing answers.
std::string revocation_line(const Json &revocation) {
    std::string line = revocation["state"].get<std::string>();
    if (revocation.contains("time")) {
        line += " on " + revocation["time"].get<std::string>() + " (" +
                revocation["reason"].get<std::string>() + ")";
    }
    const std::string source = revocation.value("source", "");
    if (!source.empty()) line += source == "crl" ? ", by a list" : ", by OCSP";
    return revocation.contains("text") ? line + ": " + revocation["text"].get<std::string>() : line;
}

}  // namespace

bool is_revocation_known(const Json &certificate) {
    return certificate.contains("revocation") && certificate["revocation"]["state"] != "not checked";
}

Json describe_path_certificate(const X509_CERT *cert, Mark mark) {
    const char *state = kStates[static_cast<std::size_t>(mark)];
    if (cert == nullptr) return {{"subject", nullptr}, {"state", state}};
    return {{"subject", name_text(get_X509_subject(cert))},
            {"serial", number_hex(get_X509_serial(cert))},
            {"not_before", time_text(get_X509_notBefore(cert))},
            {"not_after", time_text(get_X509_notAfter(cert))},
            {"key", key_line(get_X509_SPKI(cert))},
            {"signature_algorithm", algorithm_name(get_X509_sig_alg(cert))},
            {"state", state}};
}

std::string shown_subject(const Json &subject) {
    if (subject.is_null()) return "(cannot be decoded)";
    const std::string name = subject.get<std::string>();
    return name.empty() ? "(empty name)" : name;
}

std::string finding_line(const Json &finding) {
    return finding["text"].get<std::string>() + " (RFC 5280, " + finding["section"].get<std::string>() + ")";
}

void print_path(std::ostream &out, const Json &description) {
    const Json &path = description["path"];
    for (std::size_t depth = 0; depth < path.size(); ++depth) {
        const std::string start = below(depth, depth + 1 < path.size());
        out << branch(depth) << mark_text(mark_of(path[depth]["state"])) << ' '
            << printable(shown_subject(path[depth]["subject"])) << '\n';
        if (!path[depth]["subject"].is_null()) print_details(out, path[depth], start);
        if (is_revocation_known(path[depth])) {
            out << start << "revocation " << revocation_line(path[depth]["revocation"]) << '\n';
        }
        for (const Json &finding : description.value("findings", Json::array())) {
            if (finding["certificate"] == depth) {
                out << start << "finding    " << finding_line(finding) << '\n';
            }
        }
    }
}

}  // namespace tool
