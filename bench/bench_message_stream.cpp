// Signing and verifying 256 MB in pieces of 64 KB with RSA-2048 and SHA-256, beside the digest alone and the
// CMS functions of libcrypto. Source and sink are free. "peak" is the most octets that our library had
// allocated, "libcrypto" the most that libcrypto had on either side.
#include <benchmark/benchmark.h>
#include <tlxpki.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "peer_bench_message_stream.hpp"
#include "peer_memory.hpp"

namespace {

constexpr std::uint32_t kPiece = 65536;
constexpr std::uint32_t kPieces = 4096;
constexpr auto kMegabytes = benchmark::Counter::kIsIterationInvariantRate;

using Octets = std::vector<std::uint8_t>;

const Octets &piece() {
    static const Octets octets(kPiece, 0x5A);
    return octets;
}

/// Signed data with a signer whose certificate has a new key.
const P7_CONTENT_INFO *message() {
    static P7_CONTENT_INFO *const info = [] {
        void *read = nullptr;
        readDER_from_File(&read, TLX_DECODER(Seq_to_X509_CERT), TLX_TEST_DATA "/chain/user.der");
        auto *cert = static_cast<X509_CERT *>(read);
        RSA_UNIT *unit = new_RSA_UNIT();
        ASYMMETRIC_KEY *key = new_ASYMMETRIC_KEY();
        X509_PUBKEY *open = new_X509_PUBKEY();
        P7_CONTENT_INFO *made = new_P7_CONTENT_INFO();
        gen_RSA_UNIT(unit, 2048, 65537);
        set_ASYMMETRIC_KEY(key, TLX_KEY_RSA, unit);
        set_X509_PUBKEY_rsa(open, unit);
        set_X509_pub_key(cert, open);
        gen_SIG_X509_Cert(cert, key);
        set_PKCS7_Type(made, TLX_OID_PKCS7_SIGNED_DATA);
        add_PKCS7_Certificate(made, cert);
        add_PKCS7_Signature(made, cert, key, TLX_OID_SHA256);
        free_X509_PUBKEY(open);
        free_ASYMMETRIC_KEY(key);
        free_RSA_UNIT(unit);
        free_X509_CERT(cert);
        return made;
    }();
    return info;
}

std::uint32_t drop(void *context, const std::uint8_t * /*octets*/, std::uint32_t /*len*/) {
    auto *peak = static_cast<std::uint64_t *>(context);
    *peak = std::max(*peak, tlx_live_bytes());
    return 0;
}

std::uint32_t append(void *context, const std::uint8_t *octets, std::uint32_t len) {
    auto *all = static_cast<Octets *>(context);
    all->insert(all->end(), octets, octets + len);
    return 0;
}

bool write_message(MESSAGE_OUTPUT output, void *context, std::uint32_t pieces) {
    SIGNED_MESSAGE_WRITER_SETTINGS settings = {};
    settings.output = output;
    settings.context = context;
    settings.message = message();
    SIGNED_MESSAGE_WRITER *writer = new_SIGNED_MESSAGE_WRITER(&settings);
    std::uint32_t status = 0;
    for (std::uint32_t i = 0; i < pieces && status == 0; ++i)
        status = update_SIGNED_MESSAGE_WRITER(writer, piece().data(), kPiece);
    if (status == 0) status = final_SIGNED_MESSAGE_WRITER(writer);
    free_SIGNED_MESSAGE_WRITER(writer);
    return status == 0;
}

void report(benchmark::State &state, bool good, std::uint64_t peak) {
    if (!good) state.SkipWithError("the operation failed");
    state.counters["libcrypto"] = static_cast<double>(libcrypto_peak());
    state.counters["MB/s"] = benchmark::Counter(kPiece / 1e6 * kPieces, kMegabytes);
    if (peak != 0) state.counters["peak"] = static_cast<double>(peak);
}

void digest_256_megabytes_libcrypto(benchmark::State &state) {
    bool good = true;
    restart_libcrypto_peak();
    for (auto _ : state)
        good = good && digest_with_libcrypto(piece().data(), kPiece, kPieces);
    report(state, good, 0);
}
BENCHMARK(digest_256_megabytes_libcrypto)->Unit(benchmark::kMillisecond);

void sign_256_megabytes(benchmark::State &state) {
    std::uint64_t peak = 0;
    bool good = message() != nullptr;
    restart_libcrypto_peak();
    for (auto _ : state)
        good = good && write_message(drop, &peak, kPieces);
    report(state, good, peak);
}
BENCHMARK(sign_256_megabytes)->Unit(benchmark::kMillisecond);

void sign_256_megabytes_libcrypto(benchmark::State &state) {
    bool good = sign_with_libcrypto(piece().data(), kPiece, 1);  // makes the key
    restart_libcrypto_peak();
    for (auto _ : state)
        good = good && sign_with_libcrypto(piece().data(), kPiece, kPieces);
    report(state, good, 0);
}
BENCHMARK(sign_256_megabytes_libcrypto)->Unit(benchmark::kMillisecond);

/// The message lies in memory, so that reading it is nearly free.
void verify_256_megabytes(benchmark::State &state) {
    Octets all;
    std::uint64_t peak = 0;
    bool good = write_message(append, &all, kPieces);
    restart_libcrypto_peak();
    for (auto _ : state) {
        SIGNED_MESSAGE_READER_SETTINGS settings = {};
        settings.unverified_output = drop;
        settings.context = &peak;
        SIGNED_MESSAGE_READER *reader = new_SIGNED_MESSAGE_READER(&settings);
        std::uint32_t status = 0;
        for (std::size_t at = 0; at < all.size() && status == 0; at += kPiece)
            status = update_SIGNED_MESSAGE_READER(
                reader, all.data() + at,
                static_cast<std::uint32_t>(std::min<std::size_t>(kPiece, all.size() - at)));
        P7_SIGNER_REPORTS *reports = nullptr;
        if (status == 0) final_SIGNED_MESSAGE_READER(reader, &reports);
        const P7_SIGNER_REPORT *first = get_P7_SIGNER_REPORTS_child(reports, 0);
        good = good && first != nullptr && first->contentStatus == 0 && first->signatureStatus == 0;
        free_P7_SIGNER_REPORTS(reports);
        free_SIGNED_MESSAGE_READER(reader);
    }
    report(state, good, peak);
}
BENCHMARK(verify_256_megabytes)->Unit(benchmark::kMillisecond);

/// The same message, whose octets do not count.
void verify_256_megabytes_libcrypto(benchmark::State &state) {
    Octets all;
    bool good = write_message(append, &all, kPieces);
    restart_libcrypto_peak();
    for (auto _ : state)
        good = good && verify_with_libcrypto(all.data(), all.size());
    report(state, good, 0);
}
BENCHMARK(verify_256_megabytes_libcrypto)->Unit(benchmark::kMillisecond);

}  // namespace
