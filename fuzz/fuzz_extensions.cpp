// Values of extensions; the first octet chooses the type. A record that decodes, and its copy, encode to what
// decodes to a record with the same encoding.
#include <tlxpki.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>

#include "../tests/support/extension_types.hpp"

namespace {

using tlx_test::ExtensionType;

std::string encoding_of(const ExtensionType &type, const void *record) {
    std::uint8_t *octets = nullptr;
    const std::uint32_t size = writeDER_to_Binary(record, type.encode, &octets);
    if (size == 0xFFFFFFFF) std::abort();
    std::string copy(reinterpret_cast<const char *>(octets), size);
    tlx_free(octets);
    return copy;
}

void look_for_identity(const void *names) {
    KISA_IDENTIFY_DATA *data = nullptr;
    const std::uint32_t status =
        get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES(static_cast<const GENERAL_NAMES *>(names), &data);
    if ((status == 0) != (data != nullptr)) std::abort();
    free_KISA_IDENTIFY_DATA(data);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0) return 0;
    const ExtensionType &type = tlx_test::kExtensionTypes[data[0] % std::size(tlx_test::kExtensionTypes)];
    void *record = nullptr;
    const std::uint32_t status =
        readDER_from_Buffer(&record, type.decode, data + 1, static_cast<std::uint32_t>(size - 1));
    if ((status == 0) != (record != nullptr)) std::abort();
    if (status != 0) return 0;
    if (type.decode == TLX_DECODER(Seq_to_GENERAL_NAMES)) look_for_identity(record);

    const std::string encoding = encoding_of(type, record);
    void *copy = type.dup(record);
    type.free(record);
    if (copy == nullptr || encoding_of(type, copy) != encoding) std::abort();
    type.free(copy);

    // The decoder ignores unknown children of an authority key identifier, and then refuses an empty one.
    if (type.decode == TLX_DECODER(Seq_to_AUTHORITY_KEYID) && encoding == std::string("\x30\0", 2)) return 0;

    void *again = nullptr;
    if (readDER_from_Buffer(&again, type.decode, reinterpret_cast<const std::uint8_t *>(encoding.data()),
                            static_cast<std::uint32_t>(encoding.size())) != 0)
        std::abort();
    if (encoding_of(type, again) != encoding) std::abort();
    type.free(again);
    return 0;
}
