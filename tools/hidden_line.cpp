#include "hidden_line.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

#include "platform.hpp"

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>
#endif

namespace tool {

#ifdef _WIN32

std::optional<std::size_t> read_hidden_line(const std::string &prompt, std::span<char> room) {
    if (!is_terminal(Stream::kError)) return {};
    const HANDLE console =
        CreateFileW(L"CONIN$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, 0, nullptr);
    DWORD shown = 0;
    if (console == INVALID_HANDLE_VALUE || GetConsoleMode(console, &shown) == 0) return {};
    SetConsoleMode(console, shown & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
    (void)std::fputs(prompt.c_str(), stderr);
    std::array<wchar_t, 512> wide{};
    DWORD count = 0;
    ReadConsoleW(console, wide.data(), wide.size(), &count, nullptr);
    SetConsoleMode(console, shown);
    CloseHandle(console);
    (void)std::fputs("\n", stderr);
    const auto *end = std::find_if(wide.data(), wide.data() + count, [](wchar_t c) { return c < L' '; });
    const int size = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(end - wide.data()),
                                         room.data(), static_cast<int>(room.size()), nullptr, nullptr);
    SecureZeroMemory(wide.data(), sizeof wide);
    return static_cast<std::size_t>(size);
}

#else

namespace {

/// The terminal of the process, which shows nothing of what is typed.
class Terminal {
  public:
    Terminal() : file_(open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        if (tcgetattr(file_, &shown_) != 0) return;
        // Ctrl-C ends the line as a character of it, so that the terminal shows again what is typed.
        termios hidden = shown_;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG);
        hidden.c_lflag |= ECHONL;
        hidden.c_cc[VEOL] = hidden.c_cc[VINTR];
        is_hidden_ = tcsetattr(file_, TCSAFLUSH, &hidden) == 0;
    }
    ~Terminal() {
        if (is_hidden_) (void)tcsetattr(file_, TCSAFLUSH, &shown_);
        if (file_ >= 0) (void)close(file_);
    }
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    /// The length of a line; nothing when it would be seen.
    [[nodiscard]] std::optional<std::size_t> read_line(const std::string &prompt,
                                                       std::span<char> room) const {
        if (!is_hidden_ || write(file_, prompt.data(), prompt.size()) < 0) return {};
        const ssize_t got = read(file_, room.data(), room.size());
        const std::span<char> line = room.first(got > 0 ? static_cast<std::size_t>(got) : 0);
        if (!line.empty() && line.back() == '\n') return line.size() - 1;
        (void)std::fputs("\n", stderr);
        return 0;
    }

  private:
    int file_;
    termios shown_{};
    bool is_hidden_ = false;
};

}  // namespace

std::optional<std::size_t> read_hidden_line(const std::string &prompt, std::span<char> room) {
    if (!is_terminal(Stream::kError)) return {};
    return Terminal().read_line(prompt, room);
}

#endif

}  // namespace tool
