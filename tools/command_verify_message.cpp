// tlxpki message verify: checks every signer, and prints what was found of each.
#include <array>
#include <iostream>

#include "commands.hpp"
#include "describe_message.hpp"
#include "failure.hpp"
#include "input.hpp"
#include "message.hpp"
#include "output.hpp"
#include "path_report.hpp"
#include "signer_verifier.hpp"
#include "status.hpp"
#include "strict_report.hpp"
#include "timestamp.hpp"
#include "verify.hpp"
#include "verify_pieces.hpp"

namespace tool {

namespace {

enum : uint32_t {
    kTwoContents = 0x4B30001C,
    kNoContent = 0x4B30003B,
    kNoMemory = 0x4B30003C,
    kNoCertificate = 0x4B300047,
    kContentGone = 0x52820012,
    kKeyTooLate = 0x52820048,
    kNoIssuer = 0x53050047,
    kNoAnchor = 0x53050116
};

void expect_signatures(const std::string &source, const P7_CONTENT_INFO *message) {
    const int32_t type = type_of(message);
    if (type == TLX_OID_PKCS7_SIGNED_DATA || type == TLX_OID_PKCS7_SIGNED_AND_ENVELOPED_DATA) return;
    throw Failure(source + ": is " + type_name(message->contentType) + ", which has no signatures");
}

/// Throws Failure when the message cannot be verified with what is given.
void expect_checkable(const std::string &source, const P7_CONTENT_INFO *message, uint32_t status) {
    if (status == kTwoContents) {
        throw Failure(source + ": has its content in itself; --content is for messages without");
    }
    if (status == kNoContent && type_of(message) == TLX_OID_PKCS7_SIGNED_DATA) {
        throw Failure(source + ": does not hold its content; give it with --content");
    }
    if (status == kNoContent) {
        throw Failure(source + ": its content is encrypted; decrypt it, and give it with --content");
    }
    if (status == kNoMemory) throw std::bad_alloc();
}

/// The octets that are signed: those of data, or the element of other content.
void write_content(const std::string &path, const P7_CONTENT_INFO *message, Octets given) {
    if (given.data() != nullptr) return write_octets(path, given);
    const P7_CONTENT_INFO *content = message->content.signedData->contentInfo;
    if (content->received == nullptr) return write_octets(path, octets_of(content->content.data));
    uint8_t *element = nullptr;
    const uint32_t size = ASN1_to_binary(content->received, &element);
    const Buffer owner(element, element == nullptr ? 0 : size);
    write_octets(path, owner.octets());
}

/// Verifies a message that is read whole: by the compatible rules, and signed-and-enveloped data.
Findings verify_whole(const VerifyMessageOptions &options, Source &source, SignerVerifier &verifier) {
    const Message message = decode_message(Input(source.rest().octets(), source.name()));
    expect_signatures(source.name(), message.get());
    const Buffer content = options.content.empty() ? Buffer() : read_octets(options.content);
    Findings findings;
    findings.settle(verifier.verify(message.get(), content.octets(), findings.reports), verifier);
    expect_checkable(source.name(), message.get(), findings.status);
    for (uint32_t i = 0; i < get_P7_SIGNER_REPORTS_count(findings.reports.get()); ++i) {
        const P7_SIGNER_INFO *signer =
            get_P7_SIGNER_INFOS_child(signers_of(message.get()), static_cast<int32_t>(i));
        findings.signers.push_back(describe_signer(signer));
    }
    if (findings.is_proven() && !options.output.empty()) {
        write_content(options.output, message.get(), content.octets());
    }
    return findings;
}

Findings verify(const VerifyMessageOptions &options, SignerVerifier &verifier) {
    Waiting waiting("Verifying");
    Source message(options.message);
    const bool in_pieces = options.rules == kStrict && type_of(message) == TLX_MESSAGE_SIGNED_DATA;
    return in_pieces ? verify_in_pieces(options, message, verifier, waiting)
                     : verify_whole(options, message, verifier);
}

/// A check of a signer. It was not made without a certificate when it takes one, and a path without anchors.
/// One of an attribute that few signers have is told when it fails.
struct Check {
    const char *name;
    uint32_t P7_SIGNER_REPORT::*status;
    bool takes_certificate;
    bool is_of_attribute = false;
};
constexpr std::array kChecks = {
    Check{"certificate", &P7_SIGNER_REPORT::certificateStatus, false},
    Check{"algorithms", &P7_SIGNER_REPORT::algorithmStatus, true},
    Check{"content", &P7_SIGNER_REPORT::contentStatus, false},
    Check{"signing_certificate", &P7_SIGNER_REPORT::signingCertificateStatus, true, true},
    Check{"algorithm_protection", &P7_SIGNER_REPORT::protectionStatus, true, true},
    Check{"signature", &P7_SIGNER_REPORT::signatureStatus, true},
    Check{"path", &P7_SIGNER_REPORT::pathStatus, true}};

Mark mark_of(const P7_SIGNER_REPORT &report, const Check &check) {
    const uint32_t status = report.*check.status;
    if (status == 0) return Mark::kGood;
    const bool unmade = check.takes_certificate && report.certificate == nullptr;
    return unmade || status == kUnproven ? Mark::kUnchecked : Mark::kFailed;
}

/// That of the worst of the checks.
Mark mark_of(const P7_SIGNER_REPORT &report) {
    if (report.status != 0) return Mark::kFailed;
    return report.pathStatus == 0 ? Mark::kGood : Mark::kUnchecked;
}

const char *state_of(Mark mark) {
    constexpr const char *kStates[] = {"ok", "failed", "not checked"};
    return kStates[static_cast<std::size_t>(mark)];
}

Json describe_stamps(const CMS_TIMESTAMP_REPORTS *reports) {
    Json stamps = Json::array();
    for (uint32_t i = 0; i < get_CMS_TIMESTAMP_REPORTS_count(reports); ++i) {
        const CMS_TIMESTAMP_REPORT *report =
            get_CMS_TIMESTAMP_REPORTS_child(reports, static_cast<int32_t>(i));
        const bool is_proven = report->status == 0 && report->signer->pathStatus == 0;
        const Mark mark = is_proven ? Mark::kGood : report->status == 0 ? Mark::kUnchecked : Mark::kFailed;
        Json stamp = {{"state", state_of(mark)}};
        if (report->status != 0) stamp["status"] = exact_status_json(report->status);
        stamp.update(describe_timestamp_report(*report).value("time_stamp", Json::object()));
        stamps.push_back(stamp);
    }
    return stamps;
}

Json describe_report(const Json &signer, const P7_SIGNER_REPORT &report) {
    Json json = Json::object();
    if (report.certificate != nullptr) json["subject"] = name_text(get_X509_subject(report.certificate));
    json.update(signer);
    for (const Check &check : kChecks) {
        const Mark mark = mark_of(report, check);
        if (check.is_of_attribute && mark != Mark::kFailed) continue;
        Json &described = json["checks"][check.name] = {{"state", state_of(mark)}};
        if (mark == Mark::kFailed) described["status"] = exact_status_json(report.*check.status);
    }
    if (report.path != nullptr) json.update(describe_result(report.path));
    if (report.timestamps != nullptr) json["time_stamps"] = describe_stamps(report.timestamps);
    return json;
}

/// A hint for a status that stands for the same whatever else was found.
std::string hint_for(uint32_t status) {
    switch (status) {
        case kUnproven:
            return "--anchor FILE names the certificates to trust; a path has to lead from each signer's to "
                   "one of them";
        case kNoCertificate:
            return "give the signer's certificate with --pool";
        case kContentGone:
        case kKeyTooLate:
            return "give --output or --content a regular file, from which the content can be read again";
        case kNoIssuer:
            return "no certificate fits as issuer; give those above the signer's with --pool";
        case kNoAnchor:
            return "if you trust the certificate at the top of the path, give it with --anchor";
        case kOutsideValidity:
            return "--at TIME verifies at another time than now";
        default:
            return "";
    }
}

/// A hint for the first signer that failed.
std::string hint_for(const Findings &findings, const SignerVerifier &verifier) {
    std::string hint = hint_for(findings.status);
    for (int32_t i = 0; hint.empty(); ++i) {
        const P7_SIGNER_REPORT *report = get_P7_SIGNER_REPORTS_child(findings.reports.get(), i);
        if (report == nullptr) break;
        if (report->status != 0 && report->status == report->pathStatus) hint = verifier.hint(report->path);
    }
    return hint;
}

Json describe_findings(const VerifyMessageOptions &options, const Findings &findings,
                       const SignerVerifier &verifier) {
    Json json = {{"source", source_of(options.message)},
                 {"valid", findings.is_proven()},
                 {"status", exact_status_json(findings.status)},
                 {"signers", Json::array()}};
    const std::string hint = hint_for(findings, verifier);
    if (!hint.empty()) json["status"]["hint"] = hint;
    int32_t place = 0;
    for (const Json &signer : findings.signers) {
        json["signers"].push_back(
            describe_report(signer, *get_P7_SIGNER_REPORTS_child(findings.reports.get(), place++)));
    }
    return json;
}

std::vector<std::string> warnings_about(const Json &document, const Findings &findings,
                                        SignerVerifier &verifier) {
    std::vector<std::string> warnings = verifier.take_warnings();
    int32_t place = 0;
    for (const Json &signer : document["signers"]) {
        const VERIFY_RESULT *path = get_P7_SIGNER_REPORTS_child(findings.reports.get(), place++)->path;
        if (path == nullptr) continue;
        for (std::string &warning : result_warnings(path, signer)) {
            warnings.push_back(std::move(warning));
        }
    }
    return warnings;
}

std::string verdict_text(const Findings &findings) {
    if (findings.is_proven()) return coloured("valid", Colour::kGreen);
    if (findings.status != kUnproven) return coloured("NOT VALID", Colour::kRed);
    return coloured("the signatures hold, the signers are unproven", Colour::kYellow);
}

void print_signer(std::ostream &out, Json signer, const P7_SIGNER_REPORT &report) {
    out << mark_text(mark_of(report)) << ' '
        << (report.certificate == nullptr ? "Signer without a certificate"
                                          : printable(shown_name(get_X509_subject(report.certificate))))
        << '\n';
    const Json path = signer.value("path", Json::array());
    const Json findings = signer.value("findings", Json::array());
    for (const char *key : {"subject", "checks", "path", "policies", "findings", "candidates", "paths"}) {
        signer.erase(key);
    }
    print_text(out, signer, 4);
    for (const Check &check : kChecks) {
        const Mark mark = mark_of(report, check);
        if (check.is_of_attribute && mark != Mark::kFailed) continue;
        out << "    " << mark_text(mark) << ' ' << check.name;
        if (mark == Mark::kFailed) out << ": " << exact_status_sentence(report.*check.status);
        out << '\n';
    }
    for (const Json &finding : findings) {
        const Json &subject = path[finding["certificate"].get<std::size_t>()]["subject"];
        out << "        " << printable(shown_subject(subject)) << ": " << finding_line(finding) << '\n';
    }
    out << '\n';
}

void print_findings(std::ostream &out, const Json &document, const Findings &findings) {
    int32_t place = 0;
    for (const Json &signer : document["signers"]) {
        print_signer(out, signer, *get_P7_SIGNER_REPORTS_child(findings.reports.get(), place++));
    }
    out << printable(document["source"].get<std::string>()) << ": " << verdict_text(findings) << '\n';
    print_text(out, document["status"], 2);
}

}  // namespace

int run_verify_message(const VerifyMessageOptions &options) {
    const bool to_output = options.output == "-";
    expect_room_for_json(options.json, options.output);
    SignerVerifier verifier(options);
    Warner warner;
    warner.tell(verifier.take_warnings());
    const Findings findings = verify(options, verifier);
    const Json document = describe_findings(options, findings, verifier);
    warner.tell(warnings_about(document, findings, verifier));
    if (options.json) {
        print_json(std::cout, document);
    } else {
        print_findings(to_output ? std::cerr : std::cout, document, findings);
    }
    return findings.is_proven() ? kGood : kNotValid;
}

}  // namespace tool
