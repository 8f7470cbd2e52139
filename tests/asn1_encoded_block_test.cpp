

#include "support/allocation.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

/// "line 2, 27+54: CERTIFICATE 0: 3000", a text for each block of an input, or the status.
std::string blocks_of(const Row &row) {
    // A block of exactly that size, which a sanitizer guards.
    const std::vector<std::uint8_t> input(row[1].begin(), row[1].end());
    ENCODED_BLOCKS *blocks = nullptr;
    const std::uint32_t status =
        readENCODED_BLOCKS_from_Buffer(input.data(), static_cast<std::uint32_t>(input.size()), &blocks);
    EXPECT_EQ(status == 0, blocks != nullptr);
    if (status != 0) return status_text(status);
    std::ostringstream text;
    text << std::uppercase;
    for (std::uint32_t i = 0; i < get_ENCODED_BLOCKS_count(blocks); ++i) {
        const ENCODED_BLOCK *block = get_ENCODED_BLOCKS_child(blocks, i);
        std::string contents = hex_of(block->contents, block->contents_len);
        std::erase(contents, ' ');
        text << (i > 0 ? "; " : "") << std::dec << "line " << block->line << ", " << block->offset << "+"
             << block->length << ": " << block->label << " " << std::hex << block->status << ":"
             << (contents.empty() ? "" : " ") << contents;
    }
    free_ENCODED_BLOCKS(blocks);
    return text.str();
}

TEST(EncodedBlocks, Rows) {
    expect_rows("encoded_block.txt", {{"blocks", {blocks_of, {"4E01003C"}}}});
    ENCODED_BLOCKS *blocks = nullptr;
    EXPECT_EQ(readENCODED_BLOCKS_from_Buffer(nullptr, 1, &blocks), 0x4E010049U);
    EXPECT_EQ(readENCODED_BLOCKS_from_File(nullptr, &blocks), 0x4E010049U);
    EXPECT_EQ(readENCODED_BLOCKS_from_File("no such folder/file", &blocks), 0x4E01002BU);
    EXPECT_EQ(get_ENCODED_BLOCKS_child(blocks, 0), nullptr);
    ASSERT_EQ(readENCODED_BLOCKS_from_File(TLX_TEST_DATA "/chains/root.pem", &blocks), 0U);
    EXPECT_EQ(get_ENCODED_BLOCKS_count(blocks), 1U);
    free_ENCODED_BLOCKS(blocks);
}

TEST(EncodedBlocks, ManyBrokenOnesTakeLinearTime) {
    const LeakCheck leaks;
    std::string input;
    for (int i = 0; i < 200'000; ++i)
        input += "-----BEGIN A-----\n";
    ENCODED_BLOCKS *blocks = nullptr;
    ASSERT_EQ(readENCODED_BLOCKS_from_Buffer(reinterpret_cast<const std::uint8_t *>(input.data()),
                                             static_cast<std::uint32_t>(input.size()), &blocks),
              0U);
    ASSERT_EQ(get_ENCODED_BLOCKS_count(blocks), 200'000U);
    EXPECT_EQ(get_ENCODED_BLOCKS_child(blocks, 199'999)->line, 200'000U);
    free_ENCODED_BLOCKS(blocks);
}

}  // namespace
