// Sets of attributes, single attributes and algorithm identifiers.
#include "reencode.hpp"

namespace {

void look_at(const X509_ATTRIBUTE *attribute) {
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(get_X509_ATTRIBUTE_count(attribute)); ++i) {
        const std::uint32_t type = get_X509_ATTRIBUTE_data_type(attribute, i);
        X509_ATTRIBUTE *copy = nullptr;
        fuzz::require(create_X509_ATTRIBUTE_OID(&copy, get_X509_ATTRIBUTE_OID(attribute), type,
                                                get_X509_ATTRIBUTE_data(attribute, i)) != nullptr);
        free_X509_ATTRIBUTE(copy);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    TLX_FUZZ(X509_ATTRIBUTES)
    TLX_FUZZ_LOOK(X509_ATTRIBUTE, look_at)
    TLX_FUZZ(X509_ALGO_IDENTIFIERS)
    TLX_FUZZ(X509_ALGO_IDENTIFIER)
    return 0;
}
