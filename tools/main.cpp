// tlxpki: certificates, keys and certification paths on the command line.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <span>

#include "arguments.hpp"
#include "failure.hpp"
#include "platform.hpp"
#include "text.hpp"

namespace tool {

namespace {

constexpr char kExitStatuses[] =
    "Exit status: 0 good, 1 not valid or not found, 2 wrong usage or input that cannot be read.\n"
    "Input files are PEM (any number of blocks) or DER, \"-\" is standard input. See tlxpki(1).";

void add_show(CLI::App &app, CommandLine &line) {
    CLI::App *command =
        app.add_subcommand("show", "Show certificates, RSA keys and revocation lists in words");
    command->footer("The secret numbers of a private key are never shown.");
    add_password_file(command, line.show.password_file);
    add_json(command, line.show.json);
    command->add_option("FILE", line.show.files, "Certificate and key files")->type_name("")->required();
    runs(command, line, run_show, line.show);
}

void add_asn1(CLI::App &app, CommandLine &line) {
    CLI::App *command =
        app.add_subcommand("asn1", "Show the tree of ASN.1 elements in a DER, BER or PEM file");
    command->footer(
        "A line for each element: offset, header octets, length of the contents, type and value.\n"
        "A broken element ends the tree; the exit status is 2 then.");
    command->add_flag("--full", line.asn1.full, "Show long values whole");
    add_json(command, line.asn1.json);
    add_operand(command, "FILE", line.asn1.file, "The file");
    runs(command, line, run_asn1, line.asn1);
}

void add_oid(CLI::App &app, CommandLine &line) {
    CLI::App *command = app.add_subcommand("oid", "Look up object identifiers");
    add_json(command, line.oid.json);
    command->add_option("TEXT", line.oid.texts, "Dotted text, index, or a name or part of one in any case")
        ->type_name("")
        ->required();
    runs(command, line, run_oid, line.oid);
}

void add_status(CLI::App &app, CommandLine &line) {
    CLI::App *command = app.add_subcommand("status", "Show what status codes mean");
    add_json(command, line.status.json);
    command->add_option("CODE", line.status.texts, "Status codes, like 0x53100054")
        ->type_name("")
        ->required();
    runs(command, line, run_status, line.status);
}

/// Throws Failure when the argument that chooses a command names none.
void expect_command(CLI::App &app, std::span<const std::string> arguments, const std::string &name) {
    const std::vector<CLI::App *> commands = app.get_subcommands({});
    if (commands.empty() || arguments.empty() || arguments[0].starts_with('-')) return;
    const auto chosen = std::ranges::find_if(
        commands, [&arguments](const CLI::App *command) { return command->check_name(arguments[0]); });
    if (chosen == commands.end()) {
        throw Failure("\"" + arguments[0] + "\" is no command; see " + name + " --help");
    }
    expect_command(**chosen, arguments.subspan(1), name + " " + arguments[0]);
}

/// The fault in the arguments, and the help that explains them.
std::string usage_problem(const CLI::App &app, const CLI::ParseError &error) {
    std::string help = "tlxpki ";
    const CLI::App *command = &app;
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
        help += command->get_name() + " ";
    }
    const bool no_command = !command->get_subcommands({}).empty() && error.get_name() == "RequiredError";
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
    add_verify(app, line);
    add_show(app, line);
    add_asn1(app, line);
    add_oid(app, line);
    add_status(app, line);
    add_message(app, line);
    add_pkcs12(app, line);
    add_key(app, line);
    add_identity(app, line);
    add_crl(app, line);
    add_token(app, line);
    add_trust_list(app, line);
    add_ocsp(app, line);
    add_timestamp(app, line);
    for (CLI::App *command : app.get_subcommands({})) {
        command->group("Commands");
    }
    expect_command(app, arguments, "tlxpki");
    try {
        // CLI11 consumes arguments from the back.
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::Success &help_or_version) {
        return app.exit(help_or_version);
    } catch (const CLI::ParseError &error) {
        throw Failure(usage_problem(app, error));
    }
    return line.run();
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

#ifdef _WIN32
// The run-time library leaves * and ? in arguments alone.
extern "C" {
int _dowildcard = 0;
}
int wmain(int argc, wchar_t **argv) {
#else
int main(int argc, char **argv) {
#endif
    std::ios::sync_with_stdio(false);
    tool::prepare_streams();
    return tool::run_and_report(tool::utf8_arguments(argc, argv));
}
