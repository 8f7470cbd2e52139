// Peers that are programs (openssl, certtool), run in a temporary folder.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tlx_test {

/// A folder that is removed with everything in it at the end of the test.
class CommandFolder {
  public:
    CommandFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "tlxpki-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) ADD_FAILURE() << "no temporary folder";
        folder_ = name;
    }
    ~CommandFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    CommandFolder(const CommandFolder &) = delete;
    CommandFolder &operator=(const CommandFolder &) = delete;

    [[nodiscard]] std::string path(const std::string &name) const { return (folder_ / name).string(); }

    [[nodiscard]] std::string read(const std::string &name) const {
        std::ifstream file(folder_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    void write(const std::string &name, const std::string &octets) const {
        std::ofstream(folder_ / name, std::ios::binary) << octets;
    }

    /// What a shell command line prints to either stream. It fails the test when it ends with a status other
    /// than 0.
    std::string run(const std::string &command) const {
        std::string output;
        const int status = execute(command, output);
        EXPECT_EQ(status, 0) << command << "\n" << output;
        return output;
    }

    /// Whether a command line ends with status 0.
    [[nodiscard]] bool succeeds(const std::string &command) const {
        std::string output;
        return execute(command, output) == 0;
    }

  private:
    int execute(const std::string &command, std::string &output) const {
        std::FILE *pipe = popen(("cd '" + folder_.string() + "' && (" + command + ") 2>&1").c_str(), "r");
        if (pipe == nullptr) return -1;
        for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
            output.push_back(static_cast<char>(c));
        return pclose(pipe);
    }

    std::filesystem::path folder_;
};

}  // namespace tlx_test
