// tlxpki message sign.
#include <deque>
#include <iostream>
#include <optional>

#include "commands.hpp"
#include "digest_choice.hpp"
#include "envelope.hpp"
#include "key_file.hpp"
#include "message_pieces.hpp"
#include "output.hpp"
#include "public_part.hpp"
#include "status.hpp"
#include "token.hpp"

namespace tool {

namespace {

using SignedWriter = Owned<SIGNED_MESSAGE_WRITER, free_SIGNED_MESSAGE_WRITER>;

constexpr Choice kSchemes[] = {{"pkcs1", 0}, {"pss", 1}};

/// The signers of a message with their certificates, which it carries with others.
class Signers {
  public:
    explicit Signers(const SignOptions &options)
        : tokens_(options.pin_file),
          password_(options.password_file),
          certificates_(made<Certificates>(new_X509_CERTIFICATES())) {
        for (std::size_t i = 0; i < options.certs.size(); ++i) {
            add(options, options.certs[i], options.keys[i]);
        }
        for (const std::string &path : options.chain) {
            for (const LoadedCertificate &loaded : load_certificates(path)) {
                carry(loaded.cert.get());
            }
        }
    }

    void set(SIGNED_MESSAGE_WRITER_SETTINGS &settings) const {
        settings.signers = signers_.data();
        settings.signer_count = static_cast<uint32_t>(signers_.size());
        settings.certificates = certificates_.get();
    }

  private:
    void add(const SignOptions &options, const std::string &cert, const std::string &key) {
        const LoadedCertificate &signer = loaded_.emplace_back(load_certificate(cert, tokens_));
        keys_.push_back(load_private_key(key, password_, tokens_, KeyUse::kSignMessage));
        expect_key_of(signer, key, keys_.back().get());
        carry(signer.cert.get());
        MESSAGE_SIGNER settings = {};
        settings.certificate = signer.cert.get();
        settings.key = keys_.back().get();
        if (settings.key->kind == TLX_KEY_RSA) settings.pss = value_of(kSchemes, options.scheme);
        if (!options.digest.empty()) settings.digest_id = value_of(kMessageDigests, options.digest);
        settings.by_key_identifier = options.key_identifier ? 1 : 0;
        settings.signing_certificate = options.signing_certificate ? 1 : 0;
        signers_.push_back(settings);
    }

    void carry(const X509_CERT *cert) {
        if (get_X509_CERTS_index_by_X509_CERT(certificates_.get(), cert) >= 0) return;
        must(add_X509_CERTIFICATES(certificates_.get(), cert));
    }

    Tokens tokens_;
    Password password_;
    std::deque<LoadedCertificate> loaded_;
    std::vector<Key> keys_;
    std::vector<MESSAGE_SIGNER> signers_;
    Certificates certificates_;
};

void expect_signed(const Source &content, uint32_t status) {
    constexpr uint32_t kLonger = 0x5283001C;
    constexpr uint32_t kShorter = 0x5284001C;
    constexpr uint32_t kNotOfPkcs7 = 0x52830106;
    constexpr uint32_t kNoIdentifier = 0x52830047;
    if (status == kLonger || status == kShorter) {
        throw Failure(content.name() + ": changed while it was read");
    }
    if (status == kNotOfPkcs7) {
        throw Failure(
            "PKCS #7 has no signers with keys on curves, with PSS, with SHA-3 and by key identifier; "
            "--format cms has");
    }
    if (status == kNoIdentifier) throw Failure("a signer's certificate has no key identifier");
    if (status != 0) throw Failure("the content cannot be signed: " + exact_status_sentence(status));
}

/// Signs the content. The message is encrypted when there is an envelope.
void sign_content(const Signers &signers, const SignOptions &options, const Envelope *envelope,
                  MessageOutline *outline) {
    Waiting waiting("Signing");
    Source content(options.content);
    MessageTarget target(options.output, options.der ? "" : kMessageLabel, outline);
    std::optional<EnvelopeWriter> outer;
    if (envelope != nullptr) outer.emplace(*envelope, target, std::nullopt);
    Receiver receiver([&](Octets octets) { outer ? outer->write(octets) : target.write(octets); });
    SIGNED_MESSAGE_WRITER_SETTINGS settings = {};
    settings.output = Receiver::give;
    settings.context = &receiver;
    settings.format = options.envelope.format == "pkcs7" ? TLX_MESSAGE_FORMAT_PKCS7 : TLX_MESSAGE_FORMAT_ANY;
    signers.set(settings);
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
    return names_of(kMessageDigests);
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
    if (options.detached && options.envelope.has_recipients()) {
        throw Failure("a message is encrypted with its content, which --detached leaves out");
    }
    std::optional<Envelope> envelope;
    if (options.envelope.has_recipients()) envelope.emplace(options.envelope);
    const Signers signers(options);
    std::optional<MessageOutline> outline;
    if (options.json) outline.emplace(source_of(options.content), options.output);
    sign_content(signers, options, envelope ? &*envelope : nullptr, outline ? &*outline : nullptr);
    if (outline) print_json(std::cout, outline->describe());
    return kGood;
}

}  // namespace tool
