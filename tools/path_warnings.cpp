#include <algorithm>

#include "document.hpp"
#include "verify.hpp"

namespace tool {

namespace {

using BasicConstraints = Owned<BASIC_CONSTRAINTS, free_BASIC_CONSTRAINTS>;

constexpr std::string_view kBasicConstraints = "2.5.29.19";
/// nameConstraints, policyMappings and inhibitAnyPolicy: reported whether critical or not.
constexpr std::string_view kNotApplied[] = {"2.5.29.30", "2.5.29.33", "2.5.29.54"};
/// Extensions that may be critical without a warning.
constexpr std::string_view kNoSurprise[] = {
    kBasicConstraints, "2.5.29.15", "2.5.29.17", "2.5.29.18", "2.5.29.32", "2.5.29.36", "2.5.29.37",
};

template <std::size_t N>
bool contains(const std::string_view (&oids)[N], const std::string &oid) {
    return std::find(oids, oids + N, oid) != oids + N;
}

BasicConstraints basic_constraints_of(const X509_CERT *cert) {
    constexpr int32_t kRow = 87;
    BASIC_CONSTRAINTS *record = nullptr;
    (void)decode_X509_EXTENSION_by_OID_index(get_X509_extensions(cert), kRow,
                                             TLX_DECODER(Seq_to_BASIC_CONSTRAINTS),
                                             reinterpret_cast<void **>(&record));
    return BasicConstraints(record);
}

/// Compares the basic constraints of an issuer with the cas_below CAs below it in the path. The target and
/// self-issued certificates do not count as CAs (RFC 5280, section 4.2.1.9).
std::string issuer_warning(const X509_CERT *issuer, uint32_t cas_below) {
    constexpr char kName[] = "basicConstraints (2.5.29.19)";
    const BasicConstraints constraints = basic_constraints_of(issuer);
    if (constraints == nullptr) return "";
    if (constraints->cA == 0) return std::string("issued a certificate, but is no CA by its ") + kName;
    const uint32_t most = get_BIGINT_word(constraints->pathLenConstraint);
    if (constraints->pathLenConstraint == nullptr || cas_below <= most) return "";
    return std::string("has more CAs below it than the pathLenConstraint of its ") + kName +
           " allows: " + std::to_string(cas_below) + ", not " + std::to_string(most);
}

std::string extension_warning(const X509_EXTENSION *extension) {
    const OBJECT_IDENTIFIER *object = get_X509_EXTENSION_object(extension);
    const std::string oid = dotted_text(object);
    const std::string name = oid_line(oid_json(object));
    if (contains(kNotApplied, oid)) return name + " is not applied";
    const bool unheeded = get_X509_EXTENSION_critical(extension) != 0 && !contains(kNoSurprise, oid);
    return unheeded ? name + " is critical, but not looked at" : "";
}

}  // namespace

std::vector<std::string> path_warnings(const X509_CERTIFICATES *path) {
    std::vector<std::string> warnings;
    uint32_t cas_below = 0;
    for (uint32_t i = 0; i < get_X509_CERTIFICATES_count(path); ++i) {
        const X509_CERT *cert = get_X509_CERTIFICATES_child(path, static_cast<int32_t>(i));
        const auto warn = [&warnings, cert](const std::string &text) {
            if (!text.empty()) warnings.push_back(name_text(get_X509_subject(cert)) + ": " + text);
        };
        if (i > 0) {
            warn(issuer_warning(cert, cas_below));
            if (is_selfSigned(cert) != 0) ++cas_below;
        }
        const X509_EXTENSIONS *extensions = get_X509_extensions(cert);
        for (uint32_t k = 0; k < get_X509_EXTENSION_count(extensions); ++k) {
            warn(extension_warning(get_X509_EXTENSION(extensions, static_cast<int32_t>(k))));
        }
    }
    return warnings;
}

}  // namespace tool
