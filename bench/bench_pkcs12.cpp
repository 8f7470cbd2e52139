// PKCS #12 beside libcrypto: the derivation of keys.
#include <benchmark/benchmark.h>
#include <tlxpki.h>

#include "peer_bench_pkcs12.hpp"

namespace {

constexpr int kIterations = 2048;
Octets g_password = {0, 's', 0, 'e', 0, 'c', 0, 'r', 0, 'e', 0, 't', 0, 0};
Octets g_salt(8, 0x5A);

void check(benchmark::State &state, bool good) {
    if (!good) state.SkipWithError("the operation failed");
}

void derive(benchmark::State &state, std::uint32_t digest_id) {
    Octets key(get_DigestLength(digest_id));
    for (auto _ : state) {
        DIGEST_UNIT *unit = new_DIGEST_UNIT();
        init_Digest(unit, digest_id);
        check(state,
              get_PKCS12_key_UNI(g_password.data(), static_cast<std::uint32_t>(g_password.size()),
                                 g_salt.data(), static_cast<std::uint32_t>(g_salt.size()), TLX_PKCS12_MAC,
                                 kIterations, static_cast<std::uint32_t>(key.size()), key.data(), unit) == 0);
        free_DIGEST_UNIT(unit);
    }
}
BENCHMARK_CAPTURE(derive, sha1, TLX_DIGEST_SHA1);
BENCHMARK_CAPTURE(derive, sha256, TLX_DIGEST_SHA256);

void derive_libcrypto(benchmark::State &state, const char *digest, std::size_t length) {
    Octets key(length);
    for (auto _ : state)
        check(state, derive_mac_key(digest, g_password, g_salt, kIterations, key));
}
BENCHMARK_CAPTURE(derive_libcrypto, sha1, "SHA1", 20);
BENCHMARK_CAPTURE(derive_libcrypto, sha256, "SHA256", 32);

}  // namespace
