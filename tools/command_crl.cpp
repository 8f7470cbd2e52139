// tlxpki crl show and tlxpki crl check.
#include <iostream>

#include "commands.hpp"
#include "describe.hpp"
#include "failure.hpp"
#include "revocation.hpp"
#include "status.hpp"
#include "verify.hpp"

namespace tool {

namespace {

constexpr uint32_t kNotRevoked = 0x480C0047;
/// Statuses below are those of a key that verified a signature.
constexpr uint32_t kFirstOfLibrary = 0x40000000;

std::string why(uint32_t status) {
    return status < kFirstOfLibrary ? "the signature is not that of the issuer"
                                    : exact_status_sentence(status);
}

/// A list, and what changed since.
struct Lists {
    Crl crl;
    Crl delta;
};

void rely_on(const X509_CRL *crl, const std::string &path, const X509_CERT *issuer, const ASN1_TIME *time) {
    const uint32_t status = verify_X509_CRL(crl, issuer, time);
    if (status != 0) throw Failure(source_of(path) + ": cannot be relied on: " + why(status));
}

/// The lists of the arguments. Throws Failure when they cannot be relied on.
Lists load_lists(const CheckCrlOptions &options) {
    const Certificate issuer = std::move(load_certificates(options.issuer).front().cert);
    const Time time = time_of_option(options.time);
    Lists lists;
    lists.crl = load_crl(options.crl);
    rely_on(lists.crl.get(), options.crl, issuer.get(), time.get());
    if (options.delta.empty()) return lists;
    lists.delta = load_crl(options.delta);
    rely_on(lists.delta.get(), options.delta, issuer.get(), time.get());
    const uint32_t status = check_X509_CRL_delta(lists.crl.get(), lists.delta.get());
    if (status != 0) {
        throw Failure(source_of(options.delta) + ": does not belong to " + source_of(options.crl) + ": " +
                      why(status));
    }
    return lists;
}

Json check(const LoadedCertificate &loaded, const Lists &lists) {
    const X509_CERT *cert = loaded.cert.get();
    X509_REVOKED *made = nullptr;
    const uint32_t status =
        find_X509_CRL_revoked_by_X509_CERT(lists.crl.get(), lists.delta.get(), cert, &made);
    const Revoked revoked(made);
    Json json = {{"source", loaded.source},
                 {"subject", name_text(get_X509_subject(cert))},
                 {"serial", number_hex(get_X509_serial(cert))},
                 {"state", status == 0             ? "revoked"
                           : status == kNotRevoked ? "good"
                                                   : "unknown"}};
    if (status == 0) add_revocation(json, made);
    if (status != 0 && status != kNotRevoked) json["status"] = exact_status_json(status);
    return json;
}

std::string line_of(const Json &finding) {
    const auto text = [&finding](const char *key) { return finding[key].get<std::string>(); };
    std::string line = text("source") + ": " + text("state");
    if (finding.contains("revocation_date")) line += ", " + text("revocation_date");
    if (finding.contains("reason")) line += ", " + text("reason");
    if (finding.contains("invalidity_date")) line += ", not to be relied on since " + text("invalidity_date");
    if (finding.contains("status")) {
        line += ": " + finding["status"]["code"].get<std::string>() + ", " +
                finding["status"]["reason"].get<std::string>();
    }
    return line;
}

bool is_some(const Json &findings, const char *state) {
    return std::any_of(findings.begin(), findings.end(),
                       [state](const Json &finding) { return finding["state"] == state; });
}

}  // namespace

int run_crl_show(const ShowCrlOptions &options) {
    const Input input(options.file);
    Json document = {{"source", source_of(options.file)}};
    document.update(describe_crl(decode_crl(input.blocks().front()).get(), options.most_entries));
    if (options.json) {
        print_json(std::cout, document);
    } else {
        print_object(std::cout, document);
    }
    return kGood;
}

int run_crl_check(const CheckCrlOptions &options) {
    const Lists lists = load_lists(options);
    Json findings = Json::array();
    for (const std::string &path : options.certs) {
        for (const LoadedCertificate &loaded : load_certificates(path)) {
            findings.push_back(check(loaded, lists));
        }
    }
    if (options.json) {
        print_json(std::cout, findings);
    } else {
        for (const Json &finding : findings) {
            std::cout << printable(line_of(finding)) << '\n';
        }
    }
    if (is_some(findings, "revoked")) return kNotValid;
    return is_some(findings, "unknown") ? kUnusable : kGood;
}

}  // namespace tool
