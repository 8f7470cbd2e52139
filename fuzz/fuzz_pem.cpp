// PEM text of any kind: decodes its body, and the structure in it.
#include <tlxcrypto/memory.h>
#include <tlxpki/asn1.h>
#include <tlxpki/pem.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

std::uint32_t copy_node(const ASN1_UNIT *node, void **out) {
    *out = dup_ASN1_UNIT(node);
    return *out != nullptr ? 0 : 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const auto *pem = reinterpret_cast<const char *>(data);
    std::uint8_t *der = nullptr;
    const std::uint32_t count = decode_PEM(pem, static_cast<std::int32_t>(size), &der);
    if ((count == 0) != (der == nullptr)) std::abort();
    if (count != 0) {
        char *again = nullptr;
        std::uint8_t *same = nullptr;
        const std::uint32_t length = encode_PEM(der, count, "FUZZ", 4, &again, 1);
        if (decode_PEM(again, static_cast<std::int32_t>(length), &same) != count) std::abort();
        tlx_free(same);
        tlx_free(again);
    }
    tlx_free(der);

    void *node = nullptr;
    const std::uint32_t status = readPEM_from_Binary(&node, copy_node, pem, static_cast<std::uint32_t>(size));
    if ((status == 0x4E00002B) != (count == 0) || (status == 0) != (node != nullptr)) std::abort();
    free_ASN1_UNIT(static_cast<ASN1_UNIT *>(node));
    return 0;
}
