// tlxpki message sign.
#include <deque>
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

/// Whether the public key of a private one on a curve is that of a certificate.
bool gives_public_key(const ASYMMETRIC_KEY *key, const X509_PUBKEY *certified) {
    const auto given = made<PublicKey>(new_X509_PUBKEY());
    return set_X509_PUBKEY_key(given.get(), key) == 0 && cmp_X509_PUBKEY(given.get(), certified) == 0;
}

/// Whether a private key is that of a certificate.
bool belongs_to(const ASYMMETRIC_KEY *key, const X509_CERT *cert) {
    const bool is_on_curve = key->kind != TLX_KEY_RSA && key->kind != TLX_KEY_KCDSA;
    if (is_on_curve) return gives_public_key(key, get_X509_SPKI(cert));
    const ASYMMETRIC_KEY *certified = get_X509_PUBKEY_key(get_X509_SPKI(cert));
    if (certified == nullptr || certified->kind != key->kind) return false;
    if (key->kind == TLX_KEY_RSA) return cmp_BIGINT(modulus_of(key), modulus_of(certified)) == 0;
    return gives_public_key(key, get_KCDSA_number(static_cast<const KCDSA *>(certified->key), TLX_KCDSA_Y));
}

/// The registry row of the digest that is asked for, or of the default.
uint32_t digest_row(const SignOptions &options) {
    if (options.digest.empty()) return TLX_OID_SHA256;
    return value_of(kDigests, options.digest);
}

void expect_key(const std::string &path, const ASYMMETRIC_KEY *key, const LoadedCertificate &signer) {
    if (!belongs_to(key, signer.cert.get())) throw Failure(path + ": is not the key of " + signer.source);
}

}  // namespace

void add_certificate(P7_CONTENT_INFO *message, const X509_CERT *cert) {
    const X509_CERTIFICATES *certificates = message->content.signedData->certificates;
    if (get_X509_CERTS_index_by_X509_CERT(certificates, cert) >= 0) return;
    must(add_PKCS7_Certificate(message, cert));
}

void add_signers(P7_CONTENT_INFO *message, const SignOptions &options, Tokens &tokens) {
    const auto digest = static_cast<int32_t>(digest_row(options));
    const uint32_t scheme = value_of(kSchemes, options.scheme);
    Password password(options.password_file);
    for (std::size_t i = 0; i < options.certs.size(); ++i) {
        const LoadedCertificate signer = load_certificate(options.certs[i], tokens);
        const X509_CERT *cert = signer.cert.get();
        const Key key = load_private_key(options.keys[i], password, tokens, KeyUse::kSign);
        expect_key(options.keys[i], key.get(), signer);
        add_certificate(message, cert);
        if (add_PKCS7_Signature_withEncryptedAlgorithm(message, cert, key.get(), digest, scheme, nullptr) ==
            nullptr) {
            throw Failure(signer.source + ": the certificate cannot name a signer");
        }
    }
}

namespace {

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
        expect_key(key, keys_.back().get(), signer);
        carry(signer.cert.get());
        MESSAGE_SIGNER settings = {};
        settings.certificate = signer.cert.get();
        settings.key = keys_.back().get();
        settings.pss = options.scheme == "pss" && settings.key->kind == TLX_KEY_RSA ? 1 : 0;
        if (!options.digest.empty()) {
            const Oid digest(index_to_OBJECT_IDENTIFIER(static_cast<int32_t>(digest_row(options))));
            settings.digest_id = get_DigestID_from_OID(digest.get());
        }
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
    if (status == kLonger || status == kShorter)
        throw Failure(content.name() + ": changed while it was read");
    if (status == kNotOfPkcs7) {
        throw Failure("PKCS #7 has no signers with keys on curves; --format cms has");
    }
    if (status != 0) throw Failure("the content cannot be signed: " + exact_status_sentence(status));
}

/// Signs the content. The message is encrypted when there is an envelope.
void sign_content(const Signers &signers, const SignOptions &options, const Envelope *envelope,
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
    const Signers signers(options);
    std::optional<MessageOutline> outline;
    if (options.json) outline.emplace(source_of(options.content), options.output);
    sign_content(signers, options, envelope ? &*envelope : nullptr, outline ? &*outline : nullptr);
    if (outline) print_json(std::cout, outline->describe());
    return kGood;
}

}  // namespace tool
