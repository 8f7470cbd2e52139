// Base64 both ways and character sets, beside libcrypto and iconv.
#include <benchmark/benchmark.h>
#include <tlxcrypto/memory.h>
#include <tlxpki/base64.h>
#include <tlxpki/ber.h>
#include <tlxpki/convert.h>

#include <string>
#include <vector>

#include "peer_bench_text.hpp"

namespace {

std::vector<std::uint8_t> octets(std::size_t size) {
    std::vector<std::uint8_t> made(size);
    std::uint32_t state = 1;
    for (std::uint8_t &octet : made)
        octet = static_cast<std::uint8_t>((state = state * 1664525 + 1013904223) >> 24);
    return made;
}

std::string base64(std::size_t size, std::uint32_t wrap) {
    const auto in = octets(size);
    char *text = nullptr;
    const std::uint32_t length = encode_Base64(in.data(), static_cast<std::uint32_t>(size), &text, wrap);
    std::string copy(text, length);
    tlx_free(text);
    return copy;
}

void count_octets(benchmark::State &state) {
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void encode(benchmark::State &state, std::uint32_t wrap) {
    const auto in = octets(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        char *text = nullptr;
        benchmark::DoNotOptimize(
            encode_Base64(in.data(), static_cast<std::uint32_t>(in.size()), &text, wrap));
        tlx_free(text);
    }
    count_octets(state);
}

void decode(benchmark::State &state, std::uint32_t wrap) {
    const std::string text = base64(static_cast<std::size_t>(state.range(0)), wrap);
    for (auto _ : state) {
        std::uint8_t *out = nullptr;
        benchmark::DoNotOptimize(decode_Base64(text.data(), static_cast<std::uint32_t>(text.size()), &out));
        tlx_free(out);
    }
    count_octets(state);
}

void encode_libcrypto(benchmark::State &state) {
    const auto in = octets(static_cast<std::size_t>(state.range(0)));
    std::vector<std::uint8_t> text(in.size() * 2);
    for (auto _ : state)
        benchmark::DoNotOptimize(peer::encode_base64(text.data(), in.data(), static_cast<int>(in.size())));
    count_octets(state);
}

void decode_libcrypto(benchmark::State &state) {
    const std::string text = base64(static_cast<std::size_t>(state.range(0)), 0);
    const auto *in = reinterpret_cast<const unsigned char *>(text.data());
    std::vector<std::uint8_t> out(text.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(peer::decode_base64(out.data(), in, static_cast<int>(text.size())));
    count_octets(state);
}

BENCHMARK_CAPTURE(encode, line, 0)->Arg(1200)->Arg(1 << 20);
BENCHMARK_CAPTURE(encode, wrapped, 1)->Arg(1200)->Arg(1 << 20);
BENCHMARK(encode_libcrypto)->Arg(1200)->Arg(1 << 20);
BENCHMARK_CAPTURE(decode, line, 0)->Arg(1200)->Arg(1 << 20);
BENCHMARK_CAPTURE(decode, wrapped, 1)->Arg(1200)->Arg(1 << 20);
BENCHMARK(decode_libcrypto)->Arg(1200)->Arg(1 << 20);

/// All Hangul of the plane, over and over.
std::string korean(std::size_t characters) {
    std::string text;
    for (std::size_t i = 0; i < characters; ++i) {
        text += static_cast<char>(0xB0 + i / 94 % 25);
        text += static_cast<char>(0xA1 + i % 94);
    }
    return text;
}
constexpr std::size_t kCharacters = 4096;

template <auto From, auto To>
void from_unicode(benchmark::State &state) {
    ASN1_STRING *record = nullptr;
    From(korean(kCharacters).c_str(), &record);
    for (auto _ : state) {
        char *text = nullptr;
        benchmark::DoNotOptimize(To(record, &text));
        tlx_free(text);
    }
    free_BMP_STRING(record);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kCharacters));
}

template <auto From>
void to_unicode(benchmark::State &state) {
    const std::string text = korean(kCharacters);
    for (auto _ : state) {
        ASN1_STRING *record = nullptr;
        benchmark::DoNotOptimize(From(text.c_str(), &record));
        free_BMP_STRING(record);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kCharacters));
}

void with_iconv(benchmark::State &state, const char *to, const char *from) {
    const std::string korean_text = korean(kCharacters);
    std::string text(4 * kCharacters, '\0');
    std::string out(4 * kCharacters, '\0');
    text.resize(peer::Converter(from, "EUC-KR")
                    .convert(korean_text.data(), korean_text.size(), text.data(), text.size()));
    peer::Converter converter(to, from);
    for (auto _ : state)
        benchmark::DoNotOptimize(converter.convert(text.data(), text.size(), out.data(), out.size()));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kCharacters));
}

BENCHMARK(from_unicode<cp949ToUTF8, utf8ToCP949>)->Name("utf8ToCP949");
BENCHMARK_CAPTURE(with_iconv, utf8_to_euc_kr, "EUC-KR", "UTF-8");
BENCHMARK(from_unicode<cp949ToBMP, bmpToCP949>)->Name("bmpToCP949");
BENCHMARK_CAPTURE(with_iconv, ucs2_to_euc_kr, "EUC-KR", "UCS-2BE");
BENCHMARK(to_unicode<cp949ToUTF8>)->Name("cp949ToUTF8");
BENCHMARK_CAPTURE(with_iconv, euc_kr_to_utf8, "UTF-8", "EUC-KR");
BENCHMARK(to_unicode<cp949ToBMP>)->Name("cp949ToBMP");
BENCHMARK_CAPTURE(with_iconv, euc_kr_to_ucs2, "UCS-2BE", "EUC-KR");

void lookup(benchmark::State &state) {
    std::uint32_t code_point = 0xAC00;
    for (auto _ : state) {
        std::uint8_t *pair = unicodeToCP949(code_point);
        benchmark::DoNotOptimize(pair);
        tlx_free(pair);
        if (++code_point == 0xD7A4) code_point = 0xAC00;
    }
}
BENCHMARK(lookup)->Name("unicodeToCP949");

}  // namespace
