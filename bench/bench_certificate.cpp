// A certificate in and out: decoding it with everything it owns, and encoding it again, beside libcrypto.
#include <benchmark/benchmark.h>
#include <tlxcrypto/memory.h>
#include <tlxpki/asn1_io.h>
#include <tlxpki/x509.h>

#include <cstdio>
#include <vector>

#include "peer_bench_certificate.hpp"

namespace {

std::vector<std::uint8_t> read_file(const char *path) {
    std::vector<std::uint8_t> octets(4096);
    std::FILE *file = std::fopen(path, "rb");
    if (file == nullptr) return {};
    octets.resize(std::fread(octets.data(), 1, octets.size(), file));
    std::fclose(file);
    return octets;
}

const std::vector<std::uint8_t> &certificate() {
    static const std::vector<std::uint8_t> octets = read_file(TLX_TEST_DATA "/x509/user.der");
    return octets;
}

X509_CERT *decode() {
    void *cert = nullptr;
    readDER_from_Binary(&cert, TLX_DECODER(Seq_to_X509_CERT), certificate().data());
    return static_cast<X509_CERT *>(cert);
}

void BM_DecodeAndFree(benchmark::State &state) {
    for (auto _ : state) {
        X509_CERT *cert = decode();
        if (cert == nullptr) state.SkipWithError("the certificate did not decode");
        free_X509_CERT(cert);
    }
}
BENCHMARK(BM_DecodeAndFree);

void BM_DecodeAndFreeLibcrypto(benchmark::State &state) {
    for (auto _ : state) {
        if (!peer_decode_and_free(certificate().data(), certificate().size())) {
            state.SkipWithError("the certificate did not decode");
        }
    }
}
BENCHMARK(BM_DecodeAndFreeLibcrypto);

void BM_Encode(benchmark::State &state) {
    X509_CERT *cert = decode();
    for (auto _ : state) {
        std::uint8_t *der = nullptr;
        benchmark::DoNotOptimize(writeDER_to_Binary(cert, TLX_ENCODER(X509_CERT_to_Seq), &der));
        tlx_free(der);
    }
    free_X509_CERT(cert);
}
BENCHMARK(BM_Encode);

void BM_EncodeToBeSignedPartLibcrypto(benchmark::State &state) {
    void *cert = peer_decode(certificate().data(), certificate().size());
    for (auto _ : state)
        benchmark::DoNotOptimize(peer_encode_tbs(cert));
    peer_free(cert);
}
BENCHMARK(BM_EncodeToBeSignedPartLibcrypto);

void BM_Copy(benchmark::State &state) {
    X509_CERT *cert = decode();
    for (auto _ : state)
        free_X509_CERT(dup_X509_CERT(cert));
    free_X509_CERT(cert);
}
BENCHMARK(BM_Copy);

}  // namespace
