// The Korean identity data of a subjectAltName (KCAC.TG.SIVID: subscriber identification based on virtual
// ID).
#include <tlxpki/kisa_identity.h>
#include <tlxpki/objects.h>

#include <cstring>

#include "asn1/oid_lookup.hpp"
#include "x509/extension_records.hpp"

using namespace tlx;

namespace {

/// virtualID. By hand because it is read out of any constructed element.
struct VirtualIdField : Field<VID, Octets> {
    [[nodiscard]] u32 read(Cursor &children, VID &record) const noexcept {
        clear(record);
        if (children.at_end()) return 0;
        Element wrapper;
        Element octets;
        if (!children.next(wrapper) || !wrapper.constructed()) return kFieldFailed;
        if (!Cursor(wrapper).next(TLX_TAG_OCTET_STRING, octets)) return kFieldFailed;
        return Octets::decode(octets, &record.virtualID);
    }
};

// VID ::= SEQUENCE { hashAlg AlgorithmIdentifier, virtualID [0] EXPLICIT OCTET STRING OPTIONAL }
constexpr auto kVid = record<VID>(
    between(1, 2), group(kSequence, field<Oid>(&VID::hashAlg), optional<Node>(&VID::hashAlgParameters)),
    VirtualIdField{explicitly<Octets>(0, &VID::virtualID)});

// IdentifyData ::= SEQUENCE {
//     realName UTF8String,
//     userInfos SEQUENCE SIZE (1..MAX) OF SEQUENCE { idType OBJECT IDENTIFIER, idValue VID } OPTIONAL }
// The first of the userInfos is kept.
using Identify = KISA_IDENTIFY_DATA;
constexpr auto kKisaIdentifyData = record<Identify>(
    between(1, 2), field<String<TLX_TAG_UTF8_STRING>>(&Identify::realName),
    group(kSequence, group(kSequence, field<Oid>(&Identify::idType), field<Nested<VID>>(&Identify::vid)))
        .trailing());

bool is_identify_data(const GENERAL_NAME *name) noexcept {
    if (name == nullptr || name->choice != TLX_GENERAL_NAME_OTHER_NAME || name->value.otherName == nullptr) {
        return false;
    }
    const u32 row = oid_index(text_of(name->value.otherName->type_id));
    return row == oid::kKisaIdentifyData || row == oid::kKisaIdentifyData2;
}

}  // namespace

TLX_DEFINE_RECORD(VID, kVid)
TLX_DEFINE_RECORD(KISA_IDENTIFY_DATA, kKisaIdentifyData)

KISA_IDENTIFY_DATA *create_KISA_IDENTIFY_DATA(const char *real_name, const OBJECT_IDENTIFIER *hash_alg,
                                              const uint8_t *virtual_id, uint32_t len) {
    if (real_name == nullptr || hash_alg == nullptr || virtual_id == nullptr || len == 0) return nullptr;
    Owned<KISA_IDENTIFY_DATA> data(new_KISA_IDENTIFY_DATA());
    if (!data) return nullptr;
    const Bytes name(reinterpret_cast<const u8 *>(real_name), std::strlen(real_name));
    data->realName = new_string(TLX_TAG_UTF8_STRING, name);
    data->idType = index_to_OBJECT_IDENTIFIER(oid::kVid);
    data->vid = new_VID();
    if (data->realName == nullptr || data->idType == nullptr || data->vid == nullptr) return nullptr;
    data->vid->hashAlg = dup_OBJECT_IDENTIFIER(hash_alg);
    data->vid->virtualID = new_string(TLX_TAG_OCTET_STRING, {virtual_id, len});
    if (data->vid->hashAlg == nullptr || data->vid->virtualID == nullptr) return nullptr;
    return data.release();
}

uint32_t get_KISA_IDENTIFY_DATA_from_GENERAL_NAMES(const GENERAL_NAMES *names, KISA_IDENTIFY_DATA **out) {
    if (names == nullptr || out == nullptr) return 0x473D0049;
    for (u32 i = 0; i < get_STACK_count(names); ++i) {
        const auto *name = static_cast<const GENERAL_NAME *>(get_STACK_value(names, i));
        if (!is_identify_data(name)) continue;
        const ASN1_STRING *value = name->value.otherName->value;
        Element element;
        element.tag = kSequence;
        element.contents = octets_of(value);
        if (value == nullptr || value->type != kSequence) return 0x47030104;
        return Codec<KISA_IDENTIFY_DATA>::decode(element, out);
    }
    return 0x473D0047;
}

GENERAL_NAME *create_GENERAL_NAME_KISA_IDENTIFY_DATA(const KISA_IDENTIFY_DATA *data) {
    Encoder encoder;
    Codec<KISA_IDENTIFY_DATA>::encode(encoder, data);
    Element element;
    if (!encoder.ok() || !read_element(encoder.bytes(), element)) return nullptr;
    const Owned<OBJECT_IDENTIFIER> type_id(index_to_OBJECT_IDENTIFIER(oid::kKisaIdentifyData2));
    const Owned<ASN1_STRING> value(new_string(element.tag, element.contents));
    return create_GENERAL_NAME_otherName(type_id.get(), value.get());
}
