#include "status/ocsp_nonce.hpp"

#include "asn1/oid_lookup.hpp"
#include "der/list_items.hpp"

namespace tlx {

bool append_nonce(X509_EXTENSIONS *&extensions, Bytes nonce) noexcept {
    const Owned<OCTET_STRING> value(new_string(TLX_TAG_OCTET_STRING, nonce));
    Owned<X509_EXTENSION> extension(
        create_X509_EXTENSION_by_OID_index(nullptr, oid::kOcspNonce, 0, value.get()));
    return append_owned(extensions, extension);
}

i32 find_nonce_index(const X509_EXTENSIONS *extensions) noexcept {
    return get_X509_EXTENSION_index_by_OID_index(extensions, oid::kOcspNonce, -1);
}

const OCTET_STRING *find_nonce(const X509_EXTENSIONS *extensions) noexcept {
    return get_X509_EXTENSION_data(get_X509_EXTENSION(extensions, find_nonce_index(extensions)));
}

}  // namespace tlx
