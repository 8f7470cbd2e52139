// Cases as data. A line of tests/data/rows/<file>.txt is an operation, its arguments and what must come out,
// with " | " between them; \n, \r, \s (a space) and \xNN stand for octets, and "#" begins a comment line.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace tlx_test {

struct Row {
    std::string place;  ///< "file:line"
    std::vector<std::string> fields;

    /// A field without its escapes; empty when the line ends before it.
    const std::string &operator[](std::size_t i) const;
    /// A field as a number: decimal, hexadecimal after "0x", a digest, or a name in the registry.
    [[nodiscard]] std::uint32_t number(std::size_t i) const;
    /// The arguments.
    [[nodiscard]] std::size_t count() const { return fields.size() - 2; }
};

std::vector<Row> read_rows(const std::string &file);

struct Operation {
    std::function<std::string(const Row &)> run;
    /// What may come out instead when an allocation fails. Without any, no allocation is made to fail.
    std::set<std::string> without_memory = {};
};

/// Runs every line of a file and compares the result with its last field, then does so with each allocation
/// failing in turn. Nothing leaks, and no operation is without a line.
void expect_rows(const std::string &file, const std::map<std::string, Operation> &operations);

using Numbers = std::vector<std::uint32_t>;
using Steps = std::map<std::string, std::function<std::uint32_t(const Numbers &)>>;

/// Does "name number number; name" step by step, with zeros for the numbers that are left out, and returns
/// what each step returned: "0 20 49120049", a status in hexadecimal.
std::string run_steps(const std::string &text, const Steps &known);

/// A text without the spaces around it.
std::string trimmed(const std::string &text);

/// "00000000"
std::string status_text(std::uint32_t status);

}  // namespace tlx_test
