// CertificateList and its entries (RFC 5280, section 5.1).
#include "x509/crl_entries.hpp"
#include "x509/crl_records.hpp"

using namespace tlx;

namespace {

// revokedCertificates SEQUENCE OF SEQUENCE {
//     userCertificate CertificateSerialNumber, revocationDate Time, crlEntryExtensions Extensions OPTIONAL }
constexpr auto kRevoked = record<X509_REVOKED>(between(2, 3), field<Integer>(&X509_REVOKED::serialNumber),
                                               field<TimeChoice>(&X509_REVOKED::revocationDate),
                                               optional<Extensions>(&X509_REVOKED::extensions));

/// nextUpdate Time OPTIONAL. By hand because its tags tell it from what follows.
struct NextUpdate : Field<X509_CRL, TimeChoice> {
    [[nodiscard]] u32 read(Cursor &children, X509_CRL &record) const noexcept {
        const u8 tag = children.at_end() ? u8{0} : children.peek_tag();
        if (tag == TLX_TAG_UTC_TIME || tag == TLX_TAG_GENERALIZED_TIME) return Field::read(children, record);
        clear(record);
        return 0;
    }
};

struct EntriesValue {
    using type = TLX_CRL_ENTRIES;
    static type *dup(const type *value) noexcept { return type::dup(value); }
    static void free(type *value) noexcept { type::free(value); }
};

/// revokedCertificates. By hand because the entries stay octets.
struct EntriesField : OwnedMember<X509_CRL, EntriesValue> {
    [[nodiscard]] bool absent(const X509_CRL &record) const noexcept {
        return record.entries == nullptr || !record.entries->present();
    }
    [[nodiscard]] u32 read(Cursor &children, X509_CRL &record) const noexcept {
        clear(record);
        record.entries = TLX_CRL_ENTRIES::make();
        if (record.entries == nullptr) return kFieldFailed;
        if (children.at_end() || children.peek_tag() != kSequence) return 0;
        Element list;
        return children.next(list) && record.entries->read(list.contents) ? 0 : kFieldFailed;
    }
    void write(Encoder &out, const X509_CRL &record) const noexcept {
        if (absent(record)) return;
        const auto list = out.sequence();
        out.raw(record.entries->octets());
    }
};

/// Copies what was received, once all has been read.
struct Keeper {
    static void clear(X509_CRL & /*record*/) noexcept {}
    [[nodiscard]] static bool copy(X509_CRL & /*to*/, const X509_CRL & /*from*/) noexcept { return true; }
    [[nodiscard]] static bool absent(const X509_CRL & /*record*/) noexcept { return true; }
    [[nodiscard]] static u32 read(Cursor & /*children*/, X509_CRL & /*record*/) noexcept { return 0; }
    static void write(Encoder & /*out*/, const X509_CRL & /*record*/) noexcept {}
    [[nodiscard]] static bool receive(const Element &element, X509_CRL &record) noexcept {
        return record.entries->keep(element);
    }
};

// TBSCertList ::= SEQUENCE {
//     version Version OPTIONAL, signature AlgorithmIdentifier, issuer Name, thisUpdate Time,
//     nextUpdate Time OPTIONAL, revokedCertificates SEQUENCE OF ... OPTIONAL,
//     crlExtensions [0] EXPLICIT Extensions OPTIONAL }
constexpr auto kTbs =
    group(kSequence, number(&X509_CRL::version).or_else(0), field<SignatureOid>(&X509_CRL::signature),
          field<Name>(&X509_CRL::issuer), field<TimeChoice>(&X509_CRL::thisUpdate),
          NextUpdate{optional<TimeChoice>(&X509_CRL::nextUpdate)}, EntriesField{&X509_CRL::entries},
          explicitly<Extensions>(0, &X509_CRL::extensions))
        .exactly();

// CertificateList ::= SEQUENCE {
//     tbsCertList TBSCertList, signatureAlgorithm AlgorithmIdentifier, signatureValue BIT STRING }
constexpr auto kCrl = record<X509_CRL>(exactly(3), kTbs, field<SignatureOid>(&X509_CRL::signatureAlgorithm),
                                       field<Bits>(&X509_CRL::signatureValue), Keeper{})
                          .but(OnFailure::unchanged);

}  // namespace

TLX_DEFINE_RECORD(X509_REVOKED, kRevoked)
TLX_DEFINE_RECORD_NEW(X509_CRL)
TLX_DEFINE_RECORD_LIFE(X509_CRL, kCrl)
TLX_DEFINE_CODEC_DECODE(X509_CRL, kCrl)
TLX_DEFINE_RECORD_DECODER(X509_CRL)
TLX_DEFINE_RECORD_ENCODER(X509_CRL)
TLX_DEFINE_LIST(X509_CRLS, X509_CRL, Crls)

// By hand because what was received is written as it is.
void Codec<X509_CRL>::encode(Encoder &out, const X509_CRL *record, u8 tag) noexcept {
    if (record == nullptr) return out.fail();
    const Bytes received = record->entries != nullptr ? record->entries->received() : Bytes();
    if (received.empty()) return kCrl.write(out, *record, tag);
    out.raw(received);
}

void tlx::encode_crl_tbs(Encoder &out, const X509_CRL &crl) noexcept {
    kTbs.write(out, crl);
}

void tlx::forget_received(X509_CRL &crl) noexcept {
    if (crl.entries != nullptr) crl.entries->forget_received();
}
