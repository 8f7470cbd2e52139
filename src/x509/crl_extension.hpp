// The values of extensions, where they lie.
#pragma once

#include <tlxpki/object_names.h>
#include <tlxpki/x509_crl.h>
#include <tlxpki/x509_extension.h>

#include "der/values.hpp"

namespace tlx {

/// The octets of the first extension of this row of the registry; empty when there is none.
inline Bytes extension_octets(const X509_EXTENSIONS *extensions, i32 oid_index) noexcept {
    const i32 at = get_X509_EXTENSION_index_by_OID_index(extensions, oid_index, -1);
    return at < 0 ? Bytes() : octets_of(get_X509_EXTENSION(extensions, at)->data);
}

/// Its value, which is one element with a tag. The element stays empty when there is no such extension. False
/// for another value.
[[nodiscard]] inline bool read_extension(const X509_EXTENSIONS *extensions, i32 oid_index, u8 tag,
                                         Element &element) noexcept {
    if (get_X509_EXTENSION_index_by_OID_index(extensions, oid_index, -1) < 0) return true;
    const Bytes octets = extension_octets(extensions, oid_index);
    return read_element(octets, element) && element.whole.size() == octets.size() && element.tag == tag;
}

/// Whether a list says only what changed since another one.
inline bool is_delta(const X509_CRL &crl) noexcept {
    return get_X509_EXTENSION_index_by_OID_index(crl.extensions, TLX_OID_DELTA_CRL_INDICATOR, -1) >= 0;
}

}  // namespace tlx
