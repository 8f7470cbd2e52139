// Signed messages of the openssl and certtool programs, theirs read by us and ours by them, and bit flips.
#include <gtest/gtest.h>
#include <tlxpki/pkcs7_sign.h>

#include "support/command.hpp"
#include "support/message_reader.hpp"
#include "support/rows.hpp"
#include "support/x509_files.hpp"

namespace tlx_test {
namespace {

using Info = Held<free_P7_CONTENT_INFO>;
using Reports = Held<free_P7_SIGNER_REPORTS>;

const std::string kContent = "Content\n" + std::string(5000, 'x') + "\n";

/// A root and two signers below it, made by openssl once and for all tests.
class Signers {
  public:
    static const Signers &instance() {
        static const Signers signers;
        return signers;
    }
    [[nodiscard]] const CommandFolder &folder() const { return folder_; }
    [[nodiscard]] OwnedCert cert(const std::string &name) const {
        return certificate_of(read_pem_file(folder_.path(name + ".pem")).front());
    }
    [[nodiscard]] Held<free_ASYMMETRIC_KEY> key(const std::string &name) const {
        Held<free_ASYMMETRIC_KEY> key(new_ASYMMETRIC_KEY());
        const Held<free_RSA_UNIT> unit(new_RSA_UNIT());
        EXPECT_EQ(readPKCS1_from_File(unit.get(), nullptr, 0, folder_.path(name + ".key").c_str()), 0U);
        EXPECT_EQ(set_ASYMMETRIC_KEY(key.get(), TLX_KEY_RSA, unit.get()), 0U);
        return key;
    }

  private:
    Signers() {
        folder_.write("content", kContent);
        folder_.write("extensions",
                      "subjectKeyIdentifier=hash\nauthorityKeyIdentifier=keyid\nkeyUsage=digitalSignature\n"
                      "extendedKeyUsage=emailProtection\n");
        folder_.run(
            "openssl req -x509 -newkey rsa:2048 -nodes -keyout root.p8 -out root.pem -subj /CN=Root -days 2 "
            "-addext keyUsage=critical,keyCertSign");
        for (const std::string name : {"one", "two"}) {
            folder_.run("openssl req -newkey rsa:2048 -nodes -keyout " + name + ".p8 -out " + name +
                        ".csr -subj /CN=" + name + " && openssl x509 -req -in " + name +
                        ".csr -CA root.pem -CAkey root.p8 -CAcreateserial -days 2 -extfile extensions -out " +
                        name + ".pem && openssl rsa -in " + name + ".p8 -traditional -out " + name + ".key");
        }
    }
    CommandFolder folder_;
};

Info read_message(const std::string &octets) {
    P7_CONTENT_INFO *info = nullptr;
    EXPECT_EQ(TLX_READ_DER(P7_CONTENT_INFO, &info, reinterpret_cast<const std::uint8_t *>(octets.data()),
                           static_cast<std::uint32_t>(octets.size())),
              0U);
    return Info(info);
}

const std::uint8_t *octets_of(const std::string &text) {
    return reinterpret_cast<const std::uint8_t *>(text.data());
}

/// Verifies with the root as anchor; with content for a detached message.
std::uint32_t verify(const P7_CONTENT_INFO *info, bool detached, Reports *reports = nullptr) {
    static const OwnedCert root = Signers::instance().cert("root");
    const Held<free_X509_CERTIFICATES> pool(new_X509_CERTIFICATES());
    const Held<free_TRUST_ANCHORS> anchors(new_TRUST_ANCHORS());
    const Held<free_TRUST_ANCHOR> anchor(create_TRUST_ANCHOR_from_X509_CERT(root.get()));
    EXPECT_EQ(add_X509_CERTIFICATES(pool.get(), root.get()), 0U);
    EXPECT_EQ(add_TRUST_ANCHORS(anchors.get(), anchor.get()), 0U);
    P7_SIGNER_REPORTS *made = nullptr;
    const std::uint32_t status =
        verify_PKCS7_Signers(info, detached ? octets_of(kContent) : nullptr,
                             detached ? static_cast<std::uint32_t>(kContent.size()) : 0, pool.get(),
                             anchors.get(), nullptr, &made);
    Reports owner(made);
    if (reports != nullptr) *reports = std::move(owner);
    return status;
}

/// Reads the octets in pieces and verifies them likewise.
std::uint32_t verify_in_pieces(const std::string &octets, bool detached) {
    static const Octets root = encode_certificate(Signers::instance().cert("root").get());
    const Held<free_VERIFY_STORE> store(new_VERIFY_STORE());
    EXPECT_EQ(add_VERIFY_STORE_anchor(store.get(), root.data(), static_cast<std::uint32_t>(root.size()), 0),
              0U);
    SIGNED_MESSAGE_READER_SETTINGS settings = {};
    settings.store = store.get();
    VERIFY_SETTINGS any = {};
    any.profile = TLX_PROFILE_ANY;
    any.purpose = TLX_PURPOSE_SIGNING;
    settings.settings = &any;
    const Octets content(kContent.begin(), kContent.end());
    return read_in_pieces(settings, {octets.begin(), octets.end()}, 100, detached ? &content : nullptr);
}

/// What openssl signs with some options verifies, and not after its content has changed.
std::string theirs(const Row &row) {
    const CommandFolder &folder = Signers::instance().folder();
    const bool detached = row[2] == "detached";
    folder.run("openssl " + row[1] + " -sign -binary -in content -signer one.pem -inkey one.p8 " + row[3] +
               " -outform DER -out theirs.der" + (detached ? "" : " -nodetach"));
    const std::string octets = folder.read("theirs.der");
    const Info info = read_message(octets);
    Reports reports;
    std::string result = status_text(verify(info.get(), detached, &reports));
    EXPECT_EQ(status_text(verify_in_pieces(octets, detached)), result);
    result += " " + status_text(verify_PKCS7(info.get(), nullptr, octets_of(kContent),
                                             static_cast<std::int32_t>(kContent.size())));
    const std::uint32_t count = get_P7_SIGNER_REPORTS_count(reports.get());
    P7_CONTENT_INFO *content = info->content.signedData->contentInfo;
    if (!detached) content->content.data->data[0] ^= 1;
    std::string changed = kContent;
    changed[0] ^= 1;
    const std::uint32_t altered = detached ? verify_PKCS7_Signers(info.get(), octets_of(changed),
                                                                  static_cast<std::uint32_t>(changed.size()),
                                                                  nullptr, nullptr, nullptr, nullptr)
                                           : verify(info.get(), false);
    return result + " " + status_text(altered) + " " + std::to_string(count);
}

/// Signs with one signer, or two, and lets the commands of the row verify it.
std::string ours(const Row &row) {
    const Signers &signers = Signers::instance();
    const CommandFolder &folder = signers.folder();
    const bool detached = row[2] == "detached";
    const Info info(new_P7_CONTENT_INFO());
    EXPECT_EQ(set_PKCS7_Type(info.get(), TLX_OID_PKCS7_SIGNED_DATA), 0U);
    const std::uint32_t scheme = row[3] == "PSS" ? TLX_P7_RSA_PSS : TLX_P7_RSA_PKCS1;
    for (const std::string &name :
         row[2] == "two" ? std::vector<std::string>{"one", "two"} : std::vector<std::string>{"one"}) {
        const OwnedCert cert = signers.cert(name);
        EXPECT_NE(add_PKCS7_Signature_withEncryptedAlgorithm(info.get(), cert.get(), signers.key(name).get(),
                                                             static_cast<std::int32_t>(row.number(1)), scheme,
                                                             nullptr),
                  nullptr);
        EXPECT_EQ(add_PKCS7_Certificate(info.get(), cert.get()), 0U);
    }
    const auto size = static_cast<std::int32_t>(kContent.size());
    const std::uint32_t status = row[4] == "bare" ? sign_PKCS7(info.get(), octets_of(kContent), size, 0)
                                                  : sign_PKCS7_withAttributes(info.get(), octets_of(kContent),
                                                                              size, detached, nullptr);
    EXPECT_EQ(status, 0U);
    EXPECT_NE(TLX_WRITE_DER_FILE(P7_CONTENT_INFO, info.get(), folder.path("ours.der").c_str()), 0xFFFFFFFFU);
    std::string result = status_text(verify(info.get(), detached));
    const std::string content = detached ? " -content content" : "";
    for (const std::string &command :
         {"openssl cms -verify -binary -inform DER -in ours.der -CAfile root.pem -out out" + content,
          "openssl smime -verify -binary -inform DER -in ours.der -CAfile root.pem -out out" + content,
          "certtool --p7-verify --inder --infile ours.der --load-ca-certificate root.pem" +
              (detached ? std::string(" --load-data content") : "")})
        result += folder.succeeds(command) ? " good" : " bad";
    return result;
}

/// What the writer writes in a form, openssl and certtool verify.
std::string streamed(const Row &row) {
    const Signers &signers = Signers::instance();
    const Info info(new_P7_CONTENT_INFO());
    EXPECT_EQ(set_PKCS7_Type(info.get(), TLX_OID_PKCS7_SIGNED_DATA), 0U);
    const OwnedCert cert = signers.cert("one");
    EXPECT_NE(add_PKCS7_Signature(info.get(), cert.get(), signers.key("one").get(), TLX_OID_SHA256), nullptr);
    EXPECT_EQ(add_PKCS7_Certificate(info.get(), cert.get()), 0U);
    Octets written;
    SIGNED_MESSAGE_WRITER_SETTINGS settings = {};
    settings.output = collect_octets;
    settings.context = &written;
    settings.message = info.get();
    settings.form = row.number(1);
    settings.size = kContent.size();
    settings.bare = row.number(2);
    const Held<free_SIGNED_MESSAGE_WRITER> writer(new_SIGNED_MESSAGE_WRITER(&settings));
    if (writer == nullptr) return "";
    EXPECT_EQ(update_SIGNED_MESSAGE_WRITER(writer.get(), octets_of(kContent),
                                           static_cast<std::uint32_t>(kContent.size())),
              0U);
    EXPECT_EQ(final_SIGNED_MESSAGE_WRITER(writer.get()), 0U);
    signers.folder().write("streamed.der", {written.begin(), written.end()});
    std::string result;
    for (const char *command :
         {"openssl cms -verify -binary -inform DER -in streamed.der -CAfile root.pem -out out",
          "certtool --p7-verify --inder --infile streamed.der --load-ca-certificate root.pem"})
        result += signers.folder().succeeds(command) ? " good" : " bad";
    return trimmed(result);
}

TEST(MessagePeers, Rows) {
    (void)Signers::instance();
    (void)verify(nullptr, false);
    expect_rows("message_peer.txt", {{"theirs", {theirs}}, {"ours", {ours}}, {"streamed", {streamed}}});
}

/// The encoding of a message without what no signature covers: versions, the message's list of digest
/// algorithms, and the parameters of the signer's algorithms.
Octets what_counts(P7_CONTENT_INFO *info) {
    P7_SIGNED_DATA &data = *info->content.signedData;
    P7_SIGNER_INFO &signer = *get_P7_SIGNER_INFOS_child(data.signerInfos, 0);
    EXPECT_EQ(set_P7_version(info, 1), 0U);
    clean_X509_ALGO_IDENTIFIERS(data.digestAlgorithms);
    for (X509_ALGO_IDENTIFIER *algorithm : {signer.digestAlgorithm, signer.digestEncryptionAlgorithm})
        EXPECT_EQ(set_X509_ALGO_IDENTIFIER_parameters(algorithm, nullptr), 0U);
    return encoding_of(info, TLX_ENCODER(P7_CONTENT_INFO_to_Seq));
}

/// Flips every bit of a message: it verifies only when everything that counts still reads the same.
TEST(MessagePeers, BitFlips) {
    const Signers &signers = Signers::instance();
    const Info info(new_P7_CONTENT_INFO());
    const OwnedCert cert = signers.cert("one");
    EXPECT_EQ(set_PKCS7_Type(info.get(), TLX_OID_PKCS7_SIGNED_DATA), 0U);
    EXPECT_NE(add_PKCS7_Signature(info.get(), cert.get(), signers.key("one").get(), TLX_OID_SHA256), nullptr);
    EXPECT_EQ(add_PKCS7_Certificate(info.get(), cert.get()), 0U);
    EXPECT_EQ(sign_PKCS7_withAttributes(info.get(), octets_of(kContent), 10, 0, nullptr), 0U);
    const Octets good = encoding_of(info.get(), TLX_ENCODER(P7_CONTENT_INFO_to_Seq));
    const Octets counts = what_counts(info.get());
    unsigned verified = 0;
    for (std::size_t i = 0; i < good.size() * 8; ++i) {
        Octets flipped = good;
        flipped[i / 8] ^= static_cast<std::uint8_t>(1U << i % 8);
        P7_CONTENT_INFO *read = nullptr;
        const std::uint32_t status =
            TLX_READ_DER(P7_CONTENT_INFO, &read, flipped.data(), static_cast<std::uint32_t>(flipped.size()));
        const Info owner(read);
        if (status != 0 || verify(read, false) != 0) continue;
        ++verified;
        EXPECT_TRUE(what_counts(read) == counts) << "octet " << i / 8 << " bit " << i % 8;
    }
    EXPECT_GT(verified, 0U);
}

}  // namespace
}  // namespace tlx_test
