#include "support/shell.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "support/utf8_path.hpp"

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

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

/// Starts a program with the streams of the start-up data, if any. Fails the test when it cannot.
bool start(const std::string &line, STARTUPINFOW &startup, PROCESS_INFORMATION &process) {
    startup.cb = sizeof startup;
    const bool has_streams = (startup.dwFlags & STARTF_USESTDHANDLES) != 0;
    std::wstring text = utf8_path(line).wstring();
    const bool started = CreateProcessW(nullptr, text.data(), nullptr, nullptr, has_streams, 0, nullptr,
                                        nullptr, &startup, &process);
    EXPECT_TRUE(started) << "error " << GetLastError() << ": " << line;
    return started;
}

HANDLE open_stream(const std::string &path, DWORD access, DWORD how) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    return CreateFileW(utf8_path(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, how,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

int run_program(const std::vector<std::string> &arguments, const std::string &output,
                const std::string &errors) {
    std::string line;
    for (const std::string &argument : arguments)
        line += "\"" + argument + "\" ";
    STARTUPINFOW startup{};
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = open_stream("NUL", GENERIC_READ, OPEN_EXISTING);
    startup.hStdOutput = open_stream(output, GENERIC_WRITE, CREATE_ALWAYS);
    startup.hStdError = open_stream(errors, GENERIC_WRITE, CREATE_ALWAYS);
    PROCESS_INFORMATION process{};
    DWORD status = static_cast<DWORD>(-1);
    if (start(line, startup, process)) {
        WaitForSingleObject(process.hProcess, INFINITE);
        GetExitCodeProcess(process.hProcess, &status);
        CloseHandle(process.hProcess);
        CloseHandle(process.hThread);
    }
    for (const HANDLE stream : {startup.hStdInput, startup.hStdOutput, startup.hStdError})
        CloseHandle(stream);
    return static_cast<int>(status);
}

std::string make_temporary_folder() {
    static unsigned made = 0;
    const std::string folder = "Z:" TLX_TEST_FOLDERS "/" + std::to_string(GetCurrentProcessId()) + "-" +
                               std::to_string(GetTickCount64()) + "-" + std::to_string(++made);
    return std::filesystem::create_directories(folder) ? folder : "";
}

// Wine starts the programs of its host but gives no handle to wait for them. A file marks the end.
int run_shell(const std::string &folder, const std::string &command, std::string &output) {
    constexpr DWORD kPause = 5;
    constexpr DWORD kLongest = 120'000;
    const std::string exchange = make_temporary_folder();
    std::ofstream(exchange + "/command", std::ios::binary) << "cd '" << host_path(folder) << "' && (\n"
                                                           << host_path(command) << "\n)\n";
    const std::string line = "Z:\\bin\\sh -c \"cd '" + host_path(exchange) +
                             "'; sh command >output 2>&1; echo $? >ending; mv ending end\"";
    STARTUPINFOW startup{};
    PROCESS_INFORMATION process{};
    int status = -1;
    if (start(line, startup, process)) {
        std::string end;
        for (DWORD waited = 0; end.empty() && waited < kLongest; waited += kPause) {
            Sleep(kPause);
            end = read_text(exchange + "/end");
        }
        if (!end.empty()) status = std::stoi(end);
    }
    output = read_text(exchange + "/output");
    std::error_code ignored;
    std::filesystem::remove_all(exchange, ignored);
    return status;
}

#else

int run_program(const std::vector<std::string> &arguments, const std::string &output,
                const std::string &errors) {
    constexpr int kCreate = O_WRONLY | O_CREAT | O_TRUNC;
    constexpr mode_t kMode = 0600;
    posix_spawn_file_actions_t streams;
    posix_spawn_file_actions_init(&streams);
    posix_spawn_file_actions_addopen(&streams, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&streams, STDOUT_FILENO, output.c_str(), kCreate, kMode);
    posix_spawn_file_actions_addopen(&streams, STDERR_FILENO, errors.c_str(), kCreate, kMode);
    std::vector<char *> texts;
    for (const std::string &argument : arguments)
        texts.push_back(const_cast<char *>(argument.c_str()));
    texts.push_back(nullptr);
    pid_t process = 0;
    const int error = posix_spawn(&process, texts[0], &streams, nullptr, texts.data(), environ);
    posix_spawn_file_actions_destroy(&streams);
    EXPECT_EQ(error, 0) << "cannot be started: " << arguments[0];
    int status = 0;
    if (error != 0 || waitpid(process, &status, 0) != process) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

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
