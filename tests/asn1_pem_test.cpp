// PEM: lines around Base64, bodies, structures in text and files.

#include "support/allocation.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

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

using Pem = LeakFreeTest;
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

std::string lines_around(const Row &row) {
    char *pem = nullptr;
    const char *label = row[2].empty() ? nullptr : row[2].data();
    const std::uint32_t size = base64ToPEM(row[1].data(), static_cast<std::int32_t>(row[1].size()), label,
                                           static_cast<std::uint32_t>(row[2].size()), &pem);
    return take(pem, size + 1);  // with the end of the text
}

std::string encode(const Row &row) {
    char *pem = nullptr;
    const std::uint32_t size = encode_PEM(reinterpret_cast<const std::uint8_t *>(row[1].data()),
                                          static_cast<std::uint32_t>(row[1].size()), "A", 1, &pem, 1);
    return take(pem, size);
}

TEST_F(Pem, Rows) {
    expect_rows(
        "pem.txt",
        {{"decode", {[](const Row &row) { return decode(row[1]); }, {"(null)"}}},
         {"structure", {[](const Row &row) { return read(row[1]); }, {"4E00002B", "4E00004F", "12345678"}}},
         {"write", {write, {"FFFFFFFF"}}},
         {"lines", {lines_around, {"(null)"}}},
         {"encode", {encode, {"(null)"}}}});
    for (std::size_t size = 0; size < 40; ++size)
        EXPECT_EQ(decode(wrapped("Zm9vYmFy").substr(0, size)), size > 27 ? "foobar" : "(null)")
            << "cut at " << size;
}

TEST_F(Pem, RefusesMissingArgumentsAndFiles) {
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
        {writePEM_to_FILE(record.get(), nullptr, "A", 1, "unused"), 0xFFFFFFFF},
        {writePEM_to_FILE(record.get(), kEncoder, "A", 1, "no such folder/file"), 0xFFFFFFFF},
        {readPEM_from_File(&out, decode_first, "no such folder/file"), 0x4E00002B},
    };
    for (const auto &[status, expected] : calls)
        EXPECT_EQ(status, expected);
    EXPECT_TRUE(pem == nullptr && der == nullptr && value == 0);
}

}  // namespace
