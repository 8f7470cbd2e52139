#include "program.hpp"

#include <tlxpki.h>

#include <fstream>
#include <iterator>
#include <ostream>

#include "support/command.hpp"
#include "support/utf8_path.hpp"
#include "support/x509_files.hpp"

namespace command_test {

namespace {

const tlx_test::CommandFolder &folder() {
    static const tlx_test::CommandFolder folder;
    return folder;
}

/// What the POSIX shell reads as one word.
std::string shell_word(const std::string &argument) {
    std::string text = "'";
    for (const char c : argument)
        text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return text + "'";
}

Arguments with_command(const Arguments &arguments) {
    Arguments all = {TLX_COMMAND};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

}  // namespace

Json Result::json() const {
    Json parsed = Json::parse(output, nullptr, false);
    EXPECT_FALSE(parsed.is_discarded()) << *this;
    return parsed;
}

bool Result::says(const std::string &text) const {
    return output.find(text) != std::string::npos;
}
bool Result::complains(const std::string &text) const {
    return errors.find(text) != std::string::npos;
}

std::ostream &operator<<(std::ostream &out, const Result &run) {
    return out << "exit status " << run.status << "\n"
               << run.output.substr(0, 4000) << "\nerrors: " << run.errors;
}

Result run(const Arguments &arguments) {
    Result result;
    result.status = tlx_test::run_program(with_command(arguments), scratch("output"), scratch("errors"));
    result.output = read_file(scratch("output"));
    result.errors = read_file(scratch("errors"));
    return result;
}

Result run_on_terminal(const Arguments &arguments, const std::string &environment) {
    std::string command;
    for (const std::string &argument : with_command(arguments))
        command += shell_word(argument) + " ";
    const std::string line = environment + " script -qec " + shell_word(command) + " /dev/null";
    Result result;
    result.status = tlx_test::run_program({"/bin/sh", "-c", line}, scratch("output"), scratch("errors"));
    result.output = read_file(scratch("output"));
    return result;
}

std::string chain(const std::string &name) {
    return in_source("tests/data/chains/" + name);
}
std::string in_source(const std::string &name) {
    return std::string(TLX_SOURCE_DIR) + "/" + name;
}
std::string scratch(const std::string &name) {
    return folder().path(name);
}

std::string write_file(const std::string &name, const std::string &octets) {
    folder().write(name, octets);
    return scratch(name);
}

std::string read_file(const std::string &path) {
    std::ifstream file(tlx_test::utf8_path(path), std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string octets(const std::string &digits) {
    const tlx_test::Octets octets = tlx_test::hex(digits);
    return {octets.begin(), octets.end()};
}

std::string element(int tag, const std::string &contents) {
    const std::size_t size = contents.size();
    std::string header(1, static_cast<char>(tag));
    if (size >= 0x80) header.push_back(static_cast<char>(0x84));
    for (const unsigned shift : {24U, 16U, 8U, 0U}) {
        if (size >= 0x80 || shift == 0) header.push_back(static_cast<char>(size >> shift & 0xFF));
    }
    return header + contents;
}

std::string der_of(const std::string &path) {
    const tlx_test::Octets der = tlx_test::read_pem_file(path).at(0);
    return {der.begin(), der.end()};
}

std::string pem_of(const std::string &label, const std::string &der) {
    char *text = nullptr;
    const uint32_t size =
        encode_PEM(reinterpret_cast<const uint8_t *>(der.data()), static_cast<uint32_t>(der.size()),
                   label.data(), static_cast<uint32_t>(label.size()), &text, 1);
    EXPECT_GT(size, 0U) << label;
    const std::string result(text, size);
    tlx_free(text);
    return result;
}

}  // namespace command_test
