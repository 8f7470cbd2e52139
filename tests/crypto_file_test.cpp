#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <cstdio>
#include <filesystem>
#include <numeric>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/utf8_path.hpp"

namespace {

using namespace tlx_test;
using Hex = LeakFreeTest;

class File : public LeakFreeTest {
  protected:
    ~File() override { std::filesystem::remove(utf8_path(path_)); }

    /// Whether the file has these octets, and what is read ends in a zero besides.
    [[nodiscard]] bool holds(const Octets &octets) const {
        std::uint8_t *read = nullptr;
        std::uint32_t len = 99;
        if (File_to_binary(path_.c_str(), &read, &len) != 0) return false;
        const tlx::OwnedOctets<std::uint8_t> owner(read);
        return Octets(read, read + len) == octets && read[len] == 0;
    }

    const std::string path_ = ::testing::TempDir() + "tlx_" +
                              ::testing::UnitTest::GetInstance()->current_test_info()->name() +
                              "_\xEA\xB0\x80.bin";  // a Korean syllable in UTF-8
};

TEST_F(File, KeepsEveryOctet) {
    // From long to short, so that a file that is not written anew shows; the lengths lie around those at
    // which the buffer grows.
    for (const std::size_t size : {100'000U, 16384U, 16383U, 8192U, 8191U, 8190U, 1U, 0U}) {
        Octets octets(size);
        std::iota(octets.begin(), octets.end(), std::uint8_t{0});
        ASSERT_EQ(binary_to_File(path_.c_str(), octets.data(), length(octets)), 0U);
        EXPECT_TRUE(holds(octets)) << size;
    }
}

TEST_F(File, RefusesWhatItCannotOpen) {
    std::uint8_t octet = 7;
    const std::string missing = path_ + "/no/such/file";
    const std::string directory = ::testing::TempDir();
    for (const char *path : {missing.c_str(), directory.c_str(), "", static_cast<const char *>(nullptr)}) {
        std::uint8_t *read = &octet;
        std::uint32_t len = 99;
        EXPECT_EQ(File_to_binary(path, &read, &len), 1U);
        EXPECT_EQ(read, &octet) << "nothing is stored";
        EXPECT_EQ(len, 99U);
        EXPECT_EQ(binary_to_File(path, &octet, 1), 1U);
    }
    EXPECT_EQ(binary_to_File(path_.c_str(), nullptr, 1), 1U);
    EXPECT_EQ(binary_to_private_File(path_.c_str(), nullptr, 1), 1U);
    EXPECT_EQ(binary_to_private_File("/nowhere/at/all", &octet, 1), 1U);
}

TEST_F(File, OfASecretIsItsOwnersAlone) {
    using std::filesystem::perms;
    const auto path = utf8_path(path_);
    const Octets longer(100, 0x5A);
    const Octets octets = {1, 0, 2};
    for (const perms before : {perms::none, static_cast<perms>(0644), static_cast<perms>(0620)}) {
        SCOPED_TRACE(static_cast<int>(before));
        std::filesystem::remove(path);
        if (before != perms::none) {  // a file is there already
            ASSERT_EQ(binary_to_File(path_.c_str(), longer.data(), length(longer)), 0U);
            std::filesystem::permissions(path, before);
        }
        ASSERT_EQ(binary_to_private_File(path_.c_str(), octets.data(), length(octets)), 0U);
        EXPECT_TRUE(holds(octets));
#ifndef _WIN32
        EXPECT_EQ(std::filesystem::status(path).permissions(), perms::owner_read | perms::owner_write);
#endif
    }
#ifndef _WIN32
    // A pipe stays as it is.
    std::filesystem::remove(path);
    ASSERT_EQ(mkfifo(path_.c_str(), 0622), 0);
    const int reader = open(path_.c_str(), O_RDONLY | O_NONBLOCK);
    const perms before = std::filesystem::status(path).permissions();
    EXPECT_EQ(binary_to_private_File(path_.c_str(), octets.data(), 1), 0U);
    EXPECT_EQ(std::filesystem::status(path).permissions(), before);
    std::uint8_t read = 0;
    EXPECT_EQ(::read(reader, &read, 1), 1);
    EXPECT_EQ(read, octets[0]);
    close(reader);
#endif
}

TEST_F(File, MeetsEveryFailingAllocation) {
    const Octets octets(20'000, 0x5A);
    ASSERT_EQ(binary_to_File(path_.c_str(), octets.data(), length(octets)), 0U);
#ifdef _WIN32
    constexpr unsigned kForThePath = 1;
#else
    constexpr unsigned kForThePath = 0;
#endif
    const unsigned failures = sweep_failing_allocations([&] { return holds(octets); });
    EXPECT_EQ(failures, kForThePath + 3U) << "8, 16 and 32 KB";
}

TEST_F(Hex, ConvertsBothWaysAndPrints) {
    const Octets octets = {0x00, 0x09, 0xAF, 0xF0, 0xFF};
    EXPECT_EQ(digits_of(octets), "0009AFF0FF");
    EXPECT_EQ(digits_of(Octets{}), "");
    EXPECT_EQ(binary_to_hex(nullptr, 1), nullptr);
    std::uint8_t *back = nullptr;
    std::uint32_t len = 99;
    for (const std::string bad : {"123", "0G", "G0", "/0", ":0", "@0", "`0", "g0", "1 "}) {
        EXPECT_EQ(hex_to_binary(bad.c_str(), static_cast<std::uint32_t>(bad.size()), &back, &len), 1U) << bad;
        EXPECT_TRUE(back == nullptr && len == 99) << bad;
    }
    ASSERT_EQ(hex_to_binary("0009aFF0fF--", 10, &back, &len), 0U) << "only the digits said are read";
    EXPECT_EQ(Octets(back, back + len), octets);
    tlx_free(back);
    ::testing::internal::CaptureStdout();
    print_hex(octets.data(), 3);
    print_hex(nullptr, 3);
    static_cast<void>(std::fflush(stdout));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "0009AF");
}

}  // namespace
