// Messages of CMS as the openssl program writes them, and the versions of records.
#include <gtest/gtest.h>
#include <tlxpki/cms.h>

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

TEST(CmsMessages, VersionsOfWhatIsMissing) {
    const Info info =
        read_message(der("30{06:2A864886F70D010705 A0{30{02:00 30{06:2A03} 30{06:2A03} 04:}}}"));
    EXPECT_EQ(set_CMS_versions(nullptr), 1U);
    free_CMS_DIGESTED_DATA(std::exchange(info->digestedData, nullptr));
    EXPECT_EQ(set_CMS_versions(info.get()), 1U);
}

}  // namespace
}  // namespace tlx_test
