#include "envelope.hpp"

#include "choice.hpp"
#include "failure.hpp"
#include "status.hpp"

namespace tool {

namespace {

/// Schemes of key encryption by the digest of OAEP; 0 stands for no OAEP.
constexpr Choice kSchemes[] = {{"pkcs1", 0},
                               {"oaep-sha1", TLX_DIGEST_SHA1},
                               {"oaep-sha256", TLX_DIGEST_SHA256},
                               {"oaep-sha384", TLX_DIGEST_SHA384},
                               {"oaep-sha512", TLX_DIGEST_SHA512}};

bool has_rsa_key(const X509_CERT *cert) {
    const ASYMMETRIC_KEY *key = get_X509_PUBKEY_key(get_X509_SPKI(cert));
    return key != nullptr && key->kind == TLX_KEY_RSA;
}

/// Throws Failure for a recipient that cannot be made. Who cannot receive a key of this length receives none.
void expect_usable(const std::string &source, const CMS_RECIPIENT_SETTINGS &settings) {
    constexpr uint8_t kAnyKey[32] = {};
    constexpr uint32_t kNoKey = 0x52B00047;
    CMS_RECIPIENT_INFO *made = nullptr;
    const uint32_t status = make_CMS_RECIPIENT_INFO(&settings, kAnyKey, sizeof kAnyKey, &made);
    const Owned<CMS_RECIPIENT_INFO, free_CMS_RECIPIENT_INFO> owner(made);
    if (status == kNoKey) throw Failure(source + ": the certificate has no key to encrypt for");
    if (status != 0) {
        throw Failure(source +
                      ": nothing can be encrypted for the certificate: " + exact_status_sentence(status));
    }
}

}  // namespace

std::vector<std::string> cipher_names() {
    std::vector<std::string> names;
    for (uint32_t i = 0; get_MESSAGE_cipher_name(i) != nullptr; ++i) {
        names.emplace_back(get_MESSAGE_cipher_name(i));
    }
    return names;
}

std::vector<std::string> encryption_schemes() {
    return names_of(kSchemes);
}

Envelope::Envelope(const EnvelopeOptions &options)
    : options_(options),
      is_authenticated_(options.cipher.ends_with("-gcm")),
      password_(options.password_file) {
    expect_in_format(!is_authenticated_, options.cipher);
    for (const std::string &path : options.recipients) {
        add_certificate(path);
    }
    if (options.password_recipient) add_password();
    if (recipients_.empty()) throw Failure("--to is required; see tlxpki message encrypt --help");
}

void Envelope::expect_in_format(bool is_pkcs7, const std::string &what) const {
    if (options_.format == "pkcs7" && !is_pkcs7) {
        throw Failure("PKCS #7 has no " + what + "; --format cms has");
    }
}

void Envelope::add_certificate(const std::string &path) {
    const LoadedCertificate &to = certificates_.emplace_back(std::move(load_certificates(path).front()));
    const bool is_rsa = has_rsa_key(to.cert.get());
    CMS_RECIPIENT_SETTINGS settings = {};
    settings.certificate = to.cert.get();
    settings.oaep_digest_id = value_of(kSchemes, options_.scheme);
    settings.pkcs1_v15 = settings.oaep_digest_id == 0 ? 1 : 0;
    expect_usable(to.source, settings);
    expect_in_format(is_rsa, "recipients without an RSA key");
    recipients_.push_back(settings);
}

void Envelope::add_password() {
    expect_in_format(false, "recipients with a password");
    const std::string_view text = password_.of_new_message();
    CMS_RECIPIENT_SETTINGS settings = {};
    settings.password = reinterpret_cast<const uint8_t *>(text.data());
    settings.password_len = static_cast<uint32_t>(text.size());
    recipients_.push_back(settings);
}

void Envelope::set(ENVELOPED_MESSAGE_WRITER_SETTINGS &settings) const {
    settings.type = is_authenticated_ ? TLX_MESSAGE_AUTH_ENVELOPED_DATA : TLX_MESSAGE_ENVELOPED_DATA;
    settings.algorithm = options_.cipher.c_str();
    settings.recipients = recipients_.data();
    settings.recipient_count = static_cast<uint32_t>(recipients_.size());
}

EnvelopeWriter::EnvelopeWriter(const Envelope &envelope, MessageTarget &target, std::optional<uint64_t> size)
    : receiver_([&target](Octets octets) { target.write(octets); }) {
    ENVELOPED_MESSAGE_WRITER_SETTINGS settings = {};
    settings.output = Receiver::give;
    settings.context = &receiver_;
    settings.form = size ? TLX_MESSAGE_DER : TLX_MESSAGE_INDEFINITE;
    settings.size = size.value_or(0);
    envelope.set(settings);
    writer_ = made<decltype(writer_)>(new_ENVELOPED_MESSAGE_WRITER(&settings));
}

void EnvelopeWriter::expect(uint32_t status) {
    constexpr uint32_t kLonger = 0x52A3001C;
    constexpr uint32_t kShorter = 0x52A4001C;
    status = receiver_.checked(status);
    if (status == kLonger || status == kShorter) {
        throw Failure("the content is longer than the cipher takes, or changed while it was read");
    }
    if (status != 0) throw Failure("the content cannot be encrypted: " + exact_status_sentence(status));
}

void EnvelopeWriter::write(Octets octets) {
    expect(
        update_ENVELOPED_MESSAGE_WRITER(writer_.get(), octets.data(), static_cast<uint32_t>(octets.size())));
}

void EnvelopeWriter::finish() {
    expect(final_ENVELOPED_MESSAGE_WRITER(writer_.get()));
}

}  // namespace tool
