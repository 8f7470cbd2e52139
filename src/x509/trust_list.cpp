// Certificate trust lists.
#include "x509/trust_list_records.hpp"

#include "x509/extension_records.hpp"

using namespace tlx;

namespace {

// TrustedSubject ::= SEQUENCE {
//     subjectIdentifier OCTET STRING, subjectAttributes SET OF Attribute OPTIONAL }
constexpr auto kTrustedCertificate =
    record<TRUSTED_CERTIFICATE>(between(1, 2), field<Octets>(&TRUSTED_CERTIFICATE::subjectIdentifier),
                                trailing<SetOf<Nested<X509_ATTRIBUTE>>>(&TRUSTED_CERTIFICATE::attributes));

// TrustedSubjects ::= SEQUENCE OF TrustedSubject
using TrustedSubjects = List<Nested<TRUSTED_CERTIFICATE>>;

/// extensions [0] EXPLICIT Extensions OPTIONAL. By hand because any constructed element may be the wrapper,
/// and what follows the extensions in it is ignored.
struct WrappedExtensions : Field<CERT_TRUST_LIST, Extensions> {
    [[nodiscard]] u32 read(Cursor &children, CERT_TRUST_LIST &list) const noexcept {
        clear(list);
        if (children.at_end()) return 0;
        Element wrapper;
        Element sequence;
        const bool is_wrapper = children.next(wrapper) && wrapper.constructed();
        if (!is_wrapper || !Cursor(wrapper).next(TLX_TAG_SEQUENCE, sequence)) return kFieldFailed;
        return Extensions::decode(sequence, &list.extensions);
    }
};

// CertificateTrustList ::= SEQUENCE {
//     version          [0] EXPLICIT INTEGER OPTIONAL, subjectUsage SEQUENCE OF OBJECT IDENTIFIER,
//     sequenceNumber   INTEGER, thisUpdate Time, nextUpdate Time, subjectAlgorithm AlgorithmIdentifier,
//     trustedSubjects  TrustedSubjects, extensions [0] EXPLICIT Extensions OPTIONAL }
using Ctl = CERT_TRUST_LIST;
using Time = Choice<X509_TIME>;
constexpr auto kTrustList = record<Ctl>(
    between(6, 8), explicitly<Integer>(0, &Ctl::version), field<ObjectIdentifiers>(&Ctl::subjectUsage),
    field<Integer>(&Ctl::sequenceNumber), field<Time>(&Ctl::thisUpdate), field<Time>(&Ctl::nextUpdate),
    field<Nested<X509_ALGO_IDENTIFIER>>(&Ctl::subjectAlgorithm),
    field<TrustedSubjects>(&Ctl::trustedSubjects),
    WrappedExtensions{explicitly<Extensions>(0, &Ctl::extensions)});

}  // namespace

TLX_DEFINE_RECORD(TRUSTED_CERTIFICATE, kTrustedCertificate)
TLX_DEFINE_LIST(TRUSTED_SUBJECTS, TRUSTED_CERTIFICATE, TrustedSubjects)
TLX_DEFINE_RECORD(CERT_TRUST_LIST, kTrustList)
