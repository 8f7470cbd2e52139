// The arguments of tlxpki message.
#include "arguments.hpp"

namespace tool {

namespace {

constexpr char kFile[] = "FILE";

void add_format(CLI::App *command, EnvelopeOptions &options) {
    add_choice(command, "--format", options.format, {"pkcs7", "cms"},
               "The format (default pkcs7 where it suffices, else cms)");
}

void add_recipients(CLI::App *command, EnvelopeOptions &options) {
    add_repeated(command, "--to", options.recipients, kFile,
                 "Certificate of a recipient, with a key of RSA, on P-256, P-384 or P-521, or of X25519 or\n"
                 "X448; the first of the file");
    add_choice(command, "--cipher", options.cipher, cipher_names(),
               "The cipher of the content (default aes-256-cbc)");
    command->add_flag("--password-recipient", options.password_recipient,
                      "Also encrypt for those who know a password");
}

/// The options of commands that make a message of a file.
template <typename Options>
void add_made_message(CLI::App *command, Options &options, const char *content_help) {
    command->add_flag("--der", options.der, "Write DER instead of PEM");
    add_json(command, options.json);
    add_file(command, "-o,--output", options.output, "Where the message goes; by default standard output");
    add_operand(command, "CONTENT", options.content, content_help);
}

void add_sign(CLI::App *message, CommandLine &line) {
    SignOptions &options = line.sign;
    CLI::App *command = message->add_subcommand("sign", "Sign a file");
    command->footer(
        "Give --cert and --key once for each signer, the keys in the order of the certificates. Either may\n"
        "be the URI of a token (pkcs11:...?module-path=...). With --to and --password-recipient\n"
        "the signed message is encrypted.\n\n"
        "Example: tlxpki message sign --cert user.pem --key user.key --chain ca.pem -o signed.p7 content");
    add_repeated(command, "--cert", options.certs, kFile,
                 "Certificate of a signer, the first of the file; it goes along in the message");
    command->get_option("--cert")->required();
    add_repeated(command, "--key", options.keys, kFile, "Private key of a signer");
    command->get_option("--key")->required();
    add_repeated(command, "--chain", options.chain, kFile,
                 "Further certificates to go along, such as a CA's");
    command->add_flag("--detached", options.detached, "Leave the content out of the message");
    add_choice(command, "--digest", options.digest, digest_names(),
               "The digest of the content (default sha256, on larger curves that of their size)");
    add_format(command, options.envelope);
    command->add_flag("--key-identifier", options.key_identifier,
                      "Name signers by the key identifiers of their certificates, not by issuer and number");
    add_choice(command, "--scheme", options.scheme, signature_schemes(),
               "How an RSA key signs it (default pkcs1)");
    command->add_flag("--signing-certificate", options.signing_certificate,
                      "Also sign which certificate the signer has (RFC 5035)");
    add_password_file(command, options.password_file);
    add_pin_file(command, options.pin_file);
    add_recipients(command, options.envelope);
    add_file(command, "--recipient-password-file", options.envelope.password_file,
             "File whose first line is the password of --password-recipient");
    add_made_message(command, options, "The file to sign");
    runs(command, line, run_sign, options);
}

void add_verify_message(CLI::App *message, CommandLine &line) {
    VerifyMessageOptions &options = line.verify_message;
    CLI::App *command = message->add_subcommand("verify", "Verify the signatures of a message");
    command->footer(
        "A message is valid when every signature holds and a path leads from every signer's certificate to\n"
        "one of --anchor. Without --anchor the signers stay unproven, and the exit status is 1.\n"
        "Revocation counts with --crl, --ocsp and --fetch, and with lists in the message. Nothing proves "
        "the\n"
        "signing time. The compatible rules check neither revocation nor purposes.\n\n"
        "Example: tlxpki message verify --anchor root.pem --pool ca.pem -o content signed.p7");
    add_repeated(command, "--anchor", options.anchors, kFile,
                 "Certificates to trust; they also join the pool");
    add_repeated(command, "--pool", options.pool, kFile,
                 "Certificates to find signers and issuers among, beside those in the message");
    add_file(command, "--content", options.content, "The content of a detached message");
    command->add_option("--at", options.time, "Verify at this time instead of now")->type_name("TIME");
    add_rules(command, options.rules);
    add_json(command, options.json);
    add_file(command, "-o,--output", options.output, "Where the content of a valid message goes");
    command->add_flag("--unverified-output", options.unverified_output,
                      "Write content to standard output, a pipe or a device before it is verified: the exit\n"
                      "status alone says whether it counts. Otherwise 1 MB is the most that goes there");
    add_signer_options(command, options.strict);
    add_operand(command, "MESSAGE", options.message, "The message");
    command->callback([command, &line, &options] {
        expect_options_of_rules(*command, options.rules);
        line.run = [&options] { return run_verify_message(options); };
    });
}

void add_encrypt(CLI::App *message, CommandLine &line) {
    EncryptOptions &options = line.encrypt;
    EnvelopeOptions &envelope = options.envelope;
    CLI::App *command = message->add_subcommand("encrypt", "Encrypt a file for the owners of certificates");
    command->footer(
        "Give --to once for each recipient. Every recipient can decrypt, and nobody can tell who "
        "encrypted.\n\n"
        "Example: tlxpki message encrypt --to user.pem -o sealed.p7 content");
    add_recipients(command, envelope);
    add_password_file(command, envelope.password_file);
    add_format(command, envelope);
    add_choice(command, "--scheme", envelope.scheme, encryption_schemes(),
               "How its key is encrypted for RSA keys (default pkcs1)");
    add_made_message(command, options, "The file to encrypt");
    runs(command, line, run_encrypt, options);
}

void add_decrypt(CLI::App *message, CommandLine &line) {
    DecryptOptions &options = line.decrypt;
    CLI::App *command = message->add_subcommand("decrypt", "Decrypt a message");
    command->footer(
        "Ciphers without a code (all but GCM) do not show whether a message was changed on its way, and "
        "none\n"
        "shows where it comes from. Of a message that was signed and encrypted, the content is the signed\n"
        "message, which message verify takes. --cert and --key may be URIs of a token\n"
        "(pkcs11:...?module-path=...).\n\n"
        "Example: tlxpki message decrypt --cert user.pem --key user.key -o content sealed.p7");
    add_file(command, "--cert", options.cert, "Certificate of the recipient");
    add_file(command, "--key", options.key, "Private key of the recipient");
    command->add_flag("--password-recipient", options.password_recipient,
                      "Decrypt with a password in place of a key");
    add_password_file(command, options.password_file);
    add_pin_file(command, options.pin_file);
    command->add_flag("--unverified-output", options.unverified_output,
                      "Write content to standard output, a pipe or a device as it is decrypted: the exit\n"
                      "status alone says whether it counts. Otherwise 1 MB is the most that goes there");
    add_json(command, options.json);
    add_file(command, "-o,--output", options.output, "Where the content goes; by default standard output");
    add_operand(command, "MESSAGE", options.message, "The message");
    runs(command, line, run_decrypt, options);
}

void add_show_message(CLI::App *message, CommandLine &line) {
    ShowMessageOptions &options = line.show_message;
    CLI::App *command = message->add_subcommand("show", "Show what a message consists of, in words");
    command->footer("Nothing is verified or decrypted.");
    add_json(command, options.json);
    add_operand(command, "MESSAGE", options.message, "The message");
    runs(command, line, run_show_message, options);
}

}  // namespace

void add_message(CLI::App &app, CommandLine &line) {
    CLI::App *message =
        app.add_subcommand("message", "Sign, verify, encrypt, decrypt and show messages of PKCS #7 and CMS");
    message->require_subcommand(1);
    add_sign(message, line);
    add_verify_message(message, line);
    add_encrypt(message, line);
    add_decrypt(message, line);
    add_show_message(message, line);
    add_stamp(message, line);
}

}  // namespace tool
