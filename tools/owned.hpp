// Owners of the library's results.
#pragma once

#include <tlxpki.h>

#include <memory>
#include <new>

namespace tool {

template <auto Free>
struct Releaser {
    template <typename T>
    void operator()(T *object) const {
        Free(object);
    }
};

template <typename T, auto Free>
using Owned = std::unique_ptr<T, Releaser<Free>>;

using Certificate = Owned<X509_CERT, free_X509_CERT>;
using Certificates = Owned<X509_CERTIFICATES, free_X509_CERTIFICATES>;
using Anchor = Owned<TRUST_ANCHOR, free_TRUST_ANCHOR>;
using Anchors = Owned<TRUST_ANCHORS, free_TRUST_ANCHORS>;
using Oid = Owned<OBJECT_IDENTIFIER, free_OBJECT_IDENTIFIER>;
using Oids = Owned<OBJECT_IDENTIFIERS, free_OBJECT_IDENTIFIERS>;
using PolicyTree = Owned<node_LIST, free_node_LIST>;
using Node = Owned<ASN1_UNIT, free_ASN1_UNIT>;
using Time = Owned<ASN1_TIME, free_ASN1_TIME>;
using PublicKey = Owned<X509_PUBKEY, free_X509_PUBKEY>;
using Key = Owned<ASYMMETRIC_KEY, free_ASYMMETRIC_KEY>;
using RsaKey = Owned<RSA_UNIT, free_RSA_UNIT>;
using String = Owned<ASN1_STRING, free_ASN1_STRING>;
using Text = Owned<char, tlx_free>;

/// Owns the result of a library constructor, which is null only when memory has run out.
template <typename Owner>
Owner made(typename Owner::pointer object) {
    if (object == nullptr) throw std::bad_alloc();
    return Owner(object);
}

/// The same for functions that return a failure only when memory runs out, otherwise 0.
inline void must(uint32_t status) {
    if (status != 0) throw std::bad_alloc();
}

}  // namespace tool
