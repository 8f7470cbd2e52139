// Verification by RFC 5280 beside nothing but the signatures in it and beside libcrypto: three certificates
// below the anchor whose issuers are in the store, two that are new from DER, reading, stores of any size.
#include <benchmark/benchmark.h>
#include <tlxcrypto.h>
#include <tlxpki/verify.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "peer_bench_path.hpp"

namespace {

struct Free {
    void operator()(VERIFY_STORE *store) const { free_VERIFY_STORE(store); }
    void operator()(RSA_UNIT *key) const { free_RSA_UNIT(key); }
    void operator()(ECDSA_KEY *key) const { free_ECDSA_KEY(key); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;
using Store = Owned<VERIFY_STORE>;

enum Kind { kRsa, kEcdsa };

std::uint32_t size_of(const Octets &octets) {
    return static_cast<std::uint32_t>(octets.size());
}

void require(benchmark::State &state, bool good) {
    if (!good) state.SkipWithError("not valid");
}

/// Four certificates, made once.
const std::vector<Octets> &chain_of(Kind kind) {
    static const std::vector<Octets> chains[] = {peer_chain("RSA", 4), peer_chain("EC", 4)};
    return chains[kind];
}

/// A signature by libtlxcrypto alone, with its key ready or new.
class Bare {
  public:
    Bare(const Octets &cert, const Octets &issuer)
        : peer_(cert, issuer), signature_(peer_.signature()), numbers_(peer_.key()) {
        make_key();
    }
    void make_key() {
        const Octets &first = numbers_[0];
        if (numbers_.size() == 2) {
            rsa_.reset(
                binary_to_RSA_UNIT(first.data(), size_of(first), numbers_[1].data(), size_of(numbers_[1])));
        } else {
            ecdsa_.reset(binary_to_ECDSA_KEY(TLX_CURVE_P256, first.data(), size_of(first)));
        }
    }
    [[nodiscard]] bool verify() const {
        const Octets &message = peer_.message();
        const Octets &first = signature_[0];
        if (rsa_) {
            return verify_RSA(rsa_.get(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PKCS1, message.data(),
                              size_of(message), first.data(), size_of(first)) == 0;
        }
        return verify_ECDSA(ecdsa_.get(), TLX_DIGEST_SHA256, message.data(), size_of(message), first.data(),
                            size_of(first), signature_[1].data(), size_of(signature_[1])) == 0;
    }
    [[nodiscard]] const PeerSignature &peer() const { return peer_; }

  private:
    PeerSignature peer_;
    std::vector<Octets> signature_;
    std::vector<Octets> numbers_;
    Owned<RSA_UNIT> rsa_;
    Owned<ECDSA_KEY> ecdsa_;
};

std::vector<std::unique_ptr<Bare>> signatures_of(const std::vector<Octets> &chain) {
    std::vector<std::unique_ptr<Bare>> signatures;
    for (std::size_t i = 0; i + 1 < chain.size(); ++i)
        signatures.push_back(std::make_unique<Bare>(chain[i], chain[i + 1]));
    return signatures;
}

/// The anchor and as many of the certificates below it.
Store make_store(const std::vector<Octets> &chain, std::size_t issuers) {
    Store store(new_VERIFY_STORE());
    add_VERIFY_STORE_anchor(store.get(), chain.back().data(), size_of(chain.back()), 0);
    for (std::size_t i = chain.size() - 1 - issuers; i + 1 < chain.size(); ++i)
        add_VERIFY_STORE_certificate(store.get(), chain[i].data(), size_of(chain[i]), 0);
    return store;
}

bool verify(const VERIFY_STORE *store, const VERIFY_STORE *pool, const Octets &target) {
    return verify_CERTIFICATE(store, pool, target.data(), size_of(target), nullptr, nullptr) == 0;
}

void BM_ThreeWithStore(benchmark::State &state, Kind kind) {
    const auto &chain = chain_of(kind);
    static const Store stores[] = {make_store(chain_of(kRsa), 2), make_store(chain_of(kEcdsa), 2)};
    for (auto _ : state)
        require(state, verify(stores[kind].get(), nullptr, chain[0]));
}
BENCHMARK_CAPTURE(BM_ThreeWithStore, rsa, kRsa)->ThreadRange(1, 2)->UseRealTime();
BENCHMARK_CAPTURE(BM_ThreeWithStore, ecdsa, kEcdsa)->ThreadRange(1, 2)->UseRealTime();

/// Messages, with nothing but the keys ready.
void BM_ThreeSignatures(benchmark::State &state, Kind kind) {
    static const auto rsa = signatures_of(chain_of(kRsa)), ecdsa = signatures_of(chain_of(kEcdsa));
    for (auto _ : state)
        for (const auto &each : kind == kRsa ? rsa : ecdsa)
            require(state, each->verify());
}
BENCHMARK_CAPTURE(BM_ThreeSignatures, rsa, kRsa)->ThreadRange(1, 2)->UseRealTime();
BENCHMARK_CAPTURE(BM_ThreeSignatures, ecdsa, kEcdsa)->ThreadRange(1, 2)->UseRealTime();

void BM_ThreeSignaturesLibcrypto(benchmark::State &state, Kind kind) {
    const auto signatures = signatures_of(chain_of(kind));
    for (auto _ : state)
        for (const auto &each : signatures)
            require(state, each->peer().verify_message());
}
BENCHMARK_CAPTURE(BM_ThreeSignaturesLibcrypto, rsa, kRsa);
BENCHMARK_CAPTURE(BM_ThreeSignaturesLibcrypto, ecdsa, kEcdsa);

/// The last three certificates: the anchor is in the store, and the other two are new.
std::vector<Octets> short_chain(Kind kind) {
    return {chain_of(kind).begin() + 1, chain_of(kind).end()};
}

void BM_TwoFromDer(benchmark::State &state, Kind kind) {
    const auto chain = short_chain(kind);
    const Store store = make_store(chain, 0);
    for (auto _ : state) {
        const Store pool(new_VERIFY_STORE());
        add_VERIFY_STORE_certificate(pool.get(), chain[1].data(), size_of(chain[1]), 0);
        require(state, verify(store.get(), pool.get(), chain[0]));
    }
}
BENCHMARK_CAPTURE(BM_TwoFromDer, rsa, kRsa);
BENCHMARK_CAPTURE(BM_TwoFromDer, ecdsa, kEcdsa);

/// Two messages, one of them with a key that is made first.
void BM_TwoSignaturesOneKey(benchmark::State &state, Kind kind) {
    const auto signatures = signatures_of(short_chain(kind));
    for (auto _ : state) {
        signatures[0]->make_key();
        require(state, signatures[0]->verify() && signatures[1]->verify());
    }
}
BENCHMARK_CAPTURE(BM_TwoSignaturesOneKey, rsa, kRsa);
BENCHMARK_CAPTURE(BM_TwoSignaturesOneKey, ecdsa, kEcdsa);

void BM_TwoSignaturesOneKeyLibcrypto(benchmark::State &state, Kind kind) {
    const auto signatures = signatures_of(short_chain(kind));
    for (auto _ : state)
        require(state, signatures[0]->peer().verify_with_new_key() && signatures[1]->peer().verify_message());
}
BENCHMARK_CAPTURE(BM_TwoSignaturesOneKeyLibcrypto, rsa, kRsa);
BENCHMARK_CAPTURE(BM_TwoSignaturesOneKeyLibcrypto, ecdsa, kEcdsa);

void BM_TwoFromDerLibcrypto(benchmark::State &state, Kind kind) {
    const auto chain = short_chain(kind);
    const PeerStore store(chain.back());
    for (auto _ : state)
        require(state, store.verify(chain.data(), 2));
}
BENCHMARK_CAPTURE(BM_TwoFromDerLibcrypto, rsa, kRsa);
BENCHMARK_CAPTURE(BM_TwoFromDerLibcrypto, ecdsa, kEcdsa);

/// What verifying costs beside signatures and their search: a target that equals the anchor.
void BM_AnchorItself(benchmark::State &state, Kind kind) {
    const auto &chain = chain_of(kind);
    const Store store = make_store(chain, 0);
    for (auto _ : state)
        require(state, verify(store.get(), nullptr, chain.back()));
}
BENCHMARK_CAPTURE(BM_AnchorItself, rsa, kRsa);
BENCHMARK_CAPTURE(BM_AnchorItself, ecdsa, kEcdsa);

/// What distinguishes the intermediates that are added: their subjects, or nothing but their signatures.
enum Twins { kOthers, kSameName };

void add_many(VERIFY_STORE *store, std::int64_t count, Twins twins) {
    Octets other = chain_of(kEcdsa)[1];
    constexpr std::string_view kName = "Certificate 2";
    const auto name = std::search(other.begin(), other.end(), kName.begin(), kName.end());
    for (std::int64_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(1000000000000 + i);
        std::copy(number.begin(), number.end(), twins == kOthers ? name : other.end() - 13);
        add_VERIFY_STORE_certificate(store, other.data(), size_of(other), 0);
    }
}

void BM_AddToStore(benchmark::State &state, Twins twins) {
    for (auto _ : state) {
        const Store store(new_VERIFY_STORE());
        add_many(store.get(), state.range(0), twins);
    }
    state.counters["per certificate"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK_CAPTURE(BM_AddToStore, others, kOthers)->Arg(10)->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(BM_AddToStore, twins, kSameName)->Arg(10)->Arg(1000)->Arg(100000);

void BM_ThreeWithLargeStore(benchmark::State &state) {
    const Store store = make_store(chain_of(kEcdsa), 2);
    add_many(store.get(), state.range(0), kOthers);
    for (auto _ : state)
        require(state, verify(store.get(), nullptr, chain_of(kEcdsa)[0]));
}
BENCHMARK(BM_ThreeWithLargeStore)->Arg(10)->Arg(100000);

}  // namespace
