// SignerInfo (RFC 2315, section 9.2) and IssuerAndSerialNumber (section 6.7).
#include "message/message_records.hpp"

using namespace tlx;

namespace {

// IssuerAndSerialNumber ::= SEQUENCE { issuer Name, serialNumber CertificateSerialNumber }
template <typename Issuer>
constexpr auto issuer_and_serial_number() noexcept {
    return record<ISSUER_AND_SERIAL_NUMBER>(exactly(2), field<Issuer>(&ISSUER_AND_SERIAL_NUMBER::issuer),
                                            field<Integer>(&ISSUER_AND_SERIAL_NUMBER::serialNumber));
}
constexpr auto kIssuerAndSerialNumber = issuer_and_serial_number<Name>();
/// In a message the statuses of the name go up unchanged.
constexpr auto kNumberInMessage = issuer_and_serial_number<PassingList<Name, codes::X509_NAME>>();

// SignerInfo ::= SEQUENCE {
//     version Version, issuerAndSerialNumber IssuerAndSerialNumber,
//     digestAlgorithm DigestAlgorithmIdentifier,
//     authenticatedAttributes [0] IMPLICIT Attributes OPTIONAL,
//     digestEncryptionAlgorithm DigestEncryptionAlgorithmIdentifier, encryptedDigest EncryptedDigest,
//     unauthenticatedAttributes [1] IMPLICIT Attributes OPTIONAL }
using Signer = P7_SIGNER_INFO;
constexpr auto kSignerInfo = record<Signer>(
    at_least(5), field<Integer>(&Signer::version),
    field<Passing<P7_ISSUER_AND_SERIAL_NUMBER>>(&Signer::issuerAndSerialNumber),
    field<AlgorithmMember>(&Signer::digestAlgorithm),
    by_tag(attributes_as_received(0, &Signer::authenticatedAttributes, &Signer::receivedAttributes),
           optional<AlgorithmMember>(&Signer::digestEncryptionAlgorithm),
           optional<Joined>(&Signer::encryptedDigest),
           implicit<Attributes>(1, &Signer::unauthenticatedAttributes))
        .others(kFieldFailed),
    kept<KeyUnit>(&Signer::key));

}  // namespace

TLX_DEFINE_RECORD(P7_SIGNER_INFO, kSignerInfo)
TLX_DEFINE_LIST(P7_SIGNER_INFOS, P7_SIGNER_INFO, SignerInfos)

TLX_DEFINE_RECORD(P7_ISSUER_AND_SERIAL_NUMBER, kNumberInMessage)

TLX_DEFINE_RECORD_NEW(ISSUER_AND_SERIAL_NUMBER)
TLX_DEFINE_RECORD_LIFE(ISSUER_AND_SERIAL_NUMBER, kIssuerAndSerialNumber)

// By hand because the codec of the record has the statuses of messages.
uint32_t ISSUER_AND_SERIAL_NUMBER_to_Seq(const ISSUER_AND_SERIAL_NUMBER *number, ASN1_UNIT **out) {
    if (number == nullptr || out == nullptr) return 0x51010049;
    Encoder encoder;
    kIssuerAndSerialNumber.write(encoder, *number);
    return hand_over(encoder, out, codes::ISSUER_AND_SERIAL_NUMBER.encode);
}

uint32_t Seq_to_ISSUER_AND_SERIAL_NUMBER(const ASN1_UNIT *node, ISSUER_AND_SERIAL_NUMBER **out) {
    if (node == nullptr || out == nullptr) return 0x51020049;
    Element element;
    if (!view_container(node, element)) return 0x51020104;
    return decode_record(kIssuerAndSerialNumber, element, out, codes::ISSUER_AND_SERIAL_NUMBER.decode);
}

Owned<P7_ISSUER_AND_SERIAL_NUMBER> tlx::issuer_and_serial_of(const X509_CERT *cert) noexcept {
    Owned<P7_ISSUER_AND_SERIAL_NUMBER> number(new_P7_ISSUER_AND_SERIAL_NUMBER());
    if (!number) return nullptr;
    number->issuer = dup_X509_NAME(get_X509_issuer(cert));
    number->serialNumber = dup_BIGINT(get_X509_serial(cert));
    return number->issuer != nullptr && number->serialNumber != nullptr ? std::move(number) : nullptr;
}

int32_t cmp_P7_ISSUER_AND_SERIAL_NUMBER(const X509_CERT *cert, const P7_ISSUER_AND_SERIAL_NUMBER *number) {
    const X509_NAME *issuer = get_X509_issuer(cert);
    const BIGINT *serial = get_X509_serial(cert);
    if (issuer == nullptr || serial == nullptr || number == nullptr) return 1;
    if (number->issuer == nullptr || number->serialNumber == nullptr) return 1;
    return cmp_BIGINT(serial, number->serialNumber) != 0 ? -1 : cmp_X509_NAME(issuer, number->issuer);
}
