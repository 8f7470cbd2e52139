// Encrypting and decrypting 256 MB in pieces of 64 KB with AES-256, beside the cipher alone, and both at once
// by the CMS functions of libcrypto, which hold the message in memory. Source and sink are free. "peak" is
// the most octets that our library had allocated, "libcrypto" the most that libcrypto had on either side.
#include <benchmark/benchmark.h>
#include <tlxpki.h>

#include <algorithm>
#include <vector>

#include "peer_bench_message_envelope.hpp"
#include "peer_memory.hpp"

namespace {

constexpr std::uint32_t kPiece = 65536;
constexpr std::uint32_t kPieces = 4096;
constexpr std::uint8_t kKey[32] = {};
constexpr auto kMegabytes = benchmark::Counter::kIsIterationInvariantRate;
enum Cipher : std::int64_t { cbc, gcm };

using Octets = std::vector<std::uint8_t>;

const Octets &piece() {
    static const Octets octets(kPiece, 0x5A);
    return octets;
}

/// What is given out, of which asking for the octets that are allocated takes longer than the rest.
struct Sink {
    std::uint64_t peak;
    std::uint32_t calls;
};

std::uint32_t drop(void *context, const std::uint8_t * /*octets*/, std::uint32_t /*len*/) {
    auto *sink = static_cast<Sink *>(context);
    if (sink->calls++ % 256 == 0) sink->peak = std::max(sink->peak, tlx_live_bytes());
    return 0;
}

std::uint32_t append(void *context, const std::uint8_t *octets, std::uint32_t len) {
    auto *all = static_cast<Octets *>(context);
    all->insert(all->end(), octets, octets + len);
    return 0;
}

/// Enveloped data for a key encryption key, with GCM authenticated.
bool write_message(std::int64_t cipher, MESSAGE_OUTPUT output, void *context, std::uint32_t pieces) {
    CMS_RECIPIENT_SETTINGS recipient = {};
    recipient.kek = recipient.kek_id = kKey;
    recipient.kek_len = recipient.kek_id_len = sizeof kKey;
    ENVELOPED_MESSAGE_WRITER_SETTINGS settings = {};
    settings.output = output;
    settings.context = context;
    settings.type = cipher == gcm ? TLX_MESSAGE_AUTH_ENVELOPED_DATA : TLX_MESSAGE_ENVELOPED_DATA;
    settings.algorithm = cipher == gcm ? "aes-256-gcm" : "aes-256-cbc";
    settings.recipients = &recipient;
    settings.recipient_count = 1;
    ENVELOPED_MESSAGE_WRITER *writer = new_ENVELOPED_MESSAGE_WRITER(&settings);
    std::uint32_t status = 0;
    for (std::uint32_t i = 0; i < pieces && status == 0; ++i)
        status = update_ENVELOPED_MESSAGE_WRITER(writer, piece().data(), kPiece);
    if (status == 0) status = final_ENVELOPED_MESSAGE_WRITER(writer);
    free_ENVELOPED_MESSAGE_WRITER(writer);
    return status == 0;
}

void report(benchmark::State &state, bool good, std::uint64_t peak) {
    if (!good) state.SkipWithError("the operation failed");
    state.counters["libcrypto"] = static_cast<double>(libcrypto_peak());
    state.counters["MB/s"] = benchmark::Counter(kPiece / 1e6 * kPieces, kMegabytes);
    if (peak != 0) state.counters["peak"] = static_cast<double>(peak);
}

template <bool Encrypts>
void cipher_256_megabytes_libcrypto(benchmark::State &state) {
    bool good = true;
    restart_libcrypto_peak();
    for (auto _ : state)
        good =
            good && cipher_with_libcrypto(state.range(0) == gcm, Encrypts, piece().data(), kPiece, kPieces);
    report(state, good, 0);
}
BENCHMARK(cipher_256_megabytes_libcrypto<true>)->Arg(cbc)->Arg(gcm)->Unit(benchmark::kMillisecond);

void encrypt_256_megabytes(benchmark::State &state) {
    Sink sink = {};
    bool good = true;
    restart_libcrypto_peak();
    for (auto _ : state)
        good = good && write_message(state.range(0), drop, &sink, kPieces);
    report(state, good, sink.peak);
}
BENCHMARK(encrypt_256_megabytes)->Arg(cbc)->Arg(gcm)->Unit(benchmark::kMillisecond);
BENCHMARK(cipher_256_megabytes_libcrypto<false>)->Arg(cbc)->Arg(gcm)->Unit(benchmark::kMillisecond);

/// A message of two segments, of which the second is fed again and again. Its code is wrong then, which GCM
/// finds after as much work.
void decrypt_256_megabytes(benchmark::State &state) {
    constexpr std::uint8_t kHeader[] = {4, 0x83, 1, 0, 0};
    constexpr std::uint32_t kSegment = kPiece + sizeof kHeader;
    Octets all;
    Sink sink = {};
    bool good = write_message(state.range(0), append, &all, 2);
    const auto head =
        std::search(all.begin(), all.end(), std::begin(kHeader), std::end(kHeader)) - all.begin();
    const auto before = static_cast<std::uint32_t>(head) + kSegment;
    const std::uint32_t expected = state.range(0) == gcm ? 0x52A20012 : 0;
    CMS_KEY_HOLDER holder = {};
    holder.kek = kKey;
    holder.kek_len = sizeof kKey;
    restart_libcrypto_peak();
    for (auto _ : state) {
        ENVELOPED_MESSAGE_READER_SETTINGS settings = {};
        settings.unverified_output = drop;
        settings.context = &sink;
        settings.holder = &holder;
        ENVELOPED_MESSAGE_READER *reader = new_ENVELOPED_MESSAGE_READER(&settings);
        std::uint32_t status = update_ENVELOPED_MESSAGE_READER(reader, all.data(), before);
        for (std::uint32_t i = 1; i < kPieces && status == 0; ++i)
            status = update_ENVELOPED_MESSAGE_READER(reader, all.data() + before, kSegment);
        const std::uint32_t after = before + kSegment;
        if (status == 0)
            status = update_ENVELOPED_MESSAGE_READER(reader, all.data() + after,
                                                     static_cast<std::uint32_t>(all.size()) - after);
        good = good && status == 0 && final_ENVELOPED_MESSAGE_READER(reader) == expected;
        free_ENVELOPED_MESSAGE_READER(reader);
    }
    report(state, good, sink.peak);
}
BENCHMARK(decrypt_256_megabytes)->Arg(cbc)->Arg(gcm)->Unit(benchmark::kMillisecond);

void message_256_megabytes_libcrypto(benchmark::State &state) {
    bool good = true;
    restart_libcrypto_peak();
    for (auto _ : state)
        good = good && message_with_libcrypto(state.range(0) == gcm, piece().data(), kPiece, kPieces);
    report(state, good, 0);
}
BENCHMARK(message_256_megabytes_libcrypto)->Arg(cbc)->Arg(gcm)->Unit(benchmark::kMillisecond);

}  // namespace
