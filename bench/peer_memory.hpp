// Octets that libcrypto has allocated, also those of keys and contexts that our library holds there.
#pragma once

#include <cstdint>

/// Forgets the most octets up to now.
void restart_libcrypto_peak();

/// The most octets since then, without those that were there.
std::uint64_t libcrypto_peak();
