// Signers of CMS messages: those that openssl and certtool made, tests/data/cms, read in pieces, and those
// that we write.
#include <gtest/gtest.h>
#include <tlxpki/cms.h>
#include <tlxpki/pkcs8.h>
#include <tlxpki/signature.h>

#include "support/command.hpp"
#include "support/composed_message.hpp"
#include "support/der_text.hpp"
#include "support/message_reader.hpp"
#include "support/rows.hpp"
#include "support/signers.hpp"
#include "support/verify_support.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

Octets file(const std::string &name) {
    const std::string text = read_text(TLX_TEST_DATA "/cms/" + name);
    return {text.begin(), text.end()};
}
Octets sample(const std::string &name) {
    return file(name + ".der");
}

const Octets kContent = {'C', 'o', 'n', 't', 'e', 'n', 't', '\n'};

/// Verifies below the root of the samples, in 2030 by default.
struct Trust {
    explicit Trust(std::uint32_t profile, const char *at = "2030-01-01,00:00:00")
        : time(charToASN1_TIME(at)) {
        const Octets root = sample("root");
        EXPECT_EQ(add_VERIFY_STORE_anchor(store.get(), root.data(), size_of(root), 0), 0U);
        wanted.time = time.get();
        wanted.profile = profile;
        wanted.purpose = TLX_PURPOSE_SIGNING;
        settings.store = store.get();
        settings.settings = &wanted;
    }
    Held<free_VERIFY_STORE> store = Held<free_VERIFY_STORE>(new_VERIFY_STORE());
    Held<free_ASN1_TIME> time;
    VERIFY_SETTINGS wanted = {};
    SIGNED_MESSAGE_READER_SETTINGS settings = {};
};

/// All findings about the first signer.
std::string findings(const SignerReports &reports) {
    const auto *report = get_P7_SIGNER_REPORTS_child(reports.get(), 0);
    if (report == nullptr) return " no report";
    std::string text;
    for (const std::uint32_t status : {report->certificateStatus, report->algorithmStatus,
                                       report->contentStatus, report->signingCertificateStatus,
                                       report->protectionStatus, report->signatureStatus, report->pathStatus})
        text += status == 0 ? " 0" : " " + status_text(status);
    return text;
}

/// Sample, profile, octets that are held, and 1 for content of its own: the status and the findings, the same
/// for all pieces; then the status after the last octet of the signature has changed.
std::string read(const Row &row) {
    Trust trust(row.number(2));
    trust.settings.held_limit = row.number(3);
    const Octets *content = row.number(4) == 1 ? &kContent : nullptr;
    Octets message = sample(row[1]);
    std::string first;
    for (const std::size_t piece : {std::size_t{1}, message.size()}) {
        SignerReports reports;
        const std::uint32_t status = read_in_pieces(trust.settings, message, piece, content, &reports);
        const std::string result = status_text(status) + findings(reports);
        if (first.empty()) first = result;
        if (result != first) return first + " but " + result;
    }
    message[message.size() - (row[1] == "stream" ? 7 : 1)] ^= 1;
    return first + " " + status_text(read_in_pieces(trust.settings, message, 100, content));
}

/// A signer of the samples by its name.
struct Signer {
    explicit Signer(const std::string &name) : certificate(certificate_of(file(name + ".crt"))) {
        const Octets octets = file(name + ".key");
        P8_PRIV_KEY_INFO *read = nullptr;
        EXPECT_EQ(TLX_READ_DER(P8_PRIV_KEY_INFO, &read, octets.data(), size_of(octets)), 0U);
        const Held<free_P8_PRIV_KEY_INFO> info(read);
        ASYMMETRIC_KEY *made = nullptr;
        EXPECT_EQ(read_PRIV_KEY(info.get(), &made), 0U);
        key.reset(made);
        signer.certificate = certificate.get();
        signer.key = key.get();
    }
    OwnedCert certificate;
    Held<free_ASYMMETRIC_KEY> key;
    MESSAGE_SIGNER signer = {};
};

std::uint32_t sign_elsewhere(void *context, const X509_ALGO_IDENTIFIER *algorithm, const std::uint8_t *octets,
                             std::uint32_t len, OCTET_STRING **signature) {
    return make_SIGNATURE(static_cast<const ASYMMETRIC_KEY *>(context), algorithm, octets, len, signature);
}

/// Says the length of the signature in an attribute of the type 2.5.4.5.
std::uint32_t stamp(void * /*context*/, const std::uint8_t * /*signature*/, std::uint32_t len,
                    X509_ATTRIBUTES **attributes) {
    const Node node = der_node("31{30{06:550405 31{02:" + std::string(len == 64 ? "40" : "01") + "}}}");
    return Seq_to_X509_ATTRIBUTES(node.get(), attributes);
}

/// Does as the words say.
void set_up(MESSAGE_SIGNER &signer, SIGNED_MESSAGE_WRITER_SETTINGS &settings, const std::string &words) {
    const auto has = [&](const std::string &word) {
        return (" " + words + " ").find(" " + word + " ") != std::string::npos;
    };
    signer.pss = has("pss") ? 1 : 0;
    signer.by_key_identifier = has("keyid") ? 1 : 0;
    signer.bare = has("bare") ? 1 : 0;
    signer.signing_certificate = has("cert") ? 1 : 0;
    signer.algorithm_protection = has("protect") ? 1 : 0;
    if (has("sha1")) signer.digest_id = TLX_DIGEST_SHA1;
    if (has("sha384")) signer.digest_id = TLX_DIGEST_SHA384;
    if (has("sha3")) signer.digest_id = TLX_DIGEST_SHA3_256;
    if (has("sha3-512")) signer.digest_id = TLX_DIGEST_SHA3_512;
    if (has("stamp")) signer.unsigned_attributes = stamp;
    if (has("elsewhere")) {
        signer.sign = sign_elsewhere;
        signer.sign_context = const_cast<ASYMMETRIC_KEY *>(std::exchange(signer.key, nullptr));
    }
    settings.format = has("pkcs7") ? TLX_MESSAGE_FORMAT_PKCS7 : TLX_MESSAGE_FORMAT_ANY;
}

/// The message that a signer writes; empty with a status other than 0.
Octets write_message(const Row &row, std::uint32_t &status) {
    Signer signer(row[1]);
    Octets written;
    SIGNED_MESSAGE_WRITER_SETTINGS settings = {};
    set_up(signer.signer, settings, row[2]);
    X509_ATTRIBUTES *attributes = nullptr;
    if (!row[4].empty()) {
        const Node node = der_node(row[4]);
        EXPECT_EQ(Seq_to_X509_ATTRIBUTES(node.get(), &attributes), 0U);
    }
    const Held<free_X509_ATTRIBUTES> owner(attributes);
    signer.signer.attributes = attributes;
    const Held<free_X509_CERTIFICATES> certificates(new_X509_CERTIFICATES());
    EXPECT_EQ(add_X509_CERTIFICATES(certificates.get(), signer.certificate.get()), 0U);
    settings.output = collect_octets;
    settings.context = &written;
    settings.signers = &signer.signer;
    settings.signer_count = 1;
    settings.certificates = certificates.get();
    settings.form = row.number(3);
    settings.size = kContent.size();
    status = write_in_pieces(settings, kContent, 3);
    return status == 0 ? written : Octets();
}

/// Key, words, form and signed attributes: the status, and of a message the findings, whether it is DER and
/// whether it has unsigned attributes.
std::string write(const Row &row) {
    std::uint32_t status = 0;
    const Octets message = write_message(row, status);
    if (status != 0) return status_text(status);
    const Trust trust(TLX_PROFILE_CURRENT);
    SignerReports reports;
    const bool detached = row.number(3) == TLX_MESSAGE_DETACHED;
    status = read_in_pieces(trust.settings, message, 1, detached ? &kContent : nullptr, &reports);
    CMS_CONTENT_INFO *made = nullptr;
    EXPECT_EQ(TLX_READ_DER(CMS_CONTENT_INFO, &made, message.data(), size_of(message)), 0U);
    const Held<free_CMS_CONTENT_INFO> again(made);
    const bool is_der = encoding_of(made, TLX_ENCODER(CMS_CONTENT_INFO_to_Seq)) == message;
    const auto *report = get_P7_SIGNER_REPORTS_child(reports.get(), 0);
    return status_text(status) + findings(reports) + (is_der ? " der" : " ber") +
           (report->unsignedAttributes != nullptr ? " stamped" : "");
}

TEST(MessageSigner, Rows) {
    expect_rows("message_signer.txt", {{"read", {read}}, {"write", {write}}});
}

// ---- Composed messages ----

/// A message of a scheme with changes.
Octets compose(const Row &row) {
    const SigningScheme &scheme = signing_scheme(row[1]);
    Parts parts = message_parts(scheme, file(scheme.key + ".crt"), kContent);
    parts["$long"] = std::string(10000, '0');
    parts["$twin"] = "=" + digits(sample("twin"));
    return compose_message(parts, row[2], scheme, file(scheme.key + ".key"));
}

/// Scheme, changes, the time, octets that are held, and zeros that are the content when it is given again:
/// the status and the findings, the same for all pieces, and how many countersignatures there are.
std::string judge(const Row &row) {
    Trust trust(TLX_PROFILE_CURRENT, row[3].empty() ? "2030-01-01,00:00:00" : row[3].c_str());
    trust.settings.held_limit = row.count() > 3 ? row.number(4) : 0;
    Octets again(row.count() > 4 ? row.number(5) : 0);
    if (row.count() > 4) trust.settings.content_again = give_octets;
    trust.settings.content_again_context = &again;
    const Octets message = compose(row);
    std::string first;
    for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, message.size()}) {
        SignerReports reports;
        const std::uint32_t status = read_in_pieces(trust.settings, message, piece, nullptr, &reports);
        const auto *report = get_P7_SIGNER_REPORTS_child(reports.get(), 0);
        std::string result = status_text(status) + findings(reports);
        if (report != nullptr && report->countersignatures > 0) {
            result += " countersigned " + std::to_string(report->countersignatures);
        }
        if (first.empty()) first = result;
        if (result != first) return first + " but " + result;
    }
    return first;
}

/// The status of a message that breaks off, which is the same after any octet and for all pieces.
std::string cut(const Row &row) {
    const Octets message = compose(row);
    for (std::size_t size = 0; size < message.size(); ++size) {
        const Octets part(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(size));
        for (const std::size_t piece : {std::size_t{1}, size + 1}) {
            const std::uint32_t status = read_in_pieces({}, part, piece);
            if (status != 0x5282004F) return status_text(status) + " after " + std::to_string(size);
        }
    }
    return "5282004F";
}

TEST(MessageSigner, ComposedRows) {
    expect_rows("message_composed.txt", {{"judge", {judge}}, {"cut", {cut}}});
}

/// What a signer writes, a program verifies.
std::string verified_by_peer(const Row &row) {
    static const CommandFolder folder;
    std::uint32_t status = 0;
    const Octets message = write_message(row, status);
    const Octets root = sample("root");
    char *pem = nullptr;
    const std::uint32_t size = encode_PEM(root.data(), size_of(root), "CERTIFICATE", 11, &pem, 1);
    const Held<tlx_free> owner(static_cast<void *>(pem));
    folder.write("root", {pem, size});
    folder.write("message", {message.begin(), message.end()});
    return folder.succeeds(row[5]) ? "good" : "bad";
}

/// The same with libcrypto's primitives by a scheme: the signature over the attributes, of which one is the
/// digest of the content.
std::string verified_by_primitives(const Row &row) {
    std::uint32_t status = 0;
    const Octets message = write_message(row, status);
    const SigningScheme &scheme = signing_scheme(row[5]);
    CMS_CONTENT_INFO *made = nullptr;
    EXPECT_EQ(TLX_READ_DER(CMS_CONTENT_INFO, &made, message.data(), size_of(message)), 0U);
    const Held<free_CMS_CONTENT_INFO> owner(made);
    const CMS_SIGNER_INFO *signer = get_CMS_SIGNER_INFOS_child(made->signedData->signerInfos, 0);
    const OCTET_STRING &signature = *signer->signature;
    const Octets attributes = encoding_of(signer->signedAttrs, TLX_ENCODER(X509_ATTRIBUTES_to_Seq));
    const Octets digest =
        der("30{06:2A864886F70D010904 31{04:" + digits_of(openssl::digest(scheme.digest, kContent)) + "}}");
    if (std::search(attributes.begin(), attributes.end(), digest.begin(), digest.end()) == attributes.end())
        return "no digest";
    const bool good = openssl::verify(file(row[1] + ".crt"), scheme.scheme, attributes,
                                      {signature.data, signature.data + signature.length});
    return good ? "good" : "bad";
}

TEST(MessageSigner, PeersVerify) {
    expect_rows("message_signer_peer.txt",
                {{"verify", {verified_by_peer}}, {"primitives", {verified_by_primitives}}});
}

class MessageSigners : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { make_signing_keys(); }
    LeakCheck leaks_;
};

/// The revocation information of a message says that its signer is revoked (RFC 5940).
TEST_F(MessageSigners, OcspResponseInTheMessage) {
    const Signer signer("p256");
    const Octets response = file("revoked.ocsp");
    std::string octets = hex_of(response.data(), response.size());
    std::erase(octets, ' ');
    CMS_REVOCATION_INFOS *made = nullptr;
    EXPECT_EQ(
        Seq_to_CMS_REVOCATION_INFOS(der_node("31{A1{06:2B06010505071002 =" + octets + "}}").get(), &made),
        0U);
    const Held<free_CMS_REVOCATION_INFOS> infos(made);
    Octets written;
    SIGNED_MESSAGE_WRITER_SETTINGS settings = {};
    settings.output = collect_octets;
    settings.context = &written;
    settings.signers = &signer.signer;
    settings.signer_count = 1;
    settings.revocation = infos.get();
    const Held<free_X509_CERTIFICATES> pool(new_X509_CERTIFICATES());
    EXPECT_EQ(add_X509_CERTIFICATES(pool.get(), signer.certificate.get()), 0U);
    const auto status = [&] {
        written.clear();
        return write_in_pieces(settings, {}, 1);
    };
    EXPECT_EQ(status(), 0U);
    Trust trust(TLX_PROFILE_CURRENT);
    trust.settings.pool = pool.get();
    EXPECT_EQ(read_in_pieces(trust.settings, written, 50), 0x55060304U);
    settings.format = TLX_MESSAGE_FORMAT_PKCS7;
    EXPECT_EQ(status(), 0x52830106U);
    settings.format = TLX_MESSAGE_FORMAT_ANY;
    sweep_statuses({0x5283003C, 0x5284003C}, status);
}

/// A KCDSA signer is one of PKCS #7. The reader does not keep the content, but has the certificate
/// beforehand.
TEST_F(MessageSigners, Kcdsa) {
    const Cert cert = signer_spec(kKcdsaKey).make();
    MESSAGE_SIGNER signer = {};
    signer.certificate = cert.get();
    signer.key = signing_key(kKcdsaKey);
    signer.digest_id = TLX_DIGEST_HAS160;
    const Held<free_X509_CERTIFICATES> pool(new_X509_CERTIFICATES());
    EXPECT_EQ(add_X509_CERTIFICATES(pool.get(), cert.get()), 0U);
    Octets written;
    SIGNED_MESSAGE_WRITER_SETTINGS settings = {};
    settings.output = collect_octets;
    settings.context = &written;
    settings.signers = &signer;
    settings.signer_count = 1;
    settings.format = TLX_MESSAGE_FORMAT_PKCS7;
    settings.form = TLX_MESSAGE_DER;
    const Octets content(3000, 'x');
    settings.size = content.size();
    const auto status = [&] {
        written.clear();
        return write_in_pieces(settings, content, content.size());
    };
    SIGNED_MESSAGE_READER_SETTINGS reading = {};
    reading.pool = pool.get();
    reading.held_limit = 1000;
    for (signer.bare = 0; signer.bare < 2; ++signer.bare) {
        for (settings.form = 0; settings.form <= TLX_MESSAGE_DETACHED; ++settings.form) {
            ASSERT_EQ(status(), 0U);
            const Octets *apart = settings.form == TLX_MESSAGE_DETACHED ? &content : nullptr;
            EXPECT_EQ(read_in_pieces(reading, written, 5, apart), 0U) << signer.bare << settings.form;
        }
    }
    signer.bare = 1;
    settings.form = TLX_MESSAGE_DER;
    sweep_statuses({0x5283003C, 0x5284003C}, status);
    // The key of somebody else.
    KCDSA *unit = static_cast<KCDSA *>(signing_key(kKcdsaKey)->key);
    const Held<free_KCDSA> other(dup_KCDSA(unit));
    const Held<free_ASYMMETRIC_KEY> wrong(new_ASYMMETRIC_KEY());
    EXPECT_EQ(gen_KCDSA_key(other.get()), 0U);
    EXPECT_EQ(set_ASYMMETRIC_KEY(wrong.get(), TLX_KEY_KCDSA, other.get()), 0U);
    settings.form = TLX_MESSAGE_INDEFINITE;
    signer.bare = 1;
    signer.key = wrong.get();
    EXPECT_EQ(status(), 0x52840054U);
}

/// The content type is signed.
TEST_F(MessageSigners, ContentTypeDiffers) {
    Octets message = sample("typed");
    const Octets type = {0x06, 0x03, 0x2A, 0x03, 0x04};
    const auto found = std::search(message.begin(), message.end(), type.begin(), type.end());
    *(found + 4) = 5;
    EXPECT_EQ(read_in_pieces({}, message, 1), 0x4B300106U);
}

TEST_F(MessageSigners, WritingRefusesArguments) {
    const Signer signer("p256");
    Octets written;
    SIGNED_MESSAGE_WRITER_SETTINGS settings = {};
    settings.output = collect_octets;
    settings.context = &written;
    settings.signer_count = 1;
    EXPECT_EQ(new_SIGNED_MESSAGE_WRITER(&settings), nullptr);
    settings.signers = &signer.signer;
    settings.format = 2;
    EXPECT_EQ(new_SIGNED_MESSAGE_WRITER(&settings), nullptr);
    settings.format = TLX_MESSAGE_FORMAT_ANY;
    MESSAGE_SIGNER broken = signer.signer;
    settings.signers = &broken;
    const auto status = [&] {
        const Held<free_SIGNED_MESSAGE_WRITER> writer(new_SIGNED_MESSAGE_WRITER(&settings));
        return final_SIGNED_MESSAGE_WRITER(writer.get());
    };
    broken.key = nullptr;
    EXPECT_EQ(status(), 0x52830048U);
    const OwnedCert root = certificate_of(sample("root"));
    broken.key = get_X509_PUBKEY_key(get_X509_SPKI(root.get()));
    EXPECT_EQ(status(), 0x52840048U);
    const Signer other("p384");
    broken.key = other.key.get();
    EXPECT_EQ(status(), 0x52840054U);
    broken.certificate = nullptr;
    EXPECT_EQ(status(), 0x52830048U);
}

/// Of two certificates with the key identifier that the signer has, the one counts whose key signed.
TEST_F(MessageSigners, KeyIdentifierOfTwoCertificates) {
    const Octets twin = sample("twin");
    const Held<free_X509_CERTIFICATES> pool(new_X509_CERTIFICATES());
    const OwnedCert other = certificate_of(twin);
    EXPECT_EQ(add_X509_CERTIFICATES(pool.get(), other.get()), 0U);
    Trust trust(TLX_PROFILE_CURRENT);
    trust.settings.pool = pool.get();
    SignerReports reports;
    EXPECT_EQ(read_in_pieces(trust.settings, sample("keyid"), 50, nullptr, &reports), 0U);
    const auto *report = get_P7_SIGNER_REPORTS_child(reports.get(), 0);
    EXPECT_NE(cmp_X509_CERT(report->certificate, other.get()), 0);
    EXPECT_EQ(report->signature->length, 256);
    EXPECT_EQ(report->unsignedAttributes, nullptr);
}

TEST_F(MessageSigners, AllocationsMayFail) {
    const Octets message = sample("cades");
    sweep_statuses(kNoMemory, [&] { return read_in_pieces({}, message, 500); });
}

}  // namespace
}  // namespace tlx_test
