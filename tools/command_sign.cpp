// tlxpki message sign.
#include <iostream>
#include <optional>

#include "choice.hpp"
#include "commands.hpp"
#include "envelope.hpp"
#include "key_file.hpp"
#include "message.hpp"
#include "output.hpp"
#include "status.hpp"
#include "token.hpp"

namespace tool {

namespace {

using SignedWriter = Owned<SIGNED_MESSAGE_WRITER, free_SIGNED_MESSAGE_WRITER>;

constexpr Choice kDigests[] = {{"sha256", TLX_OID_SHA256}, {"sha384", TLX_OID_SHA384},
                               {"sha512", TLX_OID_SHA512}, {"sha224", TLX_OID_SHA224},
                               {"sha1", TLX_OID_SHA1},     {"has160", TLX_OID_HAS160}};

constexpr Choice kSchemes[] = {{"pkcs1", TLX_P7_RSA_PKCS1}, {"pss", TLX_P7_RSA_PSS}};

const BIGINT *modulus_of(const ASYMMETRIC_KEY *key) {
    return get_RSA_UNIT_number(static_cast<const RSA_UNIT *>(key->key), TLX_RSA_N);
}

/// Whether a private key of KCDSA gives the public key y.
bool gives_public_key(const ASYMMETRIC_KEY *key, const BIGINT *y) {
    const auto unit = made<Owned<KCDSA, free_KCDSA>>(dup_KCDSA(static_cast<const KCDSA *>(key->key)));
    return compute_KCDSA_public(unit.get()) == 0 &&
           cmp_BIGINT(get_KCDSA_number(unit.get(), TLX_KCDSA_Y), y) == 0;
}

/// Whether a private key is that of a certificate.
bool belongs_to(const ASYMMETRIC_KEY *key, const X509_CERT *cert) {
    const ASYMMETRIC_KEY *certified = get_X509_PUBKEY_key(get_X509_SPKI(cert));
    if (certified == nullptr || certified->kind != key->kind) return false;
    if (key->kind == TLX_KEY_RSA) return cmp_BIGINT(modulus_of(key), modulus_of(certified)) == 0;
    return gives_public_key(key, get_KCDSA_number(static_cast<const KCDSA *>(certified->key), TLX_KCDSA_Y));
}

}  // namespace

void add_certificate(P7_CONTENT_INFO *message, const X509_CERT *cert) {
    const X509_CERTIFICATES *certificates = message->content.signedData->certificates;
    if (get_X509_CERTS_index_by_X509_CERT(certificates, cert) >= 0) return;
    must(add_PKCS7_Certificate(message, cert));
}

void add_signers(P7_CONTENT_INFO *message, const SignOptions &options, Tokens &tokens) {
    const auto digest = static_cast<int32_t>(value_of(kDigests, options.digest));
    const uint32_t scheme = value_of(kSchemes, options.scheme);
    Password password(options.password_file);
    for (std::size_t i = 0; i < options.certs.size(); ++i) {
        const LoadedCertificate signer = load_certificate(options.certs[i], tokens);
        const X509_CERT *cert = signer.cert.get();
        const Key key = load_private_key(options.keys[i], password, tokens, KeyUse::kSign);
        if (!belongs_to(key.get(), cert)) {
            throw Failure(options.keys[i] + ": is not the key of " + signer.source);
        }
        add_certificate(message, cert);
        if (add_PKCS7_Signature_withEncryptedAlgorithm(message, cert, key.get(), digest, scheme, nullptr) ==
            nullptr) {
            throw Failure(signer.source + ": the certificate cannot name a signer");
        }
    }
}

namespace {

void expect_signed(const Source &content, uint32_t status) {
    constexpr uint32_t kLonger = 0x5283001C;
    constexpr uint32_t kShorter = 0x5284001C;
    if (status == kLonger || status == kShorter)
        throw Failure(content.name() + ": changed while it was read");
    if (status != 0) throw Failure("the content cannot be signed: " + exact_status_sentence(status));
}

/// Signs the content. The message is encrypted when there is an envelope.
void sign_content(const P7_CONTENT_INFO *message, const SignOptions &options, const Envelope *envelope,
                  MessageOutline *outline) {
    Waiting waiting("Signing");
    Source content(options.content);
    MessageTarget target(options.output, options.der, outline);
    std::optional<EnvelopeWriter> outer;
    if (envelope != nullptr) outer.emplace(*envelope, target, std::nullopt);
    Receiver receiver([&](Octets octets) { outer ? outer->write(octets) : target.write(octets); });
    SIGNED_MESSAGE_WRITER_SETTINGS settings = {};
    settings.output = Receiver::give;
    settings.context = &receiver;
    settings.message = message;
    const std::optional<uint64_t> size = known_size(content);
    settings.size = size.value_or(0);
    settings.form = size ? TLX_MESSAGE_DER : TLX_MESSAGE_INDEFINITE;
    if (options.detached) settings.form = TLX_MESSAGE_DETACHED;
    const auto writer = made<SignedWriter>(new_SIGNED_MESSAGE_WRITER(&settings));
    read_pieces(content, waiting, [&](Octets octets) {
        expect_signed(content, receiver.checked(update_SIGNED_MESSAGE_WRITER(
                                   writer.get(), octets.data(), static_cast<uint32_t>(octets.size()))));
    });
    expect_signed(content, receiver.checked(final_SIGNED_MESSAGE_WRITER(writer.get())));
    if (outer) outer->finish();
    target.finish();
}

}  // namespace

std::vector<std::string> digest_names() {
    return names_of(kDigests);
}

std::vector<std::string> signature_schemes() {
    return names_of(kSchemes);
}

int run_sign(const SignOptions &options) {
    expect_room_for_json(options.json, options.output);
    if (options.certs.size() != options.keys.size()) {
        throw Failure("each --cert takes a --key, in the same order");
    }
    if (options.scheme == "pss" && options.digest == "has160") {
        throw Failure("RSASSA-PSS takes no HAS-160: choose another --digest or --scheme");
    }
    if (options.detached && !options.envelope.recipients.empty()) {
        throw Failure("--to encrypts the content, which --detached leaves out");
    }
    std::optional<Envelope> envelope;
    if (!options.envelope.recipients.empty()) envelope.emplace(options.envelope);
    Tokens tokens(options.pin_file);
    const Message message = new_message(TLX_OID_PKCS7_SIGNED_DATA);
    add_signers(message.get(), options, tokens);
    for (const std::string &path : options.chain) {
        for (const LoadedCertificate &loaded : load_certificates(path)) {
            add_certificate(message.get(), loaded.cert.get());
        }
    }
    std::optional<MessageOutline> outline;
    if (options.json) outline.emplace(source_of(options.content), options.output);
    sign_content(message.get(), options, envelope ? &*envelope : nullptr, outline ? &*outline : nullptr);
    if (outline) print_json(std::cout, outline->describe());
    return kGood;
}

}  // namespace tool
