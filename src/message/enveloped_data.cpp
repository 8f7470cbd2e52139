// EnvelopedData with RecipientInfo and EncryptedContentInfo (RFC 2315, section 10), and EncryptedData
// (section 13).
#include "message/message_records.hpp"

using namespace tlx;

namespace {

// RecipientInfo ::= SEQUENCE {
//     version Version, issuerAndSerialNumber IssuerAndSerialNumber,
//     keyEncryptionAlgorithm KeyEncryptionAlgorithmIdentifier, encryptedKey EncryptedKey }
using Recipient = P7_RECIPIENT_INFO;
constexpr auto kRecipientInfo =
    record<Recipient>(exactly(4), field<Integer>(&Recipient::version),
                      field<Passing<P7_ISSUER_AND_SERIAL_NUMBER>>(&Recipient::issuerAndSerialNumber),
                      field<AlgorithmMember>(&Recipient::keyEncryptionAlgorithm),
                      field<Joined>(&Recipient::encryptedKey), kept<KeyUnit>(&Recipient::publicKey));

using Encrypted = P7_ENCRYPTED_CONTENT_INFO;
struct CipherUnit {
    using type = BLOCK_CIPHER_UNIT;
    static void free(type *unit) noexcept { free_BLOCK_CIPHER_UNIT(unit); }
};
/// The unit that an encryption is under way with, which is not copied.
struct EncryptionUnderWay : KeptField<Encrypted, CipherUnit> {
    [[nodiscard]] bool copy(Encrypted & /*to*/, const Encrypted & /*from*/) const noexcept { return true; }
};

// EncryptedContentInfo ::= SEQUENCE {
//     contentType ContentType, contentEncryptionAlgorithm ContentEncryptionAlgorithmIdentifier,
//     encryptedContent [0] IMPLICIT EncryptedContent OPTIONAL }
constexpr auto kEncryptedContentInfo =
    record<Encrypted>(between(2, 3), field<Oid>(&Encrypted::contentType),
                      field<AlgorithmMember>(&Encrypted::contentEncryptionAlgorithm),
                      implicit<Joined>(0, &Encrypted::encryptedContent),
                      EncryptionUnderWay{kept<CipherUnit>(&Encrypted::cipher)});

// EnvelopedData ::= SEQUENCE {
//     version Version, recipientInfos RecipientInfos, encryptedContentInfo EncryptedContentInfo }
using Enveloped = P7_ENVELOPED_DATA;
constexpr auto kEnvelopedData = record<Enveloped>(
    exactly(3), field<Integer>(&Enveloped::version), field<RecipientInfosMember>(&Enveloped::recipientInfos),
    field<Passing<Encrypted>>(&Enveloped::encryptedContentInfo), kept_word(&Enveloped::outputFlag));

// EncryptedData ::= SEQUENCE { version Version, encryptedContentInfo EncryptedContentInfo }
constexpr auto kEncryptedData =
    record<P7_ENCRYPTED_DATA>(exactly(2), field<Integer>(&P7_ENCRYPTED_DATA::version),
                              field<Passing<Encrypted>>(&P7_ENCRYPTED_DATA::encryptedContentInfo),
                              kept_word(&P7_ENCRYPTED_DATA::outputFlag));

}  // namespace

TLX_DEFINE_RECORD(P7_RECIPIENT_INFO, kRecipientInfo)
TLX_DEFINE_LIST(P7_RECIPIENT_INFOS, P7_RECIPIENT_INFO, RecipientInfos)
TLX_DEFINE_RECORD(P7_ENCRYPTED_CONTENT_INFO, kEncryptedContentInfo)
TLX_DEFINE_RECORD(P7_ENVELOPED_DATA, kEnvelopedData)
TLX_DEFINE_RECORD(P7_ENCRYPTED_DATA, kEncryptedData)
