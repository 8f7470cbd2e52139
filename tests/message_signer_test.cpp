// Signers of CMS messages: those that openssl and certtool made, tests/data/cms, read in pieces.
#include <gtest/gtest.h>

#include "support/message_reader.hpp"
#include "support/rows.hpp"
#include "support/verify_support.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

Octets sample(const std::string &name) {
    const std::string text = read_text(TLX_TEST_DATA "/cms/" + name + ".der");
    return {text.begin(), text.end()};
}

const Octets kContent = {'C', 'o', 'n', 't', 'e', 'n', 't', '\n'};

/// Verifies below the root of the samples in 2030.
struct Trust {
    explicit Trust(std::uint32_t profile) {
        const Octets root = sample("root");
        EXPECT_EQ(add_VERIFY_STORE_anchor(store.get(), root.data(), size_of(root), 0), 0U);
        wanted.time = time.get();
        wanted.profile = profile;
        wanted.purpose = TLX_PURPOSE_SIGNING;
        settings.store = store.get();
        settings.settings = &wanted;
    }
    Held<free_VERIFY_STORE> store = Held<free_VERIFY_STORE>(new_VERIFY_STORE());
    Held<free_ASN1_TIME> time = Held<free_ASN1_TIME>(charToASN1_TIME("2030-01-01,00:00:00"));
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

TEST(MessageSigner, Rows) {
    expect_rows("message_signer.txt", {{"read", {read}}});
}

class MessageSigners : public ::testing::Test {
  protected:
    LeakCheck leaks_;
};

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

TEST_F(MessageSigners, TruncatedMessagesAreNotComplete) {
    const Octets message = sample("stream");
    for (std::size_t size = 0; size < message.size(); ++size) {
        const Octets part(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(size));
        ASSERT_EQ(read_in_pieces({}, part, part.size() + 1), 0x5282004FU) << size;
    }
}

TEST_F(MessageSigners, AllocationsMayFail) {
    const Octets message = sample("cades");
    sweep_failing_allocations([&] {
        const std::uint32_t status = read_in_pieces({}, message, 500);
        EXPECT_TRUE(status == 0 || TLX_STATUS_REASON(status) == TLX_REASON_NOT_ALLOCATED ||
                    TLX_STATUS_REASON(status) == TLX_REASON_NOT_DECODED || status == 0x5282005E)
            << status_text(status);
        return status == 0;
    });
}

}  // namespace
}  // namespace tlx_test
