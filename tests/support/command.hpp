// Runs peer programs (openssl, certtool) in a temporary folder.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/shell.hpp"
#include "support/utf8_path.hpp"

namespace tlx_test {

/// A folder that the end of the test removes with everything in it.
class CommandFolder {
  public:
    CommandFolder() : folder_(make_temporary_folder()) { EXPECT_NE(folder_, "") << "no temporary folder"; }
    ~CommandFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    CommandFolder(const CommandFolder &) = delete;
    CommandFolder &operator=(const CommandFolder &) = delete;

    [[nodiscard]] std::string path(const std::string &name) const {
        const std::u8string path = (folder_ / utf8_path(name)).generic_u8string();
        return {path.begin(), path.end()};
    }

    [[nodiscard]] std::string read(const std::string &name) const {
        return read_text(folder_ / utf8_path(name));
    }

    void write(const std::string &name, const std::string &octets) const {
        std::ofstream(folder_ / utf8_path(name), std::ios::binary) << octets;
    }

    /// The output of a shell command line on either stream. A status other than 0 fails the test.
    std::string run(const std::string &command) const {
        std::string output;
        const int status = run_shell(folder_.generic_string(), command, output);
        EXPECT_EQ(status, 0) << command << "\n" << output;
        return output;
    }

    /// Whether a command line ends with status 0.
    [[nodiscard]] bool succeeds(const std::string &command) const {
        std::string output;
        return run_shell(folder_.generic_string(), command, output) == 0;
    }

  private:
    std::filesystem::path folder_;
};

}  // namespace tlx_test
