#include "describe.hpp"
#include "describe_message.hpp"

namespace tool {

namespace {

Json describe_usage(const OBJECT_IDENTIFIER *usage) {
    return oid_json(usage);
}

Json describe_subject(const TRUSTED_CERTIFICATE *subject) {
    Json json = {{"identifier", hex(octets_of(subject->subjectIdentifier))}};
    if (subject->attributes != nullptr) json["attributes"] = describe_attributes(subject->attributes);
    return json;
}

}  // namespace

Json describe_trust_list(const CERT_TRUST_LIST *list) {
    Json json = Json::object();
    if (list->version != nullptr) json["version"] = number_text(list->version);
    json["subject_usage"] = describe_items(list->subjectUsage, get_OBJECT_IDENTIFIERS_count,
                                           get_OBJECT_IDENTIFIERS_child, describe_usage);
    json["sequence_number"] = number_text(list->sequenceNumber);
    json["this_update"] = time_text(list->thisUpdate);
    json["next_update"] = time_text(list->nextUpdate);
    json["subject_algorithm"] = oid_json(get_X509_ALGO_IDENTIFIER_OID(list->subjectAlgorithm));
    json["trusted_subjects"] = describe_items(list->trustedSubjects, get_TRUSTED_SUBJECTS_count,
                                              get_TRUSTED_SUBJECTS_child, describe_subject);
    if (list->extensions != nullptr) {
        json["extensions"] = describe_items(list->extensions, get_X509_EXTENSION_count, get_X509_EXTENSION,
                                            describe_extension);
    }
    return json;
}

}  // namespace tool
