// RecipientInfo and what it holds (RFC 5652, section 6.2).
#include "message/cms_records.hpp"

using namespace tlx;

namespace {

/// A SEQUENCE that is kept whole.
struct SequenceNode : Node {
    static constexpr u8 tag = kSequence;
};

// KeyTransRecipientInfo ::= SEQUENCE {
//     version CMSVersion, rid RecipientIdentifier,
//     keyEncryptionAlgorithm KeyEncryptionAlgorithmIdentifier, encryptedKey EncryptedKey }
using KeyTrans = CMS_KEY_TRANS_RECIPIENT;
constexpr auto kKeyTrans = record<KeyTrans>(
    exactly(4), cms_version(&KeyTrans::version), field<PassingChoice<CMS_CERT_IDENTIFIER>>(&KeyTrans::rid),
    exact<AlgorithmMember>(&KeyTrans::keyEncryptionAlgorithm), exact<Joined>(&KeyTrans::encryptedKey));

// RecipientKeyIdentifier ::= SEQUENCE {
//     subjectKeyIdentifier SubjectKeyIdentifier, date GeneralizedTime OPTIONAL,
//     other OtherKeyAttribute OPTIONAL }
// KEKIdentifier is the same with an OCTET STRING, which SubjectKeyIdentifier also is.
using KeyId = CMS_KEY_IDENTIFIER;
constexpr auto kKeyId = record<KeyId>(between(1, 3), exact<Joined>(&KeyId::keyIdentifier),
                                      exact_or_absent<String<TLX_TAG_GENERALIZED_TIME>>(&KeyId::date),
                                      exact_or_absent<SequenceNode>(&KeyId::other));

// OriginatorPublicKey ::= SEQUENCE { algorithm AlgorithmIdentifier, publicKey BIT STRING }
using OriginatorKey = CMS_ORIGINATOR_KEY;
constexpr auto kOriginatorKey = record<OriginatorKey>(
    exactly(2), exact<AlgorithmMember>(&OriginatorKey::algorithm), exact<Bits>(&OriginatorKey::publicKey));

// OriginatorIdentifierOrKey ::= CHOICE {
//     issuerAndSerialNumber IssuerAndSerialNumber, subjectKeyIdentifier [0] SubjectKeyIdentifier,
//     originatorKey [1] OriginatorPublicKey }
using Originator = CMS_ORIGINATOR;
constexpr auto kOriginator = exact_choice(
    choice(&Originator::type, &Originator::value, alternative<Joined>(TLX_CMS_BY_KEY_IDENTIFIER, 0),
           alternative<Passing<OriginatorKey>>(TLX_CMS_BY_ORIGINATOR_KEY, 1),
           alternative<Passing<P7_ISSUER_AND_SERIAL_NUMBER>>(TLX_CMS_BY_ISSUER_AND_SERIAL)));

// KeyAgreeRecipientIdentifier ::= CHOICE {
//     issuerAndSerialNumber IssuerAndSerialNumber, rKeyId [0] IMPLICIT RecipientKeyIdentifier }
using AgreeId = CMS_KEY_AGREE_IDENTIFIER;
constexpr auto kAgreeId = exact_choice(
    choice(&AgreeId::type, &AgreeId::value, alternative<Passing<KeyId>>(TLX_CMS_BY_KEY_IDENTIFIER, 0),
           alternative<Passing<P7_ISSUER_AND_SERIAL_NUMBER>>(TLX_CMS_BY_ISSUER_AND_SERIAL)));

// RecipientEncryptedKey ::= SEQUENCE { rid KeyAgreeRecipientIdentifier, encryptedKey EncryptedKey }
using RecipientKey = CMS_RECIPIENT_ENCRYPTED_KEY;
constexpr auto kRecipientKey =
    record<RecipientKey>(exactly(2), field<PassingChoice<AgreeId>>(&RecipientKey::rid),
                         exact<Joined>(&RecipientKey::encryptedKey));

// RecipientEncryptedKeys ::= SEQUENCE OF RecipientEncryptedKey
using RecipientKeys = List<Exact<Passing<RecipientKey>>>;
using RecipientKeysMember = PassingList<RecipientKeys, codes::CMS_RECIPIENT_ENCRYPTED_KEYS>;

// KeyAgreeRecipientInfo ::= SEQUENCE {
//     version CMSVersion, originator [0] EXPLICIT OriginatorIdentifierOrKey,
//     ukm [1] EXPLICIT UserKeyingMaterial OPTIONAL,
//     keyEncryptionAlgorithm KeyEncryptionAlgorithmIdentifier,
//     recipientEncryptedKeys RecipientEncryptedKeys }
using KeyAgree = CMS_KEY_AGREE_RECIPIENT;
constexpr auto kKeyAgree = record<KeyAgree>(
    between(4, 5), cms_version(&KeyAgree::version),
    explicitly<PassingChoice<Originator>>(0, &KeyAgree::originator).required(),
    explicitly<Exact<Joined>>(1, &KeyAgree::ukm), exact<AlgorithmMember>(&KeyAgree::keyEncryptionAlgorithm),
    exact<RecipientKeysMember>(&KeyAgree::recipientEncryptedKeys));

// KEKRecipientInfo ::= SEQUENCE {
//     version CMSVersion, kekid KEKIdentifier,
//     keyEncryptionAlgorithm KeyEncryptionAlgorithmIdentifier, encryptedKey EncryptedKey }
using Kek = CMS_KEK_RECIPIENT;
constexpr auto kKek =
    record<Kek>(exactly(4), cms_version(&Kek::version), exact<Passing<KeyId>>(&Kek::kekid),
                exact<AlgorithmMember>(&Kek::keyEncryptionAlgorithm), exact<Joined>(&Kek::encryptedKey));

// PasswordRecipientInfo ::= SEQUENCE {
//     version CMSVersion, keyDerivationAlgorithm [0] KeyDerivationAlgorithmIdentifier OPTIONAL,
//     keyEncryptionAlgorithm KeyEncryptionAlgorithmIdentifier, encryptedKey EncryptedKey }
using Password = CMS_PASSWORD_RECIPIENT;
constexpr auto kPassword = record<Password>(between(3, 4), cms_version(&Password::version),
                                            implicit<AlgorithmMember>(0, &Password::keyDerivationAlgorithm),
                                            exact<AlgorithmMember>(&Password::keyEncryptionAlgorithm),
                                            exact<Joined>(&Password::encryptedKey));

// RecipientInfo ::= CHOICE {
//     ktri KeyTransRecipientInfo, kari [1] KeyAgreeRecipientInfo, kekri [2] KEKRecipientInfo,
//     pwri [3] PasswordRecipientInfo, ori [4] OtherRecipientInfo }
using Recipient = CMS_RECIPIENT_INFO;
constexpr auto kRecipient = exact_choice(
    choice(&Recipient::type, &Recipient::value, tagged<Passing<KeyAgree>>(TLX_CMS_KEY_AGREEMENT),
           tagged<Passing<Kek>>(TLX_CMS_KEY_ENCRYPTION_KEY), tagged<Passing<Password>>(TLX_CMS_PASSWORD),
           tagged<Node>(TLX_CMS_OTHER_RECIPIENT), alternative<Passing<KeyTrans>>(TLX_CMS_KEY_TRANSPORT)));

}  // namespace

TLX_DEFINE_RECORD(CMS_KEY_TRANS_RECIPIENT, kKeyTrans)
TLX_DEFINE_RECORD(CMS_KEY_IDENTIFIER, kKeyId)
TLX_DEFINE_RECORD(CMS_ORIGINATOR_KEY, kOriginatorKey)
TLX_DEFINE_RECORD(CMS_ORIGINATOR, kOriginator)
TLX_DEFINE_RECORD(CMS_KEY_AGREE_IDENTIFIER, kAgreeId)
TLX_DEFINE_RECORD(CMS_RECIPIENT_ENCRYPTED_KEY, kRecipientKey)
TLX_DEFINE_LIST(CMS_RECIPIENT_ENCRYPTED_KEYS, CMS_RECIPIENT_ENCRYPTED_KEY, RecipientKeys)
TLX_DEFINE_RECORD(CMS_KEY_AGREE_RECIPIENT, kKeyAgree)
TLX_DEFINE_RECORD(CMS_KEK_RECIPIENT, kKek)
TLX_DEFINE_RECORD(CMS_PASSWORD_RECIPIENT, kPassword)
TLX_DEFINE_RECORD(CMS_RECIPIENT_INFO, kRecipient)
TLX_DEFINE_LIST(CMS_RECIPIENT_INFOS, CMS_RECIPIENT_INFO, CmsRecipientInfos)
