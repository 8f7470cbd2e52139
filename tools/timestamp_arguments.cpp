// The arguments of tlxpki timestamp.
#include "arguments.hpp"

namespace tool {

namespace {

CLI::Option *add_signer_number(CLI::App *command, uint32_t &number) {
    return command
        ->add_option("--signer", number, "The signer by number, from 1 on (default: the one that is stamped)")
        ->type_name("N")
        ->check(CLI::PositiveNumber.description(""));
}

void add_timestamp_request(CLI::App *timestamp, CommandLine &line) {
    TimestampRequestOptions &options = line.timestamp_request;
    CLI::App *command = timestamp->add_subcommand("request", "Make a request for a time stamp");
    command->footer(
        "With --message the time stamp is for the signature of a signer of a signed message, with --file for "
        "a\n"
        "file. The request has a random nonce and asks for the authority's certificate.\n\n"
        "Example: tlxpki timestamp request --message signed.p7 -o request.tsq\n"
        "         curl --data-binary @request.tsq -H 'Content-Type: application/timestamp-query' URL");
    CLI::Option *message =
        add_file(command, "--message", options.message, "Signed message whose signature is to be stamped");
    command->add_option("--signer", options.signer, "Its signer by number, from 1 on (default: the only one)")
        ->type_name("N")
        ->check(CLI::PositiveNumber.description(""))
        ->needs(message);
    add_file(command, "--file", options.file, "File that is to be stamped")->excludes(message);
    add_choice(command, "--digest", options.digest, digest_names(),
               "The digest of the octets (default sha256)");
    command->add_option("--policy", options.policy, "Policy under which the authority is to stamp")
        ->type_name("OID");
    command->add_flag("--no-nonce", options.no_nonce,
                      "Leave out the nonce, which shows that an answer is new");
    command->add_flag("--no-certificate", options.no_certificate,
                      "Let the authority leave its certificate out of the token");
    add_json(command, options.json);
    add_file(command, "-o,--output", options.output, "Where the request goes; by default standard output");
    runs(command, line, run_timestamp_request, options);
}

void add_timestamp_show(CLI::App *timestamp, CommandLine &line) {
    CLI::App *command =
        timestamp->add_subcommand("show", "Show requests, responses and tokens, as tlxpki show does");
    command->footer("Nothing is verified.");
    add_json(command, line.show.json);
    command->add_option("FILE", line.show.files, "Files with requests, responses and tokens")
        ->type_name("")
        ->required();
    runs(command, line, run_show, line.show);
}

void add_timestamp_verify(CLI::App *timestamp, CommandLine &line) {
    TimestampVerifyOptions &options = line.timestamp_verify;
    CLI::App *command = timestamp->add_subcommand("verify", "Verify a time stamp");
    command->footer(
        "The path of the authority is verified at the time of the stamp, unless --at gives another. Without\n"
        "--anchor the authority stays unproven, and the exit status is 1.\n\n"
        "Example: tlxpki timestamp verify --anchor tsa.pem --token answer.tsr --message signed.p7");
    add_file(command, "--token", options.token, "The token, or a response with it")->required();
    CLI::Option *message =
        add_file(command, "--message", options.message, "Signed message of which a signature is stamped");
    add_signer_number(command, options.signer)->needs(message);
    add_file(command, "--file", options.file, "File that is stamped")->excludes(message);
    add_file(command, "--request", options.request,
             "The request, whose digest, nonce and policy have to agree");
    add_repeated(command, "--anchor", options.anchors, "FILE", "Certificates to trust");
    add_repeated(command, "--pool", options.pool, "FILE",
                 "Certificates to find the authority's and issuers among, beside those in the token");
    command->add_option("--at", options.time, "Verify at this time instead of that of the stamp")
        ->type_name("TIME");
    add_json(command, options.json);
    add_authority_options(command, options.strict);
    runs(command, line, run_timestamp_verify, options);
}

}  // namespace

void add_stamp(CLI::App *message, CommandLine &line) {
    StampOptions &options = line.stamp;
    CLI::App *command = message->add_subcommand("stamp", "Add the time stamp of a signature to a message");
    command->footer(
        "The message is read whole, and written as DER or PEM, whichever it was. The signature of the\n"
        "time stamp is not verified; message verify does so.\n\n"
        "Example: tlxpki message stamp --token answer.tsr -o stamped.p7 signed.p7");
    add_file(command, "--token", options.token, "The token, or a response with it")->required();
    add_signer_number(command, options.signer);
    add_json(command, options.json);
    add_file(command, "-o,--output", options.output, "Where the message goes; by default standard output");
    add_operand(command, "MESSAGE", options.message, "The signed message");
    runs(command, line, run_stamp, options);
}

void add_timestamp(CLI::App &app, CommandLine &line) {
    CLI::App *timestamp = app.add_subcommand("timestamp", "Ask for time stamps, show and verify them");
    timestamp->require_subcommand(1);
    add_timestamp_request(timestamp, line);
    add_timestamp_show(timestamp, line);
    add_timestamp_verify(timestamp, line);
}

}  // namespace tool
