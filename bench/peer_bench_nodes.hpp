// libcrypto's lists of typed values, behind plain types.
#pragma once

#include <cstdint>
#include <vector>

namespace peer {

/// The DER of a SEQUENCE of `count` INTEGERs, built from one object each; octets of it.
std::size_t build_integers(std::uint32_t count);
/// Decodes a SEQUENCE into one object per child and frees them; the number of children.
std::uint32_t take_apart(const std::vector<std::uint8_t> &der);
/// The same down to the leaves; the number of elements.
std::uint32_t take_tree_apart(const std::uint8_t *der, std::size_t size);

}  // namespace peer
