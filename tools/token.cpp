#include "token.hpp"

#include <tlxpki/cryptoki_values.h>

#include <algorithm>

#include "hidden_line.hpp"
#include "record.hpp"
#include "status.hpp"

namespace tool {

namespace {

constexpr uint32_t kAlreadyLoggedIn = 0x49200100;

void expect_done(const std::string &source, uint32_t status) {
    if (status != 0) throw Failure(source + ": " + exact_status_sentence(status));
}

bool says(const std::optional<std::string> &wanted, const char *text) {
    return !wanted || *wanted == text;
}

bool fits(const TOKEN_INFO &token, const TokenUri &uri) {
    if (uri.slot && *uri.slot != token.slotId) return false;
    const bool initialised = (token.flags & CKF_TOKEN_INITIALIZED) != 0;
    return initialised && says(uri.token, token.label) && says(uri.manufacturer, token.manufacturer) &&
           says(uri.model, token.model) && says(uri.serial, token.serialNumber);
}

/// The one object that a URI names.
const TOKEN_OBJECT *only_object(const TokenUri &uri, const TokenObjects &objects, const std::string &what) {
    const uint32_t count = get_TOKEN_OBJECTS_count(objects.get());
    if (count == 0) throw Failure(uri.source + ": the token has no such " + what);
    if (count > 1) throw Failure(uri.source + ": names several objects; say which by object or id");
    return get_TOKEN_OBJECTS_child(objects.get(), 0);
}

}  // namespace

TOKEN_MODULE *Tokens::module(const std::string &path) {
    const auto known = modules_.find(path);
    if (known != modules_.end()) return known->second.get();
    TOKEN_MODULE *opened = nullptr;
    expect_done(path, open_TOKEN_MODULE(path.c_str(), &opened));
    return modules_.emplace(path, opened).first->second.get();
}

std::vector<TOKEN_INFO> Tokens::list(const std::string &path) {
    TOKEN_INFO *tokens = nullptr;
    uint32_t count = 0;
    expect_done(path, list_TOKENS(module(path), &tokens, &count));
    const Owned<TOKEN_INFO, tlx_free> owner(tokens);
    return {tokens, tokens + count};
}

TOKEN_INFO Tokens::find_token(const TokenUri &uri) {
    std::vector<TOKEN_INFO> tokens = list(uri.module);
    std::erase_if(tokens, [&uri](const TOKEN_INFO &token) { return !fits(token, uri); });
    if (tokens.empty()) throw Failure(uri.source + ": there is no such token");
    if (tokens.size() > 1)
        throw Failure(uri.source + ": there are several tokens; say which by token or slot-id");
    return tokens.front();
}

Tokens::Entry &Tokens::session(const TokenUri &uri) {
    const TOKEN_INFO token = find_token(uri);
    Entry &entry = sessions_[{uri.module, token.slotId}];
    if (entry.session) return entry;
    TOKEN_SESSION *opened = nullptr;
    expect_done(uri.source, open_TOKEN_SESSION_slot(module(uri.module), token.slotId, &opened));
    entry.session.reset(opened);
    entry.token = token;
    return entry;
}

std::string_view Tokens::pin(const std::string &label, Buffer &room) {
    if (const auto line = pin_.in_file()) {
        if (line->empty()) throw Failure("the first line of the PIN file is empty");
        return *line;
    }
    constexpr std::size_t kLongest = 256;
    room = Buffer::of_size(kLongest);
    char *characters = reinterpret_cast<char *>(room.data());
    const auto size = read_hidden_line("PIN of " + printable(label) + ": ", {characters, kLongest});
    if (!size) throw Failure(label + ": give the PIN of the token with --pin-file");
    if (*size == 0) throw Failure(label + ": no PIN was typed");
    return {characters, *size};
}

void Tokens::log_in(const TokenUri &uri, Entry &entry) {
    if (entry.logged_in || (entry.token.flags & CKF_LOGIN_REQUIRED) == 0) return;
    const bool has_pad = (entry.token.flags & CKF_PROTECTED_AUTHENTICATION_PATH) != 0;
    Buffer room;
    const std::string_view text = has_pad ? std::string_view() : pin(entry.token.label, room);
    const uint32_t status =
        login_TOKEN(entry.session.get(), has_pad ? nullptr : text.data(), static_cast<uint32_t>(text.size()));
    if (status != kAlreadyLoggedIn) expect_done(uri.source, status);
    entry.logged_in = true;
}

uint32_t Tokens::ask_again(void *tokens, char *pin, uint32_t *length) {
    Buffer room;
    const std::string_view text = static_cast<Tokens *>(tokens)->pin("the key", room);
    *length = static_cast<uint32_t>(text.copy(pin, *length));
    return 0;
}

TokenObjects Tokens::find(const TokenUri &uri, uint32_t kind, bool logs_in) {
    Entry &entry = session(uri);
    if (logs_in) log_in(uri, entry);
    TOKEN_OBJECT_QUERY query = {};
    query.kind = kind;
    if (uri.object) query.label = uri.object->c_str();
    if (uri.id) {
        query.id = reinterpret_cast<const uint8_t *>(uri.id->data());
        query.idLength = static_cast<uint32_t>(uri.id->size());
    }
    TOKEN_OBJECTS *found = nullptr;
    expect_done(uri.source, find_TOKEN_OBJECTS(entry.session.get(), &query, &found));
    return TokenObjects(found);
}

Certificate Tokens::certificate(const TokenUri &uri, const TOKEN_OBJECT *object) {
    X509_CERT *cert = nullptr;
    expect_done(uri.source, get_TOKEN_certificate(session(uri).session.get(), object, &cert));
    return Certificate(cert);
}

Certificate Tokens::certificate(const TokenUri &uri) {
    TokenObjects objects = find(uri, TLX_TOKEN_CERTIFICATE, false);
    // Some tokens show their certificates to the user alone.
    if (get_TOKEN_OBJECTS_count(objects.get()) == 0 && has_pin())
        objects = find(uri, TLX_TOKEN_CERTIFICATE, true);
    return certificate(uri, only_object(uri, objects, "certificate"));
}

Key Tokens::private_key(const TokenUri &uri) {
    const TokenObjects objects = find(uri, TLX_TOKEN_PRIVATE_KEY, true);
    const TOKEN_OBJECT *object = only_object(uri, objects, "private key");
    ASYMMETRIC_KEY *key = nullptr;
    expect_done(uri.source, get_TOKEN_key(session(uri).session.get(), object, ask_again, this, &key));
    return Key(key);
}

LoadedCertificate load_certificate(const std::string &path, Tokens &tokens) {
    if (!is_token_uri(path)) return std::move(load_certificates(path).front());
    const TokenUri uri = parse_token_uri(path);
    return {tokens.certificate(uri), uri.source, true};
}

Key load_private_key(const std::string &path, Password &password, Tokens &tokens, KeyUse use) {
    return is_token_uri(path) ? tokens.private_key(parse_token_uri(path))
                              : load_private_key(path, password, use);
}

}  // namespace tool
