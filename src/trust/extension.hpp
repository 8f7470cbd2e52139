// The extensions that path building and validation read.
#pragma once

#include <string_view>

#include "der/list_items.hpp"
#include "trust/trust_records.hpp"
#include "x509/extension_records.hpp"

namespace tlx {

namespace extension_id {
constexpr std::string_view kSubjectKeyIdentifier = "2.5.29.14";
constexpr std::string_view kKeyUsage = "2.5.29.15";
constexpr std::string_view kBasicConstraints = "2.5.29.19";
constexpr std::string_view kCertificatePolicies = "2.5.29.32";
constexpr std::string_view kAuthorityKeyIdentifier = "2.5.29.35";
constexpr std::string_view kPolicyConstraints = "2.5.29.36";
}  // namespace extension_id

inline const X509_EXTENSIONS *extensions_of(const X509_CERT *cert) noexcept {
    return cert != nullptr && cert->tbsCertificate != nullptr ? cert->tbsCertificate->extensions : nullptr;
}

inline bool has_extensions(const X509_CERT *cert) noexcept {
    return get_STACK_count(extensions_of(cert)) > 0;
}

/// The first extension of this type; null when there is none.
inline const X509_EXTENSION *find_extension(const X509_CERT *cert, std::string_view id) noexcept {
    const i32 index = index_by_type(extensions_of(cert), &X509_EXTENSION::object, id, -1);
    return index < 0 ? nullptr : item_at<X509_EXTENSION>(extensions_of(cert), index);
}

/// Reads the element of an extension. False for a null extension and for contents that are no element.
[[nodiscard]] inline bool read_extension(const X509_EXTENSION *extension, Element &element) noexcept {
    return extension != nullptr && read_element(octets_of(extension->data), element);
}

/// Reads the contents of an extension that is one element of a primitive type. False for any other.
[[nodiscard]] inline bool read_extension(const X509_EXTENSION *extension, u32 tag, Bytes &contents) noexcept {
    Element element;
    if (!read_extension(extension, element) || !element.matches(tag)) return false;
    contents = element.contents;
    return true;
}

/// The decoded record of an element; null when it cannot be decoded and when memory runs out.
template <typename T>
Owned<T> decode_record(const Element &element) noexcept {
    T *record = nullptr;
    static_cast<void>(Codec<T>::decode(element, &record));
    return Owned<T>(record);
}

}  // namespace tlx
