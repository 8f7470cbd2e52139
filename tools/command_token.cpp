// tlxpki token slots, objects and certificate.
#include <tlxpki/cryptoki_values.h>

#include <iostream>

#include "commands.hpp"
#include "document.hpp"
#include "failure.hpp"
#include "output.hpp"
#include "status.hpp"
#include "token.hpp"

namespace tool {

namespace {

struct FlagName {
    uint64_t flag;
    const char *name;
};
constexpr FlagName kFlags[] = {{CKF_LOGIN_REQUIRED, "login required"},
                               {CKF_USER_PIN_INITIALIZED, "PIN set"},
                               {CKF_USER_PIN_COUNT_LOW, "a wrong PIN was entered"},
                               {CKF_USER_PIN_FINAL_TRY, "last try of the PIN"},
                               {CKF_USER_PIN_LOCKED, "PIN locked"},
                               {CKF_USER_PIN_TO_BE_CHANGED, "PIN to be changed"},
                               {CKF_PROTECTED_AUTHENTICATION_PATH, "PIN pad"},
                               {CKF_WRITE_PROTECTED, "write protected"}};

constexpr const char *kKinds[] = {"", "certificate", "private key", "public key"};
constexpr const char *kTypes[] = {"", "cert", "private", "public"};

std::string module_query(const std::string &module) {
    return "?module-path=" + uri_text(module);
}

Json describe_token(const TOKEN_INFO &token, const std::string &module) {
    Json json = {{"slot", token.slotId},
                 {"label", token.label},
                 {"manufacturer", token.manufacturer},
                 {"model", token.model},
                 {"serial", token.serialNumber}};
    const bool initialised = (token.flags & CKF_TOKEN_INITIALIZED) != 0;
    json["initialised"] = initialised;
    json["flags"] = Json::array();
    for (const FlagName &each : kFlags) {
        if ((token.flags & each.flag) != 0) json["flags"].push_back(each.name);
    }
    if (initialised) {
        json["uri"] = "pkcs11:token=" + uri_text(token.label) + ";serial=" + uri_text(token.serialNumber) +
                      module_query(module);
    }
    return json;
}

/// The URI of an object, which says of the token what was asked with.
std::string object_uri(const TokenUri &uri, const TOKEN_OBJECT &object) {
    std::string text = "pkcs11:";
    if (uri.slot) text += "slot-id=" + std::to_string(*uri.slot) + ";";
    if (uri.token) text += "token=" + uri_text(*uri.token) + ";";
    if (uri.serial) text += "serial=" + uri_text(*uri.serial) + ";";
    if (object.idLength != 0) {
        text += "id=" + uri_text({reinterpret_cast<const char *>(object.id), object.idLength}) + ";";
    }
    if (*object.label != '\0') text += "object=" + uri_text(object.label) + ";";
    return text + "type=" + kTypes[object.kind] + module_query(uri.module);
}

Json describe_object(Tokens &tokens, const TokenUri &uri, const TOKEN_OBJECT &object) {
    Json json = {{"kind", kKinds[object.kind]}, {"label", object.label}};
    json["id"] = hex({object.id, object.idLength});
    if (object.kind == TLX_TOKEN_CERTIFICATE) {
        json["subject"] = shown_name(get_X509_subject(tokens.certificate(uri, &object).get()));
    }
    json["uri"] = object_uri(uri, object);
    return json;
}

/// Prints things of a name in the singular.
void print_all(const TokenOptions &options, const std::string &source, const std::string &name,
               Json &&items) {
    if (options.json) return print_json(std::cout, {{"source", source}, {name + "s", std::move(items)}});
    std::cout << printable(source) << ": " << items.size() << ' ' << name << (items.size() == 1 ? "" : "s")
              << '\n';
    for (const Json &item : items) {
        print_text(std::cout, item, 2);
        std::cout << '\n';
    }
}

void write_certificate(const X509_CERT *cert, const TokenOptions &options) {
    uint8_t *der = nullptr;
    const uint32_t size = writeDER_to_Binary(cert, TLX_ENCODER(X509_CERT_to_Seq), &der);
    if (size == 0xFFFFFFFF) throw Failure("the certificate cannot be encoded");
    const Buffer octets(der, size);
    if (options.der) return write_octets(options.output, octets.octets());
    constexpr std::string_view kLabel = "CERTIFICATE";
    char *text = nullptr;
    const uint32_t length =
        encode_PEM(der, size, kLabel.data(), static_cast<uint32_t>(kLabel.size()), &text, 1);
    if (length == 0) throw std::bad_alloc();
    const Buffer pem(reinterpret_cast<uint8_t *>(text), length);
    write_octets(options.output, pem.octets());
}

}  // namespace

int run_token_slots(const TokenOptions &options) {
    Tokens tokens("");
    Json items = Json::array();
    for (const TOKEN_INFO &token : tokens.list(options.name)) {
        items.push_back(describe_token(token, options.name));
    }
    print_all(options, options.name, "token", std::move(items));
    return kGood;
}

int run_token_objects(const TokenOptions &options) {
    const TokenUri uri = parse_token_uri(options.name);
    Tokens tokens(options.pin_file);
    const TokenObjects objects = tokens.find(uri, uri.kind, options.login || tokens.has_pin());
    Json items = Json::array();
    for (uint32_t i = 0; i < get_TOKEN_OBJECTS_count(objects.get()); ++i) {
        items.push_back(
            describe_object(tokens, uri, *get_TOKEN_OBJECTS_child(objects.get(), static_cast<int32_t>(i))));
    }
    print_all(options, uri.source, "object", std::move(items));
    return kGood;
}

int run_token_certificate(const TokenOptions &options) {
    expect_room_for_json(options.json, options.output);
    const TokenUri uri = parse_token_uri(options.name);
    Tokens tokens(options.pin_file);
    const Certificate cert = tokens.certificate(uri);
    write_certificate(cert.get(), options);
    if (options.json) {
        print_json(std::cout, {{"source", uri.source},
                               {"subject", shown_name(get_X509_subject(cert.get()))},
                               {"output", options.output}});
    }
    return kGood;
}

}  // namespace tool
