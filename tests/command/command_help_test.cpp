// The man page, the completion and the README say what the command does.
#include <filesystem>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

#include "program.hpp"
#include "support/command.hpp"

namespace command_test {
namespace {

using Options = std::set<std::string>;

Options options_in(const std::string &text) {
    const std::regex option("--[a-z][a-z0-9-]*");
    Options options;
    for (std::sregex_iterator at(text.begin(), text.end(), option), end; at != end; ++at)
        options.insert(at->str());
    return options;
}

/// The text between two others.
std::string between(const std::string &text, const std::string &first, const std::string &last) {
    const std::size_t begin = text.find(first);
    EXPECT_NE(begin, std::string::npos) << first;
    const std::size_t start = begin + first.size();
    return text.substr(start, text.find(last, start) - start);
}

TEST(CommandHelp, ManPageAndCompletionNameEveryOption) {
    std::string page = read_file(in_source("docs/tlxpki.1"));
    page = std::regex_replace(page, std::regex(R"(\\-)"), "-");
    const std::string common = between(page, ".SH OPTIONS", ".SH EXIT STATUS");
    const std::string completion = read_file(in_source("tools/completion/tlxpki"));
    for (const std::string command : {"verify", "show", "asn1", "oid", "status"}) {
        const std::string help = run({command, "--help"}).output;
        const Options options = options_in(help.substr(0, help.find("Example: ")));
        EXPECT_GE(options.size(), 2U) << command;
        Options in_page = options_in(between(page, ".SS " + command, ".S") + common);
        in_page.erase("--version");
        EXPECT_EQ(in_page, options) << command;
        const std::string name = command == "oid" || command == "status" ? "oid | status" : command;
        EXPECT_EQ(options_in(between(completion, " " + name + ") options=", ";;")), options) << command;
    }
}

#ifndef _WIN32
TEST(CommandHelp, CompletionCompletes) {
    const tlx_test::CommandFolder folder;
    folder.write("file.pem", "");
    const auto completions = [&folder](const std::string &words, int current) {
        return folder.run("bash -c 'source " + in_source("tools/completion/tlxpki") +
                          "; COMP_WORDS=(tlxpki " + words + "); COMP_CWORD=" + std::to_string(current) +
                          "; _tlxpki; echo \"${COMPREPLY[*]}\"'");
    };
    EXPECT_EQ(completions("s", 1), "show status\n");
    EXPECT_EQ(completions("verify --p", 2), "--pool --policy\n");
    EXPECT_EQ(completions("verify --anchor fi", 3), "file.pem\n");
    EXPECT_EQ(completions("verify --at \"\"", 3), "\n");
    EXPECT_EQ(completions("oid fi", 2), "\n");
}
#endif

/// In the README, blocks of "```console" hold a line "$ tlxpki ...", run among the chains, and what it
/// prints.
TEST(CommandHelp, ReadmeShowsWhatTheCommandPrints) {
    const std::string readme = read_file(in_source("README.md"));
    const std::regex block("```console\n(\\$ tlxpki [^`]*)```");
    std::filesystem::current_path(chain(""));
    int commands = 0;
    for (std::sregex_iterator at(readme.begin(), readme.end(), block), end; at != end; ++at) {
        const std::string text = at->str(1);
        const std::size_t line_end = text.find('\n');
        std::istringstream words(text.substr(9, line_end - 9));
        const Result result = run({std::istream_iterator<std::string>(words), {}});
        EXPECT_EQ(text.substr(line_end + 1), result.output + result.errors) << text.substr(0, line_end);
        ++commands;
    }
    EXPECT_GE(commands, 6);
}

TEST(CommandHelp, ReadmeShowsTheExampleAsItIsCompiled) {
    const std::string readme = read_file(in_source("README.md"));
    const std::string example = read_file(in_source("examples/verify_chain.c"));
    EXPECT_NE(readme.find("```c\n" + example + "```\n"), std::string::npos);
}

}  // namespace
}  // namespace command_test
