// PKCS #12 files: theirs read by us, ours by them, our own with every setting, and what is broken in them.
#include <tlxpki.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/crypto_values.hpp"
#include "support/der_text.hpp"
#include "support/null_arguments.hpp"
#include "support/rows.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Pfx = Held<free_P12_PFX>;
using Entries = Held<free_P12_ENTRIES>;
using Pkcs12Files = LeakFreeTest;

/// Keys, certificates and a revocation list of openssl, made once and for all tests. "check" is a script that
/// compares what openssl finds in our file.
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
        folder_.write("check",
                      "openssl pkcs12 -in ours.p12 -passin \"pass:$1\" -nodes $2 > all.pem && "
                      "openssl x509 -in all.pem -outform DER | cmp - rsa.der && "
                      "openssl pkcs8 -topk8 -nocrypt -in all.pem -outform DER | cmp - rsa.p8 && "
                      "grep -q localKeyID all.pem && grep -q 'friendlyName: CA' all.pem\n");
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
        folder_.run(
            "openssl ec -in ec.key -no_public | openssl pkcs8 -topk8 -nocrypt -outform DER -out bare.p8 && "
            "openssl ec -in ec.key -conv_form compressed | "
            "openssl pkcs8 -topk8 -nocrypt -outform DER -out short.p8 && "
            "openssl asn1parse -in " TLX_TEST_DATA
            "/chains/kcdsa-signer.key -noout -out kcdsa.p8 && "
            "openssl x509 -in " TLX_TEST_DATA "/chains/kcdsa-signer.pem -outform DER -out kcdsa.der");
        for (const std::string name : {"ca.der", "ec.der", "rsa.der", "ca.p8", "ec.p8", "rsa.p8", "crl.der",
                                       "bare.p8", "short.p8", "kcdsa.p8", "kcdsa.der"})
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

std::uint32_t make(const Settings &settings, const Password &password, Pfx &pfx,
                   const Entries &entries = sample_entries()) {
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
    const std::string octets = encoded(pfx.get());
    EXPECT_EQ(octets.substr(4, 3), "\x02\x01\x03") << "the version";
    folder.write("ours.p12", octets);
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

// owners | keys and certificates that share no id | what is read
std::string owners(const Row &row) {
    const Entries entries(new_P12_ENTRIES());
    std::istringstream names(row[1]);
    for (std::string name; names >> name;) {
        const std::string value = Samples::instance().folder().read(name);
        const std::uint32_t kind = name.ends_with(".p8") ? TLX_P12_PRIVATE_KEY : TLX_P12_CERTIFICATE;
        EXPECT_EQ(add_PKCS12_entry(entries.get(), kind, nullptr, octets_of(value),
                                   static_cast<std::uint32_t>(value.size()), nullptr, -1),
                  0U);
    }
    Pfx pfx;
    const std::uint32_t status = make(Settings("safe=none key=none"), Password("secret"), pfx, entries);
    return status == 0 ? opened(pfx.get(), "secret", "") : status_text(status);
}

/// Data that holds an encoding.
std::string data_of(const std::string &encoding) {
    return "30{06:2A864886F70D010701 A0{04:" + digits_of(der(encoding)) + "}}";
}

/// A file without a code around the parts of an AuthenticatedSafe.
std::string by_hand(const std::string &parts) {
    const Octets file = der("30{02:03 " + data_of("30{" + parts + "}") + "}");
    return {file.begin(), file.end()};
}

// parts | parts of the AuthenticatedSafe | password | what is read
std::string parts(const Row &row) {
    return opened(read_pfx(by_hand(row[1])).get(), row[2], "");
}
// bags | bags in one part in the open | password | what is read
std::string bags(const Row &row) {
    return opened(read_pfx(by_hand(data_of("30{" + row[1] + "}"))).get(), row[2], "");
}

/// An encoding in indefinite lengths, with octet strings in segments.
void append_ber(const std::string &der, std::size_t &at, std::string &out) {
    const std::size_t start = at;
    const auto octet = [&](std::size_t i) { return static_cast<std::uint8_t>(der.at(i)); };
    std::size_t length = octet(start + 1);
    at += 2;
    if (length > 0x80) {
        const std::size_t end = at + length - 0x80;
        for (length = 0; at < end; ++at)
            length = length << 8 | octet(at);
    }
    const std::size_t end = at + length;
    const bool is_long = octet(start) == 4 && length > 20;
    if (!is_long && (octet(start) & 0x20) == 0) {
        at = end;
        out += der.substr(start, end - start);
        return;
    }
    out += is_long ? "\x24\x80" : der.substr(start, 1) + '\x80';
    while (!is_long && at < end)
        append_ber(der, at, out);
    for (; at < end; at += std::min<std::size_t>(100, end - at)) {
        const std::size_t size = std::min<std::size_t>(100, end - at);
        out += std::string("\x04") + static_cast<char>(size) + der.substr(at, size);
    }
    out += std::string(2, '\0');
}

std::string ber_of(const std::string &der) {
    std::string out;
    std::size_t at = 0;
    append_ber(der, at, out);
    return out;
}

const char *const kShort = "key=pbe-sha1-3des safe=pbe-sha1-rc4-128";

TEST_F(Pkcs12Files, OfBer) {
    Pfx pfx;
    ASSERT_EQ(make(Settings(std::string(kShort) + " mac=none"), Password("secret"), pfx), 0U);
    const std::string expected = opened(pfx.get(), "secret", "");
    const std::string safe = ber_of(octets(pfx->authSafe->content.data));
    set_ASN1_STRING_value(pfx->authSafe->content.data, TLX_TAG_OCTET_STRING, safe.data(),
                          static_cast<std::uint32_t>(safe.size()));
    ASSERT_EQ(set_PKCS12_mac(pfx.get(), "secret", 6, nullptr, 0, 2, TLX_DIGEST_SHA256), 0U);
    EXPECT_EQ(opened(read_pfx(ber_of(encoded(pfx.get()))).get(), "secret", ""), expected);
}

// What neither the code covers nor the decoder needs: the version, and parameters of the digest.
TEST_F(Pkcs12Files, AreRefusedWhenAltered) {
    Pfx pfx;
    ASSERT_EQ(make(Settings(kShort), Password("secret"), pfx), 0U);
    const std::string file = encoded(pfx.get());
    const std::string expected = opened(pfx.get(), "secret", "");
    unsigned unnoticed = 0;
    for (std::size_t at = 0; at < file.size(); at += at < 60 || at + 120 > file.size() ? 1U : 37U) {
        std::string altered = file;
        altered[at] = static_cast<char>(altered[at] ^ 0x41);
        const std::string read = opened(read_pfx(altered).get(), "secret", "");
        if (read == expected) ++unnoticed;
        EXPECT_TRUE(read == expected || read.size() == 8) << at << ' ' << read;
        EXPECT_EQ(opened(read_pfx(file.substr(0, at)).get(), "secret", ""), "4D300049") << at;
    }
    EXPECT_LE(unnoticed, 4U);
}

TEST_F(Pkcs12Files, MayRunOutOfMemory) {
    const Entries entries = sample_entries();
    for (const char *settings : {kShort, "key=none safe=pbes2"}) {
        sweep_failing_allocations([&] {
            Pfx pfx;
            const std::uint32_t status = make(Settings(settings), Password("secret"), pfx, entries);
            if (status == 0x4D32003C || status == 0x4D320103) return false;
            EXPECT_EQ(status, 0U);
            return true;
        });
        Pfx pfx;
        ASSERT_EQ(make(Settings(settings), Password("secret"), pfx), 0U);
        const std::string expected = opened(pfx.get(), "secret", "");
        sweep_failing_allocations([&] {
            const std::string read = opened(pfx.get(), "secret", "");
            if (read == expected) return true;
            const bool unread = read.find("unread 4D31") != read.npos;
            EXPECT_TRUE(unread || read == "4D30003C" || read == "4D300104") << read;
            return false;
        });
    }
    expect_making_may_fail(new_P12_ENTRY, free_P12_ENTRY);
}

TEST_F(Pkcs12Files, WantWhatTheyNeed) {
    Pfx pfx;
    ASSERT_EQ(make(Settings(kShort), Password("secret"), pfx), 0U);
    P12_ENTRIES *out = nullptr;
    P12_PFX *made = nullptr;
    expect_refuses_null(0x4D300049, open_PKCS12, pfx.get(), "secret", 6, nullptr, 0, &out);
    EXPECT_EQ(open_PKCS12(pfx.get(), nullptr, 1, nullptr, 0, &out), 0x4D300049U);
    const Entries entries(new_P12_ENTRIES());
    expect_refuses_null(0x4D320049, make_PKCS12, entries.get(), nullptr, "secret", 6, &made);
    const std::uint8_t octet = 0x30;
    const struct {
        std::uint32_t kind;
        std::int32_t owner;
        const char *scheme;
        const char *name;
        std::uint32_t status;
    } refused[] = {{TLX_P12_UNREAD, -1, nullptr, nullptr, 0x4D32002B},
                   {TLX_P12_SECRET, -1, nullptr, nullptr, 0x4D32002B},
                   {TLX_P12_CERTIFICATE, 0, nullptr, nullptr, 0x4D32002B},
                   {TLX_P12_CERTIFICATE, 1, nullptr, nullptr, 0x4D32002B},
                   {TLX_P12_PRIVATE_KEY, -1, "none", nullptr, 0x4D320103},
                   {TLX_P12_CERTIFICATE, -1, nullptr, "\xFF", 0x4D320103}};
    for (const auto &[kind, owner, scheme, name, status] : refused) {
        clean_P12_ENTRIES(entries.get());
        EXPECT_EQ(add_PKCS12_entry(entries.get(), kind, nullptr, &octet, 1, name, owner), 0U);
        P12_SETTINGS settings = {};
        settings.keyScheme = scheme;
        settings.iterations = 1;
        EXPECT_EQ(make_PKCS12(entries.get(), &settings, "secret", 6, &made), status) << kind << ' ' << owner;
    }
}

TEST_F(Pkcs12Files, OfOtherProgramsOpen) {
    Samples::instance();
    expect_rows("pkcs12_theirs.txt", {{"theirs", {theirs}}});
}

TEST_F(Pkcs12Files, AreOpenedByOtherPrograms) {
    Samples::instance();
    expect_rows("pkcs12_ours.txt", {{"ours", {ours}}});
}

TEST_F(Pkcs12Files, Rows) {
    Samples::instance();
    expect_rows("pkcs12_file.txt",
                {{"round", {round_trip}}, {"parts", {parts}}, {"bags", {bags}}, {"owners", {owners}}});
}

}  // namespace
}  // namespace tlx_test
