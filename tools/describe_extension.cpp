#include <algorithm>

#include "describe.hpp"
#include "status.hpp"

namespace tool {

namespace {

struct Undecodable {
    uint32_t status;
};

/// Decodes the value of an extension as a record and describes that. Throws Undecodable.
template <typename T, auto Decode, auto Free, auto Describe>
Json decoded(const X509_EXTENSION *extension) {
    T *record = nullptr;
    const uint32_t status =
        decode_X509_EXTENSION(extension, TLX_DECODER(Decode), reinterpret_cast<void **>(&record));
    if (status != 0) throw Undecodable{status};
    const Owned<T, Free> owner(record);
    return Describe(record);
}

/// The decoder of an extension that is a bare INTEGER.
uint32_t Seq_to_number(const ASN1_UNIT *node, BIGINT **out) {
    uint8_t *element = nullptr;
    if (ASN1_to_binary(node, &element) == 0xFFFFFFFF) return 1;
    const Owned<uint8_t, tlx_free> owner(element);
    if (*element != TLX_TAG_INTEGER) return 1;
    *out = decodeToBERInteger(element);
    return *out == nullptr ? 1 : 0;
}

Json describe_number(const BIGINT *number) {
    return number_text(number);
}

Json describe_octets(const OCTET_STRING *octets) {
    return hex(octets_of(octets));
}

/// An empty BasicConstraints denies that the certificate is a CA's. The record cannot express it.
bool is_empty_basic_constraints(const std::string &oid, Octets value) {
    return oid == "2.5.29.19" && value.size() == 2 && value[0] == TLX_TAG_SEQUENCE_OCTET && value[1] == 0;
}

constexpr const char *kKeyUsages[] = {"digitalSignature", "nonRepudiation", "keyEncipherment",
                                      "dataEncipherment", "keyAgreement",   "keyCertSign",
                                      "cRLSign",          "encipherOnly",   "decipherOnly"};
constexpr const char *kReasonFlags[] = {
    "unused",      "keyCompromise",        "cACompromise",    "affiliationChanged",
    "superseded",  "cessationOfOperation", "certificateHold", "privilegeWithdrawn",
    "aACompromise"};

Json describe_key_usage(const KEY_USAGE *usage) {
    return describe_bits(usage, kKeyUsages);
}

Json describe_basic_constraints(const BASIC_CONSTRAINTS *constraints) {
    Json json = {{"ca", constraints->cA != 0}};
    if (constraints->pathLenConstraint != nullptr) {
        json["path_length"] = number_text(constraints->pathLenConstraint);
    }
    return json;
}

Json describe_policy_constraints(const POLICY_CONSTRAINTS *constraints) {
    Json json = Json::object();
    if (constraints->requireExplicitPolicy != nullptr) {
        json["require_explicit_policy"] = number_text(constraints->requireExplicitPolicy);
    }
    if (constraints->inhibitPolicyMapping != nullptr) {
        json["inhibit_policy_mapping"] = number_text(constraints->inhibitPolicyMapping);
    }
    return json;
}

Json describe_authority_key(const AUTHORITY_KEYID *identifier) {
    Json json = Json::object();
    if (identifier->keyIdentifier != nullptr) {
        json["authority_key_identifier"] = hex(octets_of(identifier->keyIdentifier));
    }
    if (identifier->authorityCertIssuer != nullptr) {
        json["authority_issuer"] = describe_general_names(identifier->authorityCertIssuer);
    }
    if (identifier->authorityCertSerialNumber != nullptr) {
        json["authority_serial"] = number_hex(identifier->authorityCertSerialNumber);
    }
    return json;
}

Json describe_purposes(const EXTENDED_KEY_USAGE *purposes) {
    return describe_items(purposes, get_EXTENDED_KEY_USAGE_count, get_EXTENDED_KEY_USAGE_child, oid_json);
}

Json describe_mapping(const POLICY_MAPPING *mapping) {
    return {{"issuer_policy", oid_json(mapping->issuerDomainPolicy)},
            {"subject_policy", oid_json(mapping->subjectDomainPolicy)}};
}

Json describe_mappings(const POLICY_MAPPINGS *mappings) {
    return describe_items(mappings, get_POLICY_MAPPINGS_count, get_POLICY_MAPPINGS_child, describe_mapping);
}

Json describe_subtree(const GENERAL_SUBTREE *subtree) {
    Json json = describe_general_name(subtree->base);
    if (subtree->minimum != nullptr) json["minimum"] = number_text(subtree->minimum);
    if (subtree->maximum != nullptr) json["maximum"] = number_text(subtree->maximum);
    return json;
}

Json describe_subtrees(const GENERAL_SUBTREES *subtrees) {
    return describe_items(subtrees, get_GENERAL_SUBTREES_count, get_GENERAL_SUBTREES_child, describe_subtree);
}

Json describe_name_constraints(const NAME_CONSTRAINTS *constraints) {
    Json json = Json::object();
    if (constraints->permittedSubtrees != nullptr) {
        json["permitted"] = describe_subtrees(constraints->permittedSubtrees);
    }
    if (constraints->excludedSubtrees != nullptr) {
        json["excluded"] = describe_subtrees(constraints->excludedSubtrees);
    }
    return json;
}

void add_point_name(Json &json, const DIST_POINT_NAME *name) {
    if (name == nullptr) return;
    if (name->choice == TLX_DIST_POINT_FULL_NAME) {
        json["names"] = describe_general_names(name->value.fullName);
    } else {
        json["relative_name"] = name_text(name->value.nameRelativeToCRLIssuer);
    }
}

Json describe_point(const DIST_POINT *point) {
    Json json = Json::object();
    add_point_name(json, point->distributionPoint);
    if (point->reasons != nullptr) json["reasons"] = describe_bits(point->reasons, kReasonFlags);
    if (point->cRLIssuer != nullptr) json["crl_issuer"] = describe_general_names(point->cRLIssuer);
    return json;
}

Json describe_points(const CRL_DIST_POINTS *points) {
    return describe_items(points, get_CRL_DIST_POINTS_count, get_CRL_DIST_POINTS_child, describe_point);
}

Json describe_issuing_point(const issuing_DIST_POINT *point) {
    Json json = Json::object();
    add_point_name(json, point->distributionPoint);
    json["only_user_certificates"] = point->onlyContainsUserCerts != 0;
    json["only_ca_certificates"] = point->onlyContainsCACerts != 0;
    json["only_attribute_certificates"] = point->onlyContainsAttributeCerts != 0;
    json["indirect"] = point->indirectCRL != 0;
    if (point->onlySomeReasons != nullptr) {
        json["reasons"] = describe_bits(point->onlySomeReasons, kReasonFlags);
    }
    return json;
}

Json describe_access(const ACCESS_DESCRIPTION *access) {
    Json json = {{"method", oid_json(access->accessMethod)}};
    json.update(describe_general_name(access->accessLocation));
    return json;
}

Json describe_accesses(const AUTHORITY_INFO_ACCESS *accesses) {
    return describe_items(accesses, get_AUTHORITY_INFO_ACCESS_count, get_AUTHORITY_INFO_ACCESS_child,
                          describe_access);
}

struct KnownExtension {
    const char *oid;
    Json (*describe)(const X509_EXTENSION *extension);
};

#define DECODED(type, describe) decoded<type, Seq_to_##type, free_##type, describe>
constexpr KnownExtension kKnownExtensions[] = {
    {"2.5.29.14", DECODED(SUBJECT_KEYID, describe_octets)},
    {"2.5.29.15", DECODED(KEY_USAGE, describe_key_usage)},
    {"2.5.29.17", DECODED(GENERAL_NAMES, describe_general_names)},
    {"2.5.29.18", DECODED(GENERAL_NAMES, describe_general_names)},
    {"2.5.29.19", DECODED(BASIC_CONSTRAINTS, describe_basic_constraints)},
    {"2.5.29.20", decoded<BIGINT, Seq_to_number, free_BIGINT, describe_number>},
    {"2.5.29.27", decoded<BIGINT, Seq_to_number, free_BIGINT, describe_number>},
    {"2.5.29.28", DECODED(issuing_DIST_POINT, describe_issuing_point)},
    {"2.5.29.30", DECODED(NAME_CONSTRAINTS, describe_name_constraints)},
    {"2.5.29.31", DECODED(CRL_DIST_POINTS, describe_points)},
    {"2.5.29.32", DECODED(CERTIFICATE_POLICIES, describe_policies)},
    {"2.5.29.33", DECODED(POLICY_MAPPINGS, describe_mappings)},
    {"2.5.29.35", DECODED(AUTHORITY_KEYID, describe_authority_key)},
    {"2.5.29.36", DECODED(POLICY_CONSTRAINTS, describe_policy_constraints)},
    {"2.5.29.37", DECODED(EXTENDED_KEY_USAGE, describe_purposes)},
    {"2.5.29.46", DECODED(CRL_DIST_POINTS, describe_points)},
    {"2.5.29.54", decoded<BIGINT, Seq_to_number, free_BIGINT, describe_number>},
    {"1.3.6.1.5.5.7.1.1", DECODED(AUTHORITY_INFO_ACCESS, describe_accesses)},
    {"1.3.6.1.5.5.7.1.11", DECODED(AUTHORITY_INFO_ACCESS, describe_accesses)},
};
#undef DECODED

}  // namespace

Json describe_extension(const X509_EXTENSION *extension) {
    Json json = oid_json(get_X509_EXTENSION_object(extension));
    json["critical"] = get_X509_EXTENSION_critical(extension) != 0;
    const std::string oid = dotted_text(get_X509_EXTENSION_object(extension));
    const auto *known = std::find_if(std::begin(kKnownExtensions), std::end(kKnownExtensions),
                                     [&oid](const KnownExtension &row) { return row.oid == oid; });
    if (is_empty_basic_constraints(oid, octets_of(get_X509_EXTENSION_data(extension)))) {
        json["value"] = {{"ca", false}};
        return json;
    }
    try {
        if (known != std::end(kKnownExtensions)) {
            json["value"] = known->describe(extension);
            return json;
        }
    } catch (const Undecodable &failure) {
        json["malformed"] = status_json(failure.status);
    }
    json["hex"] = hex(octets_of(get_X509_EXTENSION_data(extension)));
    return json;
}

}  // namespace tool
