// Work on several threads at once.
#pragma once

#include <atomic>
#include <thread>
#include <vector>

namespace tlx_test {

/// Does `work` on several threads at once. Returns the number of successes.
template <typename Work>
unsigned successes_on_threads(unsigned count, const Work &work) {
    std::atomic<unsigned> successes = 0;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < count; ++i)
        threads.emplace_back([&] { successes += work() ? 1U : 0U; });
    for (std::thread &thread : threads)
        thread.join();
    return successes;
}

}  // namespace tlx_test
