#include "terminal.hpp"

#include <chrono>
#include <cstdlib>
#include <iostream>

#include "platform.hpp"
#include "text.hpp"

namespace tool {

namespace {

bool has_colour() {
    const char *off = std::getenv("NO_COLOR");
    const char *terminal = std::getenv("TERM");
    const bool dumb = terminal != nullptr && std::string_view(terminal) == "dumb";
    return is_terminal(Stream::kOutput) && (off == nullptr || *off == '\0') && !dumb;
}

}  // namespace

std::string coloured(const std::string &text, Colour colour) {
    static const bool kInColour = has_colour();
    return kInColour ? "\033[" + std::to_string(static_cast<int>(colour)) + "m" + text + "\033[0m" : text;
}

std::string mark_text(Mark mark) {
    switch (mark) {
        case Mark::kGood:
            return coloured("[ok]", Colour::kGreen);
        case Mark::kFailed:
            return coloured("[FAILED]", Colour::kRed);
        case Mark::kUnchecked:
            return coloured("[not checked]", Colour::kYellow);
    }
    return "";
}

Progress::Progress(std::size_t total) : total_(total), shown_(is_terminal(Stream::kError)) {}

void Progress::show(std::size_t done) const {
    if (!shown_) return;
    const std::size_t filled = done * kWidth / total_;
    std::cerr << "\r[" << std::string(filled, '#') << std::string(kWidth - filled, ' ') << "] " << done << '/'
              << total_ << std::flush;
}

void Progress::clear() const {
    if (shown_) std::cerr << "\r\033[K" << std::flush;
}

Waiting::Waiting(std::string what) : what_(std::move(what)) {
    if (is_terminal(Stream::kError)) counter_ = std::thread(&Waiting::count, this);
}

Waiting::~Waiting() {
    if (!counter_.joinable()) return;
    {
        const std::lock_guard lock(mutex_);
        over_ = true;
    }
    changed_.notify_one();
    counter_.join();
}

/// ", 37 MB of 4096 MB".
std::string Waiting::progress() const {
    constexpr uint64_t kMegabyte = 1024 * 1024;
    const auto megabytes = [](uint64_t octets) { return std::to_string(octets / kMegabyte) + " MB"; };
    const uint64_t done = done_;
    const uint64_t expected = expected_;
    if (done < kMegabyte) return "";
    return ", " + megabytes(done) + (expected < done ? "" : " of " + megabytes(expected));
}

void Waiting::count() {
    std::unique_lock lock(mutex_);
    const auto is_over = [this] { return over_; };
    int seconds = 0;
    while (!changed_.wait_for(lock, std::chrono::seconds(1), is_over)) {
        std::cerr << '\r' << what_ << ", " << ++seconds << " s" << progress() << std::flush;
    }
    if (seconds > 0) std::cerr << "\r\033[K" << std::flush;
}

void Warner::tell(const std::vector<std::string> &warnings) {
    for (const std::string &warning : warnings) {
        if (!told_.insert(warning).second) continue;
        std::cout.flush();
        std::cerr << "tlxpki: warning: " << printable(warning) << '\n';
    }
}

}  // namespace tool
