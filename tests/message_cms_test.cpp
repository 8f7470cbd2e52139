// Messages of CMS as the openssl program writes them, and the versions of records.
#include <gtest/gtest.h>
#include <tlxpki/cms_attribute.h>
#include <tlxpki/cms_timestamp.h>

#include "support/command.hpp"
#include "support/der_text.hpp"
#include "support/rows.hpp"
#include "support/x509_files.hpp"

namespace tlx_test {
namespace {

using Info = Held<free_CMS_CONTENT_INFO>;

/// Keys with their certificates, and content, made by openssl once and for all tests.
const CommandFolder &folder() {
    static const CommandFolder folder;
    static const bool made = [] {
        folder.write("content", "Content\n" + std::string(100, 'x'));
        folder.run(
            "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout one.p8 -out "
            "one.pem "
            "-subj /CN=One -days 2 -addext subjectKeyIdentifier=hash && "
            "openssl req -x509 -newkey rsa:2048 -nodes -keyout two.p8 -out two.pem -subj /CN=Two -days 2 "
            "-addext subjectKeyIdentifier=hash");
        return true;
    }();
    (void)made;
    return folder;
}

Info read_message(const Octets &octets) {
    CMS_CONTENT_INFO *info = nullptr;
    EXPECT_EQ(TLX_READ_DER(CMS_CONTENT_INFO, &info, octets.data(), static_cast<std::uint32_t>(octets.size())),
              0U);
    return Info(info);
}

Octets write_message(const CMS_CONTENT_INFO *info) {
    return encoding_of(info, TLX_ENCODER(CMS_CONTENT_INFO_to_Seq));
}

/// Reads a message of openssl. Our encoding is the same octets; where theirs has indefinite lengths, it is
/// shorter, and openssl reads it. Then whether the versions are those that we give.
std::string theirs(const Row &row) {
    folder().run("openssl cms -outform DER -out theirs.der " + row[1]);
    const std::string octets = folder().read("theirs.der");
    const Info info = read_message({octets.begin(), octets.end()});
    const Octets ours = write_message(info.get());
    const std::string written(ours.begin(), ours.end());
    std::string result = "same";
    if (written != octets) {
        folder().write("ours.der", written);
        const bool read = folder().succeeds("openssl cms -cmsout -inform DER -in ours.der -print");
        result = written.size() < octets.size() && read ? "shorter" : "other";
    }
    EXPECT_EQ(set_CMS_versions(info.get()), 0U);
    return result + (write_message(info.get()) == ours ? " agree" : " differ");
}

/// The message with the versions that belong to its members.
std::string versions(const Row &row) {
    const Info info = read_message(der(row[1]));
    const std::uint32_t status = set_CMS_versions(info.get());
    return write_message(info.get()) == der(row[2]) ? status_text(status) : "others";
}

TEST(CmsMessages, Rows) {
    expect_rows("message_cms.txt", {{"theirs", {theirs}}, {"versions", {versions}}});
}

template <typename T>
using Decoder = std::uint32_t (*)(const ASN1_UNIT *, T **);
template <typename T>
using Encoder = std::uint32_t (*)(const T *, ASN1_UNIT **);

/// The record of an element, whose encoding by us has the same octets.
template <auto Free, typename T>
Held<Free> same(const ASN1_UNIT *node, Decoder<T> decode, Encoder<T> encode) {
    T *record = nullptr;
    ASN1_UNIT *written = nullptr;
    EXPECT_EQ(decode(node, &record), 0U);
    EXPECT_EQ(encode(record, &written), 0U);
    EXPECT_EQ(hex_of(written), hex_of(node));
    free_ASN1_UNIT(written);
    return Held<Free>(record);
}

Node node_of(const std::string &octets) {
    return Node(decodeToDERSequence_n(reinterpret_cast<const std::uint8_t *>(octets.data()),
                                      static_cast<std::uint32_t>(octets.size())));
}

/// The one value of a signed attribute.
const ASN1_UNIT *attribute_of(const CMS_SIGNER_INFO *signer, const char *dotted) {
    const Held<free_OBJECT_IDENTIFIER> type(text_to_OBJECT_IDENTIFIER(dotted));
    const std::int32_t index = get_X509_ATTRIBUTES_index_by_OID(signer->signedAttrs, type.get(), -1);
    return static_cast<const ASN1_UNIT *>(
        get_X509_ATTRIBUTE_data(get_X509_ATTRIBUTES_child(signer->signedAttrs, index), 0));
}

TEST(CmsMessages, TimeStampsOfOpenssl) {
    folder().write("tsa.cnf",
                   "[tsa]\ndefault_tsa = t\n[t]\nserial = serial\nsigner_digest = sha256\n"
                   "default_policy = 1.2.3.4\ndigests = sha256\naccuracy = secs:1, millisecs:500\n"
                   "ordering = yes\ntsa_name = yes\ness_cert_id_alg = sha256\n");
    folder().run(
        "openssl req -x509 -key one.p8 -out tsa.pem -subj /CN=Stamps -days 2 "
        "-addext extendedKeyUsage=critical,timeStamping && "
        "openssl ts -query -data content -sha256 -cert -tspolicy 1.2.3.4 -out asked && "
        "openssl ts -reply -config tsa.cnf -queryfile asked -signer tsa.pem -inkey one.p8 -out stamped");
    const auto request = same<free_CMS_TIMESTAMP_REQUEST>(
        node_of(folder().read("asked")).get(), Seq_to_CMS_TIMESTAMP_REQUEST, CMS_TIMESTAMP_REQUEST_to_Seq);
    const auto response =
        same<free_CMS_TIMESTAMP_RESPONSE>(node_of(folder().read("stamped")).get(),
                                          Seq_to_CMS_TIMESTAMP_RESPONSE, CMS_TIMESTAMP_RESPONSE_to_Seq);
    EXPECT_EQ(response->status->status, std::uint32_t{TLX_TIMESTAMP_GRANTED});
    const CMS_SIGNED_DATA &data = *response->timeStampToken->signedData;
    const OCTET_STRING &content = *data.encapContentInfo->eContent;
    const auto info = same<free_CMS_TST_INFO>(
        node_of({reinterpret_cast<const char *>(content.data), static_cast<std::size_t>(content.length)})
            .get(),
        Seq_to_CMS_TST_INFO, CMS_TST_INFO_to_Seq);
    EXPECT_EQ(cmp_BIGINT(info->nonce, request->nonce), 0);
    EXPECT_EQ(info->ordering, 0xFF);
    EXPECT_EQ(get_BIGINT_bits(info->accuracy->millis), 9U) << "500";
    EXPECT_EQ(info->accuracy->micros, nullptr);
    EXPECT_EQ(info->tsa->choice, std::uint32_t{TLX_GENERAL_NAME_DIRECTORY_NAME});
    const CMS_SIGNER_INFO *signer = get_CMS_SIGNER_INFOS_child(data.signerInfos, 0);
    const auto certificate = same<free_CMS_SIGNING_CERTIFICATE_V2>(
        attribute_of(signer, "1.2.840.113549.1.9.16.2.47"), Seq_to_CMS_SIGNING_CERTIFICATE_V2,
        CMS_SIGNING_CERTIFICATE_V2_to_Seq);
    const CMS_ESS_CERT_ID_V2 *id = get_CMS_ESS_CERT_IDS_V2_child(certificate->certs, 0);
    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    const OwnedCert cert = certificate_of(read_pem_file(folder().path("tsa.pem")).front());
    EXPECT_EQ(X509_CERT_digest(cert.get(), TLX_DIGEST_SHA256, digest), 32U);
    EXPECT_EQ(hex_of(id->certHash->data, 32), hex_of(digest, 32));
}

/// The attributes as received, in the copy of a record.
template <auto Free, typename T>
std::string received_in(const std::string &text, Decoder<T> decode, T *(*dup)(const T *)) {
    T *record = nullptr;
    EXPECT_EQ(decode(der_node(text).get(), &record), 0U);
    const Held<Free> owner(record);
    const Held<Free> copy(dup(record));
    return hex_of(copy->receivedAttributes);
}

TEST(CmsMessages, AttributesStayAsReceived) {
    const std::string attributes = "80 30{06:2A03 31{05:}} =0000 ";
    const std::string received = "80 30 08 06 02 2A 03 31 02 05 00 00 00";
    EXPECT_EQ(
        received_in<free_CMS_SIGNER_INFO>("30{02:03 80:01 30{06:2A03} =A0" + attributes + "30{06:2A03} 04:}",
                                          Seq_to_CMS_SIGNER_INFO, dup_CMS_SIGNER_INFO),
        "A0 " + received);
    EXPECT_EQ(received_in<free_CMS_AUTHENTICATED_DATA>(
                  "30{02:00 31{A4{}} 30{06:2A03} 30{06:2A03} =A2" + attributes + "04:}",
                  Seq_to_CMS_AUTHENTICATED_DATA, dup_CMS_AUTHENTICATED_DATA),
              "A2 " + received);
    EXPECT_EQ(received_in<free_CMS_AUTH_ENVELOPED_DATA>(
                  "30{02:00 31{A4{}} 30{06:2A03 30{06:2A03}} =A1" + attributes + "04:}",
                  Seq_to_CMS_AUTH_ENVELOPED_DATA, dup_CMS_AUTH_ENVELOPED_DATA),
              "A1 " + received);
}

TEST(CmsMessages, VersionsOfWhatIsMissing) {
    const Info info =
        read_message(der("30{06:2A864886F70D010705 A0{30{02:00 30{06:2A03} 30{06:2A03} 04:}}}"));
    EXPECT_EQ(set_CMS_versions(nullptr), 1U);
    free_CMS_DIGESTED_DATA(std::exchange(info->digestedData, nullptr));
    EXPECT_EQ(set_CMS_versions(info.get()), 1U);
}

}  // namespace
}  // namespace tlx_test
