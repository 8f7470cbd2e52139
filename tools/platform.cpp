#include "platform.hpp"

#include <algorithm>
#include <atomic>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#endif

namespace tool {

namespace {

/// The file that a signal deletes; empty for none. Handlers take no locks and allocate nothing.
constexpr std::size_t kMostPath = 4096;
std::filesystem::path::value_type g_unfinished[kMostPath] = {};
std::atomic<bool> g_has_unfinished = false;

}  // namespace

#ifdef _WIN32

bool is_terminal(Stream stream) {
    return _isatty(stream == Stream::kOutput ? 1 : 2) != 0;
}

void prepare_streams() {
    _setmode(0, _O_BINARY);
    _setmode(1, _O_BINARY);
    _setmode(2, _O_BINARY);
    SetConsoleOutputCP(CP_UTF8);
    for (const DWORD id : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
        const HANDLE handle = GetStdHandle(id);
        DWORD mode = 0;
        if (GetConsoleMode(handle, &mode) != 0) {
            SetConsoleMode(handle, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
        }
    }
}

std::FILE *open_to_read(const std::filesystem::path &path) {
    return _wfopen(path.c_str(), L"rb");
}

std::FILE *open_to_append(const std::filesystem::path &path) {
    return _wfopen(path.c_str(), L"ab");
}

std::FILE *open_new(const std::filesystem::path &path) {
    const HANDLE handle = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                      nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return nullptr;
    const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY);
    return _fdopen(descriptor, "wb");
}

namespace {

BOOL WINAPI delete_unfinished(DWORD /*event*/) {
    if (g_has_unfinished) DeleteFileW(g_unfinished);
    return FALSE;
}

void handle_signals() {
    SetConsoleCtrlHandler(delete_unfinished, TRUE);
}

}  // namespace

std::vector<std::string> utf8_arguments(int argc, NativeCharacter **argv) {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        const int size = WideCharToMultiByte(CP_UTF8, 0, argv[i], -1, nullptr, 0, nullptr, nullptr);
        std::string argument(static_cast<std::size_t>(size > 0 ? size : 1), '\0');
        WideCharToMultiByte(CP_UTF8, 0, argv[i], -1, argument.data(), size, nullptr, nullptr);
        argument.pop_back();
        arguments.push_back(argument);
    }
    return arguments;
}

#else

bool is_terminal(Stream stream) {
    return isatty(stream == Stream::kOutput ? STDOUT_FILENO : STDERR_FILENO) != 0;
}

void prepare_streams() {}

std::FILE *open_to_read(const std::filesystem::path &path) {
    return std::fopen(path.c_str(), "rb");
}

std::FILE *open_to_append(const std::filesystem::path &path) {
    return std::fopen(path.c_str(), "ab");
}

std::FILE *open_new(const std::filesystem::path &path) {
    return std::fopen(path.c_str(), "wbx");
}

namespace {

void delete_unfinished(int signal) {
    if (g_has_unfinished) (void)unlink(g_unfinished);
    (void)raise(signal);
}

/// A signal that is ignored stays so; one that is handled ends the program as it would have done.
void handle_signals() {
    for (const int signal : {SIGHUP, SIGINT, SIGPIPE, SIGTERM}) {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
        action.sa_handler = delete_unfinished;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        (void)sigaction(signal, &action, nullptr);
    }
}

}  // namespace

std::vector<std::string> utf8_arguments(int argc, NativeCharacter **argv) {
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

#endif

void delete_when_interrupted(const std::filesystem::path &path) {
    g_has_unfinished = false;
    const auto &text = path.native();
    if (text.empty() || text.size() >= kMostPath) return;
    *std::copy(text.begin(), text.end(), g_unfinished) = 0;
    g_has_unfinished = true;
    static const bool kHandles = (handle_signals(), true);
    (void)kHandles;
}

}  // namespace tool
