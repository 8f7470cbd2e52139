// What people see beside the output of a command: marks in colour, progress and warnings.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace tool {

/// The finding of a check.
enum class Mark { kGood, kFailed, kUnchecked };

enum class Colour { kRed = 31, kGreen = 32, kYellow = 33 };

/// A text in a colour where standard output is a terminal that shows colours.
[[nodiscard]] std::string coloured(const std::string &text, Colour colour);

/// "[ok]", "[FAILED]" or "[not checked]" in colour.
[[nodiscard]] std::string mark_text(Mark mark);

/// A progress bar on standard error when that is a terminal.
class Progress {
  public:
    explicit Progress(std::size_t total);

    void show(std::size_t done) const;
    /// Makes room for a line of output.
    void clear() const;

  private:
    static constexpr std::size_t kWidth = 40;
    std::size_t total_;
    bool shown_;
};

/// Says on standard error when that is a terminal, once a second, for how long something has gone on, and how
/// much of it is done.
class Waiting {
  public:
    explicit Waiting(std::string what);
    ~Waiting();
    Waiting(const Waiting &) = delete;
    Waiting &operator=(const Waiting &) = delete;

    /// How many octets there are; not called when that is not known.
    void expect(uint64_t octets) { expected_ = octets; }
    void add(std::size_t octets) { done_ += octets; }

  private:
    void count();
    [[nodiscard]] std::string progress() const;

    std::string what_;
    std::atomic<uint64_t> expected_ = 0;
    std::atomic<uint64_t> done_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool over_ = false;
    std::thread counter_;  ///< none without a terminal
};

/// Prints warnings on standard error after the output so far, each warning once.
class Warner {
  public:
    void tell(const std::vector<std::string> &warnings);

  private:
    std::set<std::string> told_;
};

}  // namespace tool
