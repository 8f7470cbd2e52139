#include <gtest/gtest.h>
#include <tlxpki/status.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

namespace tlx_test {
namespace {

TEST(StatusText, NamesModuleOperationReasonAndCondition) {
    const char *const kX509 = "X.509 certificates, names and keys";
    const char *const kExtensions = "X.509 extensions";
    const char *const kPkcs1 = "PKCS #1 keys and parameters, PKCS #11";
    const char *const kNull = "a required argument or member is missing";
    const char *const kEmpty = "the input is empty or missing, or a list that must not be empty is";
    const char *const kPssAndOaep = "Seq_to_RSASSA_PSS_PARAM, Seq_to_RSAES_OAEP_PARAM";
    const struct {
        std::uint32_t status;
        const char *module, *operation, *reason, *sentence;
    } cases[] = {
        {0x53100054, "certification paths", "validate_certpath", "a signature does not verify",
         "a signature does not verify with the issuer's key"},
        {0x46120106, kX509, "X509_TBS_CERT_to_Seq", "the subject is missing", "the subject is missing"},
        // From the list of records, of a single record, of a list, and with a row that says more.
        {0x46190049, kX509, "X509_VALIDITY_to_Seq", kNull, "an argument is null"},
        {0x470D002B, kExtensions, "Seq_to_GENERAL_NAMES", kEmpty, "the list is empty"},
        {0x470E002B, kExtensions, "GENERAL_NAMES_to_Seq", kEmpty, "the list is empty or an item is missing"},
        {0x4739002B, kExtensions, "Seq_to_ACCESS_DESCRIPTION", kEmpty, "there are not exactly two children"},
        {0x49160049, kPkcs1, kPssAndOaep, kNull, "an argument is null"},
        // Reasons that no operation is documented to give.
        {0x49161234, kPkcs1, kPssAndOaep, "unknown", "unknown"},
        {0x47390048, kExtensions, "Seq_to_ACCESS_DESCRIPTION",
         "an identifier, tag or choice is not the one required",
         "an identifier, tag or choice is not the one required"},
        {0x54010049, "certificate trust lists", "unknown", kNull, kNull},
        {0x00000000, "", "", "success", "success"},
        {0xFFFFFFFF, "", "", "failure of an operation that returns a length",
         "failure of an operation that returns a length"},
        {0x00000002, "", "", "the signature does not verify",
         "the signature does not verify; of a cipher: the padding is wrong, as a wrong key makes it"},
    };
    for (const auto &expected : cases) {
        STATUS_TEXT text;
        ASSERT_EQ(get_STATUS_TEXT(expected.status, &text), 0U) << std::hex << expected.status;
        EXPECT_STREQ(text.module, expected.module) << std::hex << expected.status;
        EXPECT_STREQ(text.operation, expected.operation) << std::hex << expected.status;
        EXPECT_STREQ(text.reason, expected.reason) << std::hex << expected.status;
        EXPECT_STREQ(text.sentence, expected.sentence) << std::hex << expected.status;
    }
}

TEST(StatusText, TellsModulesThatThereAreNot) {
    STATUS_TEXT text = {};
    EXPECT_EQ(get_STATUS_TEXT(0x99100054, &text), 1U);
    for (const char *part : {text.module, text.operation, text.reason, text.sentence})
        EXPECT_STREQ(part, "unknown");
    EXPECT_EQ(get_STATUS_TEXT(0x53100054, nullptr), 1U);
}

/// Those that the headers name, and those of the list of records, which the headers need not repeat.
TEST(StatusText, EveryDocumentedStatusHasARow) {
    const std::regex code("0x(4[0-9A-F]|5[0-4])(?!000000)[0-9A-F]{6}(?![0-9A-F.])");
    std::set<std::string> codes;
    const auto collect = [&](const std::filesystem::path &path) {
        std::ifstream file(path);
        const std::string contents(std::istreambuf_iterator<char>(file), {});
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
}  // namespace tlx_test
