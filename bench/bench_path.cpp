// From the DER of three certificates to a validated path (RSA-2048 with SHA-256), everything freed, beside
// libcrypto and beside nothing but the three RSA verifications in it; and building over pools of any size.
#include <benchmark/benchmark.h>
#include <tlxpki.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "peer_bench_path.hpp"

namespace {

struct Free {
    void operator()(X509_CERT *cert) const { free_X509_CERT(cert); }
    void operator()(TRUST_ANCHOR *anchor) const { free_TRUST_ANCHOR(anchor); }
    void operator()(node_LIST *tree) const { free_node_LIST(tree); }
    void operator()(BIGINT *number) const { free_BIGINT(number); }
    void operator()(RSA_UNIT *unit) const { free_RSA_UNIT(unit); }
    void operator()(STACK *certificates) const { free_X509_CERTIFICATES(certificates); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

constexpr unsigned kLength = 3;

/// The target first, the root last.
const Octets *chain() {
    static const auto read = [](const char *name) {
        std::ifstream file(std::string(TLX_TEST_DATA "/chain/") + name, std::ios::binary);
        return Octets{std::istreambuf_iterator<char>(file), {}};
    };
    static const Octets octets[kLength] = {read("user.der"), read("middle.der"), read("root.der")};
    return octets;
}

X509_CERT *decode(const Octets &der) {
    void *cert = nullptr;
    readDER_from_Buffer(&cert, TLX_DECODER(Seq_to_X509_CERT), der.data(),
                        static_cast<std::uint32_t>(der.size()));
    return static_cast<X509_CERT *>(cert);
}

/// All certificates of the chain, decoded.
Owned<STACK> decode_chain() {
    Owned<STACK> certificates(new_X509_CERTIFICATES());
    for (unsigned i = 0; i < kLength; ++i)
        push_STACK_value(certificates.get(), decode(chain()[i]));
    return certificates;
}

/// The trusted root, which stays from one path to the next.
const TRUST_ANCHORS *anchors() {
    static TRUST_ANCHORS *const list = [] {
        TRUST_ANCHORS *made = new_TRUST_ANCHORS();
        const Owned<X509_CERT> root(decode(chain()[kLength - 1]));
        add_TRUST_ANCHORS(made, Owned<TRUST_ANCHOR>(create_TRUST_ANCHOR_from_X509_CERT(root.get())).get());
        return made;
    }();
    return list;
}

bool validate(const X509_CERTIFICATES *path) {
    node_LIST *tree = nullptr;
    const bool good = validate_certpath(path, nullptr, &tree) == 0;
    free_node_LIST(tree);
    return good;
}

bool build_and_validate(const X509_CERTIFICATES *pool, const X509_CERT *target) {
    X509_CERTIFICATES *path = nullptr;
    if (build_certPath(pool, anchors(), target, &path) != 0) return false;
    const Owned<STACK> owner(path);
    return validate(path);
}

void require(benchmark::State &state, bool good) {
    if (!good) state.SkipWithError("not valid");
}

void BM_FromDer(benchmark::State &state) {
    for (auto _ : state) {
        const Owned<STACK> pool = decode_chain();
        require(state, build_and_validate(pool.get(), get_X509_CERTIFICATES_child(pool.get(), 0)));
    }
}
BENCHMARK(BM_FromDer)->ThreadRange(1, 2)->UseRealTime();

void BM_FromDerLibcrypto(benchmark::State &state) {
    const PeerStore store(chain()[kLength - 1]);
    for (auto _ : state)
        require(state, store.verify(chain(), kLength));
}
BENCHMARK(BM_FromDerLibcrypto);

void verify_three(benchmark::State &state, bool (PeerSignature::*verify)() const) {
    const PeerSignature signatures[kLength] = {
        {chain()[0], chain()[1]}, {chain()[1], chain()[2]}, {chain()[2], chain()[2]}};
    for (auto _ : state) {
        for (const PeerSignature &signature : signatures)
            require(state, (signature.*verify)());
    }
}

/// Keys, contexts and digests are ready: nothing but the public operations.
void BM_ThreeVerificationsLibcrypto(benchmark::State &state) {
    verify_three(state, &PeerSignature::verify);
}
BENCHMARK(BM_ThreeVerificationsLibcrypto);

/// Keys are ready.
void BM_ThreeMessageVerificationsLibcrypto(benchmark::State &state) {
    verify_three(state, &PeerSignature::verify_message);
}
BENCHMARK(BM_ThreeMessageVerificationsLibcrypto);

/// With the digest of the to-be-signed part, and the encoding that it takes.
void BM_ThreeVerifications(benchmark::State &state) {
    const Owned<STACK> certificates = decode_chain();
    const X509_CERT *certs[kLength];
    for (int i = 0; i < static_cast<int>(kLength); ++i)
        certs[i] = get_X509_CERTIFICATES_child(certificates.get(), i);
    for (auto _ : state) {
        for (unsigned i = 0; i < kLength; ++i)
            require(state,
                    verify_SIG_X509_CERT(certs[i], get_X509_SPKI(certs[i + 1 < kLength ? i + 1 : i])) == 0);
    }
}
BENCHMARK(BM_ThreeVerifications);

void BM_FromDerWithoutBuilding(benchmark::State &state) {
    for (auto _ : state)
        require(state, validate(decode_chain().get()));
}
BENCHMARK(BM_FromDerWithoutBuilding);

/// A server's case: the certificates of the authorities are there already.
void BM_TargetFromDer(benchmark::State &state) {
    const Owned<STACK> pool = decode_chain();
    for (auto _ : state) {
        const Owned<X509_CERT> target(decode(chain()[0]));
        require(state, build_and_validate(pool.get(), target.get()));
    }
}
BENCHMARK(BM_TargetFromDer)->ThreadRange(1, 2)->UseRealTime();

void BM_DecodeAndFree(benchmark::State &state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(decode_chain());
}
BENCHMARK(BM_DecodeAndFree);

/// Builds the path over a pool in which its certificates stand last.
void BM_BuildOverPool(benchmark::State &state) {
    const Owned<STACK> pool(new_X509_CERTIFICATES());
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        Owned<X509_CERT> other(decode(chain()[0]));
        char number[17];
        std::snprintf(number, sizeof number, "%016llX", static_cast<unsigned long long>(i) + (1ULL << 40));
        set_X509_serial(other.get(), Owned<BIGINT>(hex_to_BIGINT(number)).get());
        const OCTET_STRING *key = get_X509_EXTENSION_data(
            get_X509_EXTENSION(get_X509_extensions(other.get()),
                               get_X509_EXTENSION_index_by_OID_index(
                                   get_X509_extensions(other.get()),
                                   static_cast<std::int32_t>(index_from_oid_string("2.5.29.14", 9)), -1)));
        for (int k = 0; k < 16; ++k)
            key->data[key->length - 16 + k] = static_cast<std::uint8_t>(number[k]);
        push_STACK_value(pool.get(), other.release());
    }
    for (unsigned i = 1; i < kLength; ++i)
        push_STACK_value(pool.get(), decode(chain()[i]));
    const Owned<X509_CERT> target(decode(chain()[0]));
    for (auto _ : state) {
        X509_CERTIFICATES *path = nullptr;
        require(state, build_certPath(pool.get(), anchors(), target.get(), &path) == 0);
        free_X509_CERTIFICATES(path);
    }
    state.counters["per certificate"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_BuildOverPool)->Arg(0)->Arg(100)->Arg(10000)->Arg(100000);

}  // namespace
