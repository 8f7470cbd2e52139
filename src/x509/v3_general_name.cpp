// General names and what they are made of.
#include <tlxpki/general_name.h>
#include <tlxpki/objects.h>

#include <cstring>

#include "x509/certificate_records.hpp"
#include "x509/extension_records.hpp"

using namespace tlx;

namespace {

// OtherName ::= SEQUENCE { type-id OBJECT IDENTIFIER, value [0] EXPLICIT ANY DEFINED BY type-id }
constexpr auto kOtherName = record<OTHERNAME>(exactly(2), field<Oid>(&OTHERNAME::type_id),
                                              explicitly<Verbatim>(0, &OTHERNAME::value).required());

// EDIPartyName ::= SEQUENCE { nameAssigner [0] DirectoryString OPTIONAL, partyName [1] DirectoryString }
// DirectoryString is a CHOICE, so its tags are explicit.
constexpr auto kEdiPartyName =
    record<EDIPARTYNAME>(between(1, 2), explicitly<Text>(0, &EDIPARTYNAME::nameAssigner),
                         explicitly<Text>(1, &EDIPARTYNAME::partyName).required());

/// [5] EDIPartyName. Some write the tag explicitly, which shows in the SEQUENCE inside.
struct EdiParty : Nested<EDIPARTYNAME> {
    static u32 decode(const Element &element, type **out) noexcept {
        Element inner;
        const bool wrapped = only_child(element, inner) && inner.tag == kSequence;
        return Nested::decode(wrapped ? inner : element, out);
    }
};

/// [3] ORAddress, which nobody looks into. Its one member is kept as any string is; several are kept
/// together, as the contents of the tag itself.
struct X400Address : StringRecord {
    static constexpr u8 tag = kSequence;
    static constexpr u8 kWhole = context(TLX_GENERAL_NAME_X400_ADDRESS);
    static u32 decode(const Element &element, type **out) noexcept {
        Element child;
        if (only_child(element, child)) {
            *out = decode_any_string(child);
        } else if (count_children(element.contents) > 0) {
            *out = new_string(kWhole, element.contents);
        }
        return *out != nullptr ? 0 : kFieldFailed;
    }
    static void encode(Encoder &out, const type *value, u8 as) noexcept {
        // A member with a context-specific tag is held complete, so it is the contents just as well.
        if (value->type >= kContextSpecific) return out.string(value, as);
        const auto wrapper = out.nest(as);
        out.any_value(value, static_cast<u32>(value->type));
    }
};

// GeneralName ::= CHOICE {
//     otherName [0] OtherName, rfc822Name [1] IA5String, dNSName [2] IA5String, x400Address [3] ORAddress,
//     directoryName [4] Name, ediPartyName [5] EDIPartyName, uniformResourceIdentifier [6] IA5String,
//     iPAddress [7] OCTET STRING, registeredID [8] OBJECT IDENTIFIER }
using Ia5 = String<TLX_TAG_IA5_STRING>;
constexpr auto kGeneralName =
    choice(&GENERAL_NAME::choice, &GENERAL_NAME::value,
           tagged<Nested<OTHERNAME>>(TLX_GENERAL_NAME_OTHER_NAME), tagged<Ia5>(TLX_GENERAL_NAME_RFC822_NAME),
           tagged<Ia5>(TLX_GENERAL_NAME_DNS_NAME), tagged<X400Address>(TLX_GENERAL_NAME_X400_ADDRESS),
           tagged<Explicit<Name>>(TLX_GENERAL_NAME_DIRECTORY_NAME),
           tagged<EdiParty>(TLX_GENERAL_NAME_EDI_PARTY_NAME), tagged<Ia5>(TLX_GENERAL_NAME_URI),
           tagged<Octets>(TLX_GENERAL_NAME_IP_ADDRESS), tagged<Oid>(TLX_GENERAL_NAME_REGISTERED_ID));

/// A name of the choice that takes over `value`; null when there is no value.
template <typename T>
GENERAL_NAME *make_name(u32 choice, Owned<T> value) noexcept {
    if (!value) return nullptr;
    GENERAL_NAME *name = new_GENERAL_NAME();
    if (name == nullptr) return nullptr;
    name->choice = choice;
    name->value.any = value.release();
    return name;
}

}  // namespace

TLX_DEFINE_RECORD(OTHERNAME, kOtherName)
TLX_DEFINE_RECORD(EDIPARTYNAME, kEdiPartyName)
TLX_DEFINE_RECORD(GENERAL_NAME, kGeneralName)
TLX_DEFINE_LIST(GENERAL_NAMES, GENERAL_NAME, GeneralNames)

GENERAL_NAME *create_GENERAL_NAME(uint32_t choice, const void *octets, int32_t len) {
    if (octets == nullptr) return nullptr;
    const auto *start = static_cast<const u8 *>(octets);
    const Bytes value(start,
                      len < 0 ? std::strlen(static_cast<const char *>(octets)) : static_cast<u32>(len));
    switch (choice) {
        case TLX_GENERAL_NAME_RFC822_NAME:
        case TLX_GENERAL_NAME_DNS_NAME:
        case TLX_GENERAL_NAME_URI:
            return make_name(choice, Owned<ASN1_STRING>(new_string(TLX_TAG_IA5_STRING, value)));
        case TLX_GENERAL_NAME_IP_ADDRESS:
            return make_name(choice, Owned<ASN1_STRING>(new_string(TLX_TAG_OCTET_STRING, value)));
        case TLX_GENERAL_NAME_REGISTERED_ID:
            return make_name(choice, Owned<ASN1_STRING>(new_string(TLX_TAG_OBJECT_IDENTIFIER, value)));
        default:
            return nullptr;
    }
}

GENERAL_NAME *create_GENERAL_NAME_directoryName(const X509_NAME *name) {
    OwnedName copy(dup_X509_NAME(name));
    if (!copy) return nullptr;
    GENERAL_NAME *general = new_GENERAL_NAME();
    if (general == nullptr) return nullptr;
    general->choice = TLX_GENERAL_NAME_DIRECTORY_NAME;
    general->value.directoryName = copy.release();
    return general;
}

GENERAL_NAME *create_GENERAL_NAME_otherName(const OBJECT_IDENTIFIER *type_id, const ASN1_STRING *value) {
    if (type_id == nullptr || value == nullptr) return nullptr;
    Owned<OTHERNAME> other(new_OTHERNAME());
    if (!other) return nullptr;
    other->type_id = dup_OBJECT_IDENTIFIER(type_id);
    other->value = dup_ASN1_STRING(value);
    if (other->type_id == nullptr || other->value == nullptr) return nullptr;
    return make_name(TLX_GENERAL_NAME_OTHER_NAME, std::move(other));
}

int32_t get_GENERAL_NAMES_index_by_choice(const GENERAL_NAMES *names, uint32_t choice, int32_t after) {
    for (u32 i = after < 0 ? 0 : static_cast<u32>(after) + 1; i < get_STACK_count(names); ++i) {
        const auto *name = static_cast<const GENERAL_NAME *>(get_STACK_value(names, i));
        if (name != nullptr && name->choice == choice) return static_cast<i32>(i);
    }
    return -1;
}
