// Runs the command as a program, in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/command.hpp"

namespace command_test {

using Json = nlohmann::json;
using Arguments = std::vector<std::string>;

/// What a run of the command gave.
struct Result {
    Arguments arguments;
    int status = -1;  ///< exit status; -1 when it did not end by itself
    std::string output;
    std::string errors;
};

std::ostream &operator<<(std::ostream &out, const Result &run);

/// A test in a temporary folder, which is the current one and holds copies of the chains, certificates and
/// keys of tests/data.
class InFolder : public testing::Test {
  protected:
    InFolder();
    ~InFolder() override;
    InFolder(const InFolder &) = delete;
    InFolder &operator=(const InFolder &) = delete;

    tlx_test::CommandFolder folder_;
};

/// Runs the command in the current folder.
[[nodiscard]] Result run(const Arguments &arguments);

[[nodiscard]] std::string read_file(const std::string &path);
/// The path of a file of the repository.
[[nodiscard]] std::string in_source(const std::string &name);

}  // namespace command_test
