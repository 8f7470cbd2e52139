// The arguments of the command.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "commands.hpp"

namespace tool {

/// Days between the times of a list or an answer, at most.
constexpr int kMostDays = 36500;

/// The request of the arguments.
struct CommandLine {
    VerifyOptions verify;
    ShowOptions show;
    Asn1Options asn1;
    LookUpOptions oid;
    LookUpOptions status;
    SignOptions sign;
    VerifyMessageOptions verify_message;
    EncryptOptions encrypt;
    DecryptOptions decrypt;
    ShowMessageOptions show_message;
    Pkcs12Options pkcs12;
    Pkcs12MakeOptions pkcs12_make;
    KeyOptions key;
    IdentityOptions identity;
    ShowCrlOptions crl_show;
    CheckCrlOptions crl_check;
    MakeCrlOptions crl_make;
    TrustListOptions trust_list;
    TokenOptions token;
    OcspRequestOptions ocsp_request;
    OcspRespondOptions ocsp_respond;
    OcspCheckOptions ocsp_check;
    TimestampRequestOptions timestamp_request;
    TimestampVerifyOptions timestamp_verify;
    StampOptions stamp;
    std::function<int()> run;  ///< the command that was given, with its options
};

/// Makes arguments that name a command run a function with its options.
template <typename Options>
void runs(CLI::App *command, CommandLine &line, int (*run)(const Options &), const Options &options) {
    command->callback([&line, run, &options] { line.run = [run, &options] { return run(options); }; });
}

/// An option that takes one value each time it is given.
void add_repeated(CLI::App *command, const char *name, std::vector<std::string> &values,
                  const char *value_name, const char *help);

/// An option that takes one file.
CLI::Option *add_file(CLI::App *command, const char *name, std::string &path, const char *help);

/// An option that takes one name of a list.
CLI::Option *add_choice(CLI::App *command, const char *name, std::string &value,
                        const std::vector<std::string> &names, const char *help);

/// The file that a command works on.
void add_operand(CLI::App *command, const char *name, std::string &path, const char *help);

void add_json(CLI::App *command, bool &json);

void add_password_file(CLI::App *command, std::string &path);
void add_pin_file(CLI::App *command, std::string &path);

/// Options of commands that write a file with a private key: --new-password-file, --force and --output.
void add_new_file(CLI::App *command, std::string &new_password_file, bool &force, std::string &output,
                  const char *help);

void add_verify(CLI::App &app, CommandLine &line);

/// tlxpki key and tlxpki identity, and what stands below them.
void add_key(CLI::App &app, CommandLine &line);
void add_identity(CLI::App &app, CommandLine &line);

/// tlxpki message and what stands below it.
void add_message(CLI::App &app, CommandLine &line);

/// tlxpki message stamp.
void add_stamp(CLI::App *message, CommandLine &line);

/// tlxpki token and what stands below it.
void add_token(CLI::App &app, CommandLine &line);

/// tlxpki ocsp and what stands below it.
void add_ocsp(CLI::App &app, CommandLine &line);

/// tlxpki timestamp and what stands below it.
void add_timestamp(CLI::App &app, CommandLine &line);

/// tlxpki pkcs12 and what stands below it.
void add_pkcs12(CLI::App &app, CommandLine &line);

/// tlxpki crl and what stands below it.
void add_crl(CLI::App &app, CommandLine &line);

/// tlxpki trustlist and what stands below it.
void add_trust_list(CLI::App &app, CommandLine &line);

}  // namespace tool
