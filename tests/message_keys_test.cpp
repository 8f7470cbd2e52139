// The content keys of CMS messages: how recipients get and open them, alone and with the openssl program.
#include <gtest/gtest.h>
#include <tlxpki/cms_keys.h>

#include <algorithm>
#include <list>
#include <sstream>

#include "support/command.hpp"
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

/// What somebody opens with. Names of people are those of files.
struct Person {
    OwnedCert cert;
    Key key;
};

Person read_person(const CommandFolder &folder, const std::string &name) {
    const Octets octets = read_pem_file(folder.path(name + ".p8")).front();
    P8_PRIV_KEY_INFO *info = nullptr;
    EXPECT_EQ(TLX_READ_DER(P8_PRIV_KEY_INFO, &info, octets.data(), size_of(octets)), 0U);
    const Held<free_P8_PRIV_KEY_INFO> owner(info);
    ASYMMETRIC_KEY *key = nullptr;
    EXPECT_EQ(read_PRIV_KEY(info, &key), 0U);
    return {certificate_of(read_pem_file(folder.path(name + ".pem")).front()), Key(key)};
}

/// Keys with their certificates, and content, made by openssl once and for all tests.
class People {
  public:
    static const People &instance() {
        static const People people;
        return people;
    }
    [[nodiscard]] const CommandFolder &folder() const { return folder_; }
    /// Somebody without a key for any other name.
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
                 {"other", "rsa:2048 -addext subjectKeyIdentifier=none"},
             }) {
            folder_.run("openssl req -x509 -newkey " + algorithm + " -nodes -keyout " + name + ".p8 -out " +
                        name + ".pem -subj /CN=" + name + " -days 2");
            people_[name] = read_person(folder_, name);
        }
    }
    CommandFolder folder_;
    std::map<std::string, Person> people_;
};

/// A word "name=value" of a text; without a value it means "1".
std::map<std::string, std::string> words_of(const std::string &text) {
    std::map<std::string, std::string> words;
    std::istringstream stream(text);
    for (std::string word; stream >> word;) {
        const std::size_t end = word.find('=');
        words[word.substr(0, end)] = end == std::string::npos ? "1" : word.substr(end + 1);
    }
    return words;
}

/// Settings of a text such as "to=rsa keyid oaep=sha256 label=0102", and what they point to.
class Settings {
  public:
    explicit Settings(const std::string &text) : words_(words_of(text)) {
        settings_.certificate = People::instance()[words_["to"]].cert.get();
        settings_.by_key_identifier = number("keyid");
        settings_.pkcs1_v15 = number("pkcs1");
        settings_.oaep_digest_id = number("oaep");
        settings_.oaep_mgf_digest_id = number("mgf");
        settings_.oaep_label = octets("label", settings_.oaep_label_len);
    }
    [[nodiscard]] const CMS_RECIPIENT_SETTINGS *get() const { return &settings_; }

  private:
    std::uint32_t number(const std::string &name) {
        const auto found = words_.find(name);
        return found == words_.end() ? 0 : Row{"", {found->second}}.number(0);
    }
    const std::uint8_t *octets(const std::string &name, std::uint32_t &len) {
        const auto found = words_.find(name);
        if (found == words_.end()) return nullptr;
        const Octets &held = held_.emplace_back(hex(found->second));
        len = size_of(held);
        return held.data();
    }
    std::map<std::string, std::string> words_;
    std::list<Octets> held_;
    CMS_RECIPIENT_SETTINGS settings_ = {};
};

/// Who opens: "rsa", "rsa/" for the key alone, "rsa/other" for a key with another's certificate.
class Holder {
  public:
    explicit Holder(const std::string &text) {
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

/// What is changed in a recipient before it is opened.
const std::map<std::string, void (*)(CMS_RECIPIENT_INFO &)> kChanges = {
    {"-", [](CMS_RECIPIENT_INFO &) {}},
    {"bit", [](CMS_RECIPIENT_INFO &r) { r.value.ktri->encryptedKey->data[0] ^= 1; }},
    {"cut", [](CMS_RECIPIENT_INFO &r) { --r.value.ktri->encryptedKey->length; }},
    {"no key",
     [](CMS_RECIPIENT_INFO &r) { free_ASN1_STRING(std::exchange(r.value.ktri->encryptedKey, nullptr)); }},
    {"no rid",
     [](CMS_RECIPIENT_INFO &r) { free_CMS_CERT_IDENTIFIER(std::exchange(r.value.ktri->rid, nullptr)); }},
    {"no parameters",
     [](CMS_RECIPIENT_INFO &r) {
         (void)set_X509_ALGO_IDENTIFIER_parameters(r.value.ktri->keyEncryptionAlgorithm, nullptr);
     }},
    {"other",
     [](CMS_RECIPIENT_INFO &r) {
         const String oid = string_of(TLX_TAG_OBJECT_IDENTIFIER, "1.2.840.113549.1.1.10");
         (void)set_X509_ALGO_IDENTIFIER_OID(r.value.ktri->keyEncryptionAlgorithm, oid.get());
     }},
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

TEST(MessageKeys, Rows) {
    People::instance();
    // RSA does not say what it lacks.
    const std::set<std::string> no_memory = {"52B0003C", "52B1003C", "52B10012"};
    expect_rows("message_keys.txt", {{"opens", {opens}}, {"allocations", {opens, no_memory}}});
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
