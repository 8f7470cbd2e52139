// PEM text of any kind: its body, the structure in it, and all blocks of it.
#include "values.hpp"

namespace {

std::uint32_t copy_node(const ASN1_UNIT *node, void **out) {
    *out = dup_ASN1_UNIT(node);
    return *out != nullptr ? 0 : 1;
}

/// Every block lies behind the one before it and within the input, and is one element when it says so.
void check_blocks(const std::uint8_t *data, std::uint32_t size) {
    ENCODED_BLOCKS *blocks = nullptr;
    const std::uint32_t status = readENCODED_BLOCKS_from_Buffer(data, size, &blocks);
    fuzz::require((status == 0x4E01002B) == (size == 0));
    fuzz::require((status == 0) == (get_ENCODED_BLOCKS_count(blocks) > 0));
    std::uint32_t end = 0;
    for (std::uint32_t i = 0; i < get_ENCODED_BLOCKS_count(blocks); ++i) {
        const ENCODED_BLOCK *block = get_ENCODED_BLOCKS_child(blocks, i);
        fuzz::require(block->offset >= end && block->length > 0 && block->length <= size - block->offset);
        end = block->offset + block->length;
        fuzz::require(block->status != 0 || fuzz::node_of(block->contents, block->contents_len) != nullptr);
    }
    free_ENCODED_BLOCKS(blocks);
}

std::string decode(const std::string &pem) {
    std::uint8_t *der = nullptr;
    const std::uint32_t count = decode_PEM(pem.data(), static_cast<std::int32_t>(pem.size()), &der);
    fuzz::require((count == 0) == (der == nullptr));
    return fuzz::taken(der, count);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string pem(reinterpret_cast<const char *>(data), size);
    const std::string der = decode(pem);
    if (!der.empty()) {
        char *again = nullptr;
        const std::uint32_t length = encode_PEM(reinterpret_cast<const std::uint8_t *>(der.data()),
                                                static_cast<std::uint32_t>(der.size()), "FUZZ", 4, &again, 1);
        fuzz::require(decode(fuzz::taken(again, length)) == der);
    }
    void *made = nullptr;
    const std::uint32_t status =
        readPEM_from_Binary(&made, copy_node, pem.data(), static_cast<std::uint32_t>(size));
    const fuzz::Node node(static_cast<ASN1_UNIT *>(made));
    fuzz::require((status == 0x4E00002B) == der.empty() && (status == 0) == (node != nullptr));
    check_blocks(data, static_cast<std::uint32_t>(size));
    return 0;
}
