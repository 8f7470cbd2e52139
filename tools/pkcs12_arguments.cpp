// The arguments of tlxpki pkcs12.
#include "arguments.hpp"

namespace tool {

void add_pkcs12(CLI::App &app, CommandLine &line) {
    CLI::App *pkcs12 = app.add_subcommand("pkcs12", "Open PKCS #12 files");
    pkcs12->require_subcommand(1);
    Pkcs12Options &options = line.pkcs12;
    CLI::App *command =
        pkcs12->add_subcommand("open", "Show what a PKCS #12 file holds, or write it into a folder");
    command->footer(
        "The exit status is 1 when the password is wrong or something in the file could not be read.\n"
        "With --output, private keys are written without encryption into files of their owner alone. No file "
        "is\n"
        "replaced.\n\n"
        "Example: tlxpki pkcs12 open --password-file secret -o keys user.p12");
    add_password_file(command, options.password_file);
    add_file(command, "--mac-password-file", options.mac_password_file,
             "The same of a password that the code of the file has for itself");
    command->add_option("-o,--output", options.folder, "An existing folder to write everything into")
        ->type_name("FOLDER");
    add_json(command, options.json);
    add_operand(command, "FILE", options.file, "The file");
    runs(command, line, run_pkcs12_open, options);
}

}  // namespace tool
