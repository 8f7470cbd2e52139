// Hints for certificates that the strict rules refuse.
#include <string_view>

#include "describe.hpp"
#include "strict_report.hpp"

namespace tool {

namespace {

struct Hint {
    std::string_view rule;
    const char *text;
};

constexpr Hint kHints[] = {
    {"NoAnchor", "if you trust the certificate at the top, give it with --anchor"},
    {"NotValidNow", "--at TIME verifies at another time than now"},
    {"NoPolicy", "every certificate of the path has to name a policy, and one of --policy has to remain"},
    {"CriticalFalse", "--accept critical-false lets it pass"},
    {"BadBoolean", "--accept boolean lets it pass"},
    {"KeyUsageZeros", "--accept key-usage-zeros lets it pass"},
    {"BadSerial", "--accept serial lets a number pass that is not in the fewest octets"},
    {"NoStatus", "give the issuer's list with --crl, a response with --ocsp, or --fetch"},
    {"SignatureBudget", "--budget signatures=N allows more"},
    {"CandidateBudget", "--budget candidates=N allows more"},
    {"LengthBudget", "--budget path-length=N allows more"},
    {"PolicyBudget", "--budget policy-nodes=N allows more"},
    {"NameBudget", "--budget name-comparisons=N allows more"},
};

/// The alternative names of a certificate of one kind: "a.example, b.example". Empty for none.
std::string alternative_names(const X509_CERT *cert, const char *kind) {
    std::string names;
    const X509_EXTENSIONS *extensions = get_X509_extensions(cert);
    const int32_t at = get_X509_EXTENSION_index_by_OID_index(extensions, TLX_OID_SUBJECT_ALT_NAME, -1);
    if (at < 0) return names;
    const Json described = describe_extension(get_X509_EXTENSION(extensions, at));
    for (const Json &name : described.value("value", Json::array())) {
        if (name.contains(kind)) names += (names.empty() ? "" : ", ") + name[kind].get<std::string>();
    }
    return names;
}

std::string names_hint(const X509_CERT *cert, const char *kind, const char *what) {
    const std::string names = alternative_names(cert, kind);
    return names.empty() ? "it has no " + std::string(what) : "it has " + names;
}

std::string issuer_hint(const X509_CERT *cert) {
    if (cert == nullptr) return "";
    return "no certificate of its issuer " + shown_name(get_X509_issuer(cert)) +
           " leads to an anchor; give what is missing with --pool or --anchor";
}

std::string strength_hint(const VERIFY_SETTINGS &settings) {
    if (settings.least_rsa_bits != 0 || settings.profile != TLX_PROFILE_CURRENT) return "";
    return "--profile korean_legacy accepts RSA and KCDSA of 1024 bits, SHA-1 and HAS-160";
}

}  // namespace

std::string result_hint(const VERIFY_RESULT *result, const VERIFY_SETTINGS &settings) {
    VERIFY_FINDING finding;
    if (get_VERIFY_RESULT_finding(result, 0, &finding) != 0) return "";
    const std::string_view rule = finding.rule;
    const Certificate cert = result_certificate(result, finding.certificate);
    if (rule == "NoIssuer") return issuer_hint(cert.get());
    if (rule == "WeakKey" || rule == "WeakDigest") return strength_hint(settings);
    if (rule == "OtherHost") return names_hint(cert.get(), "dns", "DNS name");
    if (rule == "OtherAddress") return names_hint(cert.get(), "ip", "IP address");
    if (rule == "OtherMailbox") return names_hint(cert.get(), "email", "mail address");
    for (const Hint &hint : kHints) {
        if (hint.rule == rule) return hint.text;
    }
    return "";
}

}  // namespace tool
