// Lookups in the registry, with the texts of all rows in turn, against libcrypto's.
#include <benchmark/benchmark.h>
#include <tlxpki/objects.h>

#include <string>
#include <vector>

#include "peer_bench_objects.hpp"

namespace {

/// The texts of one column, and the same with the last character changed so that no row has them.
std::vector<std::string> texts(const char *OID_ROW::*column, bool missing) {
    std::vector<std::string> all;
    for (int i = 1; i < TLX_OID_COUNT; ++i) {
        std::string text = OID_LIST(i)->*column;
        if (text.size() < 3) continue;
        if (missing) text.back() = '~';
        all.push_back(text);
    }
    return all;
}

template <typename Lookup>
void run(benchmark::State &state, const std::vector<std::string> &all, Lookup lookup) {
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(lookup(all[i]));
        if (++i == all.size()) i = 0;
    }
}

template <const char *OID_ROW::*kColumn, std::uint32_t (*kLookup)(const char *, std::uint32_t)>
void registry(benchmark::State &state, bool missing) {
    run(state, texts(kColumn, missing), [](const std::string &text) {
        return kLookup(text.data(), static_cast<std::uint32_t>(text.size()));
    });
}

template <const char *OID_ROW::*kColumn, int (*kLookup)(const char *)>
void libcrypto(benchmark::State &state, bool missing) {
    run(state, texts(kColumn, missing), [](const std::string &text) { return kLookup(text.c_str()); });
}

constexpr auto dotted = registry<&OID_ROW::dotted, index_from_oid_string>;
constexpr auto short_name = registry<&OID_ROW::short_name, index_from_sn>;
constexpr auto long_name = registry<&OID_ROW::long_name, index_from_ln>;
constexpr auto libcrypto_dotted = libcrypto<&OID_ROW::dotted, peer::number_of_dotted>;
constexpr auto libcrypto_short_name = libcrypto<&OID_ROW::short_name, peer::number_of_short_name>;
constexpr auto libcrypto_long_name = libcrypto<&OID_ROW::long_name, peer::number_of_long_name>;

BENCHMARK_CAPTURE(dotted, found, false);
BENCHMARK_CAPTURE(libcrypto_dotted, found, false);
BENCHMARK_CAPTURE(dotted, missing, true);
BENCHMARK_CAPTURE(short_name, found, false);
BENCHMARK_CAPTURE(libcrypto_short_name, found, false);
BENCHMARK_CAPTURE(short_name, missing, true);
BENCHMARK_CAPTURE(libcrypto_short_name, missing, true);
BENCHMARK_CAPTURE(long_name, found, false);
BENCHMARK_CAPTURE(libcrypto_long_name, found, false);
BENCHMARK_CAPTURE(long_name, missing, true);
BENCHMARK_CAPTURE(libcrypto_long_name, missing, true);

}  // namespace
