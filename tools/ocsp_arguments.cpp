// The arguments of tlxpki ocsp.
#include "arguments.hpp"

namespace tool {

namespace {

void add_ocsp_request(CLI::App *ocsp, CommandLine &line) {
    OcspRequestOptions &options = line.ocsp_request;
    CLI::App *command = ocsp->add_subcommand("request", "Make a request about certificates");
    command->footer(
        "Example: tlxpki ocsp request --issuer ca.pem --nonce -o request.der user.pem\n"
        "         curl --data-binary @request.der -H 'Content-Type: application/ocsp-request' URL");
    add_file(command, "--issuer", options.issuer, "Certificate of the CA that issued them")->required();
    command->add_flag("--nonce", options.nonce, "Add a random nonce, which shows that an answer is new");
    add_choice(command, "--digest", options.digest, {"sha1", "sha256"},
               "The digest of the issuer's name and key (default sha1, which every responder knows)");
    add_file(command, "--signer", options.signer, "Certificate of who signs the request; by default nobody");
    add_file(command, "--key", options.key, "Private key of the signer");
    add_password_file(command, options.password_file);
    add_json(command, options.json);
    add_file(command, "-o,--output", options.output, "Where the request goes; by default standard output");
    command->add_option("CERT", options.certs, "Files with the certificates to ask about")
        ->type_name("")
        ->required();
    runs(command, line, run_ocsp_request, options);
}

void add_ocsp_respond(CLI::App *ocsp, CommandLine &line) {
    OcspRespondOptions &options = line.ocsp_respond;
    CLI::App *command = ocsp->add_subcommand("respond", "Answer a request from a revocation list or a table");
    command->footer(
        "A line of the table is SERIAL,good or SERIAL,unknown or SERIAL,revoked[,REASON[,TIME]]; \"#\" "
        "begins "
        "a\n"
        "comment. SERIAL is hexadecimal, REASON as in keyCompromise, TIME as for verify. Certificates that "
        "the\n"
        "table lacks, and those of other CAs, are unknown. No signature of a request is checked.\n"
        "--responder and --key may be the URI of a token (pkcs11:...?module-path=...).\n"
        "With --listen it answers over HTTP until SIGINT or SIGTERM comes, for tests and small uses.\n\n"
        "Example: tlxpki ocsp respond --issuer ca.pem --responder ocsp.pem --key ocsp.key --crl list.crl \\\n"
        "             -o response.der request.der");
    add_file(command, "--issuer", options.issuer, "Certificate of the CA")->required();
    add_file(command, "--responder", options.responder,
             "Certificate of the responder: the CA's, or one that it issued for OCSP")
        ->required();
    add_file(command, "--key", options.key, "Private key of the responder")->required();
    CLI::Option *table = add_file(command, "--table", options.table, "File with serial numbers and statuses");
    add_file(command, "--crl", options.crl, "A revocation list of the CA instead of a table")
        ->excludes(table);
    command
        ->add_option("--days", options.days,
                     "The next answer comes within N days (default: that of the list, or not said)")
        ->type_name("N")
        ->check(CLI::Range(1, kMostDays).description(""));
    command->add_flag("--by-key", options.by_key, "Name the responder by its key instead of its name");
    add_choice(command, "--digest", options.digest, {"sha256", "sha384", "sha512", "sha224", "sha1"},
               "The digest of an RSA signature (default sha256)");
    add_password_file(command, options.password_file);
    add_pin_file(command, options.pin_file);
    add_json(command, options.json);
    CLI::Option *output = add_file(command, "-o,--output", options.output,
                                   "Where the response goes; by default standard output");
    CLI::Option *request = command->add_option("REQUEST", options.request, "The request")->type_name("");
    command
        ->add_option("--listen", options.listen,
                     "Answer requests over HTTP at this address (127.0.0.1:8080, [::1]:8080); port 0 is any "
                     "that is free")
        ->type_name("ADDRESS:PORT")
        ->excludes(output, request, command->get_option("--json"));
    runs(command, line, run_ocsp_respond, options);
}

void add_ocsp_show(CLI::App *ocsp, CommandLine &line) {
    CLI::App *command = ocsp->add_subcommand("show", "Show requests and responses, as tlxpki show does");
    command->footer("Nothing is verified.");
    add_json(command, line.show.json);
    command->add_option("FILE", line.show.files, "Files with requests and responses")
        ->type_name("")
        ->required();
    runs(command, line, run_show, line.show);
}

void add_ocsp_check(CLI::App *ocsp, CommandLine &line) {
    OcspCheckOptions &options = line.ocsp_check;
    CLI::App *command = ocsp->add_subcommand("check", "Say whether a certificate is revoked");
    command->footer(
        "Exit status: 0 good, 1 revoked, 2 no reliable answer, or the responder does not know the "
        "certificate.\n"
        "The response has to be signed by the CA, or by a certificate that it issued for OCSP, and to hold "
        "at "
        "the\n"
        "time. The certificate itself is not verified. Without --response and --url the responder is asked "
        "that\n"
        "the certificate names.\n\n"
        "Example: tlxpki ocsp check --issuer ca.pem user.pem");
    add_file(command, "--issuer", options.issuer, "Certificate of the CA that issued it")->required();
    CLI::Option *response = add_file(command, "--response", options.response, "A response that is there");
    add_file(command, "--request", options.request, "The request that it answers, whose nonce has to agree")
        ->needs(response);
    command->add_option("--url", options.url, "The responder to ask over HTTP")
        ->type_name("URL")
        ->excludes(response);
    command->add_flag("--require-nonce", options.require_nonce,
                      "Refuse a response without the nonce; by default that is a warning");
    command->add_option("--at", options.time, "Check at this time instead of now")->type_name("TIME");
    add_json(command, options.json);
    add_operand(command, "CERT", options.cert, "The certificate");
    runs(command, line, run_ocsp_check, options);
}

}  // namespace

void add_ocsp(CLI::App &app, CommandLine &line) {
    CLI::App *ocsp = app.add_subcommand("ocsp", "Make, answer, show and check OCSP requests and responses");
    ocsp->require_subcommand(1);
    add_ocsp_request(ocsp, line);
    add_ocsp_respond(ocsp, line);
    add_ocsp_show(ocsp, line);
    add_ocsp_check(ocsp, line);
}

}  // namespace tool
