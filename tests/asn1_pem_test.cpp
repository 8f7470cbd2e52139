#include <gtest/gtest.h>
#include <tlxpki/asn1.h>
#include <tlxpki/pem.h>

#include <filesystem>
#include <fstream>
#include <vector>

#include "support/allocation.hpp"
#include "support/strings.hpp"

namespace {

using tlx_test::make_string;

/// From a block of exactly that size, which a sanitizer guards.
std::string decode(const std::string &pem) {
    const std::vector<char> block(pem.begin(), pem.end());
    std::uint8_t *der = nullptr;
    const std::uint32_t size = decode_PEM(block.data(), static_cast<std::int32_t>(block.size()), &der);
    EXPECT_EQ(der == nullptr, size == 0);
    return tlx_test::take(der, size);
}

/// Keeps the first INTEGER of a SEQUENCE, or gives a status of its own.
std::uint32_t decode_first(const ASN1_UNIT *node, void **out) {
    auto *number = static_cast<BIGINT *>(getDERChildAt(node, 0, 2));
    *static_cast<std::uint32_t *>(*out) = get_BIGINT_word(number);
    free_BIGINT(number);
    return number != nullptr ? 0 : 0x12345678;
}

std::string wrapped(const std::string &base64) {
    return "-----BEGIN A-----\n" + base64 + "\n-----END A-----\n";
}

class PemTest : public ::testing::Test {
  protected:
    std::uint32_t read(const std::string &pem) {
        return readPEM_from_Binary(&out_, decode_first, pem.data(), static_cast<std::uint32_t>(pem.size()));
    }

    std::uint32_t value_ = 0;
    void *out_ = &value_;
    char *pem_ = nullptr;

  private:
    tlx_test::LeakCheck leaks_;
};

TEST_F(PemTest, PutsTheLinesAround) {
    ASSERT_EQ(base64ToPEM("Zm9vYmFy", 8, "X TEST", 6, &pem_), 8U + 2 * 6 + 33);
    EXPECT_EQ(tlx_test::take(pem_, 54),
              std::string("-----BEGIN X TEST-----\nZm9vYmFy\n-----END X TEST-----\n", 53) + '\0');
    ASSERT_EQ(base64ToPEM("", 0, nullptr, 0, &pem_), 33U);
    EXPECT_EQ(tlx_test::take(pem_, 33), "-----BEGIN -----\n\n-----END -----\n");
    const std::uint8_t zeros[49]{};
    ASSERT_EQ(encode_PEM(zeros, 49, "A", 1, &pem_, 1), 69U + 2 + 33);
    EXPECT_EQ(tlx_test::take(pem_, 104), wrapped(std::string(64, 'A') + "\nAA=="));

    pem_ = nullptr;
    EXPECT_EQ(base64ToPEM("Zm9v", -1, "A", 1, &pem_), 0U);
    EXPECT_EQ(base64ToPEM(nullptr, 4, "A", 1, &pem_), 0U);
    EXPECT_EQ(base64ToPEM("Zm9v", 4, nullptr, 1, &pem_), 0U);
    EXPECT_EQ(base64ToPEM("Zm9v", 4, "A", 0xFFFFFFFF, &pem_), 0U) << "more than 2^31 octets";
    EXPECT_EQ(pem_, nullptr);
}

TEST_F(PemTest, DecodesTheBody) {
    EXPECT_EQ(decode(wrapped("Zm9v\nYmFy")), "foobar");
    EXPECT_EQ(decode("-----BEGIN A-----\r\nZm9v\r\nYmFy\r\n-----END A-----\r\n"), "foobar");
    EXPECT_EQ(decode("-----BEGIN A----- \r\n\r\nZm9v-----END B-----"), "foo") << "labels are not checked";
    EXPECT_EQ(decode("-----BEGIN A------\nZm9v-"), "foo") << "the rest of the header line is passed over";
    EXPECT_EQ(decode(wrapped("Proc-Type: 4,ENCRYPTED\n\nZm9v")), "\x3E\xBA\x1C")
        << "the body ends at the next -";
    EXPECT_EQ(decode("-----B-----Zm9vZm9v-"), "foofoo") << "twenty characters";
    const std::string bad[] = {
        "-----B----Zm9vZm9v-", "=" + wrapped("Zm9v").substr(1),    wrapped("Zm9 v"),
        wrapped(""),           "-----BEGIN A----\nZm9v\n---- END", "text\n" + wrapped("Zm9v"),
        std::string(30, '-')};
    for (const std::string &pem : bad)
        EXPECT_EQ(decode(pem), "(null)") << pem;
    for (std::size_t size = 0; size < 40; ++size)
        EXPECT_EQ(decode(wrapped("Zm9vYmFy").substr(0, size)), size > 27 ? "foobar" : "(null)")
            << "cut at " << size;
    std::uint8_t *der = nullptr;
    EXPECT_EQ(decode_PEM(nullptr, 30, &der), 0U);
    EXPECT_EQ(decode_PEM(wrapped("Zm9v").c_str(), -1, &der), 0U);
    EXPECT_EQ(der, nullptr);
}

TEST_F(PemTest, ReadsStructures) {
    EXPECT_EQ(read(wrapped("MAMCAQU=")), 0U);
    EXPECT_EQ(value_, 5U);
    EXPECT_EQ(read(wrapped("MAMCAQUAAA==")), 0U) << "octets after the element are ignored";
    EXPECT_EQ(read(wrapped("MAMEAQU=")), 0x12345678U) << "the decoder's status";
    EXPECT_EQ(read(wrapped("MAQCAQU=")), 0x4E00004FU) << "truncated";
    EXPECT_EQ(read(wrapped("MAMCAQU")), 0x4E00002BU);
    EXPECT_EQ(readPEM_from_Binary(&out_, decode_first, nullptr, 30), 0x4E00002BU);
    EXPECT_EQ(readPEM_from_Binary(&out_, nullptr, wrapped("MAMCAQU=").c_str(), 43), 0x4E00002BU);
    EXPECT_EQ(readPEM_from_Binary(&out_, decode_first, "-----", 0x80000000U), 0x4E00002BU);
}

TEST_F(PemTest, WritesStructuresAndFiles) {
    const auto record = make_string(0x30, "\x02\x01\x07");
    const ASN1_ENCODER encoder = TLX_ENCODER(ASN1_STRING_to_Seq);
    EXPECT_EQ(writePEM_to_Binary(record.get(), encoder, "A", 1, nullptr), 0x4E00002BU);
    EXPECT_EQ(writePEM_to_Binary(make_string(0, "x").get(), encoder, "A", 1, &pem_), 0xFFFFFFFFU);
    EXPECT_EQ(writePEM_to_Binary(record.get(), nullptr, "A", 1, &pem_), 0xFFFFFFFFU);
    EXPECT_EQ(writePEM_to_Binary(record.get(), encoder, nullptr, 1, &pem_), 0xFFFFFFFFU);
    EXPECT_EQ(pem_, nullptr);
    EXPECT_EQ(writePEM_to_Binary(record.get(), encoder, "A", 1, &pem_), 43U);
    EXPECT_EQ(tlx_test::take(pem_, 43), wrapped("MAMCAQc="));

    const std::string path = ::testing::TempDir() + "asn1_pem_test.pem";
    EXPECT_EQ(writePEM_to_FILE(record.get(), encoder, "A", 1, path.c_str()), 43U);
    {
        std::ifstream file(path, std::ios::binary);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), wrapped("MAMCAQc="));
    }
    EXPECT_EQ(readPEM_from_File(&out_, decode_first, path.c_str()), 0U);
    EXPECT_EQ(value_, 7U);
    std::filesystem::remove(path);
    EXPECT_EQ(readPEM_from_File(&out_, decode_first, path.c_str()), 0x4E00002BU);
    EXPECT_EQ(writePEM_to_FILE(record.get(), encoder, "A", 1, nullptr), 0x4E00002BU);
    EXPECT_EQ(writePEM_to_FILE(record.get(), encoder, "A", 1, "/nowhere/at/all.pem"), 0xFFFFFFFFU);
}

TEST_F(PemTest, SurvivesFailingAllocations) {
    tlx_test::sweep_failing_allocations([&] {
        const std::uint32_t status = read(wrapped("MAMCAQU="));
        EXPECT_TRUE(status == 0 || status == 0x4E00002B || status == 0x4E00004F || status == 0x12345678)
            << status;
        return status == 0;
    });
    const auto record = make_string(0x30, "\x02\x01\x07");
    tlx_test::sweep_failing_allocations([&] {
        pem_ = nullptr;
        const std::uint32_t size =
            writePEM_to_Binary(record.get(), TLX_ENCODER(ASN1_STRING_to_Seq), "A", 1, &pem_);
        EXPECT_EQ(size, pem_ == nullptr ? 0xFFFFFFFFU : 43U);
        tlx_free(pem_);
        return size == 43;
    });
}

}  // namespace
