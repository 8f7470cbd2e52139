// Tokens of time stamps: which hold, and what they prove of signers.
#include <gtest/gtest.h>
#include <tlxpki/message_stream.h>
#include <tlxpki/objects.h>
#include <tlxpki/pkcs8.h>
#include <tlxpki/timestamp.h>

#include "support/command.hpp"
#include "support/crypto_values.hpp"
#include "support/der_text.hpp"
#include "support/message_reader.hpp"
#include "support/null_arguments.hpp"
#include "support/rows.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Message = Held<free_CMS_CONTENT_INFO>;
using Report = Held<free_CMS_TIMESTAMP_REPORT>;
using Store = Held<free_VERIFY_STORE>;

const std::string kContent = "Content";

std::uint32_t size_of(const Octets &octets) {
    return static_cast<std::uint32_t>(octets.size());
}

/// A key, certificates from 2020 to 2021 that are their own issuers, and a message whose signer is "user".
const CommandFolder &folder() {
    static const CommandFolder folder;
    static const bool made = [] {
        folder.write("content", kContent);
        folder.write("ca.cnf",
                     "[ca]\ndefault_ca = d\n[d]\ndatabase = index\nnew_certs_dir = .\nserial = serial\n"
                     "default_md = sha256\npolicy = p\n[p]\ncommonName = supplied\n"
                     "[tsa]\nextendedKeyUsage = critical, timeStamping\nsubjectKeyIdentifier = hash\n"
                     "subjectAltName = DNS:other, DNS:tsa\n"
                     "[twin]\nextendedKeyUsage = critical, timeStamping\n"
                     "[soft]\nextendedKeyUsage = timeStamping\n"
                     "[both]\nextendedKeyUsage = critical, timeStamping, emailProtection\n"
                     "[plain]\nsubjectKeyIdentifier = hash\n");
        folder.run(
            "openssl ecparam -name prime256v1 -genkey -noout -out key && "
            "for name in tsa twin soft both plain; do "
            ": > index; echo 07 > serial; subject=$name; [ $name != twin ] || subject=tsa; "
            "openssl req -new -key key -subj /CN=$subject -out csr && "
            "openssl ca -batch -notext -selfsign -config ca.cnf -keyfile key -in csr -out $name.pem "
            "-startdate 20200101000000Z -enddate 20210101000000Z -extensions $name || exit 1; done && "
            "openssl cms -sign -binary -nodetach -in content -signer plain.pem -inkey key -outform DER "
            "-out signed");
        return true;
    }();
    (void)made;
    return folder;
}

Octets octets_of_file(const std::string &name) {
    const std::string text = folder().read(name);
    return {text.begin(), text.end()};
}

Message read_message(const Octets &octets) {
    CMS_CONTENT_INFO *info = nullptr;
    EXPECT_EQ(TLX_READ_DER(CMS_CONTENT_INFO, &info, octets.data(), size_of(octets)), 0U);
    return Message(info);
}

/// The encoding of TSTInfo for octets. More begins with the name of a digest that is not SHA-256.
Octets stamp_info(const Octets &octets, const std::string &time, const std::string &more) {
    const std::uint32_t digest_id = more == "sha1"  ? TLX_DIGEST_SHA1
                                    : more == "md5" ? TLX_DIGEST_MD5
                                                    : TLX_DIGEST_SHA256;
    const std::string identifier = more == "sha1"  ? "2B0E03021A"
                                   : more == "md5" ? "2A864886F70D0205"
                                                   : "608648016503040201";
    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    std::uint32_t length = 0;
    EXPECT_EQ(Digest(digest_id, octets.data(), size_of(octets), digest, &length), 0U);
    const auto plain = [](std::string text) { return std::erase(text, ' '), text; };
    const std::string text = plain(hex_of(digest, length));
    const auto *characters = reinterpret_cast<const std::uint8_t *>(time.data());
    return der("30{02:01 06:2A03 30{30{06:" + identifier + "} 04:" + text +
               "} 02:05 18:" + plain(hex_of(characters, time.size())) + " " +
               (digest_id == TLX_DIGEST_SHA256 ? more : "") + "}");
}

/// A token that openssl signs.
struct Token {
    Octets octets;       ///< what it is about
    std::string signer;  ///< the certificate, and further options of openssl
    std::string time, more;

    [[nodiscard]] std::string key() const {
        return signer + "|" + time + "|" + more + "|" + hex_of(octets.data(), octets.size());
    }
};

std::map<std::string, Octets> &made_tokens() {
    static std::map<std::string, Octets> tokens;
    return tokens;
}

/// Makes tokens that are not there, by one shell.
void make_tokens(const std::vector<Token> &tokens) {
    std::string script = "true";
    std::map<std::string, std::string> files;
    for (const Token &token : tokens) {
        if (made_tokens().contains(token.key()) || files.contains(token.key())) continue;
        const std::string file = files[token.key()] = "token" + std::to_string(files.size());
        const Octets info = stamp_info(token.octets, token.time, token.more);
        const std::size_t end = token.signer.find(' ');
        folder().write(file + ".info", {info.begin(), info.end()});
        script +=
            " && openssl cms -sign -binary -nodetach -econtent_type 1.2.840.113549.1.9.16.1.4 -inkey key "
            "-outform DER -in " +
            file + ".info -out " + file + " -signer " + token.signer.substr(0, end) + ".pem" +
            (end == token.signer.npos ? "" : token.signer.substr(end));
    }
    folder().run(script);
    for (const auto &[key, file] : files)
        made_tokens()[key] = octets_of_file(file);
}

Octets token_of(const Token &token) {
    if (!made_tokens().contains(token.key())) make_tokens({token});
    return made_tokens()[token.key()];
}

const Octets kOther(3);

Octets content() {
    return {kContent.begin(), kContent.end()};
}

Store store_of(const std::vector<std::string> &anchors) {
    Store store(new_VERIFY_STORE());
    for (const std::string &name : anchors) {
        const Octets cert = read_pem_file(folder().path(name + ".pem")).front();
        EXPECT_EQ(add_VERIFY_STORE_anchor(store.get(), cert.data(), size_of(cert), 0), 0U);
    }
    return store;
}

/// The value of "name=value" among words.
std::string setting(const std::string &words, const std::string &name) {
    const std::size_t at = words.find(name + "=");
    if (at == words.npos) return "";
    const std::size_t start = at + name.size() + 1;
    return words.substr(start, words.find(' ', start) - start);
}

/// What a row says of verification, with what it points to.
class Wanted {
  public:
    explicit Wanted(const std::string &words) {
        const std::string anchor = setting(words, "anchor");
        const std::string pool = setting(words, "pool");
        if (anchor != "none") {
            store_ = store_of(anchor.empty() ? std::vector<std::string>{"tsa", "soft", "both", "plain"}
                                             : std::vector{anchor});
        }
        time_.reset(charToASN1_TIME(setting(words, "at").c_str()));
        pool_.reset(new_X509_CERTIFICATES());
        if (!pool.empty()) {
            const OwnedCert cert = certificate_of(read_pem_file(folder().path(pool + ".pem")).front());
            EXPECT_EQ(add_X509_CERTIFICATES(pool_.get(), cert.get()), 0U);
        }
        settings_.time = time_.get();
        settings_.profile = words.find("any") != words.npos ? TLX_PROFILE_ANY : TLX_PROFILE_CURRENT;
    }
    [[nodiscard]] CMS_TIMESTAMP_SETTINGS get() const {
        return {nullptr, 0, nullptr, 0, nullptr, pool_.get(), store_.get(), &settings_};
    }

  private:
    Store store_;
    Held<free_ASN1_TIME> time_;
    Held<free_X509_CERTIFICATES> pool_;
    VERIFY_SETTINGS settings_ = {};
};

Token token_of_row(const Row &row) {
    return {row[4] == "other" ? kOther : content(), row[1], row[2], row[3]};
}

std::string verify_token(const Row &row) {
    const Octets stamped = content();
    Octets octets = token_of(token_of_row(row));
    if (row[5] == "changed") octets.back() ^= 1;
    const Message token = read_message(octets);
    const Wanted wanted(row[5]);
    CMS_TIMESTAMP_SETTINGS settings = wanted.get();
    CMS_TIMESTAMP_REQUEST *request = nullptr;
    EXPECT_EQ(generate_CMS_TIMESTAMP_REQUEST(&request, TLX_DIGEST_SHA256, stamped.data(), size_of(stamped)),
              0U);
    const Held<free_CMS_TIMESTAMP_REQUEST> owner(request);
    request->nonce = new_BIGINT();
    EXPECT_EQ(set_BIGINT_word(request->nonce, 7), 0U);
    if (row[4] == "request") {
        settings.request = request;
    } else if (row[4] == "digest") {
        settings.digest = request->messageImprint->hashedMessage->data;
        settings.digest_len = 32;
    } else {
        settings.octets = stamped.data();
        settings.octets_len = size_of(stamped);
    }
    CMS_TIMESTAMP_REPORT *report = nullptr;
    const std::uint32_t status = verify_CMS_TIMESTAMP(token.get(), &settings, &report);
    const Report reported(report);
    EXPECT_EQ(report->status, status);
    EXPECT_EQ(verify_CMS_TIMESTAMP(token.get(), &settings, nullptr), status);
    if (status == 0) {
        const bool has_anchor = settings.store != nullptr;
        EXPECT_EQ(report->signer->pathStatus, has_anchor ? 0U : 0x4B300116U);
        EXPECT_EQ(report->time->year + 1900, std::stoi(row[2].substr(0, 4)));
    }
    return status_text(status);
}

/// "a b*3" as "a", "b", "b", "b".
std::vector<std::string> words_of(const std::string &text) {
    std::vector<std::string> words;
    std::istringstream in(text);
    for (std::string word; in >> word;) {
        const std::size_t star = word.find('*');
        const int count = star == word.npos ? 1 : std::stoi(word.substr(star + 1));
        words.insert(words.end(), static_cast<std::size_t>(count), word.substr(0, star));
    }
    return words;
}

/// Gives the signer what a word stands for: a token of this time, one about other octets, a value that is
/// none.
void stamp(CMS_SIGNER_INFO *signer, const std::string &word) {
    const OCTET_STRING &value = *signer->signature;
    const Octets signature(value.data, value.data + value.length);
    if (word != "other" && word != "broken") {
        const Message token = read_message(token_of({signature, "tsa -cades", word, ""}));
        EXPECT_EQ(add_CMS_SIGNER_INFO_timestamp(signer, token.get()), 0U);
        return;
    }
    const Octets octets =
        word == "broken" ? Octets{0x30, 0} : token_of({kOther, "tsa -cades", "20200601000000Z", ""});
    if (word == "other") {
        const Message token = read_message(octets);
        EXPECT_EQ(add_CMS_SIGNER_INFO_timestamp(signer, token.get()), 0x52C6005EU);
    }
    const Held<free_OBJECT_IDENTIFIER> type(text_to_OBJECT_IDENTIFIER("1.2.840.113549.1.9.16.2.14"));
    const Node node(decodeToDERSequence_n(octets.data(), size_of(octets)));
    if (signer->unsignedAttrs == nullptr) signer->unsignedAttrs = new_X509_ATTRIBUTES();
    EXPECT_EQ(add_X509_ATTRIBUTES_child_OID(signer->unsignedAttrs, type.get(), 0x30, node.get(), -1), 0U);
}

/// Reads a message with anchors and a time, and gives the reports of its signers.
std::uint32_t read_signed(const Octets &octets, const VERIFY_SETTINGS &path, const VERIFY_STORE *store,
                          P7_SIGNER_REPORTS **reports) {
    SIGNED_MESSAGE_READER_SETTINGS settings = {};
    settings.store = store;
    settings.settings = &path;
    const Held<free_SIGNED_MESSAGE_READER> reader(new_SIGNED_MESSAGE_READER(&settings));
    const std::uint32_t status = update_SIGNED_MESSAGE_READER(reader.get(), octets.data(), size_of(octets));
    return status != 0 ? status : final_SIGNED_MESSAGE_READER(reader.get(), reports);
}

std::string verify_signer(const Row &row) {
    const Message message = read_message(octets_of_file("signed"));
    for (const std::string &word : words_of(row[1]))
        stamp(get_CMS_SIGNER_INFOS_child(message->signedData->signerInfos, 0), word);
    const Octets octets = encoding_of(message.get(), TLX_ENCODER(CMS_CONTENT_INFO_to_Seq));
    const Store store = store_of({"tsa", "plain"});
    const Held<free_ASN1_TIME> time(charToASN1_TIME(row[2].c_str()));
    VERIFY_SETTINGS path = {};
    path.purpose = TLX_PURPOSE_SIGNING;
    path.time = time.get();
    P7_SIGNER_REPORTS *reports = nullptr;
    const std::uint32_t status = read_signed(octets, path, store.get(), &reports);
    const Held<free_P7_SIGNER_REPORTS> owner(reports);
    const P7_SIGNER_REPORT *report = get_P7_SIGNER_REPORTS_child(reports, 0);
    EXPECT_EQ(report->status, status);
    std::vector<std::string> found;
    for (std::uint32_t i = 0; i < get_CMS_TIMESTAMP_REPORTS_count(report->timestamps); ++i) {
        const auto index = static_cast<std::int32_t>(i);
        found.push_back(status_text(get_CMS_TIMESTAMP_REPORTS_child(report->timestamps, index)->status));
    }
    EXPECT_EQ(found, words_of(row[4]));
    return status_text(status);
}

TEST(TimeStampTokens, Rows) {
    const std::vector<Row> rows = read_rows("timestamp_verify.txt");
    std::vector<Token> tokens;
    for (const Row &row : rows)
        if (row[0] == "token") tokens.push_back(token_of_row(row));
    make_tokens(tokens);
    for (const Row &row : rows) {
        SCOPED_TRACE(row.place);
        if (row[0] == "token") {
            EXPECT_EQ(verify_token(row), row.fields.back());
        } else {
            EXPECT_EQ(verify_signer(row), row[3]);
        }
    }
    EXPECT_GT(rows.size(), 30U);
}

/// Asks openssl for a token over a signature, and keeps what it says.
std::uint32_t ask_for_token(void *context, const std::uint8_t *signature, std::uint32_t len,
                            X509_ATTRIBUTES **attributes) {
    CMS_TIMESTAMP_REQUEST *made = nullptr;
    EXPECT_EQ(generate_CMS_TIMESTAMP_REQUEST(&made, TLX_DIGEST_SHA256, signature, len), 0U);
    const Held<free_CMS_TIMESTAMP_REQUEST> request(made);
    EXPECT_EQ(generate_CMS_TIMESTAMP_REQUEST_nonce(made, 8), 0U);
    made->certReq = 1;
    const Octets asked = encoding_of(made, TLX_ENCODER(CMS_TIMESTAMP_REQUEST_to_Seq));
    folder().write("asked", {asked.begin(), asked.end()});
    folder().run(
        "openssl ts -reply -config ts.cnf -queryfile asked -signer stamper.pem -inkey key -out answered");
    const Octets answered = octets_of_file("answered");
    CMS_TIMESTAMP_RESPONSE *read = nullptr;
    EXPECT_EQ(TLX_READ_DER(CMS_TIMESTAMP_RESPONSE, &read, answered.data(), size_of(answered)), 0U);
    const Held<free_CMS_TIMESTAMP_RESPONSE> response(read);
    EXPECT_EQ(check_CMS_TIMESTAMP_RESPONSE(read, made, static_cast<CMS_TST_INFO **>(context)), 0U);
    const Octets token = encoding_of(read->timeStampToken, TLX_ENCODER(CMS_CONTENT_INFO_to_Seq));
    const Node node = der_node("31{30{06:2A864886F70D010910020E 31{=" + digits_of(token) + "}}}");
    return Seq_to_X509_ATTRIBUTES(node.get(), attributes);
}

/// The private key of the folder.
Held<free_ASYMMETRIC_KEY> signing_key() {
    const Octets octets = read_pem_file(folder().path("key")).front();
    P8_PRIV_KEY_INFO *info = nullptr;
    ASYMMETRIC_KEY *key = nullptr;
    EXPECT_EQ(decode_EC_PRIVATE_KEY(octets.data(), size_of(octets), &info), 0U);
    const Held<free_P8_PRIV_KEY_INFO> owner(info);
    EXPECT_EQ(read_PRIV_KEY(info, &key), 0U);
    return Held<free_ASYMMETRIC_KEY>(key);
}

/// A message of the content, whose signer has a certificate and asks for a token.
Octets write_stamped(const X509_CERT *cert, CMS_TST_INFO **info) {
    const Held<free_X509_CERTIFICATES> certificates(new_X509_CERTIFICATES());
    EXPECT_EQ(add_X509_CERTIFICATES(certificates.get(), cert), 0U);
    const Held<free_ASYMMETRIC_KEY> key = signing_key();
    MESSAGE_SIGNER signer = {};
    signer.certificate = cert;
    signer.key = key.get();
    signer.unsigned_attributes = ask_for_token;
    signer.unsigned_attributes_context = info;
    Octets written;
    SIGNED_MESSAGE_WRITER_SETTINGS settings = {};
    settings.output = collect_octets;
    settings.context = &written;
    settings.signers = &signer;
    settings.signer_count = 1;
    settings.certificates = certificates.get();
    EXPECT_EQ(write_in_pieces(settings, content(), 100), 0U);
    return written;
}

/// What a writer writes with such a token verifies at its time, also by openssl.
TEST(TimeStampTokens, WritersAskForThem) {
    folder().write("ts.cnf",
                   "[tsa]\ndefault_tsa = t\n[t]\nserial = serial\nsigner_digest = sha256\n"
                   "default_policy = 1.2.3.4\ndigests = sha256\n");
    folder().run(
        "openssl req -x509 -key key -subj /CN=stamper -days 2 -out stamper.pem "
        "-addext extendedKeyUsage=critical,timeStamping && "
        "openssl req -x509 -key key -subj /CN=writer -days 2 -out writer.pem");
    const OwnedCert cert = certificate_of(read_pem_file(folder().path("writer.pem")).front());
    CMS_TST_INFO *info = nullptr;
    const Octets written = write_stamped(cert.get(), &info);
    const Held<free_CMS_TST_INFO> said(info);

    VERIFY_SETTINGS path = {};
    path.purpose = TLX_PURPOSE_SIGNING;
    P7_SIGNER_REPORTS *reports = nullptr;
    EXPECT_EQ(read_signed(written, path, store_of({"stamper", "writer"}).get(), &reports), 0U);
    const Held<free_P7_SIGNER_REPORTS> owner(reports);
    const P7_SIGNER_REPORT *report = get_P7_SIGNER_REPORTS_child(reports, 0);
    ASSERT_EQ(get_CMS_TIMESTAMP_REPORTS_count(report->timestamps), 1U);
    const CMS_TIMESTAMP_REPORT *stamp = get_CMS_TIMESTAMP_REPORTS_child(report->timestamps, 0);
    EXPECT_EQ(stamp->status, 0U);
    EXPECT_EQ(encoding_of(stamp->info, TLX_ENCODER(CMS_TST_INFO_to_Seq)),
              encoding_of(info, TLX_ENCODER(CMS_TST_INFO_to_Seq)));
    folder().write("written", {written.begin(), written.end()});
    folder().run("openssl cms -verify -binary -inform DER -in written -CAfile writer.pem -out out");
    EXPECT_EQ(folder().read("out"), kContent);
}

TEST(TimeStampTokens, ArgumentsAndMemory) {
    const Octets stamped = content();
    const Message token = read_message(token_of({stamped, "tsa -cades", "20200601000000Z", ""}));
    const Wanted wanted("");
    CMS_TIMESTAMP_SETTINGS settings = wanted.get();
    EXPECT_EQ(verify_CMS_TIMESTAMP(token.get(), &settings, nullptr), 0x52C70049U)
        << "nothing to compare with";
    settings.octets = stamped.data();
    settings.octets_len = size_of(stamped);
    EXPECT_EQ(verify_CMS_TIMESTAMP(nullptr, &settings, nullptr), 0x52C70049U);
    EXPECT_EQ(verify_CMS_TIMESTAMP(token.get(), nullptr, nullptr), 0x52C70049U);
    EXPECT_EQ(add_CMS_SIGNER_INFO_timestamp(nullptr, token.get()), 0x52C80049U);
    EXPECT_EQ(get_CMS_TIMESTAMP_REPORTS_count(nullptr), 0U);
    EXPECT_EQ(verify_CMS_TIMESTAMP(token.get(), &settings, nullptr), 0U) << "keys are made before the sweep";
    const unsigned failed = sweep_failing_allocations([&] {
        CMS_TIMESTAMP_REPORT *report = nullptr;
        const std::uint32_t status = verify_CMS_TIMESTAMP(token.get(), &settings, &report);
        free_CMS_TIMESTAMP_REPORT(report);
        EXPECT_TRUE(status == 0 || status == 0x52C7003CU || (status & 0xFFFF) == 0x104) << std::hex << status;
        return status == 0;
    });
    EXPECT_GT(failed, 20U);
}

/// No octet of a token can be altered unseen, and a token that breaks off is none.
TEST(TimeStampTokens, NoOctetMayChange) {
    const Octets stamped = content();
    const Octets good = token_of({stamped, "tsa -cades -nocerts", "20200601000000Z", ""});
    const Wanted wanted("pool=tsa");
    CMS_TIMESTAMP_SETTINGS settings = wanted.get();
    settings.octets = stamped.data();
    settings.octets_len = size_of(stamped);
    constexpr std::size_t content_at =
        60;  // what stands before it is not signed, nor is the version of a signer
    for (std::size_t at = 0; at < good.size(); ++at) {
        Octets octets = good;
        octets[at] ^= 0x01;
        CMS_CONTENT_INFO *info = nullptr;
        const std::uint32_t read = TLX_READ_DER(CMS_CONTENT_INFO, &info, octets.data(), size_of(octets));
        const Message token(info);
        const bool holds = read == 0 && verify_CMS_TIMESTAMP(info, &settings, nullptr) == 0;
        const bool is_version = at > 2 && good[at - 2] == TLX_TAG_INTEGER && good[at - 1] == 1;
        EXPECT_TRUE(!holds || at < content_at || is_version) << at;
        octets = {good.begin(), good.begin() + static_cast<std::ptrdiff_t>(at)};
        CMS_CONTENT_INFO *cut = nullptr;
        EXPECT_NE(TLX_READ_DER(CMS_CONTENT_INFO, &cut, octets.data(), size_of(octets)), 0U) << at;
    }
}

}  // namespace
}  // namespace tlx_test
