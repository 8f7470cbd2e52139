#include <array>

#include "describe.hpp"

namespace tool {

namespace {

constexpr char kIdentityData[] = "1.2.410.200004.10.1.1";
constexpr char kFormerIdentityData[] = "1.2.410.200004.6.1";

/// IPv4 and IPv6 addresses. In name constraints a mask of as many octets follows.
std::string ip_text(Octets address) {
    if (address.size() == 8 || address.size() == 32) {
        const std::size_t half = address.size() / 2;
        return ip_text(address.first(half)) + "/" + ip_text(address.last(half));
    }
    std::string text;
    std::array<char, 8> group{};
    if (address.size() == 4) {
        for (const uint8_t octet : address) {
            text += (text.empty() ? "" : ".") + std::to_string(octet);
        }
    } else if (address.size() == 16) {
        for (std::size_t i = 0; i < 16; i += 2) {
            (void)std::snprintf(group.data(), group.size(), "%x", address[i] << 8U | address[i + 1]);
            text += (i == 0 ? "" : ":") + std::string(group.data());
        }
    } else {
        text = hex(address);
    }
    return text;
}

Json describe_identity(const KISA_IDENTIFY_DATA *data) {
    Json json = {{"real_name", text_of(data->realName)}};
    if (data->vid == nullptr) return json;
    json["id_type"] = oid_json(data->idType);
    json["hash_algorithm"] = oid_json(data->vid->hashAlg);
    if (data->vid->virtualID != nullptr) json["virtual_id"] = hex(octets_of(data->vid->virtualID));
    return json;
}

/// Describes the identity data of an otherName; false when it cannot be decoded.
bool identity_of(const OTHERNAME *name, Json &json) {
    ASN1_UNIT *node = nullptr;
    if (ASN1_STRING_to_Seq(name->value, &node) != 0) return false;
    const Node node_owner(node);
    KISA_IDENTIFY_DATA *data = nullptr;
    if (Seq_to_KISA_IDENTIFY_DATA(node, &data) != 0) return false;
    const Owned<KISA_IDENTIFY_DATA, free_KISA_IDENTIFY_DATA> data_owner(data);
    json = describe_identity(data);
    return true;
}

Json describe_other_name(const OTHERNAME *name) {
    if (name == nullptr) return nullptr;
    const std::string type = dotted_text(name->type_id);
    Json identity;
    if ((type == kIdentityData || type == kFormerIdentityData) && identity_of(name, identity)) {
        return {{"kisa_identity", identity}};
    }
    return {{"other_name", {{"type", oid_json(name->type_id)}, {"value", text_of(name->value)}}}};
}

Json describe_edi_party(const EDIPARTYNAME *name) {
    if (name == nullptr) return nullptr;
    Json json;
    if (name->nameAssigner != nullptr) json["assigner"] = text_of(name->nameAssigner);
    json["party"] = text_of(name->partyName);
    return json;
}

}  // namespace

Json describe_general_name(const GENERAL_NAME *name) {
    if (name == nullptr) return nullptr;
    switch (name->choice) {
        case TLX_GENERAL_NAME_OTHER_NAME:
            return describe_other_name(name->value.otherName);
        case TLX_GENERAL_NAME_RFC822_NAME:
            return {{"email", text_of(name->value.ia5String)}};
        case TLX_GENERAL_NAME_DNS_NAME:
            return {{"dns", text_of(name->value.ia5String)}};
        case TLX_GENERAL_NAME_X400_ADDRESS:
            return {{"x400_address", hex(octets_of(name->value.x400Address))}};
        case TLX_GENERAL_NAME_DIRECTORY_NAME:
            return {{"directory_name", name_text(name->value.directoryName)}};
        case TLX_GENERAL_NAME_EDI_PARTY_NAME:
            return {{"edi_party", describe_edi_party(name->value.ediPartyName)}};
        case TLX_GENERAL_NAME_URI:
            return {{"uri", text_of(name->value.ia5String)}};
        case TLX_GENERAL_NAME_IP_ADDRESS:
            return {{"ip", ip_text(octets_of(name->value.iPAddress))}};
        case TLX_GENERAL_NAME_REGISTERED_ID:
            return {{"registered_id", oid_json(name->value.registeredID)}};
        default:
            return nullptr;
    }
}

Json describe_general_names(const GENERAL_NAMES *names) {
    return describe_items(names, get_GENERAL_NAMES_count, get_GENERAL_NAMES_child, describe_general_name);
}

}  // namespace tool
