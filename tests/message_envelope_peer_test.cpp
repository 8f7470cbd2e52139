// Encrypted, authenticated and digested messages of the openssl program read by us, and ours by it; and
// signed messages in enveloped ones.
#include <gtest/gtest.h>
#include <tlxpki/message_envelope.h>

#include "support/command.hpp"
#include "support/crypto_values.hpp"
#include "support/message_reader.hpp"
#include "support/openssl_peer.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Reader = Held<free_ENVELOPED_MESSAGE_READER>;
using Writer = Held<free_ENVELOPED_MESSAGE_WRITER>;

constexpr std::uint8_t kKey[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
const std::string kContent = "Content\n" + std::string(200000, 'x') + "\n";
const std::string kSecret = " -secretkey 000102030405060708090A0B0C0D0E0F ";

/// Somebody with a key of RSA, made by openssl once and for all tests, and files of the key's folder.
class Person {
  public:
    static const Person &instance() {
        static const Person person;
        return person;
    }
    [[nodiscard]] const CommandFolder &folder() const { return folder_; }
    [[nodiscard]] const CMS_KEY_HOLDER &holder() const { return holder_; }
    [[nodiscard]] const CMS_RECIPIENT_SETTINGS &recipient() const { return recipient_; }

  private:
    Person() {
        folder_.write("content", kContent);
        folder_.run("openssl req -x509 -newkey rsa:1024 -nodes -keyout key -out cert -subj /CN=rsa -days 2");
        cert_ = certificate_of(read_pem_file(folder_.path("cert")).front());
        const Octets octets = read_pem_file(folder_.path("key")).front();
        P8_PRIV_KEY_INFO *info = nullptr;
        ASYMMETRIC_KEY *key = nullptr;
        EXPECT_EQ(TLX_READ_DER(P8_PRIV_KEY_INFO, &info, octets.data(), length(octets)), 0U);
        const Held<free_P8_PRIV_KEY_INFO> owner(info);
        EXPECT_EQ(read_PRIV_KEY(info, &key), 0U);
        key_.reset(key);
        holder_.certificate = recipient_.certificate = cert_.get();
        holder_.private_key = key;
        recipient_.pkcs1_v15 = 1;
    }
    CommandFolder folder_;
    OwnedCert cert_;
    Held<free_ASYMMETRIC_KEY> key_;
    CMS_KEY_HOLDER holder_ = {};
    CMS_RECIPIENT_SETTINGS recipient_ = {};
};

Octets octets_of(const std::string &text) {
    return {text.begin(), text.end()};
}

/// The content of a message, which is verified where it can be.
std::string content_of(const Octets &message) {
    Octets given;
    ENVELOPED_MESSAGE_READER_SETTINGS settings = {};
    settings.output = collect_octets;
    settings.context = &given;
    settings.holder = &Person::instance().holder();
    const Reader keyless(new_ENVELOPED_MESSAGE_READER(&settings));
    settings.key = kKey;
    settings.key_len = sizeof kKey;
    const Reader keyed(new_ENVELOPED_MESSAGE_READER(&settings));
    std::uint32_t type = 0;
    EXPECT_EQ(get_MESSAGE_type(message.data(), length(message), &type), 0U);
    const auto *const reader = type == TLX_MESSAGE_ENCRYPTED_DATA ? &keyed : &keyless;
    EXPECT_EQ(update_ENVELOPED_MESSAGE_READER(reader->get(), message.data(), length(message)), 0U);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_READER(reader->get()), 0U);
    CMS_CONTENT_INFO *made = nullptr;
    EXPECT_EQ(get_ENVELOPED_MESSAGE_READER_message(reader->get(), &made), 0U);
    const Held<free_CMS_CONTENT_INFO> record(made);
    if (type == TLX_MESSAGE_ENVELOPED_DATA) {
        EXPECT_EQ(get_CMS_RECIPIENT_INFOS_count(made->envelopedData->recipientInfos), 1U);
        EXPECT_EQ(made->envelopedData->encryptedContentInfo->encryptedContent, nullptr);
    }
    return {given.begin(), given.end()};
}

TEST(MessageEnvelopePeer, WeReadTheirs) {
    const CommandFolder &folder = Person::instance().folder();
    for (const std::string command :
         {"-encrypt -aes-256-cbc -stream -binary -recip cert", "-encrypt -aria-128-cbc -recip cert",
          "-encrypt -aes-128-gcm -stream -recip cert -keyopt rsa_padding_mode:oaep",
          "-encrypt -aria-256-gcm -recip cert", "-EncryptedData_encrypt -aes-128-cbc -stream",
          "-digest_create"}) {
        const bool keyed = command.find("Encrypted") != std::string::npos;
        folder.run("openssl cms " + command + (keyed ? kSecret : " ") +
                   "-binary -in content -outform DER -out message");
        EXPECT_EQ(content_of(octets_of(folder.read("message"))), kContent) << command;
    }
}

struct Ours {
    std::uint32_t type;
    const char *algorithm;
    std::uint32_t form;
    std::string command;
};

/// A writer for one recipient, with a key for encrypted data.
ENVELOPED_MESSAGE_WRITER_SETTINGS writing(std::uint32_t type, const char *algorithm, Octets &written) {
    ENVELOPED_MESSAGE_WRITER_SETTINGS settings = {};
    settings.output = collect_octets;
    settings.context = &written;
    settings.type = type;
    settings.algorithm = algorithm;
    settings.recipients = &Person::instance().recipient();
    settings.recipient_count = 1;
    if (type == TLX_MESSAGE_ENCRYPTED_DATA) {
        settings.key = kKey;
        settings.key_len = sizeof kKey;
    }
    return settings;
}

TEST(MessageEnvelopePeer, TheyReadOurs) {
    const CommandFolder &folder = Person::instance().folder();
    const Octets content = octets_of(kContent);
    const Held<free_X509_ATTRIBUTES> attributes(new_X509_ATTRIBUTES());
    for (const Ours &ours :
         {Ours{TLX_MESSAGE_ENVELOPED_DATA, "aes-192-cbc", TLX_MESSAGE_INDEFINITE,
               "-decrypt -inkey key -recip cert"},
          {TLX_MESSAGE_ENVELOPED_DATA, "camellia-256-cbc", TLX_MESSAGE_DER,
           "-decrypt -inkey key -recip cert"},
          {TLX_MESSAGE_AUTH_ENVELOPED_DATA, "aes-256-gcm", TLX_MESSAGE_INDEFINITE,
           "-decrypt -inkey key -recip cert"},
          {TLX_MESSAGE_AUTH_ENVELOPED_DATA, "aria-256-gcm", TLX_MESSAGE_DER,
           "-decrypt -inkey key -recip cert"},
          {TLX_MESSAGE_ENCRYPTED_DATA, "aes-128-cbc", TLX_MESSAGE_INDEFINITE,
           "-EncryptedData_decrypt" + kSecret},
          {TLX_MESSAGE_DIGESTED_DATA, "sha512", TLX_MESSAGE_INDEFINITE, "-digest_verify"},
          {TLX_MESSAGE_DIGESTED_DATA, "sha256", TLX_MESSAGE_DETACHED, "-digest_verify -content content"}}) {
        Octets written;
        ENVELOPED_MESSAGE_WRITER_SETTINGS settings = writing(ours.type, ours.algorithm, written);
        settings.form = ours.form;
        settings.size = content.size();
        const Writer writer(new_ENVELOPED_MESSAGE_WRITER(&settings));
        EXPECT_EQ(update_ENVELOPED_MESSAGE_WRITER(writer.get(), content.data(), length(content)), 0U);
        EXPECT_EQ(final_ENVELOPED_MESSAGE_WRITER(writer.get()), 0U);
        folder.write("message", {written.begin(), written.end()});
        folder.run("openssl cms " + ours.command + " -binary -inform DER -in message -out out");
        EXPECT_EQ(folder.read("out"), kContent) << ours.algorithm;
    }
}

/// Writes the content.
void write_content(const ENVELOPED_MESSAGE_WRITER_SETTINGS &settings) {
    const Octets content = octets_of(kContent);
    const Writer writer(new_ENVELOPED_MESSAGE_WRITER(&settings));
    EXPECT_EQ(update_ENVELOPED_MESSAGE_WRITER(writer.get(), content.data(), length(content)), 0U);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_WRITER(writer.get()), 0U);
}

/// The record of a message that the holder opens.
Held<free_CMS_CONTENT_INFO> record_of(const Octets &message) {
    ENVELOPED_MESSAGE_READER_SETTINGS settings = {};
    settings.holder = &Person::instance().holder();
    const Reader reader(new_ENVELOPED_MESSAGE_READER(&settings));
    EXPECT_EQ(update_ENVELOPED_MESSAGE_READER(reader.get(), message.data(), length(message)), 0U);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_READER(reader.get()), 0U);
    CMS_CONTENT_INFO *made = nullptr;
    EXPECT_EQ(get_ENVELOPED_MESSAGE_READER_message(reader.get(), &made), 0U);
    return Held<free_CMS_CONTENT_INFO>(made);
}

Octets encoding_of(const X509_ATTRIBUTES *attributes) {
    return tlx_test::encoding_of(attributes, TLX_ENCODER(X509_ATTRIBUTES_to_Seq));
}

/// The originator of a message and its attributes that nothing protects.
std::pair<const CMS_ORIGINATOR_INFO *, const X509_ATTRIBUTES *> unprotected(const CMS_CONTENT_INFO &info) {
    if (info.envelopedData != nullptr) {
        return {info.envelopedData->originatorInfo, info.envelopedData->unprotectedAttrs};
    }
    if (info.authEnvelopedData != nullptr) {
        return {info.authEnvelopedData->originatorInfo, info.authEnvelopedData->unauthAttrs};
    }
    return {info.authenticatedData->originatorInfo, info.authenticatedData->unauthAttrs};
}

/// They come back octet for octet, and openssl decrypts enveloped data with them. It has no authenticated
/// data, and for the attributes of authenticated-and-enveloped data other tags than RFC 5083.
TEST(MessageEnvelopePeer, OriginatorAndUnprotectedAttributes) {
    const Person &person = Person::instance();
    const Octets cert = encode_certificate(person.holder().certificate);
    const std::string originator = "30{A0{=" + digits_of(cert) + "} A1{A1{06:2A03 05:}}}";
    const std::string attributes = "31{30{06:550405 31{02:01}} 30{06:550406 31{0C:61 0C:62}}}";
    const Held<free_CMS_ORIGINATOR_INFO> info(decoded(Seq_to_CMS_ORIGINATOR_INFO, originator));
    const Held<free_X509_ATTRIBUTES> other(decoded(Seq_to_X509_ATTRIBUTES, attributes));
    for (const auto &[type, algorithm] : {std::pair(TLX_MESSAGE_ENVELOPED_DATA, "aes-128-cbc"),
                                          {TLX_MESSAGE_AUTH_ENVELOPED_DATA, "aes-256-gcm"},
                                          {TLX_MESSAGE_AUTHENTICATED_DATA, "sha256"}}) {
        Octets written;
        ENVELOPED_MESSAGE_WRITER_SETTINGS settings =
            writing(static_cast<std::uint32_t>(type), algorithm, written);
        settings.originator = info.get();
        settings.other_attributes = other.get();
        write_content(settings);
        const Held<free_CMS_CONTENT_INFO> record = record_of(written);
        const auto members = unprotected(*record);
        EXPECT_EQ(tlx_test::encoding_of(members.first, TLX_ENCODER(CMS_ORIGINATOR_INFO_to_Seq)),
                  der(originator))
            << algorithm;
        EXPECT_EQ(encoding_of(members.second), der(attributes)) << algorithm;
        EXPECT_EQ(content_of(written), kContent) << algorithm;
        if (type != TLX_MESSAGE_ENVELOPED_DATA) continue;
        person.folder().write("message", {written.begin(), written.end()});
        person.folder().run(
            "openssl cms -decrypt -inkey key -recip cert -binary -inform DER -in message -out out");
        EXPECT_EQ(person.folder().read("out"), kContent);
    }
}

/// The codes of authenticated data are those of libcrypto, over the content or over the attributes with its
/// digest.
TEST(MessageEnvelopePeer, CodesOfAuthenticatedData) {
    const Held<free_X509_ATTRIBUTES> none(new_X509_ATTRIBUTES());
    for (const auto &[algorithm, digest, size] : {std::tuple("sha224", "SHA224", 28),
                                                  {"sha256", "SHA256", 32},
                                                  {"sha384", "SHA384", 48},
                                                  {"sha512", "SHA512", 64}})
        for (const X509_ATTRIBUTES *attributes : {static_cast<X509_ATTRIBUTES *>(nullptr), none.get()}) {
            const Octets key(static_cast<std::size_t>(size), 0x5A);
            Octets written;
            ENVELOPED_MESSAGE_WRITER_SETTINGS settings =
                writing(TLX_MESSAGE_AUTHENTICATED_DATA, algorithm, written);
            settings.key = key.data();
            settings.key_len = length(key);
            settings.attributes = attributes;
            write_content(settings);
            const Held<free_CMS_CONTENT_INFO> record = record_of(written);
            const CMS_AUTHENTICATED_DATA &data = *record->authenticatedData;
            EXPECT_EQ(data.authAttrs == nullptr, attributes == nullptr);
            const Octets content = octets_of(kContent);
            const Octets covered = data.authAttrs == nullptr ? content : encoding_of(data.authAttrs);
            EXPECT_EQ(Octets(data.mac->data, data.mac->data + data.mac->length),
                      openssl::hmac(digest, key, covered))
                << algorithm;
            const Octets value = openssl::digest(digest, content);
            EXPECT_NE(
                std::search(covered.begin(), covered.end(), value.begin(), value.end()) == covered.end(),
                attributes != nullptr)
                << algorithm;
        }
}

std::uint32_t envelop(void *context, const std::uint8_t *octets, std::uint32_t len) {
    return update_ENVELOPED_MESSAGE_WRITER(static_cast<ENVELOPED_MESSAGE_WRITER *>(context), octets, len);
}

std::uint32_t verify(void *context, const std::uint8_t *octets, std::uint32_t len) {
    return update_SIGNED_MESSAGE_READER(static_cast<SIGNED_MESSAGE_READER *>(context), octets, len);
}

/// Reads signed content out of an envelope in one pass.
std::string signed_content_of(const Octets &message) {
    Octets given;
    SIGNED_MESSAGE_READER_SETTINGS inside = {};
    inside.output = collect_octets;
    inside.context = &given;
    const MessageReader verifier(new_SIGNED_MESSAGE_READER(&inside));
    ENVELOPED_MESSAGE_READER_SETTINGS outside = {};
    outside.unverified_output = verify;
    outside.context = verifier.get();
    outside.as_message = 1;
    outside.holder = &Person::instance().holder();
    const Reader reader(new_ENVELOPED_MESSAGE_READER(&outside));
    EXPECT_EQ(in_pieces(message, 999,
                        [&](const std::uint8_t *octets, std::uint32_t len) {
                            return update_ENVELOPED_MESSAGE_READER(reader.get(), octets, len);
                        }),
              0U);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_READER(reader.get()), 0U);
    EXPECT_EQ(final_SIGNED_MESSAGE_READER(verifier.get(), nullptr), 0U);
    return {given.begin(), given.end()};
}

/// Signed and enveloped in one pass, of which openssl opens the outside, and verifies the inside.
TEST(MessageEnvelopePeer, SignedThenEnveloped) {
    const Person &person = Person::instance();
    const CMS_KEY_HOLDER &holder = person.holder();
    const Held<free_P7_CONTENT_INFO> info(new_P7_CONTENT_INFO());
    EXPECT_EQ(set_PKCS7_Type(info.get(), TLX_OID_PKCS7_SIGNED_DATA), 0U);
    EXPECT_NE(add_PKCS7_Signature(info.get(), holder.certificate, holder.private_key, TLX_OID_SHA256),
              nullptr);
    EXPECT_EQ(add_PKCS7_Certificate(info.get(), holder.certificate), 0U);
    Octets written;
    const ENVELOPED_MESSAGE_WRITER_SETTINGS outside =
        writing(TLX_MESSAGE_AUTH_ENVELOPED_DATA, "aes-256-gcm", written);
    const Writer writer(new_ENVELOPED_MESSAGE_WRITER(&outside));
    SIGNED_MESSAGE_WRITER_SETTINGS inside = {};
    inside.output = envelop;
    inside.context = writer.get();
    inside.message = info.get();
    const Held<free_SIGNED_MESSAGE_WRITER> signer(new_SIGNED_MESSAGE_WRITER(&inside));
    const Octets content = octets_of(kContent);
    EXPECT_EQ(update_SIGNED_MESSAGE_WRITER(signer.get(), content.data(), length(content)), 0U);
    EXPECT_EQ(final_SIGNED_MESSAGE_WRITER(signer.get()), 0U);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_WRITER(writer.get()), 0U);
    EXPECT_EQ(signed_content_of(written), kContent);
    person.folder().write("message", {written.begin(), written.end()});
    person.folder().run(
        "openssl cms -decrypt -binary -inkey key -recip cert -inform DER -in message -out inside && openssl "
        "cms -verify "
        "-binary -noverify -inform DER -in inside -out out");
    EXPECT_EQ(person.folder().read("out"), kContent);

    // The same with the body alone for content, and with the contents of the body, as PKCS #7 has it.
    const Octets signed_message = octets_of(person.folder().read("inside"));
    const Held<free_ASN1_STRING> type(index_to_OBJECT_IDENTIFIER(TLX_OID_PKCS7_SIGNED_DATA));
    for (const std::size_t start : {15U, 17U}) {
        const std::size_t end = start == 15 ? 4 : 6;
        Octets again;
        ENVELOPED_MESSAGE_WRITER_SETTINGS settings =
            writing(TLX_MESSAGE_ENVELOPED_DATA, "aes-128-cbc", again);
        settings.content_type = type.get();
        const Writer other(new_ENVELOPED_MESSAGE_WRITER(&settings));
        EXPECT_EQ(
            update_ENVELOPED_MESSAGE_WRITER(other.get(), signed_message.data() + start,
                                            static_cast<std::uint32_t>(signed_message.size() - start - end)),
            0U);
        EXPECT_EQ(final_ENVELOPED_MESSAGE_WRITER(other.get()), 0U);
        EXPECT_EQ(signed_content_of(again), kContent) << start;
    }
}

}  // namespace
}  // namespace tlx_test
