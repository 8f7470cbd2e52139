// The arguments of tlxpki verify.
#include "arguments.hpp"

namespace tool {

namespace {

void add_compatible_options(CLI::App *command, VerifyOptions &options) {
    const std::string group = group_of_rules(kCompatible);
    command
        ->add_flag("--no-explicit-policy{false}", options.explicit_policy,
                   "Accept paths without a valid policy; by default one is required")
        ->group(group);
    command
        ->add_option("--max-length", options.max_length,
                     "At most N + 1 certificates may stand below the anchor's (default 3)")
        ->type_name("N")
        ->check(CLI::Range(1, 1000).description(""))
        ->group(group);
}

}  // namespace

void add_verify(CLI::App &app, CommandLine &line) {
    VerifyOptions &options = line.verify;
    CLI::App *command = app.add_subcommand(
        "verify", "Find a path from each target certificate up to a trust anchor, and validate it");
    command->footer(
        "Give --anchor, --pool, --policy, --crl, --ocsp, --accept and --budget once for each value.\n"
        "TIME is YYYY-MM-DD, YYYY-MM-DD,hh:mm:ss or RFC 3339 (2026-01-31T12:00:00+09:00), in UTC unless it "
        "has\n"
        "an offset.\n"
        "The compatible rules do not check name constraints, policy mappings, inhibitAnyPolicy and purposes "
        "(extended\n"
        "key usage), and know RSA and KCDSA alone; warnings tell of constraints that a valid path holds, but "
        "that\n"
        "were not applied. They do not check revocation.\n\n"
        "Example: tlxpki verify --anchor root.pem --pool ca.pem --purpose sign user.pem");
    add_repeated(command, "--anchor", options.anchors, "FILE", "Certificates to trust");
    add_repeated(command, "--pool", options.pool, "FILE", "Certificates to find issuers among");
    add_repeated(command, "--policy", options.policies, "OID",
                 "An acceptable policy, by dotted text or name; by default every policy is");
    command->add_option("--at", options.time, "Validate at this time instead of now")->type_name("TIME");
    add_rules(command, options.rules);
    add_json(command, options.json);
    add_strict_options(command, options.strict);
    add_compatible_options(command, options);
    command->add_option("TARGET", options.targets, "Files with the certificates to verify")
        ->type_name("")
        ->required();
    command->callback([command, &line, &options] {
        expect_options_of_rules(*command, options.rules);
        line.run = [&options] { return run_verify(options); };
    });
}

}  // namespace tool
