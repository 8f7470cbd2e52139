// Nodes, strings and results for targets that look at more than records.
#pragma once

#include <tlxpki.h>

#include <string>

#include "der/owned.hpp"
#include "require.hpp"

namespace fuzz {

using Node = tlx::Owned<ASN1_UNIT>;
using String = tlx::Owned<ASN1_STRING>;
using Number = tlx::Owned<BIGINT>;

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

/// A string record of the type.
inline String string_of(std::int32_t type, const std::string &octets) {
    String string(new_ASN1_STRING());
    require(set_ASN1_STRING_value(string.get(), type, octets.data(),
                                  static_cast<std::uint32_t>(octets.size())) == 0);
    return string;
}

}  // namespace fuzz
