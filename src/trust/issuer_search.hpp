// Finds the issuer of a certificate: the first of a pool that fits its authority key identifier.
#pragma once

#include "trust/extension.hpp"
#include "trust/pool_index.hpp"

namespace tlx {

/// The contents of a subject key identifier.
struct SubjectKeyProperty {
    using Value = Bytes;
    static bool get(const X509_CERT *cert, Value &value) noexcept;
    static bool equal(Value a, Value b) noexcept;
    static void encode(Encoder &out, Value value) noexcept;
};
struct SerialProperty {
    using Value = const BIGINT *;
    static bool get(const X509_CERT *cert, Value &value) noexcept;
    static bool equal(Value a, Value b) noexcept;
    static void encode(Encoder &out, Value value) noexcept;
};
struct SubjectProperty {
    using Value = const X509_NAME *;
    static bool get(const X509_CERT *cert, Value &value) noexcept;
    static bool equal(Value a, Value b) noexcept;
    static void encode(Encoder &out, Value value) noexcept;
};

/// Looks issuers up in a pool. It scans a small pool, and indexes a large one at the first search, so that
/// later searches cost the same whatever the size of the pool.
class IssuerSearch {
  public:
    explicit IssuerSearch(const X509_CERTIFICATES *pool) noexcept : pool_(pool) {}

    /// The first certificate, in pool order, that fits by subject key identifier, serial number or subject
    /// name; null when there is none.
    [[nodiscard]] const X509_CERT *find(const AUTHORITY_KEYID &wanted) noexcept;
    /// True when memory, or random octets, ran out during a search.
    [[nodiscard]] bool failed() const noexcept { return failed_; }

  private:
    [[nodiscard]] Place scan(const AUTHORITY_KEYID &wanted) const noexcept;
    [[nodiscard]] Place look_up(const AUTHORITY_KEYID &wanted) noexcept;
    [[nodiscard]] Place look_up_key(Bytes wanted) noexcept;
    template <typename Property>
    [[nodiscard]] Place look_up(PoolIndex<Property> &index, typename Property::Value wanted) noexcept;
    template <typename Property>
    [[nodiscard]] bool is_ready(PoolIndex<Property> &index) noexcept;

    const X509_CERTIFICATES *pool_;
    PoolIndex<SubjectKeyProperty> by_key_;
    PoolIndex<SerialProperty> by_serial_;
    PoolIndex<SubjectProperty> by_subject_;
    SipHash::Key hash_key_ = {};
    bool has_hash_key_ = false;
    bool failed_ = false;
};

}  // namespace tlx
