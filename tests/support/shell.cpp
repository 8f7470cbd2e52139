#include "support/shell.hpp"

#include <cstdio>
#include <filesystem>

#ifdef _WIN32
#include <windows.h>

#include <fstream>
#include <iterator>
#else
#include <sys/wait.h>

#include <cstdlib>
#endif

namespace tlx_test {

#ifdef _WIN32

namespace {

std::string host_path(std::string text) {
    for (std::size_t at = text.find("Z:/"); at != std::string::npos; at = text.find("Z:/", at))
        text.erase(at, 2);
    return text;
}

std::string read_file(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

std::string make_temporary_folder() {
    static unsigned made = 0;
    const std::string folder = "Z:" TLX_TEST_FOLDERS "/" + std::to_string(GetCurrentProcessId()) + "-" +
                               std::to_string(GetTickCount64()) + "-" + std::to_string(++made);
    return std::filesystem::create_directories(folder) ? folder : "";
}

// Wine starts the programs of its host but gives no handle to wait for them: the end is told by a file.
int run_shell(const std::string &folder, const std::string &command, std::string &output) {
    constexpr DWORD kPause = 5;
    constexpr DWORD kLongest = 120'000;
    const std::string exchange = make_temporary_folder();
    std::ofstream(exchange + "/command", std::ios::binary) << "cd '" << host_path(folder) << "' && (\n"
                                                           << host_path(command) << "\n)\n";
    std::string line =
        "sh -c \"cd '" + host_path(exchange) + "'; sh command >output 2>&1; echo $? >ending; mv ending end\"";
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    int status = -1;
    if (CreateProcessA("Z:\\bin\\sh", line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                       &process)) {
        std::string end;
        for (DWORD waited = 0; end.empty() && waited < kLongest; waited += kPause) {
            Sleep(kPause);
            end = read_file(exchange + "/end");
        }
        if (!end.empty()) status = std::stoi(end);
    }
    output = read_file(exchange + "/output");
    std::error_code ignored;
    std::filesystem::remove_all(exchange, ignored);
    return status;
}

#else

std::string make_temporary_folder() {
    std::string name = (std::filesystem::temp_directory_path() / "tlxpki-XXXXXX").string();
    return mkdtemp(name.data()) == nullptr ? "" : name;
}

int run_shell(const std::string &folder, const std::string &command, std::string &output) {
    std::FILE *pipe = popen(("cd '" + folder + "' && (" + command + ") 2>&1").c_str(), "r");
    if (pipe == nullptr) return -1;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        output.push_back(static_cast<char>(c));
    const int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

#endif

}  // namespace tlx_test
