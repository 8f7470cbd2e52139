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
    if (X509_ATTRIBUTES *set = fuzz::decode(data, size, Seq_to_X509_ATTRIBUTES); set != nullptr) {
        fuzz::require(get_X509_ATTRIBUTES_count(set) > 0);
        fuzz::check_reencoding(set, Seq_to_X509_ATTRIBUTES, X509_ATTRIBUTES_to_Seq, dup_X509_ATTRIBUTES,
                               free_X509_ATTRIBUTES);
    }
    if (X509_ATTRIBUTE *attribute = fuzz::decode(data, size, Seq_to_X509_ATTRIBUTE); attribute != nullptr) {
        look_at(attribute);
        fuzz::check_reencoding(attribute, Seq_to_X509_ATTRIBUTE, X509_ATTRIBUTE_to_Seq, dup_X509_ATTRIBUTE,
                               free_X509_ATTRIBUTE);
    }
    if (X509_ALGO_IDENTIFIERS *set = fuzz::decode(data, size, Seq_to_X509_ALGO_IDENTIFIERS); set != nullptr) {
        fuzz::check_reencoding(set, Seq_to_X509_ALGO_IDENTIFIERS, X509_ALGO_IDENTIFIERS_to_Seq,
                               dup_X509_ALGO_IDENTIFIERS, free_X509_ALGO_IDENTIFIERS);
    }
    return 0;
}
