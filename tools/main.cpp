// tlxpki: certificates, keys and certification paths on the command line.
#include <CLI/CLI.hpp>
#include <iostream>

#include "commands.hpp"
#include "failure.hpp"
#include "platform.hpp"
#include "text.hpp"

namespace tool {

namespace {

constexpr char kExitStatuses[] =
    "Exit status: 0 good, 1 not valid or not found, 2 wrong usage or input that cannot be read.\n"
    "Input files are PEM (any number of blocks) or DER, \"-\" is standard input. See tlxpki(1).";

/// The request of the arguments.
struct CommandLine {
    VerifyOptions verify;
    ShowOptions show;
    Asn1Options asn1;
    LookUpOptions oid;
    LookUpOptions status;
    EncryptOptions encrypt;
    DecryptOptions decrypt;
    bool no_explicit_policy = false;
};

/// An option that takes one value each time it is given.
void add_repeated(CLI::App *command, const char *name, std::vector<std::string> &values,
                  const char *value_name, const char *help) {
    command->add_option(name, values, help)
        ->type_name(value_name)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void add_json(CLI::App *command, bool &json) {
    command->add_flag("--json", json, "Print JSON, for programs");
}

CLI::App *add_verify(CLI::App &app, CommandLine &line) {
    CLI::App *command = app.add_subcommand(
        "verify", "Build the path from each target certificate up to a trust anchor, and validate it");
    command->footer(
        "Give --anchor, --pool and --policy once for each value.\n"
        "TIME is YYYY-MM-DD, YYYY-MM-DD,hh:mm:ss or RFC 3339 (2026-01-31T12:00:00+09:00), in UTC unless it "
        "has\n"
        "an offset.\n"
        "Not checked: name constraints, policy mappings, inhibitAnyPolicy, revocation and purposes (extended "
        "key\n"
        "usage); warnings tell of constraints that a valid path holds, but that were not applied.\n\n"
        "Example: tlxpki verify --anchor root.pem --pool ca.pem user.pem");
    add_repeated(command, "--anchor", line.verify.anchors, "FILE",
                 "Certificates to trust; they also join the pool");
    command->get_option("--anchor")->required();
    add_repeated(command, "--pool", line.verify.pool, "FILE", "Certificates to find issuers among");
    add_repeated(command, "--policy", line.verify.policies, "OID",
                 "An acceptable policy, by dotted text or name; by default every policy is");
    command->add_flag("--no-explicit-policy", line.no_explicit_policy,
                      "Accept paths without a valid policy; by default one is required");
    command
        ->add_option("--max-length", line.verify.max_length,
                     "At most N + 1 certificates may stand below the anchor's (default 3)")
        ->type_name("N")
        ->check(CLI::Range(1, 1000).description(""));
    command->add_option("--at", line.verify.time, "Validate at this time instead of now")->type_name("TIME");
    add_json(command, line.verify.json);
    command->add_option("TARGET", line.verify.targets, "Files with the certificates to verify")
        ->type_name("")
        ->required();
    return command;
}

CLI::App *add_show(CLI::App &app, CommandLine &line) {
    CLI::App *command = app.add_subcommand("show", "Show certificates and RSA keys in words");
    command->footer("The secret numbers of a private key are never shown.");
    command
        ->add_option("--password-file", line.show.password_file,
                     "File whose first line is the password of an encrypted key")
        ->type_name("FILE");
    add_json(command, line.show.json);
    command->add_option("FILE", line.show.files, "Certificate and key files")->type_name("")->required();
    return command;
}

CLI::App *add_asn1(CLI::App &app, CommandLine &line) {
    CLI::App *command =
        app.add_subcommand("asn1", "Show the tree of ASN.1 elements in a DER, BER or PEM file");
    command->footer(
        "A line for each element: offset, header octets, length of the contents, type and value.\n"
        "A broken element ends the tree; the exit status is 2 then.");
    command->add_flag("--full", line.asn1.full, "Show long values whole");
    add_json(command, line.asn1.json);
    command->add_option("FILE", line.asn1.file, "The file")->type_name("")->required();
    return command;
}

CLI::App *add_encrypt(CLI::App *message, EncryptOptions &options) {
    CLI::App *command = message->add_subcommand("encrypt", "Encrypt a file for the owners of certificates");
    command->footer(
        "Give --to once for each recipient. Every recipient can decrypt, and nobody can tell who "
        "encrypted.\n\n"
        "Example: tlxpki message encrypt --to user.pem -o sealed.p7 content");
    add_repeated(command, "--to", options.recipients, "FILE",
                 "Certificate of a recipient, with an RSA key; the first of the file");
    command->get_option("--to")->required();
    command->add_option("--cipher", options.cipher, "The cipher of the content (default aes-256-cbc)")
        ->type_name("NAME")
        ->check(CLI::IsMember(cipher_names()));
    command->add_option("--scheme", options.scheme, "How its key is encrypted (default pkcs1)")
        ->type_name("NAME")
        ->check(CLI::IsMember(scheme_names()));
    command->add_flag("--der", options.der, "Write DER instead of PEM");
    command->add_option("-o,--output", options.output, "Where the message goes; by default standard output")
        ->type_name("FILE");
    command->add_option("CONTENT", options.content, "The file to encrypt")->type_name("")->required();
    return command;
}

CLI::App *add_decrypt(CLI::App *message, DecryptOptions &options) {
    CLI::App *command = message->add_subcommand("decrypt", "Decrypt a message");
    command->footer(
        "Nothing shows whether a message was changed on its way: decryption is no proof of where it comes "
        "from.\n\n"
        "Example: tlxpki message decrypt --cert user.pem --key user.key -o content sealed.p7");
    command->add_option("--cert", options.cert, "Certificate of the recipient")
        ->type_name("FILE")
        ->required();
    command->add_option("--key", options.key, "Private key of the recipient")->type_name("FILE")->required();
    command
        ->add_option("--password-file", options.password_file,
                     "File whose first line is the password of an encrypted key")
        ->type_name("FILE");
    command->add_option("-o,--output", options.output, "Where the content goes; by default standard output")
        ->type_name("FILE");
    command->add_option("MESSAGE", options.message, "The message")->type_name("")->required();
    return command;
}

CLI::App *add_look_up(CLI::App &app, const char *name, const char *help, const char *argument,
                      const char *argument_help, LookUpOptions &options) {
    CLI::App *command = app.add_subcommand(name, help);
    add_json(command, options.json);
    command->add_option(argument, options.texts, argument_help)->type_name("")->required();
    return command;
}

/// The fault in the arguments, and the help that explains them.
std::string usage_problem(const CLI::App &app, const CLI::ParseError &error) {
    std::string help = "tlxpki ";
    for (const CLI::App *parent = &app; !parent->get_subcommands().empty();) {
        parent = parent->get_subcommands().front();
        help += parent->get_name() + " ";
    }
    const bool no_command = app.get_subcommands().empty() && error.get_name() == "RequiredError";
    return (no_command ? "a command is required" : std::string(error.what())) + "; see " + help + "--help";
}

int run(const std::vector<std::string> &arguments) {
    CommandLine line;
    CLI::App app("Certificates, keys and certification paths.", "tlxpki");
    app.allow_windows_style_options(false);  // a path may also begin with a slash there
    app.require_subcommand(1);
    app.set_version_flag("--version", std::string("tlxpki ") + get_PkiVersion());
    app.footer(kExitStatuses);
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    const CLI::App *verify = add_verify(app, line);
    const CLI::App *show = add_show(app, line);
    const CLI::App *asn1 = add_asn1(app, line);
    const CLI::App *oid = add_look_up(app, "oid", "Look up object identifiers", "TEXT",
                                      "Dotted text, index, or a name or part of one in any case", line.oid);
    const CLI::App *status = add_look_up(app, "status", "Show what status codes mean", "CODE",
                                         "Status codes, like 0x53100054", line.status);
    CLI::App *message = app.add_subcommand("message", "Encrypt and decrypt PKCS #7 messages");
    message->require_subcommand(1);
    const CLI::App *encrypt = add_encrypt(message, line.encrypt);
    const CLI::App *decrypt = add_decrypt(message, line.decrypt);
    for (CLI::App *command : app.get_subcommands({})) {
        command->group("Commands");
    }
    const auto is_first = [&arguments](const CLI::App *command) { return command->check_name(arguments[0]); };
    if (!arguments.empty() && !arguments[0].starts_with('-') && app.get_subcommands(is_first).empty()) {
        throw Failure("\"" + arguments[0] + "\" is no command; see tlxpki --help");
    }
    try {
        // CLI11 consumes arguments from the back.
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::Success &help_or_version) {
        return app.exit(help_or_version);
    } catch (const CLI::ParseError &error) {
        throw Failure(usage_problem(app, error));
    }
    line.verify.explicit_policy = !line.no_explicit_policy;
    if (verify->parsed()) return run_verify(line.verify);
    if (show->parsed()) return run_show(line.show);
    if (asn1->parsed()) return run_asn1(line.asn1);
    if (oid->parsed()) return run_oid(line.oid);
    if (encrypt->parsed()) return run_encrypt(line.encrypt);
    if (decrypt->parsed()) return run_decrypt(line.decrypt);
    return status->parsed() ? run_status(line.status) : static_cast<int>(kUnusable);
}

int run_and_report(const std::vector<std::string> &arguments) {
    std::string problem;
    int status = kUnusable;
    try {
        status = run(arguments);
    } catch (const std::bad_alloc &) {
        problem = "there is not enough memory";
    } catch (const std::exception &failure) {
        problem = failure.what();
    }
    std::cout.flush();
    if (problem.empty() && !std::cout) problem = "the output cannot be written";
    if (problem.empty()) return status;
    std::cerr << "tlxpki: " << printable(problem) << '\n';
    return kUnusable;
}

}  // namespace

}  // namespace tool

int main(int argc, char **argv) {
    std::ios::sync_with_stdio(false);
    tool::prepare_streams();
    return tool::run_and_report(tool::utf8_arguments(argc, argv));
}
