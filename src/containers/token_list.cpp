// KISA's signed list of hardware security tokens.
#include <tlxcrypto/digest.h>
#include <tlxcrypto/rsa.h>
#include <tlxpki/token_list.h>

#include "message/message_records.hpp"
#include "x509/extension_records.hpp"

TLX_DECLARE_CODEC(KISA_HSM_SIGNATURE_TOKEN);
TLX_DECLARE_CODEC(KISA_HSM_DRIVER_INFO);
TLX_DECLARE_CODEC(KISA_HSM_TOKEN_DISTRIBUTION_URL);
TLX_DECLARE_CODEC(KISA_HSM_SIGNATURE_VALUE);

using namespace tlx;

namespace {

using Printable = String<TLX_TAG_PRINTABLE_STRING>;

// Token ::= SEQUENCE { PrintableString, AlgorithmIdentifier, OCTET STRING }
using Token = KISA_HSM_SIGNATURE_TOKEN;
constexpr auto kToken = record<Token>(exactly(3), field<Printable>(&Token::name),
                                      field<Nested<X509_ALGO_IDENTIFIER>>(&Token::digestAlgorithm),
                                      field<Octets>(&Token::digest));

// Driver ::= SEQUENCE {
//     PrintableString, PrintableString, GeneralName, INTEGER, GeneralName, PrintableString OPTIONAL }
using Driver = KISA_HSM_DRIVER_INFO;
constexpr auto kDriver =
    record<Driver>(between(5, 6), field<Printable>(&Driver::string1), field<Printable>(&Driver::string2),
                   field<Choice<GENERAL_NAME>>(&Driver::name1), field<Integer>(&Driver::number),
                   field<Choice<GENERAL_NAME>>(&Driver::name2), trailing<Printable>(&Driver::string3));

// DistributionURL ::= SEQUENCE { IA5String, SEQUENCE OF Driver }
using Url = KISA_HSM_TOKEN_DISTRIBUTION_URL;
constexpr auto kUrl = record<Url>(exactly(2), field<String<TLX_TAG_IA5_STRING>>(&Url::url),
                                  field<List<Nested<Driver>>>(&Url::drivers));

using Value = KISA_HSM_SIGNATURE_VALUE;

/// SEQUENCE { SEQUENCE OF Token, SEQUENCE OF DistributionURL }
constexpr auto kSignedMembers =
    group(kSequence, field<List<Nested<Token>>>(&Value::tokens), field<List<Nested<Url>>>(&Value::urls))
        .exactly();

/// The same with its octets as they were received. By hand because the signature covers these: they are
/// written back whatever the members say.
struct SignedPart : decltype(kSignedMembers) {
    OwnedMember<Value, Octets> octets{&Value::signedPart};

    void clear(Value &value) const noexcept {
        Group::clear(value);
        octets.clear(value);
    }
    [[nodiscard]] bool copy(Value &to, const Value &from) const noexcept {
        return Group::copy(to, from) && octets.copy(to, from);
    }
    [[nodiscard]] u32 read(Cursor &children, Value &value) const noexcept {
        clear(value);
        Element whole;
        if (!Cursor(children).next(whole)) return kFieldFailed;
        if (const u32 status = Group::read(children, value); status != 0) return status;
        value.signedPart = new_string(TLX_TAG_OCTET_STRING, whole.whole);
        return stored(value.signedPart);
    }
    void write(Encoder &out, const Value &value) const noexcept {
        if (value.signedPart == nullptr) return Group::write(out, value);
        out.raw(octets_of(value.signedPart));
    }
};

/// BIT STRING or OCTET STRING. By hand because the record around it holds the word that says which.
struct Signature : OwnedMember<Value, Octets> {
    void clear(Value &value) const noexcept {
        OwnedMember::clear(value);
        value.kind = 0;
    }
    [[nodiscard]] bool copy(Value &to, const Value &from) const noexcept {
        to.kind = from.kind;
        return OwnedMember::copy(to, from);
    }
    [[nodiscard]] static bool absent(const Value & /*value*/) noexcept { return false; }
    [[nodiscard]] u32 read(Cursor &children, Value &value) const noexcept {
        clear(value);
        Element child;
        if (!children.next(child)) return kFieldFailed;
        if (child.tag == Bits::tag) {
            value.kind = TLX_HSM_SIGNATURE_BIT_STRING;
            return Bits::decode(child, &value.signature);
        }
        if (child.tag != Octets::tag) return kFieldFailed;
        value.kind = TLX_HSM_SIGNATURE_OCTET_STRING;
        return Octets::decode(child, &value.signature);
    }
    static void write(Encoder &out, const Value &value) noexcept {
        if (value.kind == TLX_HSM_SIGNATURE_BIT_STRING) return Bits::encode(out, value.signature, Bits::tag);
        if (value.kind != TLX_HSM_SIGNATURE_OCTET_STRING) return out.fail();
        Octets::encode(out, value.signature, Octets::tag);
    }
};

// TokenList ::= SEQUENCE {
//     signedPart SEQUENCE { SEQUENCE OF Token, SEQUENCE OF DistributionURL },
//     signatureAlgorithm AlgorithmIdentifier, signer IssuerAndSerialNumber,
//     signature CHOICE { BIT STRING, OCTET STRING } }
constexpr auto kValue = record<Value>(
    exactly(4), SignedPart{kSignedMembers}, field<Nested<X509_ALGO_IDENTIFIER>>(&Value::signatureAlgorithm),
    field<Nested<P7_ISSUER_AND_SERIAL_NUMBER>>(&Value::signer), Signature{{&Value::signature}});

/// False when memory runs out.
bool make_names(Driver &driver) noexcept {
    driver.name1 = new_GENERAL_NAME();
    driver.name2 = new_GENERAL_NAME();
    return driver.name1 != nullptr && driver.name2 != nullptr;
}

}  // namespace

TLX_DEFINE_RECORD(KISA_HSM_SIGNATURE_TOKEN, kToken)
TLX_DEFINE_RECORD(KISA_HSM_TOKEN_DISTRIBUTION_URL, kUrl)
TLX_DEFINE_RECORD(KISA_HSM_SIGNATURE_VALUE, kValue)
TLX_DEFINE_RECORD_CODEC(KISA_HSM_DRIVER_INFO, kDriver)
TLX_DEFINE_RECORD_DECODER(KISA_HSM_DRIVER_INFO)
TLX_DEFINE_RECORD_ENCODER(KISA_HSM_DRIVER_INFO)

KISA_HSM_DRIVER_INFO *new_KISA_HSM_DRIVER_INFO(void) {
    Owned<Driver> driver(TLX_NEW(Driver));
    return driver && make_names(*driver) ? driver.release() : nullptr;
}

void clean_KISA_HSM_DRIVER_INFO(KISA_HSM_DRIVER_INFO *driver) {
    if (driver == nullptr) return;
    kDriver.clear(*driver);
    static_cast<void>(make_names(*driver));
}

void free_KISA_HSM_DRIVER_INFO(KISA_HSM_DRIVER_INFO *driver) {
    free_record(kDriver, driver);
}

KISA_HSM_DRIVER_INFO *dup_KISA_HSM_DRIVER_INFO(const KISA_HSM_DRIVER_INFO *driver) {
    return dup_record(kDriver, driver);
}

uint32_t verify_KISA_HSM_SIGNATURE_VALUE(const KISA_HSM_SIGNATURE_VALUE *value, const X509_CERT *cert) {
    if (value == nullptr || cert == nullptr) return 0x30020049;
    const Bytes signed_part = octets_of(value->signedPart);
    if (signed_part.empty()) return 0x30020010;
    if (value->signature == nullptr) return 0x30020011;
    const ASYMMETRIC_KEY *key = get_X509_PUBKEY_key(get_X509_SPKI(cert));
    if (key == nullptr) return 0x3002002B;
    if (key->kind != TLX_KEY_RSA) return 0x30020029;
    const Bytes signature = octets_of(value->signature);
    return verify_RSA(static_cast<const RSA_UNIT *>(key->key), TLX_DIGEST_SHA1, TLX_RSA_MODE_PKCS1,
                      signed_part.data(), static_cast<u32>(signed_part.size()), signature.data(),
                      static_cast<u32>(signature.size()));
}
