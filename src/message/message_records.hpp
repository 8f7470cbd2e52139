// How the records of messages are read and written inside other records.
//
// The status of a member's codec goes up unchanged: Passing<P7_SIGNER_INFO>, and lists that pass theirs up.
#pragma once

#include <tlxcrypto/rsa.h>
#include <tlxpki/pkcs7.h>

#include "x509/certificate_records.hpp"
#include "x509/crl_records.hpp"

TLX_DECLARE_CODEC(P7_ISSUER_AND_SERIAL_NUMBER);
TLX_DECLARE_CODEC(P7_SIGNER_INFO);
TLX_DECLARE_CODEC(P7_DIGEST_INFO);
TLX_DECLARE_CODEC(P7_SIGNED_DATA);
TLX_DECLARE_CODEC(P7_RECIPIENT_INFO);
TLX_DECLARE_CODEC(P7_ENCRYPTED_CONTENT_INFO);
TLX_DECLARE_CODEC(P7_ENVELOPED_DATA);
TLX_DECLARE_CODEC(P7_SIGNED_AND_ENVELOPED_DATA);
TLX_DECLARE_CODEC(P7_DIGESTED_DATA);
TLX_DECLARE_CODEC(P7_ENCRYPTED_DATA);
TLX_DECLARE_CODEC(P7_CONTENT_INFO);

namespace tlx {

using AlgorithmMember = Passing<X509_ALGO_IDENTIFIER>;

using SignerInfos = SetOf<Passing<P7_SIGNER_INFO>>;
using SignerInfosMember = PassingList<SignerInfos, codes::P7_SIGNER_INFOS>;

using RecipientInfos = SetOf<Passing<P7_RECIPIENT_INFO>>;
using RecipientInfosMember = PassingList<RecipientInfos, codes::P7_RECIPIENT_INFOS>;

/// Attributes that are signed as they were received, so that their element is kept.
template <typename R>
struct AttributesAsReceived : Field<R, Attributes> {
    using Base = Field<R, Attributes>;
    ASN1_UNIT *R::*received;

    void clear(R &record) const noexcept {
        Base::clear(record);
        free_ASN1_UNIT(record.*received);
        record.*received = nullptr;
    }
    [[nodiscard]] bool copy(R &to, const R &from) const noexcept {
        if (!Base::copy(to, from)) return false;
        to.*received = dup_ASN1_UNIT(from.*received);
        return to.*received != nullptr || from.*received == nullptr;
    }
    [[nodiscard]] u32 take(const Element &child, R &record) const noexcept {
        clear(record);
        if (const u32 status = Base::take(child, record); status != 0) return status;
        return stored(record.*received = make_node(child));
    }
    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        Element child;
        Cursor ahead = children;
        clear(record);
        if (!ahead.next(child) || !Base::accepts(child)) return 0;
        children = ahead;
        return take(child, record);
    }
};
/// [number] IMPLICIT SET OF Attribute OPTIONAL
template <typename R>
constexpr AttributesAsReceived<R> attributes_as_received(u8 number, X509_ATTRIBUTES *R::*attributes,
                                                         ASN1_UNIT *R::*received) noexcept {
    return {implicit<Attributes>(number, attributes), received};
}

/// The last members of signed data: certificates, crls and signerInfos in any order. A member that is none of
/// them ends the reading with kEnded.
constexpr u32 kEnded = 0xFFFFFFFC;
template <typename R>
constexpr auto signed_members() noexcept {
    return by_tag(implicit<CertificateSet>(0, &R::certificates), implicit<CrlSet>(1, &R::crls),
                  optional<SignerInfosMember>(&R::signerInfos))
        .others(kEnded);
}

/// Decodes a record with such members. By hand because an unknown one is no failure: a caller's record keeps
/// what was read until then, and without one *out stays null.
template <typename Description, typename R>
u32 decode_signed(const Description &description, const Element &element, R **out,
                  const Statuses &statuses) noexcept {
    const u32 status = decode_record(description, element, out, statuses);
    return status == kEnded ? 0 : status;
}

/// What names a certificate; null when it lacks issuer or serial number, and when memory runs out.
[[nodiscard]] Owned<P7_ISSUER_AND_SERIAL_NUMBER> issuer_and_serial_of(const X509_CERT *cert) noexcept;

/// The RSA key of a holder; null for a key of another kind and for none.
inline RSA_UNIT *rsa_unit(const ASYMMETRIC_KEY *key) noexcept {
    return key != nullptr && key->kind == TLX_KEY_RSA ? static_cast<RSA_UNIT *>(key->key) : nullptr;
}

}  // namespace tlx
