#include "strict_arguments.hpp"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "a_label.hpp"
#include "arguments.hpp"
#include "choice.hpp"
#include "ip_address.hpp"
#include "verify.hpp"

namespace tool {

namespace {

constexpr char kSigning[] = "sign";
constexpr Choice kPurposes[] = {
    {"any", TLX_PURPOSE_ANY},
    {"tls-server", TLX_PURPOSE_TLS_SERVER},
    {"tls-client", TLX_PURPOSE_TLS_CLIENT},
    {"email", TLX_PURPOSE_EMAIL},
    {"code", TLX_PURPOSE_CODE},
    {"timestamp", TLX_PURPOSE_TIME_STAMPING},
    {"ocsp", TLX_PURPOSE_OCSP_SIGNING},
    {kSigning, TLX_PURPOSE_SIGNING},
    {"key-management", TLX_PURPOSE_KEY_MANAGEMENT},
};

constexpr Choice kProfiles[] = {
    {"current", TLX_PROFILE_CURRENT},
    {"korean_legacy", TLX_PROFILE_KOREAN_LEGACY},
    {"any", TLX_PROFILE_ANY},
};

constexpr Choice kAnchorRules[] = {
    {"none", TLX_ANCHOR_RULES_NONE},
    {"validity", TLX_ANCHOR_RULES_VALIDITY},
    {"constraints", TLX_ANCHOR_RULES_CONSTRAINTS},
    {"all", TLX_ANCHOR_RULES_DEFAULT},
};

constexpr Choice kRevocation[] = {
    {"off", TLX_REVOCATION_OFF},
    {"present", TLX_REVOCATION_PRESENT},
    {"target", TLX_REVOCATION_TARGET},
    {"path", TLX_REVOCATION_PATH},
};

constexpr Choice kFaults[] = {
    {"critical-false", TLX_ACCEPT_CRITICAL_FALSE},
    {"boolean", TLX_ACCEPT_BOOLEAN},
    {"key-usage-zeros", TLX_ACCEPT_KEY_USAGE_ZEROS},
    {"serial", TLX_ACCEPT_SERIAL},
};

struct BudgetName {
    std::string_view name;
    uint32_t VERIFY_BUDGET::*member;
};
constexpr BudgetName kBudgets[] = {
    {"signatures", &VERIFY_BUDGET::signatures},
    {"candidates", &VERIFY_BUDGET::candidates},
    {"path-length", &VERIFY_BUDGET::path_length},
    {"policy-nodes", &VERIFY_BUDGET::policy_nodes},
    {"name-comparisons", &VERIFY_BUDGET::name_comparisons},
    {"fetches", &VERIFY_BUDGET::fetches},
};

constexpr char kAnyPolicy[] = "2.5.29.32.0";

/// Reads NAME=N, where N counts from 1.
void set_budget(const std::string &text, VERIFY_BUDGET &budget) {
    const std::size_t equals = std::min(text.find('='), text.size());
    const char *end = text.data() + text.size();
    for (const BudgetName &each : kBudgets) {
        if (text.substr(0, equals) != each.name || equals == text.size()) continue;
        uint32_t number = 0;
        const auto [stop, error] = std::from_chars(text.data() + equals + 1, end, number);
        if (error != std::errc() || stop != end || number == 0) break;
        budget.*each.member = number;
        return;
    }
    std::string names;
    for (const BudgetName &each : kBudgets) {
        names += (names.empty() ? "" : ", ") + std::string(each.name);
    }
    throw Failure("--budget: \"" + text + "\" is no NAME=N with a number from 1 and one of " + names);
}

/// Throws Failure for a name that DNS cannot have as it is.
void expect_host(const std::string &host) {
    const auto is_ascii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (!parse_ip(host).empty()) throw Failure("--host: " + host + " is an IP address; give it with --ip");
    if (std::all_of(host.begin(), host.end(), is_ascii)) return;
    const std::string labels = to_a_labels(host);
    throw Failure("--host: \"" + host + "\" is not ASCII; write " +
                  (labels.empty() ? "its labels as A-labels (xn--...)" : labels));
}

/// An option whose value stands for something to compare with: without one nothing would be compared.
void add_wanted(CLI::App *command, const char *name, std::string &value, const char *value_name,
                const char *help) {
    const auto expect_text = [](const std::string &text) { return text.empty() ? "is empty" : ""; };
    command->add_option(name, value, help)->type_name(value_name)->check(CLI::Validator(expect_text, ""));
}

void add_name_options(CLI::App *command, StrictOptions &options) {
    add_choice(command, "--purpose", options.purpose, names_of(kPurposes),
               "What the certificate has to be for (default any; tls-server with --host)");
    add_wanted(command, "--host", options.host, "NAME", "A DNS name that the certificate has to have");
    add_wanted(command, "--ip", options.address, "ADDRESS", "An IP address that it has to have");
    add_wanted(command, "--email", options.mailbox, "ADDRESS", "A mail address that it has to have");
}

void add_strength_options(CLI::App *command, StrictOptions &options) {
    add_choice(command, "--profile", options.profile, names_of(kProfiles),
               "Which keys and digests are strong enough (default current)");
    command
        ->add_option("--min-rsa", options.least_rsa_bits,
                     "RSA and KCDSA keys have to have so many bits, whatever the profile says")
        ->type_name("BITS")
        ->check(CLI::Range(1, 65536).description(""));
    add_repeated(command, "--accept", options.accepted, "FAULT",
                 "A fault of encoding to let pass: critical-false, boolean, key-usage-zeros or serial");
    command->get_option("--accept")->check(CLI::IsMember(names_of(kFaults)).description(""));
    add_choice(command, "--anchor-rules", options.anchor_rules, names_of(kAnchorRules),
               "What counts of an anchor's certificate besides its name and key (default all)");
    command->add_flag("--system-anchors", options.system_anchors,
                      "Also trust the certificates that the system trusts");
}

void add_revocation_options(CLI::App *command, StrictOptions &options) {
    add_repeated(command, "--crl", options.lists, "FILE", "Revocation lists");
    add_repeated(command, "--ocsp", options.responses, "FILE", "An OCSP response");
    add_choice(
        command, "--revocation", options.revocation, names_of(kRevocation),
        "Which certificates need a list or response that they are not revoked (default present, or off "
        "when there is none)");
    command->add_flag("--fetch", options.fetch,
                      "Fetch missing issuers, lists and responses from where certificates say");
}

void add_policy_options(CLI::App *command, StrictOptions &options) {
    command->add_flag("--explicit-policy", options.explicit_policy, "Require a policy for the whole path");
    command->add_flag("--inhibit-mapping", options.inhibit_mapping, "Let no CA map policies");
    command->add_flag("--inhibit-any-policy", options.inhibit_any_policy,
                      "Let anyPolicy stand for no policy");
    add_repeated(command, "--budget", options.budget, "NAME=N",
                 "How much one verification may do: signatures, candidates, path-length, policy-nodes, "
                 "name-comparisons or fetches");
}

}  // namespace

std::string group_of_rules(const std::string &rules) {
    return rules == kStrict ? "Options of the strict rules" : "Options of the compatible rules";
}

void add_rules(CLI::App *command, std::string &rules) {
    add_choice(command, "--rules", rules, {kStrict, kCompatible},
               "strict: RFC 5280, the default; compatible: those of validate_certpath()");
}

void add_strict_options(CLI::App *command, StrictOptions &options) {
    const std::size_t before = command->get_options().size();
    add_name_options(command, options);
    add_strength_options(command, options);
    add_revocation_options(command, options);
    add_policy_options(command, options);
    const std::vector<CLI::Option *> all = command->get_options({});
    for (std::size_t i = before; i < all.size(); ++i) {
        all[i]->group(group_of_rules(kStrict));
    }
}

void add_signer_options(CLI::App *command, StrictOptions &options) {
    const std::size_t before = command->get_options({}).size();
    options.purpose = kSigning;
    add_choice(command, "--purpose", options.purpose, names_of(kPurposes),
               "What the certificates of signers have to be for (default sign)");
    add_strength_options(command, options);
    add_revocation_options(command, options);
    const std::vector<CLI::Option *> all = command->get_options({});
    for (std::size_t i = before; i < all.size(); ++i) {
        all[i]->group(group_of_rules(kStrict));
    }
}

void add_authority_options(CLI::App *command, StrictOptions &options) {
    add_strength_options(command, options);
    add_revocation_options(command, options);
}

void add_profile(CLI::App *command, StrictOptions &options) {
    options.purpose = kSigning;
    add_choice(command, "--profile", options.profile, names_of(kProfiles),
               "Which keys and digests are strong enough (default current)");
}

void expect_options_of_rules(const CLI::App &command, const std::string &rules) {
    const std::string other = rules == kStrict ? kCompatible : kStrict;
    for (const CLI::Option *option : command.get_options()) {
        if (option->count() == 0 || option->get_group() != group_of_rules(other)) continue;
        throw Failure(option->get_name() + " belongs to --rules " + other);
    }
}

uint32_t accepted_faults(const StrictOptions &options) {
    uint32_t faults = 0;
    for (const std::string &name : options.accepted) {
        faults |= value_of(kFaults, name);
    }
    return faults;
}

StrictSettings::StrictSettings(const StrictOptions &options, const std::vector<std::string> &policies,
                               const std::string &time)
    : time_(time_of_option(time)), fetcher_(accepted_faults(options)) {
    settings_.time = time_.get();
    settings_.profile = value_of(kProfiles, options.profile);
    settings_.least_rsa_bits = options.least_rsa_bits;
    settings_.accepted_faults = accepted_faults(options);
    settings_.anchor_rules = value_of(kAnchorRules, options.anchor_rules);
    for (const std::string &text : options.budget) {
        set_budget(text, settings_.budget);
    }
    if (!options.revocation.empty()) settings_.revocation = value_of(kRevocation, options.revocation);
    if (options.fetch) fetcher_.serve(settings_);
    set_names(options);
    set_policies(options, policies);
}

void StrictSettings::set_names(const StrictOptions &options) {
    const std::string by_default = options.host.empty() ? "any" : "tls-server";
    settings_.purpose = value_of(kPurposes, options.purpose.empty() ? by_default : options.purpose);
    if (!options.host.empty()) {
        expect_host(options.host);
        settings_.host = options.host.c_str();
    }
    if (!options.mailbox.empty()) settings_.mailbox = options.mailbox.c_str();
    if (options.address.empty()) return;
    address_ = parse_ip(options.address);
    if (address_.empty()) throw Failure("--ip: \"" + options.address + "\" is no IP address");
    settings_.address = address_.data();
    settings_.address_len = static_cast<uint32_t>(address_.size());
}

/// Whoever names a policy wants it.
void StrictSettings::set_policies(const StrictOptions &options, const std::vector<std::string> &policies) {
    policies_ = parse_policies(policies);
    settings_.policies = policies_.get();
    settings_.explicit_policy = options.explicit_policy ? 1 : 0;
    settings_.inhibit_mapping = options.inhibit_mapping ? 1 : 0;
    settings_.inhibit_any_policy = options.inhibit_any_policy ? 1 : 0;
    for (uint32_t i = 0; i < get_OBJECT_IDENTIFIERS_count(policies_.get()); ++i) {
        const auto *policy = get_OBJECT_IDENTIFIERS_child(policies_.get(), static_cast<int32_t>(i));
        if (dotted_text(policy) != kAnyPolicy) settings_.explicit_policy = 1;
    }
}

}  // namespace tool
