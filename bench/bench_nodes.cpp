// Walking and building nodes, beside libcrypto's lists of typed values. Lists are timed at two sizes: the
// time per child has to stay the same.
#include <benchmark/benchmark.h>
#include <tlxpki.h>

#include "peer_bench_nodes.hpp"

namespace {

using Octets = std::vector<std::uint8_t>;

BIGINT *number_of(std::uint32_t word) {
    BIGINT *number = new_BIGINT();
    set_BIGINT_word(number, word);
    return number;
}

ASN1_UNIT *build_integers(std::uint32_t count) {
    ASN1_UNIT *seq = new_ASN1_UNIT();
    for (std::uint32_t i = 0; i < count; ++i) {
        BIGINT *number = number_of(1000000 + i);
        addToDERSequence(seq, TLX_TAG_INTEGER, number, get_BIGINT_der_length(number));
        free_BIGINT(number);
    }
    return seq;
}

Octets encoding_of(const ASN1_UNIT *node) {
    std::uint8_t *der = nullptr;
    const std::uint32_t size = ASN1_to_binary(node, &der);
    Octets octets(der, der + size);
    tlx_free(der);
    return octets;
}

/// A tree of the size and depth of a certificate: 4 levels of SEQUENCEs, 121 elements, about 1 KB.
ASN1_UNIT *build_tree(unsigned depth) {
    ASN1_UNIT *node = new_ASN1_UNIT();
    if (depth == 0) {
        static char dotted[] = "1.2.410.200004.1.1.7";
        static std::uint8_t text[] = "a text of 24 characters.";
        OBJECT_IDENTIFIER oid = {TLX_TAG_OBJECT_IDENTIFIER, reinterpret_cast<std::uint8_t *>(dotted), 20, 0};
        UTF8_STRING string = {TLX_TAG_UTF8_STRING, text, 24, 0};
        addToDERSequence(node, TLX_TAG_OBJECT_IDENTIFIER, &oid, 20);
        addToDERSequence(node, TLX_TAG_UTF8_STRING, &string, 24);
        addToDERSequence(node, TLX_TAG_NULL, nullptr, 0);
        return node;
    }
    for (int i = 0; i < 3; ++i)
        addToDERSequence(node, TLX_TAG_ANY_NODE, build_tree(depth - 1), 0);
    return node;
}

std::uint32_t take_tree_apart(const ASN1_UNIT *node) {
    std::uint32_t count = 1;
    std::uint32_t cursor = 0;
    const std::uint32_t children = getSequenceChildNum(node);
    for (std::uint32_t i = 0; i < children; ++i) {
        if (getChildType(node, i) == TLX_TAG_SEQUENCE_OCTET) {
            auto *child = static_cast<ASN1_UNIT *>(getBERChildOffset(node, i, TLX_TAG_SEQUENCE, &cursor));
            count += take_tree_apart(child);
            free_ASN1_UNIT(child);
        } else {
            free_ASN1_STRING(
                static_cast<ASN1_STRING *>(getBERChildOffset(node, i, TLX_TAG_ANY_STRING, &cursor)));
            ++count;
        }
    }
    return count;
}

void BuildSequence(benchmark::State &state) {
    const auto count = static_cast<std::uint32_t>(state.range(0));
    for (auto _ : state) {
        ASN1_UNIT *seq = build_integers(count);
        benchmark::DoNotOptimize(getASN1ValueLength(seq));
        free_ASN1_UNIT(seq);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BuildSequence)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BuildSequencePeer(benchmark::State &state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(peer::build_integers(static_cast<std::uint32_t>(state.range(0))));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BuildSequencePeer)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void IterateByCursor(benchmark::State &state) {
    const auto count = static_cast<std::uint32_t>(state.range(0));
    ASN1_UNIT *seq = build_integers(count);
    for (auto _ : state) {
        std::uint32_t cursor = 0;
        std::uint32_t found = 0;
        while (auto *number =
                   static_cast<BIGINT *>(getBERChildOffset(seq, found, TLX_TAG_INTEGER, &cursor))) {
            free_BIGINT(number);
            ++found;
        }
        if (found != count) state.SkipWithError("children are missing");
    }
    free_ASN1_UNIT(seq);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(IterateByCursor)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void IteratePeer(benchmark::State &state) {
    ASN1_UNIT *seq = build_integers(static_cast<std::uint32_t>(state.range(0)));
    const Octets der = encoding_of(seq);
    free_ASN1_UNIT(seq);
    for (auto _ : state) {
        if (peer::take_apart(der) != state.range(0)) state.SkipWithError("children are missing");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(IteratePeer)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void CountChildren(benchmark::State &state) {
    ASN1_UNIT *seq = build_integers(static_cast<std::uint32_t>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(getSequenceChildNum(seq));
    free_ASN1_UNIT(seq);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(CountChildren)->Arg(100000)->Unit(benchmark::kMillisecond);

void BuildTree(benchmark::State &state) {
    for (auto _ : state)
        free_ASN1_UNIT(build_tree(3));
}
BENCHMARK(BuildTree);

void TakeTreeApart(benchmark::State &state) {
    ASN1_UNIT *tree = build_tree(3);
    const Octets der = encoding_of(tree);
    free_ASN1_UNIT(tree);
    std::uint32_t elements = 0;
    for (auto _ : state) {
        ASN1_UNIT *node = decodeToDERSequence_n(der.data(), static_cast<std::uint32_t>(der.size()));
        elements = take_tree_apart(node);
        free_ASN1_UNIT(node);
    }
    state.counters["elements"] = elements;
    state.counters["octets"] = static_cast<double>(der.size());
}
BENCHMARK(TakeTreeApart);

void TakeTreeApartPeer(benchmark::State &state) {
    ASN1_UNIT *tree = build_tree(3);
    const Octets der = encoding_of(tree);
    free_ASN1_UNIT(tree);
    std::uint32_t elements = 0;
    for (auto _ : state)
        elements = peer::take_tree_apart(der.data(), der.size());
    state.counters["elements"] = elements;
}
BENCHMARK(TakeTreeApartPeer);

}  // namespace
