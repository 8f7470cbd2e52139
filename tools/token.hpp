// Certificates and private keys on tokens.
#pragma once

#include <map>
#include <utility>

#include "key_file.hpp"
#include "password.hpp"
#include "token_uri.hpp"

namespace tool {

using TokenModule = Owned<TOKEN_MODULE, close_TOKEN_MODULE>;
using TokenSession = Owned<TOKEN_SESSION, close_TOKEN_SESSION>;
using TokenObjects = Owned<TOKEN_OBJECTS, free_TOKEN_OBJECTS>;

/// The modules and sessions of one command, whose keys it has to outlive.
class Tokens {
  public:
    /// The first line of a file is the PIN; without a file it is typed. Throws Failure when it cannot be
    /// read.
    explicit Tokens(const std::string &pin_file) : pin_(pin_file) {}

    /// The tokens of a module. Throws Failure, as all below do.
    [[nodiscard]] std::vector<TOKEN_INFO> list(const std::string &module);

    /// The objects that a URI names. Only those who log in see all.
    [[nodiscard]] TokenObjects find(const TokenUri &uri, uint32_t kind, bool logs_in);
    /// Whether a PIN was given, without asking for it.
    [[nodiscard]] bool has_pin() const { return pin_.in_file().has_value(); }

    [[nodiscard]] Certificate certificate(const TokenUri &uri);
    [[nodiscard]] Certificate certificate(const TokenUri &uri, const TOKEN_OBJECT *object);
    [[nodiscard]] Key private_key(const TokenUri &uri);

  private:
    /// A session, and whether its user has logged in.
    struct Entry {
        TokenSession session;
        TOKEN_INFO token;
        bool logged_in = false;
    };

    [[nodiscard]] TOKEN_MODULE *module(const std::string &path);
    [[nodiscard]] TOKEN_INFO find_token(const TokenUri &uri);
    [[nodiscard]] Entry &session(const TokenUri &uri);
    void log_in(const TokenUri &uri, Entry &entry);
    [[nodiscard]] std::string_view pin(const std::string &label, Buffer &room);
    static uint32_t ask_again(void *tokens, char *pin, uint32_t *length);

    Password pin_;
    std::map<std::string, TokenModule> modules_;
    std::map<std::pair<std::string, uint64_t>, Entry> sessions_;
};

/// The first certificate of a file, or that of a token when the path is a URI. Throws Failure.
[[nodiscard]] LoadedCertificate load_certificate(const std::string &path, Tokens &tokens);

/// The same of a private key.
[[nodiscard]] Key load_private_key(const std::string &path, Password &password, Tokens &tokens, KeyUse use);

}  // namespace tool
