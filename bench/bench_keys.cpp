// Keys from passwords and encrypted keys beside libcrypto, with equal iteration counts.
#include <benchmark/benchmark.h>
#include <tlxcrypto/kdf.h>
#include <tlxpki/asn1_io.h>
#include <tlxpki/pkcs5.h>

#include "peer_bench_keys.hpp"

namespace {

constexpr char kPassword[] = "correct horse";
constexpr std::uint32_t kPasswordLength = sizeof kPassword - 1;
constexpr std::uint8_t kSalt[8] = {1, 2, 3, 4, 5, 6, 7, 8};

void pbkdf2(benchmark::State &state, std::uint32_t digest_id) {
    std::uint8_t out[32];
    for (auto _ : state) {
        if (PBKDF2(kPassword, kPasswordLength, kSalt, sizeof kSalt, 100000, digest_id, out, sizeof out) != 0)
            state.SkipWithError("derivation failed");
        benchmark::DoNotOptimize(out);
    }
}

void pbkdf2_libcrypto(benchmark::State &state, const char *digest) {
    std::uint8_t out[32];
    for (auto _ : state) {
        if (!peer_pbkdf2(digest, kPassword, kPasswordLength, kSalt, sizeof kSalt, 100000, out, sizeof out))
            state.SkipWithError("derivation failed");
        benchmark::DoNotOptimize(out);
    }
}

/// PBKDF1 beside the derivation of PKCS #12, which hashes as often.
void pbkdf1(benchmark::State &state) {
    std::uint8_t out[20];
    for (auto _ : state) {
        if (PBKDF1(kPassword, kPasswordLength, kSalt, sizeof kSalt, 100000, TLX_DIGEST_SHA1, out,
                   sizeof out) != 0)
            state.SkipWithError("derivation failed");
        benchmark::DoNotOptimize(out);
    }
}

void pkcs12_libcrypto(benchmark::State &state) {
    std::uint8_t out[20];
    for (auto _ : state) {
        if (!peer_pkcs12_key(kPassword, kPasswordLength, kSalt, sizeof kSalt, 100000, out, sizeof out))
            state.SkipWithError("derivation failed");
        benchmark::DoNotOptimize(out);
    }
}

/// From the octets of a container to a key.
void open_key(benchmark::State &state, const char *scheme) {
    const Octets container = peer_encrypted_key(scheme, kPassword, static_cast<int>(state.range(0)));
    for (auto _ : state) {
        void *read = nullptr;
        P8_PRIV_KEY_INFO *info = nullptr;
        readDER_from_Buffer(&read, TLX_DECODER(Seq_to_P8_ENCRYPTED_KEY), container.data(),
                            static_cast<std::uint32_t>(container.size()));
        auto *key = static_cast<PKCS8 *>(read);
        if (open_PKCS8(key, kPassword, kPasswordLength, &info) != 0) state.SkipWithError("it does not open");
        free_P8_PRIV_KEY_INFO(info);
        free_PKCS8(key);
    }
}

void open_key_libcrypto(benchmark::State &state, const char *scheme) {
    const Octets container = peer_encrypted_key(scheme, kPassword, static_cast<int>(state.range(0)));
    for (auto _ : state)
        if (!peer_open_key(container, kPassword)) state.SkipWithError("it does not open");
}

BENCHMARK_CAPTURE(pbkdf2_libcrypto, sha1, "SHA1")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(pbkdf2, sha1, TLX_DIGEST_SHA1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(pbkdf2_libcrypto, sha256, "SHA256")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(pbkdf2, sha256, TLX_DIGEST_SHA256)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(pbkdf2, has160, TLX_DIGEST_HAS160)->Unit(benchmark::kMillisecond);
BENCHMARK(pkcs12_libcrypto)->Unit(benchmark::kMillisecond);
BENCHMARK(pbkdf1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(open_key_libcrypto, pbes2, "")->Arg(2048)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(open_key, pbes2, "")->Arg(2048)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(open_key_libcrypto, pkcs12, "PBE-SHA1-3DES")->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(open_key, pkcs12, "PBE-SHA1-3DES")->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
