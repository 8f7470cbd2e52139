#include "folder.hpp"

#include <filesystem>

#include "support/shell.hpp"

namespace command_test {

namespace fs = std::filesystem;

InFolder::InFolder() {
    const fs::path folder = tlx_test::utf8_path(folder_.path(""));
    for (const char *data : {"tests/data/chains", "tests/data/x509", "tests/data/keys"})
        for (const fs::directory_entry &file : fs::directory_iterator(in_source(data)))
            if (file.is_regular_file()) fs::copy_file(file.path(), folder / file.path().filename());
    fs::copy_file(in_source("tests/command/issue.sh"), folder / "issue.sh");
    fs::current_path(folder);
}

InFolder::~InFolder() {
    fs::current_path(in_source(""));
}

std::ostream &operator<<(std::ostream &out, const Result &run) {
    return out << testing::PrintToString(run.arguments) << "\nexit status " << run.status << "\n"
               << run.output.substr(0, 4000) << "\nerrors: " << run.errors;
}

Result run(const Arguments &arguments) {
    Arguments all = {TLX_COMMAND};
    all.insert(all.end(), arguments.begin(), arguments.end());
    Result result{arguments, -1, "", ""};
    result.status = tlx_test::run_program(all, "out.txt", "err.txt");
    result.output = read_file("out.txt");
    result.errors = read_file("err.txt");
    return result;
}

std::string read_file(const std::string &path) {
    const fs::path file = tlx_test::utf8_path(path);
    EXPECT_TRUE(fs::exists(file)) << path;
    return tlx_test::read_text(file);
}

std::string in_source(const std::string &name) {
    return std::string(TLX_SOURCE_DIR) + "/" + name;
}

}  // namespace command_test
