#include <gtest/gtest.h>
#include <tlxpki/asn1.h>
#include <tlxpki/pem.h>

#include <vector>

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/strings.hpp"

namespace tlx_test {
namespace {

/// From a block of exactly that size, which a sanitizer guards.
std::string decode(const std::string &pem) {
    const std::vector<char> block(pem.begin(), pem.end());
    std::uint8_t *der = nullptr;
    const std::uint32_t size = decode_PEM(block.data(), static_cast<std::int32_t>(block.size()), &der);
    EXPECT_EQ(der == nullptr, size == 0);
    return take(der, size);
}

std::string wrapped(const std::string &base64) {
    return "-----BEGIN A-----\n" + base64 + "\n-----END A-----\n";
}

/// Keeps the first INTEGER of a SEQUENCE, or gives a status of its own.
std::uint32_t decode_first(const ASN1_UNIT *node, void **out) {
    auto *number = static_cast<BIGINT *>(getDERChildAt(node, 0, 2));
    *static_cast<std::uint32_t *>(*out) = get_BIGINT_word(number);
    free_BIGINT(number);
    return number != nullptr ? 0 : 0x12345678;
}

const ASN1_ENCODER kEncoder = TLX_ENCODER(ASN1_STRING_to_Seq);

class PemTest : public ::testing::Test {
  protected:
    std::uint32_t read(const std::string &pem) {
        return readPEM_from_Binary(&out_, decode_first, pem.data(), static_cast<std::uint32_t>(pem.size()));
    }

    std::uint32_t value_ = 0;
    void *out_ = &value_;
    char *pem_ = nullptr;

  private:
    LeakCheck leaks_;
};

TEST_F(PemTest, PutsTheLinesAround) {
    ASSERT_EQ(base64ToPEM("Zm9vYmFy", 8, "X TEST", 6, &pem_), 8U + 2 * 6 + 33);
    EXPECT_EQ(take(pem_, 54),
              std::string("-----BEGIN X TEST-----\nZm9vYmFy\n-----END X TEST-----\n", 53) + '\0');
    ASSERT_EQ(base64ToPEM("", 0, nullptr, 0, &pem_), 33U);
    EXPECT_EQ(take(pem_, 33), "-----BEGIN -----\n\n-----END -----\n");
    const std::uint8_t zeros[49]{};
    ASSERT_EQ(encode_PEM(zeros, 49, "A", 1, &pem_, 1), 69U + 2 + 33);
    EXPECT_EQ(take(pem_, 104), wrapped(std::string(64, 'A') + "\nAA=="));

    pem_ = nullptr;
    EXPECT_EQ(base64ToPEM("Zm9v", -1, "A", 1, &pem_), 0U);
    EXPECT_EQ(base64ToPEM(nullptr, 4, "A", 1, &pem_), 0U);
    EXPECT_EQ(base64ToPEM("Zm9v", 4, nullptr, 1, &pem_), 0U);
    EXPECT_EQ(base64ToPEM("Zm9v", 4, "A", 0xFFFFFFFF, &pem_), 0U) << "more than 2^31 octets";
    EXPECT_EQ(pem_, nullptr);
}

TEST_F(PemTest, DecodesTheBody) {
    // Labels are not checked, the rest of the header line is passed over, and the body ends at the next "-".
    // Twenty characters are the least.
    const std::pair<std::string, const char *> cases[] = {
        {"-----BEGIN A-----\r\nZm9v\r\nYmFy\r\n-----END A-----\r\n", "foobar"},
        {"-----BEGIN A----- \r\n\r\nZm9v-----END B-----", "foo"},
        {"-----BEGIN A------\nZm9v-", "foo"},
        {wrapped("Proc-Type: 4,ENCRYPTED\n\nZm9v"), "\x3E\xBA\x1C"},
        {"-----B-----Zm9vZm9v-", "foofoo"},
        {"-----B----Zm9vZm9v-", "(null)"},
        {"=" + wrapped("Zm9v").substr(1), "(null)"},
        {wrapped("Zm9 v"), "(null)"},
        {wrapped(""), "(null)"},
        {"-----BEGIN A----\nZm9v\n---- END", "(null)"},
        {"text\n" + wrapped("Zm9v"), "(null)"},
        {std::string(30, '-'), "(null)"},
    };
    for (const auto &[pem, octets] : cases)
        EXPECT_EQ(decode(pem), octets) << pem;
    for (std::size_t size = 0; size < 40; ++size)
        EXPECT_EQ(decode(wrapped("Zm9vYmFy").substr(0, size)), size > 27 ? "foobar" : "(null)")
            << "cut at " << size;
    std::uint8_t *der = nullptr;
    EXPECT_EQ(decode_PEM(nullptr, 30, &der), 0U);
    EXPECT_EQ(decode_PEM(wrapped("Zm9v").c_str(), -1, &der), 0U);
    EXPECT_EQ(der, nullptr);
}

TEST_F(PemTest, ReadsStructures) {
    EXPECT_EQ(read(wrapped("MAMCAQUAAA==")), 0U) << "octets after the element are ignored";
    EXPECT_EQ(value_, 5U);
    EXPECT_EQ(read(wrapped("MAMEAQU=")), 0x12345678U) << "the decoder's status";
    EXPECT_EQ(read(wrapped("MAQCAQU=")), 0x4E00004FU) << "truncated";
    EXPECT_EQ(read(wrapped("MAMCAQU")), 0x4E00002BU);
    EXPECT_EQ(readPEM_from_Binary(&out_, decode_first, nullptr, 30), 0x4E00002BU);
    EXPECT_EQ(readPEM_from_Binary(&out_, nullptr, wrapped("MAMCAQU=").c_str(), 43), 0x4E00002BU);
    EXPECT_EQ(readPEM_from_Binary(&out_, decode_first, "-----", 0x80000000U), 0x4E00002BU);
}

TEST_F(PemTest, WritesStructuresAndFiles) {
    const StringRecord record = make_string(0x30, "\x02\x01\x07");
    EXPECT_EQ(writePEM_to_Binary(record.get(), kEncoder, "A", 1, nullptr), 0x4E00002BU);
    EXPECT_EQ(writePEM_to_Binary(make_string(0, "x").get(), kEncoder, "A", 1, &pem_), 0xFFFFFFFFU);
    EXPECT_EQ(writePEM_to_Binary(record.get(), nullptr, "A", 1, &pem_), 0xFFFFFFFFU);
    EXPECT_EQ(writePEM_to_Binary(record.get(), kEncoder, nullptr, 1, &pem_), 0xFFFFFFFFU);
    EXPECT_EQ(pem_, nullptr);

    const CommandFolder folder;
    const std::string path = folder.path("file");
    const std::string nowhere = folder.path("no such folder/file");
    EXPECT_EQ(writePEM_to_FILE(record.get(), kEncoder, "A", 1, path.c_str()), 43U);
    EXPECT_EQ(folder.read("file"), wrapped("MAMCAQc="));
    EXPECT_EQ(readPEM_from_File(&out_, decode_first, path.c_str()), 0U);
    EXPECT_EQ(value_, 7U);
    EXPECT_EQ(readPEM_from_File(&out_, decode_first, nowhere.c_str()), 0x4E00002BU);
    EXPECT_EQ(writePEM_to_FILE(record.get(), kEncoder, "A", 1, nullptr), 0x4E00002BU);
    EXPECT_EQ(writePEM_to_FILE(record.get(), kEncoder, "A", 1, nowhere.c_str()), 0xFFFFFFFFU);
    EXPECT_EQ(writePEM_to_FILE(record.get(), nullptr, "A", 1, path.c_str()), 0xFFFFFFFFU);
}

TEST_F(PemTest, SurvivesFailingAllocations) {
    sweep_failing_allocations([&] {
        const std::uint32_t status = read(wrapped("MAMCAQU="));
        EXPECT_TRUE(status == 0 || status == 0x4E00002B || status == 0x4E00004F || status == 0x12345678)
            << status;
        return status == 0;
    });
    const StringRecord record = make_string(0x30, "\x02\x01\x07");
    sweep_failing_allocations([&] {
        pem_ = nullptr;
        const std::uint32_t size = writePEM_to_Binary(record.get(), kEncoder, "A", 1, &pem_);
        EXPECT_EQ(size, pem_ == nullptr ? 0xFFFFFFFFU : 43U);
        tlx_free(pem_);
        return size == 43;
    });
}

}  // namespace
}  // namespace tlx_test
