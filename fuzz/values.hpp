// Nodes, strings and results for targets that look at more than records.
#pragma once

#include "../tests/support/octets.hpp"
#include "require.hpp"

namespace fuzz {

using namespace tlx_test;

/// The octets of a result, which is freed.
template <typename T>
std::string taken(T *octets, std::uint32_t size) {
    const tlx::OwnedOctets<T> owner(octets);
    return {reinterpret_cast<const char *>(octets), octets != nullptr ? size : 0};
}

inline Node node_of(const void *octets, std::size_t size) {
    return Node(
        decodeToDERSequence_n(static_cast<const std::uint8_t *>(octets), static_cast<std::uint32_t>(size)));
}

inline std::string octets_of(const ASN1_UNIT *node) {
    std::uint8_t *octets = nullptr;
    const std::uint32_t size = ASN1_to_binary(node, &octets);
    require(size != 0xFFFFFFFF);
    return taken(octets, size);
}

}  // namespace fuzz
