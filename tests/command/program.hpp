// Runs the command as a program.
#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace command_test {

using Json = nlohmann::json;
using Arguments = std::vector<std::string>;

/// What a run of the command gave.
struct Result {
    int status = -1;  ///< exit status; -1 when it did not end by itself
    std::string output;
    std::string errors;

    /// The output as JSON; fails the test when it is none.
    [[nodiscard]] Json json() const;
    /// Whether output or errors hold a text.
    [[nodiscard]] bool says(const std::string &text) const;
    [[nodiscard]] bool complains(const std::string &text) const;
};

std::ostream &operator<<(std::ostream &out, const Result &run);

[[nodiscard]] Result run(const Arguments &arguments);

/// What is seen on a terminal, its output and errors together. Not on Windows.
[[nodiscard]] Result run_on_terminal(const Arguments &arguments, const std::string &environment = "");

/// A file of tests/data/chains.
[[nodiscard]] std::string chain(const std::string &name);
/// A file of the repository.
[[nodiscard]] std::string in_source(const std::string &name);

/// A file in a folder that is removed at the end.
[[nodiscard]] std::string scratch(const std::string &name);
/// Writes one; returns its path.
std::string write_file(const std::string &name, const std::string &octets);
[[nodiscard]] std::string read_file(const std::string &path);

/// Octets of hexadecimal digits, among which spaces may stand.
[[nodiscard]] std::string octets(const std::string &digits);
/// An element of DER.
[[nodiscard]] std::string element(int tag, const std::string &contents);
/// The DER of a PEM file, and the PEM of DER.
[[nodiscard]] std::string der_of(const std::string &path);
[[nodiscard]] std::string pem_of(const std::string &label, const std::string &der);

}  // namespace command_test
