// The arguments of tlxpki crl.
#include "arguments.hpp"

namespace tool {

namespace {

void add_crl_show(CLI::App *crl, CommandLine &line) {
    ShowCrlOptions &options = line.crl_show;
    CLI::App *command = crl->add_subcommand("show", "Show a revocation list in words");
    command->footer("Nothing is verified.");
    command->add_option("--entries", options.most_entries, "Show at most N entries (default 20)")
        ->type_name("N");
    add_json(command, options.json);
    add_operand(command, "LIST", options.file, "The list");
    runs(command, line, run_crl_show, options);
}

void add_crl_check(CLI::App *crl, CommandLine &line) {
    CheckCrlOptions &options = line.crl_check;
    CLI::App *command = crl->add_subcommand("check", "Say whether certificates are revoked");
    command->footer(
        "Exit status: 0 none is revoked, 1 one is, 2 the list cannot be relied on, or says nothing of one.\n"
        "The list has to be signed by the issuer and to hold at the time. The certificates themselves are "
        "not\n"
        "verified.\n\n"
        "Example: tlxpki crl check --issuer ca.pem --crl list.crl user.pem");
    add_file(command, "--issuer", options.issuer, "Certificate of who signed the list")->required();
    add_file(command, "--crl", options.crl, "The revocation list")->required();
    add_file(command, "--delta", options.delta, "A delta list that says what changed since");
    command->add_option("--at", options.time, "Check at this time instead of now")->type_name("TIME");
    add_json(command, options.json);
    command->add_option("CERT", options.certs, "Files with the certificates to check")
        ->type_name("")
        ->required();
    runs(command, line, run_crl_check, options);
}

void add_crl_make(CLI::App *crl, CommandLine &line) {
    MakeCrlOptions &options = line.crl_make;
    CLI::App *command = crl->add_subcommand("make", "Make and sign a revocation list");
    command->footer(
        "SERIAL is hexadecimal. REASON is unspecified, keyCompromise, cACompromise, affiliationChanged,\n"
        "superseded, cessationOfOperation, certificateHold, privilegeWithdrawn or aACompromise. TIME is as\n"
        "for verify, by default now. --issuer and --key may be URIs of a token "
        "(pkcs11:...?module-path=...).\n\n"
        "Example: tlxpki crl make --issuer ca.pem --key ca.key --from old.crl --revoke 1F,superseded -o "
        "new.crl");
    add_file(command, "--issuer", options.issuer, "Certificate of the issuer")->required();
    add_file(command, "--key", options.key, "Its private key")->required();
    add_file(command, "--from", options.from, "The last list, whose entries and extensions stay");
    add_repeated(command, "--revoke", options.revoke, "SERIAL[,REASON[,TIME]]", "A certificate to revoke");
    add_file(command, "--revoke-file", options.revoke_file, "File with a certificate to revoke in each line");
    add_repeated(command, "--release", options.release, "SERIAL",
                 "A certificate that is no longer on hold: a delta list says so, another leaves it out");
    command
        ->add_option("--delta", options.delta, "Make a delta list: what changed since the list with number N")
        ->type_name("N")
        ->check(CLI::Range(1U, 0xFFFFFFFDU).description(""));
    command
        ->add_option("--number", options.number,
                     "Number of the list (default the last one's plus 1, the base's plus 1, or 1)")
        ->type_name("N")
        ->check(CLI::Range(1U, 0xFFFFFFFEU).description(""));
    command->add_option("--days", options.days, "The next list comes within N days (default 30)")
        ->type_name("N")
        ->check(CLI::Range(1, kMostDays).description(""));
    add_choice(command, "--digest", options.digest,
               {"sha256", "sha384", "sha512", "sha224", "sha1", "has160"},
               "The digest of the signature (default sha256; for KCDSA has160)");
    add_password_file(command, options.password_file);
    add_pin_file(command, options.pin_file);
    command->add_flag("--der", options.der, "Write DER instead of PEM");
    add_json(command, options.json);
    add_file(command, "-o,--output", options.output, "Where the list goes; by default standard output");
    runs(command, line, run_crl_make, options);
}

}  // namespace

void add_crl(CLI::App &app, CommandLine &line) {
    CLI::App *crl = app.add_subcommand("crl", "Show, check and make revocation lists");
    crl->require_subcommand(1);
    add_crl_show(crl, line);
    add_crl_check(crl, line);
    add_crl_make(crl, line);
}

}  // namespace tool
