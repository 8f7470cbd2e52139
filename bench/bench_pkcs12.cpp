// PKCS #12 beside libcrypto: the derivation of keys, and whole files.
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

constexpr char kPassword[] = "secret";
constexpr std::uint32_t kPasswordLength = sizeof kPassword - 1;

/// A file whose key and certificate are derived for with so many iterations, and its code.
Octets file_of(const benchmark::State &state, const char *scheme) {
    return peer_file(scheme, kPassword, static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
}

/// From the octets of a file to its entries.
void open_file(benchmark::State &state, const char *scheme) {
    const Octets file = file_of(state, scheme);
    for (auto _ : state) {
        P12_PFX *pfx = nullptr;
        P12_ENTRIES *entries = nullptr;
        TLX_READ_DER(P12_PFX, &pfx, file.data(), static_cast<std::uint32_t>(file.size()));
        check(state, open_PKCS12(pfx, kPassword, kPasswordLength, nullptr, 0, &entries) == 0 &&
                         get_P12_ENTRIES_count(entries) == 2 &&
                         get_P12_ENTRIES_child(entries, 0)->owner == 1);
        free_P12_ENTRIES(entries);
        free_P12_PFX(pfx);
    }
}

void open_file_libcrypto(benchmark::State &state, const char *scheme) {
    const Octets file = file_of(state, scheme);
    for (auto _ : state)
        check(state, peer_open_file(file, kPassword));
}

// PBKDF2 decides, then the derivation of PKCS #12.
BENCHMARK_CAPTURE(open_file_libcrypto, pbes2, "AES-256-CBC")
    ->Args({100000, 1})
    ->Args({2048, 2048})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(open_file, pbes2, "AES-256-CBC")
    ->Args({100000, 1})
    ->Args({2048, 2048})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(open_file_libcrypto, pkcs12, "PBE-SHA1-3DES")
    ->Args({100000, 100000})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(open_file, pkcs12, "PBE-SHA1-3DES")->Args({100000, 100000})->Unit(benchmark::kMillisecond);

}  // namespace
