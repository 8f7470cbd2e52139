#include "platform.hpp"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace tool {

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

std::vector<std::string> utf8_arguments(int argc, NativeCharacter **argv) {
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

#endif

}  // namespace tool
