// Finds the certificates of signers.
#pragma once

#include "message/message_records.hpp"
#include "trust/pool_index.hpp"

namespace tlx {

/// What names a certificate in a message.
struct IssuerAndSerialProperty {
    struct Value {
        const X509_NAME *issuer;
        const BIGINT *serial;
    };
    static bool get(const X509_CERT *cert, Value &value) noexcept;
    static bool equal(Value a, Value b) noexcept;
    static void encode(Encoder &out, Value value) noexcept;
};

/// An index of a pool by a property with a hash key of its own, so that nobody can make values that collide.
template <typename Property>
class CertificateLookup {
  public:
    /// False when memory, or random octets, run out.
    [[nodiscard]] bool build(const X509_CERTIFICATES *pool) noexcept;
    /// The first certificate of the pool with this value; null when there is none. `failed` becomes true when
    /// memory runs out.
    [[nodiscard]] const X509_CERT *find(typename Property::Value value, bool &failed) const noexcept;

  private:
    const X509_CERTIFICATES *pool_ = nullptr;
    PoolIndex<Property> index_;
    SipHash::Key key_ = {};
};

}  // namespace tlx
