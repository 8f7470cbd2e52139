// PEM: lines around Base64, bodies, structures in text and files.
#include <gtest/gtest.h>
#include <tlxpki/asn1.h>
#include <tlxpki/pem.h>

#include <vector>

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

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

/// The first INTEGER in the structure of a body, or the status.
std::string read(const std::string &body) {
    std::uint32_t value = 0;
    void *out = &value;
    const std::string pem = wrapped(body);
    const std::uint32_t status =
        readPEM_from_Binary(&out, decode_first, pem.data(), static_cast<std::uint32_t>(pem.size()));
    return status == 0 ? std::to_string(value) : status_text(status);
}

std::string write(const Row &row) {
    char *pem = nullptr;
    const std::uint32_t size = writePEM_to_Binary(
        string_of(static_cast<std::int32_t>(row.number(1)), row[2]).get(), kEncoder, "A", 1, &pem);
    return pem != nullptr ? take(pem, size) : status_text(size);
}

TEST(Pem, Rows) {
    expect_rows(
        "pem.txt",
        {{"decode", {[](const Row &row) { return decode(row[1]); }, {"(null)"}}},
         {"structure", {[](const Row &row) { return read(row[1]); }, {"4E00002B", "4E00004F", "12345678"}}},
         {"write", {write, {"FFFFFFFF"}}}});
    for (std::size_t size = 0; size < 40; ++size)
        EXPECT_EQ(decode(wrapped("Zm9vYmFy").substr(0, size)), size > 27 ? "foobar" : "(null)")
            << "cut at " << size;
}

TEST(Pem, PutsTheLinesAround) {
    const LeakCheck leaks;
    char *pem = nullptr;
    ASSERT_EQ(base64ToPEM("Zm9vYmFy", 8, "X TEST", 6, &pem), 8U + 2 * 6 + 33);
    EXPECT_EQ(take(pem, 54),
              std::string("-----BEGIN X TEST-----\nZm9vYmFy\n-----END X TEST-----\n", 53) + '\0');
    ASSERT_EQ(base64ToPEM("", 0, nullptr, 0, &pem), 33U);
    EXPECT_EQ(take(pem, 33), "-----BEGIN -----\n\n-----END -----\n");
    const std::uint8_t zeros[49]{};
    ASSERT_EQ(encode_PEM(zeros, 49, "A", 1, &pem, 1), 69U + 2 + 33);
    EXPECT_EQ(take(pem, 104), wrapped(std::string(64, 'A') + "\nAA=="));
}

TEST(Pem, WritesFiles) {
    const LeakCheck leaks;
    const String record = string_of(0x30, "\x02\x01\x07");
    const CommandFolder folder;
    const std::string path = folder.path("file");
    const std::string nowhere = folder.path("no such folder/file");
    std::uint32_t value = 0;
    void *out = &value;
    EXPECT_EQ(writePEM_to_FILE(record.get(), kEncoder, "A", 1, path.c_str()), 43U);
    EXPECT_EQ(folder.read("file"), wrapped("MAMCAQc="));
    EXPECT_EQ(readPEM_from_File(&out, decode_first, path.c_str()), 0U);
    EXPECT_EQ(value, 7U);
    EXPECT_EQ(readPEM_from_File(&out, decode_first, nowhere.c_str()), 0x4E00002BU);
    EXPECT_EQ(writePEM_to_FILE(record.get(), kEncoder, "A", 1, nowhere.c_str()), 0xFFFFFFFFU);
    EXPECT_EQ(writePEM_to_FILE(record.get(), nullptr, "A", 1, path.c_str()), 0xFFFFFFFFU);
}

TEST(Pem, RefusesMissingArguments) {
    const LeakCheck leaks;
    char *pem = nullptr;
    std::uint8_t *der = nullptr;
    std::uint32_t value = 0;
    void *out = &value;
    const String record = string_of(0x30, "\x02\x01\x07");
    const std::string text = wrapped("MAMCAQU=");
    const std::pair<std::uint32_t, std::uint32_t> calls[] = {
        {base64ToPEM("Zm9v", -1, "A", 1, &pem), 0},
        {base64ToPEM(nullptr, 4, "A", 1, &pem), 0},
        {base64ToPEM("Zm9v", 4, nullptr, 1, &pem), 0},
        {base64ToPEM("Zm9v", 4, "A", 0xFFFFFFFF, &pem), 0},  // more than 2^31 octets
        {decode_PEM(nullptr, 30, &der), 0},
        {decode_PEM(text.c_str(), -1, &der), 0},
        {readPEM_from_Binary(&out, decode_first, nullptr, 30), 0x4E00002B},
        {readPEM_from_Binary(&out, nullptr, text.c_str(), 43), 0x4E00002B},
        {readPEM_from_Binary(&out, decode_first, "-----", 0x80000000U), 0x4E00002B},
        {writePEM_to_Binary(record.get(), kEncoder, "A", 1, nullptr), 0x4E00002B},
        {writePEM_to_Binary(record.get(), nullptr, "A", 1, &pem), 0xFFFFFFFF},
        {writePEM_to_Binary(record.get(), kEncoder, nullptr, 1, &pem), 0xFFFFFFFF},
        {writePEM_to_FILE(record.get(), kEncoder, "A", 1, nullptr), 0x4E00002B},
    };
    for (const auto &[status, expected] : calls)
        EXPECT_EQ(status, expected);
    EXPECT_TRUE(pem == nullptr && der == nullptr && value == 0);
}

}  // namespace
}  // namespace tlx_test
