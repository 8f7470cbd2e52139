// The arguments of tlxpki pkcs12.
#include "arguments.hpp"

namespace tool {

namespace {

/// The options of commands that read a file.
void add_reading(CLI::App *command, Pkcs12Options &options) {
    add_password_file(command, options.password_file);
    add_file(command, "--mac-password-file", options.mac_password_file,
             "The same of a password that the code of the file has for itself");
    add_json(command, options.json);
    add_operand(command, "FILE", options.file, "The file");
}

void add_pkcs12_open(CLI::App *pkcs12, CommandLine &line) {
    Pkcs12Options &options = line.pkcs12;
    CLI::App *command =
        pkcs12->add_subcommand("open", "Show what a PKCS #12 file holds, or write it into a folder");
    command->footer(
        "The exit status is 1 when the password is wrong or something in the file could not be read.\n"
        "With --output, private keys are written without encryption into files of their owner alone.\n\n"
        "Example: tlxpki pkcs12 open --password-file secret -o keys user.p12");
    command->add_option("-o,--output", options.folder, "An existing folder to write everything into")
        ->type_name("FOLDER");
    command->add_flag("--force", options.force, "Replace files that exist in the folder");
    add_reading(command, options);
    runs(command, line, run_pkcs12_open, options);
}

void add_pkcs12_show(CLI::App *pkcs12, CommandLine &line) {
    Pkcs12Options &options = line.pkcs12;
    CLI::App *command = pkcs12->add_subcommand(
        "show", "Show how a PKCS #12 file is protected, and what can be seen without its password");
    command->footer("With --password-file, also what the file holds, as tlxpki pkcs12 open does.");
    add_reading(command, options);
    runs(command, line, run_pkcs12_show, options);
}

void add_pkcs12_make(CLI::App *pkcs12, CommandLine &line) {
    Pkcs12MakeOptions &options = line.pkcs12_make;
    CLI::App *command = pkcs12->add_subcommand("make", "Make a PKCS #12 file of a key and its certificates");
    command->footer(
        "Example: tlxpki pkcs12 make --key user.key --cert user.pem --chain ca.pem --new-password-file "
        "secret "
        "-o user.p12");
    add_file(command, "--key", options.key, "The private key")->required();
    add_file(command, "--cert", options.cert, "Its certificate, the first of the file")->required();
    add_repeated(command, "--chain", options.chain, "FILE",
                 "Further certificates to go along, such as a CA's");
    command->add_option("--name", options.name, "A name of the key for people")->type_name("TEXT");
    add_choice(command, "--scheme", options.scheme, key_schemes(),
               "How everything is encrypted (default pbes2)");
    add_password_file(command, options.password_file);
    add_new_file(command, options.new_password_file, options.force, options.output, "Where the file goes");
    add_json(command, options.json);
    runs(command, line, run_pkcs12_make, options);
}

}  // namespace

void add_pkcs12(CLI::App &app, CommandLine &line) {
    CLI::App *pkcs12 = app.add_subcommand("pkcs12", "Open, show and make PKCS #12 files");
    pkcs12->require_subcommand(1);
    add_pkcs12_open(pkcs12, line);
    add_pkcs12_show(pkcs12, line);
    add_pkcs12_make(pkcs12, line);
}

}  // namespace tool
