// Short names used throughout the inside.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tlx {

using u8 = std::uint8_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;
using i32 = std::int32_t;

/// Octets that somebody else owns.
using Bytes = std::span<const u8>;

/// How many octets, as the interface of libtlxcrypto counts them.
[[nodiscard]] inline u32 size_of(Bytes octets) noexcept {
    return static_cast<u32>(octets.size());
}

}  // namespace tlx
