// The arguments of tlxpki token.
#include "arguments.hpp"

namespace tool {

void add_pin_file(CLI::App *command, std::string &path) {
    add_file(command, "--pin-file", path,
             "File whose first line is the PIN of a token; by default it is typed");
}

void add_token(CLI::App &app, CommandLine &line) {
    CLI::App *token = app.add_subcommand("token", "Show what is on tokens, through their PKCS #11 modules");
    token->require_subcommand(1);
    TokenOptions &options = line.token;

    CLI::App *slots = token->add_subcommand("slots", "List the slots that have a token");
    add_json(slots, options.json);
    add_operand(slots, "MODULE", options.name, "The PKCS #11 module, a shared library");
    runs(slots, line, run_token_slots, options);

    CLI::App *objects = token->add_subcommand("objects", "List certificates and keys of a token");
    objects->footer(
        "Most tokens show private keys to those who log in alone, with --pin-file or --login.\n\n"
        "Example: tlxpki token objects 'pkcs11:token=mine?module-path=/usr/lib/softhsm/libsofthsm2.so'");
    add_pin_file(objects, options.pin_file);
    objects->add_flag("--login", options.login, "Ask for the PIN");
    add_json(objects, options.json);
    add_operand(objects, "URI", options.name, "The token, and which objects, by RFC 7512");
    runs(objects, line, run_token_objects, options);

    CLI::App *certificate = token->add_subcommand("certificate", "Write a certificate of a token");
    certificate->add_flag("--der", options.der, "Write DER instead of PEM");
    add_pin_file(certificate, options.pin_file);
    add_json(certificate, options.json);
    add_file(certificate, "-o,--output", options.output,
             "Where the certificate goes; by default standard output");
    add_operand(certificate, "URI", options.name, "The certificate, by RFC 7512");
    runs(certificate, line, run_token_certificate, options);
}

}  // namespace tool
