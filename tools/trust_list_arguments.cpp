// The arguments of tlxpki trustlist.
#include "arguments.hpp"

namespace tool {

namespace {

void add_trust_list_show(CLI::App *lists, CommandLine &line) {
    TrustListOptions &options = line.trust_list;
    CLI::App *command = lists->add_subcommand("show", "Show a trust list, signed or not, in words");
    command->footer("Nothing is verified.");
    add_json(command, options.json);
    add_operand(command, "LIST", options.file, "The list");
    runs(command, line, run_trust_list_show, options);
}

void add_trust_list_import(CLI::App *lists, CommandLine &line) {
    TrustListOptions &options = line.trust_list;
    CLI::App *command = lists->add_subcommand("import", "Take the certificates out of a signed trust list");
    command->footer(
        "With --authority a list is accepted when every signer is an authority, or has a certificate below "
        "one,\n"
        "and when the list holds at the time. The certificates that the list names are taken.\n"
        "With --unverified nothing is checked, and every certificate in the file is taken: anybody can make\n"
        "such a file. The exit status is 1 when the list is not accepted, and nothing is written then.\n\n"
        "Example: tlxpki trustlist import --authority ca.pem -o anchors.pem list.p7");
    add_repeated(command, "--authority", options.authorities, "FILE",
                 "Certificates of who may sign lists, or of CAs above them");
    command->add_flag("--unverified", options.unverified, "Accept a list of anybody")
        ->excludes("--authority");
    command->add_option("--at", options.time, "Verify at this time instead of now")
        ->type_name("TIME")
        ->excludes("--unverified");
    add_profile(command, options.strict);
    add_json(command, options.json);
    add_file(command, "-o,--output", options.output, "Where the certificates go, as PEM")->required();
    add_operand(command, "LIST", options.file, "The signed list");
    runs(command, line, run_trust_list_import, options);
}

void add_trust_list_make(CLI::App *lists, CommandLine &line) {
    TrustListOptions &options = line.trust_list;
    CLI::App *command = lists->add_subcommand("make", "Make a signed trust list of certificates");
    command->footer(
        "The list names the certificates by SHA-256 and holds from now on.\n\n"
        "Example: tlxpki trustlist make --cert authority.pem --key authority.key -o list.p7 root.pem");
    add_repeated(command, "--cert", options.signer.certs, "FILE", "Certificate of a signer");
    command->get_option("--cert")->required();
    add_repeated(command, "--key", options.signer.keys, "FILE",
                 "Private key of a signer, in the order of the certificates");
    command->get_option("--key")->required();
    add_password_file(command, options.signer.password_file);
    command->add_option("--number", options.number, "The list's sequence number (default 1)")->type_name("N");
    command->add_option("--days", options.days, "How long the list holds (default 365)")
        ->type_name("N")
        ->check(CLI::Range(1, 36500).description(""));
    command->add_flag("--der", options.signer.der, "Write DER instead of PEM");
    add_json(command, options.json);
    add_file(command, "-o,--output", options.output, "Where the list goes")->required();
    command->add_option("CERTIFICATE", options.certificates, "Files with the certificates to trust")
        ->type_name("")
        ->required();
    runs(command, line, run_trust_list_make, options);
}

}  // namespace

void add_trust_list(CLI::App &app, CommandLine &line) {
    CLI::App *lists = app.add_subcommand("trustlist", "Show, import and make certificate trust lists");
    lists->require_subcommand(1);
    add_trust_list_show(lists, line);
    add_trust_list_import(lists, line);
    add_trust_list_make(lists, line);
}

}  // namespace tool
