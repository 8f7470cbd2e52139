// The content keys of CMS messages: how recipients get and open them, alone and with the openssl program.
#include <gtest/gtest.h>
#include <tlxpki/cms_keys.h>
#include <tlxpki/message_envelope.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <list>
#include <sstream>

#include "support/chain_builder.hpp"
#include "support/command.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_peer.hpp"
#include "support/rows.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Info = Held<free_CMS_CONTENT_INFO>;
using Recipient = Held<free_CMS_RECIPIENT_INFO>;
using Key = Held<free_ASYMMETRIC_KEY>;

const std::string kContent = "Content\n" + std::string(100, 'x');

std::uint32_t size_of(const Octets &octets) {
    return static_cast<std::uint32_t>(octets.size());
}

/// What somebody opens with.
struct Person {
    OwnedCert cert;
    Key key;
};

/// Somebody with the key and the certificate of files.
Person read_person(const CommandFolder &folder, const std::string &name) {
    const Octets octets = read_pem_file(folder.path(name + ".p8")).front();
    P8_PRIV_KEY_INFO *info = nullptr;
    EXPECT_EQ(TLX_READ_DER(P8_PRIV_KEY_INFO, &info, octets.data(), size_of(octets)), 0U);
    const Held<free_P8_PRIV_KEY_INFO> owner(info);
    ASYMMETRIC_KEY *key = nullptr;
    EXPECT_EQ(read_PRIV_KEY(info, &key), 0U);
    return {certificate_of(read_pem_file(folder.path(name + ".pem")).front()), Key(key)};
}

/// Somebody with a key of RFC 7748 in place of that in another certificate.
Person make_xdh_person(const X509_CERT *other, std::uint32_t curve, const Octets &octets) {
    XDH_KEY *unit = nullptr;
    EXPECT_EQ(private_binary_to_XDH_KEY(curve, octets.data(), size_of(octets), &unit), 0U);
    const Held<free_XDH_KEY> owner(unit);
    Person person{OwnedCert(dup_X509_CERT(other)), Key(new_ASYMMETRIC_KEY())};
    EXPECT_EQ(set_ASYMMETRIC_KEY(person.key.get(), TLX_KEY_XDH, unit), 0U);
    EXPECT_EQ(set_X509_PUBKEY_key(get_X509_SPKI(person.cert.get()), person.key.get()), 0U);
    return person;
}

/// Keys with their certificates, and content, made by openssl once and for all tests.
class People {
  public:
    static const People &instance() {
        static const People people;
        return people;
    }
    [[nodiscard]] const CommandFolder &folder() const { return folder_; }
    /// Somebody without a key for an unknown name.
    [[nodiscard]] const Person &operator[](const std::string &name) const {
        static const Person nobody;
        const auto found = people_.find(name);
        return found == people_.end() ? nobody : found->second;
    }

  private:
    People() {
        folder_.write("content", kContent);
        for (const auto &[name, algorithm] : std::map<std::string, std::string>{
                 {"rsa", "rsa:2048"},
                 {"p256", "ec -pkeyopt ec_paramgen_curve:P-256"},
                 {"p384", "ec -pkeyopt ec_paramgen_curve:P-384"},
                 {"p521", "ec -pkeyopt ec_paramgen_curve:P-521"},
             }) {
            folder_.run("openssl req -x509 -newkey " + algorithm + " -nodes -keyout " + name + ".p8 -out " +
                        name + ".pem -subj /CN=" + name + " -days 2");
            people_[name] = read_person(folder_, name);
        }
        const X509_CERT *cert = people_["p256"].cert.get();
        people_["x25519"] = make_xdh_person(cert, TLX_CURVE_X25519, Octets(32, 0x42));
        people_["x448"] = make_xdh_person(cert, TLX_CURVE_X448, Octets(56, 0x42));
        people_["other"] = {CertSpec{.subject = "Other", .issuer = "Other"}.make(),
                            Key(dup_ASYMMETRIC_KEY(signing_key(0)))};
        people_["point"] = {OwnedCert(dup_X509_CERT(cert)), nullptr};
        get_X509_SPKI(people_["point"].cert.get())->subjectPublicKey->data[1] ^= 1;
    }
    CommandFolder folder_;
    std::map<std::string, Person> people_;
};

/// Words "name=value"; without a value one means "1". Values of octets are hexadecimal.
class Words {
  public:
    explicit Words(const std::string &text) {
        std::istringstream stream(text);
        for (std::string word; stream >> word;) {
            const std::size_t end = word.find('=');
            words_[word.substr(0, end)] = end == std::string::npos ? "1" : word.substr(end + 1);
        }
    }
    [[nodiscard]] std::string text(const std::string &name) const {
        const auto found = words_.find(name);
        return found == words_.end() ? "" : found->second;
    }
    [[nodiscard]] std::uint32_t number(const std::string &name) const {
        return text(name).empty() ? 0 : Row{"", {text(name)}}.number(0);
    }
    const std::uint8_t *octets(const std::string &name, std::uint32_t &len) {
        if (!words_.contains(name)) return nullptr;
        Octets &held = held_.emplace_back(hex(text(name)));
        len = size_of(held);
        held.push_back(0);  // no null pointer, also for no octets
        return held.data();
    }

  private:
    std::map<std::string, std::string> words_;
    std::list<Octets> held_;
};

/// Settings of a text such as "to=rsa keyid oaep=SHA256 label=0102".
class Settings : Words {
  public:
    explicit Settings(const std::string &text) : Words(text) {
        settings_.certificate = People::instance()[Words::text("to")].cert.get();
        settings_.by_key_identifier = number("keyid");
        settings_.pkcs1_v15 = number("pkcs1");
        settings_.oaep_digest_id = number("oaep");
        settings_.oaep_mgf_digest_id = number("mgf");
        settings_.oaep_label = octets("label", settings_.oaep_label_len);
        settings_.kdf = number("kdf");
        settings_.kdf_digest_id = number("digest");
        settings_.cofactor = number("cofactor");
        settings_.ukm = octets("ukm", settings_.ukm_len);
        settings_.kek = octets("kek", settings_.kek_len);
        settings_.kek_id = octets("id", settings_.kek_id_len);
        settings_.wrap_cipher_id = number("wrap");
        settings_.password = octets("password", settings_.password_len);
        settings_.iterations = number("iterations");
        settings_.prf_digest_id = number("prf");
    }
    [[nodiscard]] const CMS_RECIPIENT_SETTINGS *get() const { return &settings_; }

  private:
    CMS_RECIPIENT_SETTINGS settings_ = {};
};

/// What somebody has: "rsa", "rsa/" for a key without certificate, "rsa/other" for one with another's; else
/// words.
class Holder : Words {
  public:
    explicit Holder(const std::string &text) : Words(text) {
        holder_.kek = octets("kek", holder_.kek_len);
        holder_.kek_id = octets("id", holder_.kek_id_len);
        holder_.password = octets("password", holder_.password_len);
        const std::size_t end = text.find('/');
        const Person &owner = People::instance()[text.substr(0, end)];
        holder_.private_key = owner.key.get();
        holder_.certificate = owner.cert.get();
        if (end != std::string::npos) {
            holder_.certificate = People::instance()[text.substr(end + 1)].cert.get();
        }
    }
    [[nodiscard]] const CMS_KEY_HOLDER *get() const { return &holder_; }

  private:
    CMS_KEY_HOLDER holder_ = {};
};

Octets key_of(std::uint32_t len) {
    Octets key(len);
    for (std::uint32_t i = 0; i < len; ++i)
        key[i] = static_cast<std::uint8_t>(i + 1);
    return key;
}

struct Opened {
    std::uint32_t status;
    Octets key;
};
Opened open(const CMS_RECIPIENT_INFO *recipient, const CMS_KEY_HOLDER *holder, std::uint32_t expected) {
    Opened opened{0, Octets(TLX_CMS_KEY_MAX_LENGTH)};
    std::uint32_t len = TLX_CMS_KEY_MAX_LENGTH;
    opened.status = open_CMS_RECIPIENT_INFO(recipient, holder, expected, opened.key.data(), &len);
    opened.key.resize(len);
    return opened;
}

// ---- Alone ----

/// The members that recipients of all kinds but passwords have.
struct Members {
    OCTET_STRING *&encrypted;
    X509_ALGO_IDENTIFIER *&algorithm;
};
Members members_of(CMS_RECIPIENT_INFO &recipient) {
    switch (recipient.type) {
        case TLX_CMS_KEY_TRANSPORT:
            return {recipient.value.ktri->encryptedKey, recipient.value.ktri->keyEncryptionAlgorithm};
        case TLX_CMS_KEY_AGREEMENT: {
            CMS_KEY_AGREE_RECIPIENT *agreement = recipient.value.kari;
            return {
                get_CMS_RECIPIENT_ENCRYPTED_KEYS_child(agreement->recipientEncryptedKeys, 0)->encryptedKey,
                agreement->keyEncryptionAlgorithm};
        }
        case TLX_CMS_KEY_ENCRYPTION_KEY:
            return {recipient.value.kekri->encryptedKey, recipient.value.kekri->keyEncryptionAlgorithm};
        default:
            return {recipient.value.pwri->encryptedKey, recipient.value.pwri->keyEncryptionAlgorithm};
    }
}

void set_algorithm(X509_ALGO_IDENTIFIER *algorithm, const char *dotted) {
    const String oid = string_of(TLX_TAG_OBJECT_IDENTIFIER, dotted);
    EXPECT_EQ(set_X509_ALGO_IDENTIFIER_OID(algorithm, oid.get()), 0U);
}
void set_parameters(X509_ALGO_IDENTIFIER *algorithm, const char *text) {
    const Node node = text == nullptr ? nullptr : der_node(text);
    EXPECT_EQ(set_X509_ALGO_IDENTIFIER_parameters(algorithm, node.get()), 0U);
}
CMS_ORIGINATOR_KEY &originator_of(CMS_RECIPIENT_INFO &recipient) {
    return *recipient.value.kari->originator->value.originatorKey;
}

/// Adds a copy of the first key, and then breaks the first or the last one.
void break_key(CMS_RECIPIENT_INFO &recipient, std::int32_t place) {
    CMS_RECIPIENT_ENCRYPTED_KEYS *keys = recipient.value.kari->recipientEncryptedKeys;
    const CMS_RECIPIENT_ENCRYPTED_KEY *first = get_CMS_RECIPIENT_ENCRYPTED_KEYS_child(keys, 0);
    EXPECT_EQ(push_STACK_value(keys, dup_CMS_RECIPIENT_ENCRYPTED_KEY(first)), 0U);
    get_CMS_RECIPIENT_ENCRYPTED_KEYS_child(keys, place)->encryptedKey->data[0] ^= 1;
}

/// What is changed in a recipient before it is opened.
const std::map<std::string, std::function<void(CMS_RECIPIENT_INFO &)>> kChanges = {
    {"-", [](CMS_RECIPIENT_INFO &) {}},
    {"first bit", [](CMS_RECIPIENT_INFO &r) { members_of(r).encrypted->data[0] ^= 1; }},
    {"a broken key first", [](CMS_RECIPIENT_INFO &r) { break_key(r, 0); }},
    {"a broken key last", [](CMS_RECIPIENT_INFO &r) { break_key(r, 1); }},
    {"cut", [](CMS_RECIPIENT_INFO &r) { members_of(r).encrypted->length -= 8; }},
    {"cut to 16", [](CMS_RECIPIENT_INFO &r) { members_of(r).encrypted->length = 16; }},
    {"zero", [](CMS_RECIPIENT_INFO &r) { std::memset(members_of(r).encrypted->data, 0, 256); }},
    {"no key",
     [](CMS_RECIPIENT_INFO &r) { free_ASN1_STRING(std::exchange(members_of(r).encrypted, nullptr)); }},
    {"no algorithm",
     [](CMS_RECIPIENT_INFO &r) {
         free_X509_ALGO_IDENTIFIER(std::exchange(members_of(r).algorithm, nullptr));
     }},
    {"no parameters", [](CMS_RECIPIENT_INFO &r) { set_parameters(members_of(r).algorithm, nullptr); }},
    {"a number", [](CMS_RECIPIENT_INFO &r) { set_parameters(members_of(r).algorithm, "02:01"); }},
    {"NULL", [](CMS_RECIPIENT_INFO &r) { set_parameters(members_of(r).algorithm, "05:"); }},
    {"unknown wrap",
     [](CMS_RECIPIENT_INFO &r) { set_parameters(members_of(r).algorithm, "30{06:608648016503040106}"); }},
    {"unknown", [](CMS_RECIPIENT_INFO &r) { set_algorithm(members_of(r).algorithm, "1.2.3.4"); }},
    {"cofactor", [](CMS_RECIPIENT_INFO &r) { set_algorithm(members_of(r).algorithm, "1.3.132.1.14.1"); }},
    {"no rid",
     [](CMS_RECIPIENT_INFO &r) { free_CMS_CERT_IDENTIFIER(std::exchange(r.value.ktri->rid, nullptr)); }},
    {"point", [](CMS_RECIPIENT_INFO &r) { originator_of(r).publicKey->data[1] ^= 1; }},
    {"zeros",
     [](CMS_RECIPIENT_INFO &r) {
         std::memset(originator_of(r).publicKey->data, 0,
                     static_cast<std::size_t>(originator_of(r).publicKey->length));
     }},
    {"P-256",
     [](CMS_RECIPIENT_INFO &r) { set_parameters(originator_of(r).algorithm, "06:2A8648CE3D030107"); }},
    {"P-384", [](CMS_RECIPIENT_INFO &r) { set_parameters(originator_of(r).algorithm, "06:2B81040022"); }},
    {"no originator",
     [](CMS_RECIPIENT_INFO &r) { free_CMS_ORIGINATOR(std::exchange(r.value.kari->originator, nullptr)); }},
    {"other originator",
     [](CMS_RECIPIENT_INFO &r) {
         clean_CMS_ORIGINATOR(r.value.kari->originator);
         r.value.kari->originator->type = TLX_CMS_BY_KEY_IDENTIFIER;
         r.value.kari->originator->value.subjectKeyIdentifier = new_ASN1_STRING();
     }},
    {"other ukm", [](CMS_RECIPIENT_INFO &r) { r.value.kari->ukm->data[0] ^= 1; }},
    {"no derivation",
     [](CMS_RECIPIENT_INFO &r) {
         free_X509_ALGO_IDENTIFIER(std::exchange(r.value.pwri->keyDerivationAlgorithm, nullptr));
     }},
    {"scrypt",
     [](CMS_RECIPIENT_INFO &r) {
         set_algorithm(r.value.pwri->keyDerivationAlgorithm, "1.3.6.1.4.1.11591.4.11");
     }},
    {"10000001 iterations",
     [](CMS_RECIPIENT_INFO &r) {
         set_parameters(r.value.pwri->keyDerivationAlgorithm, "30{04:00 02:00989681}");
     }},
    {"16 octets",
     [](CMS_RECIPIENT_INFO &r) {
         set_parameters(r.value.pwri->keyDerivationAlgorithm, "30{04:00 02:01 02:10}");
     }},
    {"no value", [](CMS_RECIPIENT_INFO &r) { clean_CMS_RECIPIENT_INFO(&r); }},
};

/// Makes a recipient of a key of so many octets by settings, changes it, writes and reads it, and opens it as
/// somebody who expects so many.
std::string opens(const Row &row) {
    const Octets key = key_of(row.number(2));
    CMS_RECIPIENT_INFO *made = nullptr;
    const std::uint32_t status =
        make_CMS_RECIPIENT_INFO(Settings(row[1]).get(), key.data(), size_of(key), &made);
    const Recipient recipient(made);
    if (status != 0) return status_text(status);
    kChanges.at(row[3])(*made);
    const Opened opened = open(made, Holder(row[4]).get(), row.number(5));
    if (opened.status != 0) return status_text(opened.status);
    return opened.key == key ? "opened" : "a random key of " + std::to_string(opened.key.size());
}

/// Whether the encoding of a recipient by settings contains octets.
std::string contains(const Row &row) {
    const Octets key = key_of(16);
    CMS_RECIPIENT_INFO *made = nullptr;
    EXPECT_EQ(make_CMS_RECIPIENT_INFO(Settings(row[1]).get(), key.data(), size_of(key), &made), 0U);
    const Recipient recipient(made);
    const Octets whole = encoding_of(made, TLX_ENCODER(CMS_RECIPIENT_INFO_to_Seq));
    const Octets part = hex(row[2]);
    const bool found = std::search(whole.begin(), whole.end(), part.begin(), part.end()) != whole.end();
    return found ? "yes" : "no";
}

// ---- With peers ----

std::uint32_t append_to_text(void *text, const std::uint8_t *octets, std::uint32_t len) {
    static_cast<std::string *>(text)->append(reinterpret_cast<const char *>(octets), len);
    return 0;
}

/// The content of a message under an opened key; another text for one that cannot be read.
std::string read_content(const Octets &message, const Octets &key) {
    std::string content;
    ENVELOPED_MESSAGE_READER_SETTINGS settings = {};
    settings.output = append_to_text;
    settings.context = &content;
    settings.key = key.data();
    settings.key_len = size_of(key);
    const Held<free_ENVELOPED_MESSAGE_READER> reader(new_ENVELOPED_MESSAGE_READER(&settings));
    std::uint32_t status = update_ENVELOPED_MESSAGE_READER(reader.get(), message.data(), size_of(message));
    if (status == 0) status = final_ENVELOPED_MESSAGE_READER(reader.get());
    return status == 0 ? content : status_text(status);
}

Info read_message(const Octets &octets) {
    CMS_CONTENT_INFO *info = nullptr;
    EXPECT_EQ(TLX_READ_DER(CMS_CONTENT_INFO, &info, octets.data(), size_of(octets)), 0U);
    return Info(info);
}

const CMS_RECIPIENT_INFOS *recipients_of(const CMS_CONTENT_INFO &info) {
    if (info.authenticatedData != nullptr) return info.authenticatedData->recipientInfos;
    return info.envelopedData != nullptr ? info.envelopedData->recipientInfos
                                         : info.authEnvelopedData->recipientInfos;
}

/// How many recipients of a message each holder opens, whose keys all open the content.
std::string open_all(const Octets &message, const std::string &holders) {
    const Info info = read_message(message);
    const CMS_RECIPIENT_INFOS *recipients = recipients_of(*info);
    std::istringstream names(holders);
    std::string result;
    for (std::string name; std::getline(names, name, ';');) {
        unsigned count = 0;
        const Holder holder(trimmed(name));
        for (std::uint32_t i = 0; i < get_CMS_RECIPIENT_INFOS_count(recipients); ++i) {
            const Opened opened = open(
                get_CMS_RECIPIENT_INFOS_child(recipients, static_cast<std::int32_t>(i)), holder.get(), 0);
            if (opened.status == 0) {
                EXPECT_EQ(read_content(message, opened.key), kContent) << name;
                ++count;
            } else {
                EXPECT_EQ(status_text(opened.status), "52B10047") << name;
            }
        }
        result += (result.empty() ? "" : " ") + std::to_string(count);
    }
    return result;
}

/// A message of openssl.
std::string theirs(const Row &row) {
    const CommandFolder &folder = People::instance().folder();
    folder.run("openssl cms -encrypt -binary -in content -outform DER -out theirs.der " + row[1]);
    const std::string octets = folder.read("theirs.der");
    return open_all({octets.begin(), octets.end()}, row[2]);
}

/// Recipients by settings, as der() takes them.
std::string make_all(const std::string &settings, const Octets &key) {
    std::string recipients;
    std::istringstream all(settings);
    for (std::string text; std::getline(all, text, ';');) {
        CMS_RECIPIENT_INFO *made = nullptr;
        EXPECT_EQ(make_CMS_RECIPIENT_INFO(Settings(trimmed(text)).get(), key.data(), size_of(key), &made),
                  0U);
        const Recipient owner(made);
        recipients += " =" + digits_of(encoding_of(made, TLX_ENCODER(CMS_RECIPIENT_INFO_to_Seq)));
    }
    return recipients;
}

/// Authenticated data with libcrypto's code, under a key of so many octets, which each holder opens.
std::string authenticated(const Row &row) {
    const Octets key = key_of(row.number(2));
    const Octets plain(kContent.begin(), kContent.end());
    return open_all(der("30{06:2A864886F70D0109100102 A0{30{02:00 31{" + make_all(row[1], key) +
                        "} 30{06:2A864886F70D0209 05:} 30{06:2A864886F70D010701 A0{04:" + digits_of(plain) +
                        "}} 04:" + digits_of(openssl::hmac("SHA256", key, plain)) + "}}}"),
                    row[3]);
}

/// Writes a message with a cipher for recipients by settings, and has openssl open it in each of several
/// ways.
std::string ours(const Row &row) {
    const CommandFolder &folder = People::instance().folder();
    std::list<Settings> owners;
    std::vector<CMS_RECIPIENT_SETTINGS> recipients;
    std::istringstream all(row[2]);
    for (std::string text; std::getline(all, text, ';');) {
        recipients.push_back(*owners.emplace_back(trimmed(text)).get());
    }
    std::string message;
    ENVELOPED_MESSAGE_WRITER_SETTINGS settings = {};
    settings.output = append_to_text;
    settings.context = &message;
    settings.type = row[1].ends_with("gcm") ? TLX_MESSAGE_AUTH_ENVELOPED_DATA : TLX_MESSAGE_ENVELOPED_DATA;
    settings.algorithm = row[1].c_str();
    settings.recipients = recipients.data();
    settings.recipient_count = static_cast<std::uint32_t>(recipients.size());
    const Held<free_ENVELOPED_MESSAGE_WRITER> writer(new_ENVELOPED_MESSAGE_WRITER(&settings));
    const auto *content = reinterpret_cast<const std::uint8_t *>(kContent.data());
    EXPECT_EQ(
        update_ENVELOPED_MESSAGE_WRITER(writer.get(), content, static_cast<std::uint32_t>(kContent.size())),
        0U);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_WRITER(writer.get()), 0U);
    folder.write("ours.der", message);
    std::istringstream ways(row[3]);
    std::string result;
    for (std::string way; std::getline(ways, way, ';');) {
        folder.run("openssl cms -decrypt -inform DER -in ours.der -out opened " + way);
        result += folder.read("opened") == kContent ? "opened " : "other ";
    }
    return trimmed(result);
}

/// Key agreement on X25519 and X448 by libcrypto: the curve, the identifiers of curve and derivation, the
/// derivation and its digest, user keying material or none.
struct Agreement {
    explicit Agreement(const Row &row)
        : curve(row[1] == "x448" ? "X448" : "X25519"),
          size(row[1] == "x448" ? 56 : 32),
          function(row[4]),
          digest(row[5]),
          ukm(row[6]) {}
    /// The key of the wrap that a private key and a public one agree on.
    [[nodiscard]] Octets kek(const Octets &private_key, const Octets &point) const {
        const std::string known = ukm.empty() ? "" : "A0{04:" + ukm + "} ";
        const Octets info = der("30{30{06:60864801650304012D} " + known + "A2{04:00000100}}");
        return openssl::derive(function, digest, openssl::agree(curve, private_key, point), info, 32);
    }
    std::string curve;
    std::size_t size;
    std::string function, digest, ukm;
};

/// A recipient that libcrypto composes, and we open.
std::string composed(const Row &row) {
    const Person &person = People::instance()[row[1]];
    const Agreement agreement(row);
    const Octets ephemeral(agreement.size, 0x17);
    const Octets kek =
        agreement.kek(ephemeral, openssl::public_key_of(agreement.curve, Octets(agreement.size, 0x42)));
    const Octets key = key_of(32);
    const Octets wrapped = openssl::cipher("AES-256-WRAP", true, kek, {}, key);
    const Octets point = openssl::public_key_of(agreement.curve, ephemeral);
    const Held<free_CMS_RECIPIENT_INFO> recipient(
        decoded(Seq_to_CMS_RECIPIENT_INFO,
                "A1{02:03 A0{A1{30{06:" + row[2] + "} 03:00" + digits_of(point) + "}} " +
                    (row[6].empty() ? "" : "A1{04:" + row[6] + "} ") + "30{06:" + row[3] +
                    " 30{06:60864801650304012D}} 30{30{A0{04:01} 04:" + digits_of(wrapped) + "}}}"));
    CMS_KEY_HOLDER holder = {};
    holder.private_key = person.key.get();
    const Opened opened = open(recipient.get(), &holder, 0);
    return opened.status != 0 ? status_text(opened.status) : opened.key == key ? "opened" : "other";
}

/// One that we make by settings, and libcrypto's primitives open.
std::string taken_apart(const Row &row) {
    const Agreement agreement(row);
    const Octets key = key_of(32);
    CMS_RECIPIENT_INFO *made = nullptr;
    EXPECT_EQ(make_CMS_RECIPIENT_INFO(Settings(row[7]).get(), key.data(), size_of(key), &made), 0U);
    const Recipient recipient(made);
    const BIT_STRING &point = *originator_of(*made).publicKey;
    const OCTET_STRING &wrapped = *members_of(*made).encrypted;
    const std::string encoding = digits_of(encoding_of(made, TLX_ENCODER(CMS_RECIPIENT_INFO_to_Seq)));
    for (const std::string &identifier : {row[2], row[3]})
        if (encoding.find(identifier) == std::string::npos) return "without " + identifier;
    const Octets kek = agreement.kek(Octets(agreement.size, 0x42), {point.data, point.data + point.length});
    return openssl::cipher("AES-256-WRAP", false, kek, {}, {wrapped.data, wrapped.data + wrapped.length}) ==
                   key
               ? "opened"
               : "other";
}

/// A recipient with a password, of which libcrypto encrypts octets, with zeros up to a size (RFC 3211,
/// section 2.3.1): the key that it opens to.
std::string wrapped(const Row &row) {
    const std::size_t size = row.number(2);
    const Octets iv(16, 0x17);
    Octets plain = hex(row[1]);
    Octets kek(16);
    plain.resize(size);
    EXPECT_EQ(compute_PBKDF2(TLX_DIGEST_SHA1, iv.data(), 16, iv.data(), 16, 1, kek.data(), 16), 0U);
    Octets inner = openssl::cipher("AES-128-CBC", true, kek, iv, plain);
    inner.resize(size);
    Octets outer = openssl::cipher("AES-128-CBC", true, kek, {inner.end() - 16, inner.end()}, inner);
    outer.resize(size);
    const Recipient recipient(decoded(
        Seq_to_CMS_RECIPIENT_INFO, "A3{02:00 A0{06:2A864886F70D01050C 30{04:" + digits_of(iv) +
                                       " 02:01}} 30{06:2A864886F70D0109100309 30{06:608648016503040102 04:" +
                                       digits_of(iv) + "}} 04:" + digits_of(outer) + "}"));
    CMS_KEY_HOLDER holder = {};
    holder.password = iv.data();
    holder.password_len = 16;
    const Opened opened = open(recipient.get(), &holder, 0);
    return opened.status != 0 ? status_text(opened.status) : digits_of(opened.key);
}

TEST(MessageKeys, Rows) {
    People::instance();
    // RSA does not say what it lacks, and parameters that cannot be decoded do not say why.
    const std::set<std::string> no_memory = {"52B0003C", "52B1003C", "52B10048"};
    const std::set<std::string> no_memory_of_rsa = {"52B0003C", "52B1003C", "52B10012", "52B10048"};
    expect_rows("message_keys.txt", {{"contains", {contains}},
                                     {"opens", {opens}},
                                     {"allocations", {opens, no_memory}},
                                     {"allocations-rsa", {opens, no_memory_of_rsa}},
                                     {"theirs", {theirs}},
                                     {"ours", {ours}},
                                     {"authenticated", {authenticated}},
                                     {"composed", {composed}},
                                     {"taken-apart", {taken_apart}},
                                     {"wrapped", {wrapped}}});
}

TEST(MessageKeys, Arguments) {
    const Octets key = key_of(16);
    const Settings settings("to=rsa");
    const Holder holder("rsa");
    CMS_RECIPIENT_INFO *made = nullptr;
    expect_refuses_null(0x52B00049, make_CMS_RECIPIENT_INFO, settings.get(), key.data(), 16U, &made);
    ASSERT_EQ(make_CMS_RECIPIENT_INFO(settings.get(), key.data(), 16, &made), 0U);
    const Recipient recipient(made);
    std::uint8_t room[16];
    std::uint32_t len = 15;
    expect_refuses_null(0x52B10049, open_CMS_RECIPIENT_INFO, made, holder.get(), 0U, &room[0], &len);
    len = 15;
    EXPECT_EQ(open_CMS_RECIPIENT_INFO(made, holder.get(), 16, room, &len), 0x52B1001CU);
    EXPECT_EQ(len, 0U);
    CMS_RECIPIENT_SETTINGS both = *settings.get();
    both.password = room;
    EXPECT_EQ(make_CMS_RECIPIENT_INFO(&both, key.data(), 16, &made), 0x52B00049U);
    both = {};
    EXPECT_EQ(make_CMS_RECIPIENT_INFO(&both, key.data(), 16, &made), 0x52B00049U);
}

}  // namespace
}  // namespace tlx_test
