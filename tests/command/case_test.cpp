// Makes a test of each case in cases/, and runs it. README.md describes how they are written.
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>

#include "folder.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

namespace command_test {

namespace {

/// A line of a case, with the lines of text below it.
struct Step {
    std::string verb;
    std::string text;
    int line;
};

/// A case: its steps happen once for each row of its table, or once when it has none.
struct Case {
    std::string file;
    std::string name;
    int line;
    std::vector<Step> steps;
    std::vector<Step> rows;
};

/// "VERB TEXT", where the text is what follows one space.
Step step_of(const std::string &line, int number) {
    const std::size_t space = line.find(' ');
    return {line.substr(0, space), space == std::string::npos ? "" : line.substr(space + 1), number};
}

/// The cases of a file.
std::vector<Case> read_cases(const std::string &path) {
    std::ifstream file(tlx_test::utf8_path(path), std::ios::binary);
    std::vector<Case> cases;
    bool in_table = false;
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        const std::size_t first = line.find_first_not_of(' ');
        if (first == std::string::npos || line[first] == '#') continue;
        const Step step = step_of(line, number);
        if (step.verb == "case" || cases.empty()) {
            cases.push_back({path, step.text, number, {}, {}});
            in_table = false;
            continue;
        }
        Case &current = cases.back();
        if (step.verb == "|" && !current.steps.empty()) {
            std::string &text = current.steps.back().text;
            text += (text.ends_with('\n') ? "" : " ") + step.text + "\n";
        } else if (in_table) {
            current.rows.push_back({"row", line, number});
        } else if (step.verb == "with") {
            in_table = true;
        } else {
            current.steps.push_back(step);
        }
    }
    return cases;
}

std::string replaced(std::string text, const std::string &from, const std::string &to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

/// A text with $1, $2, ... replaced by the columns of a row.
std::string with_columns(std::string text, const Step &row) {
    std::size_t begin = 0;
    for (int column = 1; begin <= row.text.size(); ++column) {
        const std::size_t end = std::min(row.text.find(" |", begin), row.text.size());
        text = replaced(text, "$" + std::to_string(column),
                        tlx_test::trimmed(row.text.substr(begin, end - begin)));
        begin = end + 2;
    }
    return text;
}

std::string unescaped(const std::string &text) {
    return replaced(replaced(replaced(text, "\\n", "\n"), "\\r", "\r"), "\\e", "\033");
}

/// Words between spaces, some of them in double quotes.
Arguments words_of(const std::string &text) {
    Arguments words;
    std::istringstream in(text);
    for (std::string word; in >> std::quoted(word);)
        words.push_back(word);
    return words;
}

/// Octets of words of hexadecimal digits; "AB*3" stands for ABABAB.
std::string octets_of(const std::string &text) {
    std::string octets;
    for (const std::string &word : words_of(text)) {
        const std::size_t star = word.find('*');
        const tlx_test::Octets hex = tlx_test::hex(word.substr(0, star));
        const std::string once(hex.begin(), hex.end());
        const int times = star == std::string::npos ? 1 : std::stoi(word.substr(star + 1));
        for (int i = 0; i < times; ++i)
            octets += once;
    }
    return octets;
}

/// The value at a path such as /0/path/*/state, where "*" makes a list of what stands in each item;
/// discarded when there is none.
Json value_at(const Json &value, const std::string &path) {
    if (path.empty()) return value;
    const std::size_t end = std::min(path.find('/', 1), path.size());
    const std::string key = path.substr(1, end - 1);
    const std::string rest = path.substr(end);
    if (key == "*") {
        Json values = Json::array();
        for (const Json &item : value)
            values.push_back(value_at(item, rest));
        return values;
    }
    const Json::json_pointer pointer("/" + key);
    return value.contains(pointer) ? value_at(value[pointer], rest) : Json(Json::value_t::discarded);
}

bool finds(const Json &document, const Json &wanted) {
    if (document == wanted) return true;
    const auto within = [&wanted](const Json &item) { return finds(item, wanted); };
    return document.is_structured() && std::any_of(document.begin(), document.end(), within);
}

class CaseTest : public InFolder {
  public:
    explicit CaseTest(Case run) : case_(std::move(run)) {}

  private:
    void TestBody() override {
        if (case_.rows.empty()) case_.rows.push_back({});
        for (const Step &row : case_.rows) {
            const testing::ScopedTrace trace(case_.file.c_str(), row.line, row.text);
            runs_.clear();
            results_.clear();
            for (const Step &step : case_.steps)
                take(step, row.text.empty() ? step.text : with_columns(step.text, row));
            EXPECT_TRUE(runs_.empty() && !results_.empty()) << "a run has no exit status";
        }
    }

    void take(const Step &step, const std::string &text) {
        const std::size_t name_end = std::min(text.find(' '), text.size());
        const std::string name = text.substr(0, name_end);
        const std::string rest = text.substr(std::min(name_end + 1, text.size()));
        if (step.verb == "file") {
            folder_.write(name, unescaped(rest));
        } else if (step.verb == "hex") {
            folder_.write(name, octets_of(rest));
        } else if (step.verb == "copy") {
            folder_.write(rest, read_file(name));
        } else if (step.verb == "sh") {
            (void)folder_.run(text);
        } else if (step.verb == "run") {
            runs_.push_back(words_of(text));
        } else if (step.verb == "exit") {
            run_all(step, text);
        } else if (results_.empty() || !runs_.empty()) {
            ADD_FAILURE_AT(case_.file.c_str(), step.line) << "nothing has run yet";
        } else {
            for (const Result &result : results_)
                expect(holds(step.verb, name, rest, result), step, text, result);
        }
    }

    void run_all(const Step &step, const std::string &status) {
        results_.clear();
        for (const Arguments &arguments : runs_) {
            results_.push_back(run(arguments));
            expect(std::to_string(results_.back().status) == status, step, status, results_.back());
        }
        runs_.clear();
    }

    void expect(bool holds, const Step &step, const std::string &text, const Result &result) const {
        if (holds) return;
        ADD_FAILURE_AT(case_.file.c_str(), step.line) << step.verb << " " << text << "\n" << result;
    }

    static bool holds(const std::string &verb, const std::string &how, const std::string &text,
                      const Result &result) {
        if (verb == "out" || verb == "err") {
            const std::string &printed = verb == "out" ? result.output : result.errors;
            const std::string wanted = unescaped(text);
            if (how == "=") return printed == wanted;
            return (how == "~" || how == "!") && (printed.find(wanted) != std::string::npos) == (how == "~");
        }
        const Json document = Json::parse(result.output, nullptr, false);
        if (document.is_discarded()) return false;
        if (verb == "finds") return finds(document, Json::parse(how + " " + text));
        if (verb != "json") return false;
        const Json value = value_at(document, how);
        return text == "absent" ? value.is_discarded() : value == Json::parse(text, nullptr, false);
    }

    Case case_;
    std::vector<Arguments> runs_;  ///< those that the next exit status is of
    std::vector<Result> results_;  ///< what they gave
};

/// Makes a test of a case: FILE.NAME.
void add_test(const Case &one) {
    const std::string suite = std::filesystem::path(one.file).stem().string();
    testing::RegisterTest(suite.c_str(), one.name.c_str(), nullptr, nullptr, one.file.c_str(), one.line,
                          [one]() -> testing::Test * { return new CaseTest(one); });
}

}  // namespace

}  // namespace command_test

int main(int argc, char **argv) {
    const std::string folder = command_test::in_source("tests/command/cases");
    for (const auto &file : std::filesystem::directory_iterator(folder)) {
        for (const command_test::Case &one : command_test::read_cases(file.path().generic_string()))
            command_test::add_test(one);
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
