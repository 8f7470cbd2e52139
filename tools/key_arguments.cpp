// The arguments of tlxpki key and tlxpki identity.
#include "arguments.hpp"

namespace tool {

namespace {

void add_input(CLI::App *command, KeyOptions &options, const char *name, const char *help) {
    add_password_file(command, options.password_file);
    add_operand(command, name, options.input, help);
}

void add_output(CLI::App *command, KeyOptions &options) {
    add_json(command, options.json);
    add_new_file(command, options.new_password_file, options.force, options.output, "Where the key goes");
}

void add_form(CLI::App *command, KeyOptions &options) {
    add_choice(command, "--scheme", options.scheme, key_schemes(),
               "How the key is encrypted (default pbes2)");
    command->add_flag("--der", options.der, "Write DER instead of PEM");
}

}  // namespace

void add_key(CLI::App &app, CommandLine &line) {
    CLI::App *key = app.add_subcommand("key", "Show, convert and make private keys");
    key->require_subcommand(1);
    KeyOptions &options = line.key;

    CLI::App *show = key->add_subcommand("show", "Show private keys, without their secret numbers");
    show->footer("A folder with signPri.key and kmPri.key, as Korean programs keep it, stands for both.");
    add_json(show, options.json);
    add_input(show, options, "FILE", "A key file, or a folder");
    runs(show, line, run_key_show, options);

    CLI::App *convert = key->add_subcommand("convert", "Write a private key in another form");
    convert->footer(
        "Example: tlxpki key convert --password-file old --scheme seed --new-password-file new -o OUT IN");
    add_choice(convert, "--to", options.to, {"pkcs8", "pkcs1"}, "pkcs8 (the default) or pkcs1");
    add_form(convert, options);
    add_output(convert, options);
    add_input(convert, options, "FILE", "A key file, or a folder, whose signPri.key counts");
    runs(convert, line, run_key_convert, options);

    CLI::App *password = key->add_subcommand("password", "Give a private key another password");
    password->footer("Form and scheme stay as they are.");
    add_output(password, options);
    add_input(password, options, "FILE", "A key file, or a folder, whose signPri.key counts");
    runs(password, line, run_key_password, options);

    CLI::App *make = key->add_subcommand("make", "Make a private key");
    add_choice(make, "--type", options.type, key_types(), "rsa, kcdsa, or the name of a curve")->required();
    make->add_option("--bits", options.bits, "The size of rsa (default 3072) and kcdsa (2048)")
        ->type_name("N")
        ->check(CLI::Range(1024, 8192).description(""));
    add_form(make, options);
    add_output(make, options);
    runs(make, line, run_key_make, options);
}

void add_identity(CLI::App &app, CommandLine &line) {
    CLI::App *identity = app.add_subcommand("identity", "Check who a Korean certificate belongs to");
    identity->require_subcommand(1);
    IdentityOptions &options = line.identity;
    CLI::App *check = identity->add_subcommand(
        "check", "Check whether a certificate, its key and an identity number belong together");
    add_file(check, "--cert", options.cert, "The certificate")->required();
    add_file(check, "--key", options.key, "Its private key, which has the random number")->required();
    add_file(check, "--number-file", options.number_file,
             "File whose first line is the resident or business registration number")
        ->required();
    add_password_file(check, options.password_file);
    add_json(check, options.json);
    runs(check, line, run_identity_check, options);
}

}  // namespace tool
