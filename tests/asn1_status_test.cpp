
#include <filesystem>
#include <regex>

#include "support/rows.hpp"
#include "support/x509_files.hpp"

namespace {

using namespace tlx_test;

TEST(StatusText, Rows) {
    const auto text_of = [](const Row &row) {
        STATUS_TEXT text = {};
        std::string all = std::to_string(get_STATUS_TEXT(row.number(1), &text));
        for (const char *part : {text.module, text.operation, text.reason, text.sentence})
            all += " / " + std::string(part);
        return all;
    };
    expect_rows("status.txt", {{"text", {text_of}}});
    EXPECT_EQ(get_STATUS_TEXT(0x53100054, nullptr), 1U);
}

/// Those that the headers name, and those of the list of records, which the headers need not repeat.
TEST(StatusText, EveryDocumentedStatusHasARow) {
    const std::regex code("0x(30|4[0-9A-F]|5[0-5])(?!000000)[0-9A-F]{6}(?![0-9A-F.])");
    std::set<std::string> codes;
    const auto collect = [&](const std::filesystem::path &path) {
        const std::string contents = read_text(path.string());
        for (std::sregex_iterator at(contents.begin(), contents.end(), code), end; at != end; ++at)
            codes.insert(at->str());
    };
    const std::filesystem::path source(TLX_TEST_SOURCE);
    collect(source / "src/records.inc");
    for (const auto &header : std::filesystem::directory_iterator(source / "include/tlxpki"))
        collect(header.path());
    ASSERT_GT(codes.size(), 300U);
    for (const std::string &each : codes) {
        const auto status = static_cast<std::uint32_t>(std::stoul(each, nullptr, 16));
        STATUS_TEXT text;
        ASSERT_EQ(get_STATUS_TEXT(status, &text), 0U) << each;
        EXPECT_STRNE(text.operation, "unknown") << each << " needs a row in src/status_rows.inc";
        EXPECT_STRNE(text.reason, "unknown") << each << " needs a reason in src/asn1/status.cpp";
    }
}

}  // namespace
