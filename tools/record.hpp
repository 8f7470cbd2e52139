// Records of blocks.
#pragma once

#include "failure.hpp"
#include "input.hpp"
#include "status.hpp"

namespace tool {

/// The record of an element that a source has. Throws Failure.
template <typename T>
T *decode_record(const std::string &source, const ASN1_UNIT *node,
                 uint32_t (*decoder)(const ASN1_UNIT *, T **)) {
    T *record = nullptr;
    const uint32_t status = decoder(node, &record);
    if (status != 0) throw Failure(source + ": cannot be decoded: " + status_sentence(status));
    return record;
}

/// The record of a block that is one element. Throws Failure.
template <typename T>
T *decode_record(const Block &block, uint32_t (*decoder)(const ASN1_UNIT *, T **)) {
    const Node node(decodeToDERSequence_n(block.octets.data(), static_cast<uint32_t>(block.octets.size())));
    return decode_record(block.source, node.get(), decoder);
}

}  // namespace tool
