// tlxpki pkcs12 make: a private key and its certificates in a PKCS #12 file.
#include <tlxpki/pkcs12_file.h>

#include <iostream>

#include "commands.hpp"
#include "failure.hpp"
#include "key_file.hpp"
#include "output.hpp"
#include "pkcs12_file.hpp"
#include "public_part.hpp"
#include "status.hpp"

namespace tool {

namespace {

constexpr int32_t kNoOwner = -1;

/// The DER of a record. The buffer is wiped.
Buffer encoded(const void *record, ASN1_ENCODER encoder) {
    uint8_t *der = nullptr;
    const uint32_t size = writeDER_to_Binary(record, encoder, &der);
    if (size == 0xFFFFFFFF) throw Failure("a key or certificate cannot be encoded");
    return {der, size};
}

void add_entry(const Entries &entries, uint32_t kind, const Buffer &value, const std::string &name,
               int32_t owner) {
    const Octets octets = value.octets();
    must(add_PKCS12_entry(entries.get(), kind, nullptr, octets.data(), static_cast<uint32_t>(octets.size()),
                          name.empty() ? nullptr : name.c_str(), owner));
}

void add_certificate(const Entries &entries, const X509_CERT *cert, const std::string &name, int32_t owner) {
    add_entry(entries, TLX_P12_CERTIFICATE, encoded(cert, TLX_ENCODER(X509_CERT_to_Seq)), name, owner);
}

/// The key, its certificate and those of the chain.
Entries collect(const Pkcs12MakeOptions &options) {
    Password password(options.password_file);
    const KeyFile key = load_key(options.key, password);
    const LoadedCertificate cert = std::move(load_certificates(options.cert).front());
    if (!may_belong_to(key.info.get(), cert.cert.get())) {
        throw Failure(key.source + ": is not the key of " + cert.source);
    }
    Entries entries = made<Entries>(new_P12_ENTRIES());
    add_entry(entries, TLX_P12_PRIVATE_KEY, encoded(key.info.get(), TLX_ENCODER(P8_PRIV_KEY_INFO_to_Seq)),
              options.name, kNoOwner);
    add_certificate(entries, cert.cert.get(), options.name, 0);
    for (const std::string &path : options.chain) {
        for (const LoadedCertificate &loaded : load_certificates(path)) {
            add_certificate(entries, loaded.cert.get(), "", kNoOwner);
        }
    }
    return entries;
}

Pfx seal(const Entries &entries, const Pkcs12MakeOptions &options) {
    const bool has_password = options.scheme != "none" || !options.new_password_file.empty();
    P12_SETTINGS settings = {};
    settings.keyScheme = settings.safeScheme = options.scheme.c_str();
    if (!has_password) settings.macDigest = TLX_P12_NO_MAC;
    Password new_password(options.new_password_file);
    const std::string_view text = has_password ? new_password.of_new_key() : std::string_view();
    P12_PFX *made = nullptr;
    const uint32_t status =
        make_PKCS12(entries.get(), &settings, text.data(), static_cast<uint32_t>(text.size()), &made);
    if (status != 0) throw Failure("the file cannot be made: " + exact_status_sentence(status));
    return Pfx(made);
}

}  // namespace

int run_pkcs12_make(const Pkcs12MakeOptions &options) {
    expect_room_for_json(options.json, options.output);
    if (!options.force && exists(options.output)) {
        throw Failure(options.output + ": exists; --force replaces it");
    }
    const Entries entries = collect(options);
    const Pfx pfx = seal(entries, options);
    write_private_octets(options.output, encoded(pfx.get(), TLX_ENCODER(P12_PFX_to_Seq)).octets());
    if (options.json) {
        print_json(std::cout, {{"output", options.output},
                               {"scheme", options.scheme},
                               {"code", describe_code(pfx.get())},
                               {"entries", get_P12_ENTRIES_count(entries.get())}});
    }
    return kGood;
}

}  // namespace tool
