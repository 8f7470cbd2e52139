// Digests and HMAC beside bare libcrypto with algorithms fetched beforehand; HAS-160 beside SHA-1.
#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/hmac.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

using Octets = std::vector<std::uint8_t>;

Octets message(const benchmark::State &state) {
    return Octets(static_cast<std::size_t>(state.range(0)), 0x5A);
}

void count_octets(benchmark::State &state) {
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void one_shot(benchmark::State &state, std::uint32_t digest_id) {
    const Octets data = message(state);
    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    for (auto _ : state) {
        std::uint32_t len = 0;
        if (Digest(digest_id, data.data(), static_cast<std::uint32_t>(data.size()), digest, &len) != 0) {
            state.SkipWithError("digest failed");
            return;
        }
        benchmark::DoNotOptimize(digest);
    }
    count_octets(state);
}

void one_shot_libcrypto(benchmark::State &state, const char *name) {
    const Octets data = message(state);
    EVP_MD *algorithm = EVP_MD_fetch(nullptr, name, nullptr);
    std::uint8_t digest[EVP_MAX_MD_SIZE];
    for (auto _ : state) {
        unsigned len = 0;
        EVP_Digest(data.data(), data.size(), digest, &len, algorithm, nullptr);
        benchmark::DoNotOptimize(digest);
    }
    EVP_MD_free(algorithm);
    count_octets(state);
}

// One unit reused for message after message.
void streaming(benchmark::State &state, std::uint32_t digest_id) {
    const Octets data = message(state);
    DIGEST_UNIT *unit = new_DIGEST_UNIT();
    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    for (auto _ : state) {
        std::uint32_t len = 0;
        init_Digest(unit, digest_id);
        update_Digest(unit, data.data(), static_cast<std::uint32_t>(data.size()));
        final_Digest(unit, digest, &len);
        benchmark::DoNotOptimize(digest);
    }
    free_DIGEST_UNIT(unit);
    count_octets(state);
}

// A 20-octet message under a key that stays: the inner loop of password-based key derivation.
void keyed_mac(benchmark::State &state, std::uint32_t digest_id) {
    HMAC_UNIT *unit = new_HMAC_UNIT();
    const Octets data = message(state);
    std::uint8_t mac[TLX_DIGEST_MAX_LENGTH];
    std::uint32_t len = 0;
    if (init_HMAC(unit, digest_id, data.data(), 16) != 0) state.SkipWithError("init failed");
    for (auto _ : state) {
        reset_HMAC(unit);
        update_HMAC(unit, data.data(), static_cast<std::uint32_t>(data.size()));
        final_HMAC(unit, mac, &len);
        benchmark::DoNotOptimize(mac);
    }
    free_HMAC_UNIT(unit);
}

void keyed_mac_libcrypto(benchmark::State &state, const char *name) {
    const Octets data = message(state);
    EVP_MAC *algorithm = EVP_MAC_fetch(nullptr, "HMAC", nullptr);
    EVP_MAC_CTX *context = EVP_MAC_CTX_new(algorithm);
    char digest_name[16] = "";
    for (std::size_t i = 0; name[i] != '\0'; ++i)
        digest_name[i] = name[i];
    const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string("digest", digest_name, 0),
                                     OSSL_PARAM_construct_end()};
    std::uint8_t mac[EVP_MAX_MD_SIZE];
    std::size_t len = 0;
    if (EVP_MAC_init(context, data.data(), 16, parameters) != 1) state.SkipWithError("init failed");
    for (auto _ : state) {
        EVP_MAC_init(context, nullptr, 0, nullptr);
        EVP_MAC_update(context, data.data(), data.size());
        EVP_MAC_final(context, mac, &len, sizeof mac);
        benchmark::DoNotOptimize(mac);
    }
    EVP_MAC_CTX_free(context);
    EVP_MAC_free(algorithm);
}

BENCHMARK_CAPTURE(one_shot_libcrypto, sha1, "SHA1")->Arg(64)->Arg(1024)->Arg(16384);
BENCHMARK_CAPTURE(one_shot, sha1, TLX_DIGEST_SHA1)->Arg(64)->Arg(1024)->Arg(16384);
BENCHMARK_CAPTURE(streaming, sha1, TLX_DIGEST_SHA1)->Arg(64)->Arg(1024)->Arg(16384);
BENCHMARK_CAPTURE(one_shot_libcrypto, sha256, "SHA2-256")->Arg(64)->Arg(1024)->Arg(16384);
BENCHMARK_CAPTURE(one_shot, sha256, TLX_DIGEST_SHA256)->Arg(64)->Arg(1024)->Arg(16384);
BENCHMARK_CAPTURE(streaming, sha256, TLX_DIGEST_SHA256)->Arg(64)->Arg(1024)->Arg(16384);
BENCHMARK_CAPTURE(one_shot_libcrypto, sha512, "SHA2-512")->Arg(64)->Arg(16384);
BENCHMARK_CAPTURE(one_shot, sha512, TLX_DIGEST_SHA512)->Arg(64)->Arg(16384);
BENCHMARK_CAPTURE(one_shot_libcrypto, md5, "MD5")->Arg(64)->Arg(16384);
BENCHMARK_CAPTURE(one_shot, md5, TLX_DIGEST_MD5)->Arg(64)->Arg(16384);
BENCHMARK_CAPTURE(one_shot, has160, TLX_DIGEST_HAS160)->Arg(64)->Arg(16384);
BENCHMARK_CAPTURE(keyed_mac_libcrypto, sha1, "SHA1")->Arg(20);
BENCHMARK_CAPTURE(keyed_mac, sha1, TLX_DIGEST_SHA1)->Arg(20);
BENCHMARK_CAPTURE(keyed_mac, has160, TLX_DIGEST_HAS160)->Arg(20);

}  // namespace
