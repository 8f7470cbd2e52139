// Enveloping beside the bare cipher into fresh memory, and the collecting of ciphertext in pieces.
#include <benchmark/benchmark.h>
#include <tlxpki.h>

#include <memory>
#include <vector>

namespace {

using Octets = std::vector<std::uint8_t>;

constexpr std::uint32_t kAes256Cbc = TLX_CIPHER_AES256 | TLX_CIPHER_MODE_CBC;
constexpr std::uint32_t kWhole = 64U << 20;
constexpr std::uint32_t kPiece = 4096;

struct Free {
    void operator()(P7_CONTENT_INFO *p) const { free_P7_CONTENT_INFO(p); }
    void operator()(X509_CERT *p) const { free_X509_CERT(p); }
};
using Info = std::unique_ptr<P7_CONTENT_INFO, Free>;

const X509_CERT *recipient() {
    static const std::unique_ptr<X509_CERT, Free> cert = [] {
        X509_CERT *read = nullptr;
        TLX_READ_DER_FILE(X509_CERT, &read, TLX_TEST_DATA "/x509/user.der");
        return std::unique_ptr<X509_CERT, Free>(read);
    }();
    return cert.get();
}

/// Enveloped data with one recipient.
Info new_message() {
    Info info(new_P7_CONTENT_INFO());
    set_PKCS7_Type(info.get(), TLX_OID_PKCS7_ENVELOPED_DATA);
    add_PKCS7_Recipient(info.get(), recipient());
    return info;
}

void check(benchmark::State &state, std::uint32_t status) {
    if (status != 0) state.SkipWithError("the operation failed");
}

void bare_cipher(benchmark::State &state) {
    const Octets data(kWhole, 0x5A);
    const std::uint8_t key[32] = {1};
    const std::uint8_t iv[16] = {2};
    for (auto _ : state) {
        auto *out = static_cast<std::uint8_t *>(tlx_malloc(kWhole + 16, __FILE__, __LINE__));
        std::uint32_t len = 0;
        check(state, BlockCipher(kAes256Cbc, 1, key, iv, out, &len, data.data(), kWhole));
        tlx_free(out);
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t{kWhole});
}

void seal(benchmark::State &state) {
    const Octets data(kWhole, 0x5A);
    for (auto _ : state) {
        const Info info = new_message();
        check(state, seal_PKCS7(info.get(), "aes-256-cbc", data.data(), kWhole));
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t{kWhole});
}

void collect(benchmark::State &state) {
    const auto size = static_cast<std::uint32_t>(state.range(0)) << 20;
    const Octets data(kPiece, 0x5A);
    for (auto _ : state) {
        const Info info = new_message();
        std::uint32_t status = init_PKCS7_Seal(info.get(), "aes-256-cbc", 0);
        for (std::uint32_t done = 0; done < size && status == 0; done += kPiece)
            status = update_PKCS7_encrypt(info.get(), data.data(), kPiece, nullptr, nullptr);
        check(state, status != 0 ? status : final_PKCS7_Encrypt(info.get(), nullptr, nullptr));
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t{size});
}

BENCHMARK(bare_cipher)->Unit(benchmark::kMillisecond);
BENCHMARK(seal)->Unit(benchmark::kMillisecond);
// 10 MB and 100 MB: the same speed for both is linear time.
BENCHMARK(collect)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);

}  // namespace
