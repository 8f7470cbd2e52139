// What the library's engines give octets to.
#pragma once

#include <exception>
#include <functional>

#include "text.hpp"

namespace tool {

using Take = std::function<void(Octets)>;

/// Hands what an engine gives out to a function. An exception stops the engine, and is thrown again behind
/// it, since none may pass through the library.
class Receiver {
  public:
    explicit Receiver(Take take) : take_(std::move(take)) {}

    /// A MESSAGE_OUTPUT, whose context is a receiver.
    static uint32_t give(void *context, const uint8_t *octets, uint32_t len) noexcept {
        auto *receiver = static_cast<Receiver *>(context);
        constexpr uint32_t kStopped = 1;
        try {
            receiver->take_({octets, len});
            return 0;
        } catch (...) {
            receiver->failure_ = std::current_exception();
            return kStopped;
        }
    }

    /// The status of an operation of the engine. Throws what the function threw.
    [[nodiscard]] uint32_t checked(uint32_t status) {
        if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
        return status;
    }

  private:
    Take take_;
    std::exception_ptr failure_;
};

}  // namespace tool
