// Revocation lists of 1,000 to 1,000,000 entries of 37 octets, beside libcrypto: decoding with what it takes
// of memory, the index that the first search makes, searches, and building a list entry by entry.
#include <benchmark/benchmark.h>
#include <tlxpki.h>

#include <map>
#include <memory>
#include <string>

#include "peer_bench_crl.hpp"

namespace {

struct Free {
    void operator()(X509_CRL *crl) const { free_X509_CRL(crl); }
    void operator()(X509_REVOKED *revoked) const { free_X509_REVOKED(revoked); }
    void operator()(BIGINT *number) const { free_BIGINT(number); }
    void operator()(ASN1_TIME *time) const { free_ASN1_TIME(time); }
    void operator()(X509_TIME *time) const { free_X509_TIME(time); }
    void operator()(ASN1_STRING *string) const { free_ASN1_STRING(string); }
    void operator()(STACK *name) const { free_X509_NAME(name); }
    void operator()(RSA_UNIT *unit) const { free_RSA_UNIT(unit); }
    void operator()(ASYMMETRIC_KEY *key) const { free_ASYMMETRIC_KEY(key); }
    void operator()(VERIFY_STORE *store) const { free_VERIFY_STORE(store); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

/// The serial numbers of entries are odd, of four octets, and in no order.
std::uint32_t serial_at(std::uint32_t place) {
    return 0x40000001U + (place * 0x9E3779B1U & 0x1FFFFFFFU) * 2;
}

Owned<BIGINT> number_of(std::uint32_t value) {
    Owned<BIGINT> number(new_BIGINT());
    set_BIGINT_word(number.get(), value);
    return number;
}

Owned<X509_CRL> build(std::uint32_t count) {
    const Owned<ASN1_TIME> time(charToASN1_TIME("2024-02-03,04:05:06"));
    Owned<X509_REVOKED> entry(create_X509_REVOKED(number_of(1).get(), time.get(), 1));
    Owned<X509_CRL> crl(new_X509_CRL());
    for (std::uint32_t i = 0; i < count; ++i) {
        set_BIGINT_word(entry->serialNumber, serial_at(i));
        add_X509_CRL_revoked(crl.get(), entry.get());
    }
    return crl;
}

constexpr char kKeyFile[] = TLX_TEST_DATA "/keys/rsa-0.pem";

void sign(X509_CRL *crl) {
    const Owned<RSA_UNIT> unit(new_RSA_UNIT());
    const Owned<ASYMMETRIC_KEY> key(new_ASYMMETRIC_KEY());
    const Owned<ASN1_STRING> algorithm(get_OBJECT_IDENTIFIER("RSA-SHA256", 0));
    const Owned<STACK> name(new_X509_NAME());
    const Owned<X509_TIME> time(new_X509_TIME());
    const Owned<ASN1_TIME> calendar(charToASN1_TIME("2024-02-03,04:05:06"));
    readPKCS1_from_File(unit.get(), nullptr, 0, kKeyFile);
    set_ASYMMETRIC_KEY(key.get(), TLX_KEY_RSA, unit.get());
    set_X509_TIME(time.get(), calendar.get());
    add_X509_NAME_child_OID_index(name.get(), TLX_OID_COMMON_NAME, TLX_TAG_UTF8_STRING, "CA", -1, -1);
    set_X509_CRL_version(crl, 1);
    set_X509_CRL_signature(crl, algorithm.get());
    set_X509_CRL_issuer(crl, name.get());
    set_X509_CRL_thisUpdate(crl, time.get());
    set_X509_TIME(time.get(), Owned<ASN1_TIME>(charToASN1_TIME("2099-02-03,04:05:06")).get());
    set_X509_CRL_nextUpdate(crl, time.get());
    gen_SIG_X509_CRL(crl, key.get());
}

/// A signed list with this many entries, which is made once.
const Octets &list_of(std::int64_t count) {
    static std::map<std::int64_t, Octets> lists;
    Octets &list = lists[count];
    if (list.empty()) {
        const Owned<X509_CRL> crl = build(static_cast<std::uint32_t>(count));
        sign(crl.get());
        std::uint8_t *octets = nullptr;
        const std::uint32_t size = writeDER_to_Binary(crl.get(), TLX_ENCODER(X509_CRL_to_Seq), &octets);
        list.assign(octets, octets + size);
        tlx_free(octets);
    }
    return list;
}

Owned<X509_CRL> decode(const Octets &der) {
    void *crl = nullptr;
    readDER_from_Buffer(&crl, TLX_DECODER(Seq_to_X509_CRL), der.data(),
                        static_cast<std::uint32_t>(der.size()));
    return Owned<X509_CRL>(static_cast<X509_CRL *>(crl));
}

bool has(const X509_CRL *crl, const BIGINT *serial) {
    return find_X509_CRL_revoked(crl, nullptr, serial, nullptr) == 0;
}

void require(benchmark::State &state, bool good) {
    if (!good) state.SkipWithError("not as it should be");
}

void sizes(benchmark::internal::Benchmark *bench) {
    bench->Arg(1000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMicrosecond);
}

/// What is held of a list, in octets for an octet of its encoding.
void count_memory(benchmark::State &state, std::size_t before, const Octets &list) {
    state.counters["held"] =
        static_cast<double>(allocated_octets() - before) / static_cast<double>(list.size());
}

void BM_Decode(benchmark::State &state) {
    const Octets &list = list_of(state.range(0));
    for (auto _ : state)
        require(state, decode(list) != nullptr);
    const std::size_t before = allocated_octets();
    const Owned<X509_CRL> crl = decode(list);
    require(state, has(crl.get(), number_of(serial_at(7)).get()));
    count_memory(state, before, list);
}
BENCHMARK(BM_Decode)->Apply(sizes);

void BM_DecodeLibcrypto(benchmark::State &state) {
    const Octets &list = list_of(state.range(0));
    for (auto _ : state)
        const PeerCrl crl(list);
    const std::size_t before = allocated_octets();
    const PeerCrl crl(list);
    require(state, crl.find(serial_at(7)));
    count_memory(state, before, list);
}
BENCHMARK(BM_DecodeLibcrypto)->Apply(sizes);

void BM_FirstSearch(benchmark::State &state) {
    const Octets &list = list_of(state.range(0));
    const Owned<BIGINT> serial = number_of(serial_at(7));
    for (auto _ : state) {
        state.PauseTiming();
        Owned<X509_CRL> crl = decode(list);
        state.ResumeTiming();
        require(state, has(crl.get(), serial.get()));
        state.PauseTiming();
        crl.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_FirstSearch)->Apply(sizes);

void BM_FirstSearchLibcrypto(benchmark::State &state) {
    const Octets &list = list_of(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto crl = std::make_unique<PeerCrl>(list);
        state.ResumeTiming();
        require(state, crl->find(serial_at(7)));
        state.PauseTiming();
        crl.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_FirstSearchLibcrypto)->Apply(sizes);

/// Searches for entries all over the list, every other one in vain.
constexpr std::uint32_t kWanted = 1U << 16;
std::uint32_t wanted_at(std::uint32_t i, std::int64_t count) {
    return serial_at(static_cast<std::uint32_t>(i * 15485863ULL % static_cast<std::uint64_t>(count))) - i % 2;
}

void BM_Search(benchmark::State &state) {
    const Owned<X509_CRL> crl = decode(list_of(state.range(0)));
    const Owned<BIGINT> wanted = number_of(1);
    std::uint32_t i = 0;
    (void)has(crl.get(), wanted.get());  // makes the index
    for (auto _ : state) {
        set_BIGINT_word(wanted.get(), wanted_at(i, state.range(0)));  // libcrypto's is also in the cache
        require(state, has(crl.get(), wanted.get()) == (i % 2 == 0));
        i = (i + 1) % kWanted;
    }
}
BENCHMARK(BM_Search)->Arg(1000)->Arg(100000)->Arg(1000000);

void BM_SearchLibcrypto(benchmark::State &state) {
    const PeerCrl crl(list_of(state.range(0)));
    std::uint32_t i = 0;
    (void)crl.find(1);
    for (auto _ : state) {
        require(state, crl.find(wanted_at(i, state.range(0))) == (i % 2 == 0));
        i = (i + 1) % kWanted;
    }
}
BENCHMARK(BM_SearchLibcrypto)->Arg(1000)->Arg(100000)->Arg(1000000);

void BM_Build(benchmark::State &state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(build(static_cast<std::uint32_t>(state.range(0))));
    state.counters["per entry"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_Build)->Apply(sizes);

std::uint32_t size_of(const Octets &octets) {
    return static_cast<std::uint32_t>(octets.size());
}

Owned<VERIFY_STORE> make_store(std::int64_t entries) {
    Owned<VERIFY_STORE> store(new_VERIFY_STORE());
    const Octets ca = peer_certificate(kKeyFile, true);
    add_VERIFY_STORE_anchor(store.get(), ca.data(), size_of(ca), 0);
    if (entries == 0) return store;
    const Octets &list = list_of(entries);
    add_VERIFY_STORE_crl(store.get(), list.data(), size_of(list));
    return store;
}

/// Reading a list into a store of the verification by RFC 5280, with the index of its entries.
void BM_AddToStore(benchmark::State &state) {
    static_cast<void>(list_of(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(make_store(state.range(0)));
}
BENCHMARK(BM_AddToStore)->Apply(sizes);

/// Verifying a certificate below the anchor without a list, and with lists of any size.
void BM_Verify(benchmark::State &state) {
    const Owned<VERIFY_STORE> store = make_store(state.range(0));
    const Octets user = peer_certificate(kKeyFile, false);
    VERIFY_SETTINGS settings = {};
    settings.profile = TLX_PROFILE_ANY;
    settings.revocation = state.range(0) == 0 ? TLX_REVOCATION_OFF : TLX_REVOCATION_PATH;
    for (auto _ : state)
        require(state, verify_CERTIFICATE(store.get(), nullptr, user.data(), size_of(user), &settings,
                                          nullptr) == 0);
}
BENCHMARK(BM_Verify)->Arg(0)->Arg(1000)->Arg(100000)->Arg(1000000);

}  // namespace
