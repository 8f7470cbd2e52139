#include "message/certificate_lookup.hpp"

#include "der/hash_key.hpp"
#include "message/signer_path.hpp"

namespace tlx {

bool IssuerAndSerialProperty::get(const X509_CERT *cert, Value &value) noexcept {
    value = {get_X509_issuer(cert), get_X509_serial(cert)};
    return value.issuer != nullptr && value.serial != nullptr;
}
bool IssuerAndSerialProperty::equal(Value a, Value b) noexcept {
    return cmp_BIGINT(a.serial, b.serial) == 0 && cmp_X509_NAME(a.issuer, b.issuer) == 0;
}
void IssuerAndSerialProperty::encode(Encoder &out, Value value) noexcept {
    out.integer(value.serial);
    Name::encode(out, value.issuer);
}

template <typename Property>
bool CertificateLookup<Property>::build(const X509_CERTIFICATES *pool) noexcept {
    pool_ = pool;
    return take_hash_key(key_) && index_.build(pool, key_);
}

template <typename Property>
const X509_CERT *CertificateLookup<Property>::find(typename Property::Value value,
                                                   bool &failed) const noexcept {
    Encoder encoder;
    Property::encode(encoder, value);
    failed = failed || encoder.out_of_memory();
    if (!encoder.ok()) return nullptr;
    SipHash hash(key_);
    hash.add(encoder.bytes());
    const Place place = index_.find(hash.value(), value);
    return place == kNoPlace ? nullptr : certificate_at(pool_, place);
}

template class CertificateLookup<IssuerAndSerialProperty>;
template class CertificateLookup<NamedKeyProperty>;
template class CertificateLookup<SubjectProperty>;

}  // namespace tlx
