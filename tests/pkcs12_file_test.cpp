// PKCS #12 files: theirs read by us, ours by them, our own with every setting, and what is broken in them.
#include <tlxpki.h>

#include <map>
#include <sstream>

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/der_text.hpp"
#include "support/null_arguments.hpp"
#include "support/rows.hpp"
#include "support/x509_files.hpp"

namespace tlx_test {
namespace {

using Pfx = Held<free_P12_PFX>;
using Entries = Held<free_P12_ENTRIES>;
using Pkcs12Files = LeakFreeTest;

/// Keys, certificates and a revocation list of openssl, made once and for all tests. "text" is a text.
class Samples {
  public:
    static const Samples &instance() {
        static const Samples samples;
        return samples;
    }
    [[nodiscard]] const CommandFolder &folder() const { return folder_; }
    /// "rsa.p8", or "octets" for what is none of the files.
    [[nodiscard]] std::string name_of(const std::string &octets) const {
        const auto found = names_.find(octets);
        return found == names_.end() ? "octets" : found->second;
    }

  private:
    Samples() {
        folder_.write("text", "A text.\n");
        folder_.run(
            "openssl req -x509 -newkey rsa:2048 -nodes -keyout ca.key -out ca.pem -subj /CN=CA -days 2 && "
            "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout ec.key -out ec.pem "
            "-subj "
            "/CN=EC -days 2 && openssl req -newkey rsa:2048 -nodes -keyout rsa.key -subj /CN=RSA -out "
            "rsa.csr && "
            "openssl x509 -req -in rsa.csr -CA ca.pem -CAkey ca.key -set_serial 7 -days 2 -out rsa.pem && "
            "touch index && printf '[ca]\\ndatabase=index\\ndefault_md=sha256\\n' > ca.cnf && "
            "openssl ca -config ca.cnf -name ca -gencrl -crldays 2 -keyfile ca.key -cert ca.pem -out ca.crl "
            "&& "
            "openssl crl -in ca.crl -outform DER -out crl.der && cat rsa.pem ec.pem > both.pem");
        for (const std::string name : {"ca", "ec", "rsa"}) {
            folder_.run("openssl x509 -in " + name + ".pem -outform DER -out " + name +
                        ".der && openssl pkcs8 -topk8 -nocrypt -in " + name + ".key -outform DER -out " +
                        name + ".p8");
        }
        for (const std::string name : {"ca.der", "ec.der", "rsa.der", "ca.p8", "ec.p8", "rsa.p8", "crl.der"})
            names_[folder_.read(name)] = name;
    }
    CommandFolder folder_;
    std::map<std::string, std::string> names_;
};

/// A password of a row: "null" for an absent one.
struct Password {
    explicit Password(const std::string &field) : octets(field) {}
    [[nodiscard]] const char *data() const { return octets == "null" ? nullptr : octets.data(); }
    [[nodiscard]] std::uint32_t size() const {
        return octets == "null" ? 0 : static_cast<std::uint32_t>(octets.size());
    }
    std::string octets;
};

const std::uint8_t *octets_of(const std::string &text) {
    return reinterpret_cast<const std::uint8_t *>(text.data());
}

Pfx read_pfx(const std::string &octets) {
    P12_PFX *pfx = nullptr;
    TLX_READ_DER(P12_PFX, &pfx, octets_of(octets), static_cast<std::uint32_t>(octets.size()));
    return Pfx(pfx);
}

/// "rsa.p8 'Name' id 20, rsa.der of 0, unread 4D310012 PBES2", or the status.
std::string summary(std::uint32_t status, const P12_ENTRIES *entries) {
    if (status != 0) return status_text(status);
    std::string text;
    for (std::uint32_t i = 0; i < get_P12_ENTRIES_count(entries); ++i) {
        const P12_ENTRY &entry = *get_P12_ENTRIES_child(entries, static_cast<std::int32_t>(i));
        if (i > 0) text += ", ";
        if (entry.kind == TLX_P12_UNREAD) {
            text += "unread " + status_text(entry.status);
        } else {
            text +=
                entry.kind == TLX_P12_SECRET ? "secret" : Samples::instance().name_of(octets(entry.value));
        }
        if (entry.type != nullptr) text += " " + octets(entry.type);
        if (entry.friendlyName != nullptr) text += " '" + octets(entry.friendlyName) + "'";
        if (entry.localKeyId != nullptr) text += " id " + std::to_string(entry.localKeyId->length);
        if (entry.owner >= 0) text += " of " + std::to_string(entry.owner);
    }
    return text;
}

std::string opened(const P12_PFX *pfx, const std::string &password, const std::string &mac_password) {
    const Password ours(password);
    const Password mac(mac_password.empty() ? "null" : mac_password);
    P12_ENTRIES *entries = nullptr;
    const std::uint32_t status = open_PKCS12(pfx, ours.data(), ours.size(), mac.data(), mac.size(), &entries);
    EXPECT_EQ(entries != nullptr, status == 0);
    return summary(status, Entries(entries).get());
}

/// "key=pbe-sha1-3des safe=none iterations=2 mac=HAS160", and "entries=rsa.p8 rsa.der"
struct Settings {
    explicit Settings(const std::string &text) {
        std::istringstream words(text);
        for (std::string word; words >> word;)
            values[word.substr(0, word.find('='))] = word.substr(word.find('=') + 1);
        values.emplace("iterations", "2");
        made = {value("key"),
                value("safe"),
                value("cipher"),
                value("prf"),
                Row{"", {values["iterations"]}}.number(0),
                0};
        if (values["mac"] == "none") made.macDigest = TLX_P12_NO_MAC;
        if (values["mac"].find_first_of("SHM1") == 0) made.macDigest = Row{"", {values["mac"]}}.number(0);
    }
    [[nodiscard]] const char *value(const std::string &name) const {
        const auto found = values.find(name);
        return found == values.end() ? nullptr : found->second.c_str();
    }
    std::map<std::string, std::string> values;
    P12_SETTINGS made = {};
};

/// The RSA key with its certificate, that of the CA, the revocation list, a secret and the EC key.
Entries sample_entries() {
    const CommandFolder &folder = Samples::instance().folder();
    Entries entries(new_P12_ENTRIES());
    const tlx::Owned<OBJECT_IDENTIFIER> type(text_to_OBJECT_IDENTIFIER("1.2.3"));
    const std::string secret("\x04\x02ok", 4);
    const struct {
        std::uint32_t kind;
        std::string octets;
        const char *name;
        std::int32_t owner;
    } samples[] = {{TLX_P12_PRIVATE_KEY, folder.read("rsa.p8"), "\xED\x99\x8D & \xF0\x9F\x94\x91", -1},
                   {TLX_P12_CERTIFICATE, folder.read("rsa.der"), nullptr, 0},
                   {TLX_P12_CERTIFICATE, folder.read("ca.der"), "CA", -1},
                   {TLX_P12_CRL, folder.read("crl.der"), nullptr, -1},
                   {TLX_P12_SECRET, secret, nullptr, -1},
                   {TLX_P12_PRIVATE_KEY, folder.read("ec.p8"), nullptr, -1}};
    for (const auto &[kind, octets, name, owner] : samples) {
        EXPECT_EQ(add_PKCS12_entry(entries.get(), kind, kind == TLX_P12_SECRET ? type.get() : nullptr,
                                   octets_of(octets), static_cast<std::uint32_t>(octets.size()), name, owner),
                  0U);
    }
    return entries;
}

std::uint32_t make(const Settings &settings, const Password &password, Pfx &pfx) {
    static const Entries entries = sample_entries();
    P12_PFX *made = nullptr;
    const std::uint32_t status =
        make_PKCS12(entries.get(), &settings.made, password.data(), password.size(), &made);
    pfx.reset(made);
    return status;
}

std::string encoded(const P12_PFX *pfx) {
    std::uint8_t *octets = nullptr;
    const std::uint32_t size = TLX_WRITE_DER(P12_PFX, pfx, &octets);
    return take(octets, size);
}

// theirs | command that makes theirs.p12 | password | MAC password | what is read
std::string theirs(const Row &row) {
    const CommandFolder &folder = Samples::instance().folder();
    folder.run(row[1]);
    return opened(read_pfx(folder.read("theirs.p12")).get(), row[2], row[3]);
}

// ours | settings | password | command on ours.p12 | "good", or what it says
std::string ours(const Row &row) {
    const CommandFolder &folder = Samples::instance().folder();
    Pfx pfx;
    if (const std::uint32_t status = make(Settings(row[1]), Password(row[2]), pfx); status != 0)
        return status_text(status);
    folder.write("ours.p12", encoded(pfx.get()));
    return folder.succeeds(row[3]) ? "good" : "bad";
}

// round | settings | password | another password for the MAC | opened with | and MAC password | what is read
std::string round_trip(const Row &row) {
    const Settings settings(row[1]);
    Pfx pfx;
    std::uint32_t status = make(settings, Password(row[2]), pfx);
    const Password mac(row[3]);
    if (status == 0 && !row[3].empty())
        status = set_PKCS12_mac(pfx.get(), mac.data(), mac.size(), nullptr, 0, 2, TLX_DIGEST_SHA1);
    return status == 0 ? opened(read_pfx(encoded(pfx.get())).get(), row[4], row[5]) : status_text(status);
}

/// A file without a code around the parts of an AuthenticatedSafe.
std::string by_hand(const std::string &parts) {
    const Octets safe = der("30{" + parts + "}");
    const Octets file =
        der("30{02:03 30{06:2A864886F70D010701 A0{04:" + hex_of(safe.data(), safe.size()) + "}}}");
    return {file.begin(), file.end()};
}

// parts | parts of the AuthenticatedSafe | password | what is read
std::string parts(const Row &row) {
    return opened(read_pfx(by_hand(row[1])).get(), row[2], "");
}
// bags | bags in one part in the open | password | what is read
std::string bags(const Row &row) {
    const Octets contents = der("30{" + row[1] + "}");
    return opened(
        read_pfx(by_hand("30{06:2A864886F70D010701 A0{04:" + hex_of(contents.data(), contents.size()) + "}}"))
            .get(),
        row[2], "");
}

TEST_F(Pkcs12Files, Rows) {
    Samples::instance();
    expect_rows("pkcs12_file.txt", {{"theirs", {theirs}},
                                    {"ours", {ours}},
                                    {"round", {round_trip}},
                                    {"parts", {parts}},
                                    {"bags", {bags}}});
}

}  // namespace
}  // namespace tlx_test
