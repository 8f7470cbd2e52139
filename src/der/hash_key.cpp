#include "der/hash_key.hpp"

#include <tlxcrypto/random.h>

#include <atomic>

namespace tlx {
namespace {

SipHash::Key shared_key;
std::atomic_flag is_taken;
std::atomic<bool> is_ready;

}  // namespace

bool take_hash_key(SipHash::Key &key) noexcept {
    if (!is_ready.load(std::memory_order_acquire)) {
        SipHash::Key drawn;
        if (RAND_BYTES(reinterpret_cast<u8 *>(drawn.words), sizeof drawn.words) != 0) return false;
        if (!is_taken.test_and_set()) {
            shared_key = drawn;
            is_ready.store(true, std::memory_order_release);
        }
        // Another thread was faster, and is about to be done.
        while (!is_ready.load(std::memory_order_acquire)) {
        }
    }
    key = shared_key;
    return true;
}

}  // namespace tlx
