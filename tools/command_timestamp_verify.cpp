// tlxpki timestamp verify.
#include <iostream>

#include "commands.hpp"
#include "describe_cms.hpp"
#include "failure.hpp"
#include "path_report.hpp"
#include "record.hpp"
#include "status.hpp"
#include "strict_report.hpp"
#include "strict_store.hpp"
#include "terminal.hpp"
#include "timestamp.hpp"

namespace tool {

namespace {

using TimestampReport = Owned<CMS_TIMESTAMP_REPORT, free_CMS_TIMESTAMP_REPORT>;

constexpr uint32_t kUnproven = 0x4B300116;

/// What a token is compared with, with what that points to.
class Compared {
  public:
    Compared(const TimestampVerifyOptions &options, const CMS_CONTENT_INFO *token) {
        if (!options.request.empty()) {
            const Input input(options.request);
            request_.reset(decode_record(input.blocks().front(), Seq_to_CMS_TIMESTAMP_REQUEST));
        }
        if (!options.file.empty()) digest(options.file, token);
        if (options.message.empty()) return;
        message_ = read_signed_message(options.message);
        signature_ = stamped_signer(message_.get(), token, options.signer, options.message).info->signature;
    }
    void set(CMS_TIMESTAMP_SETTINGS &settings) const {
        settings.request = request_.get();
        if (signature_ != nullptr) {
            settings.octets = octets_of(signature_).data();
            settings.octets_len = static_cast<uint32_t>(octets_of(signature_).size());
        }
        if (digest_.length != 0) {
            settings.digest = digest_.octets.data();
            settings.digest_len = digest_.length;
        }
    }

  private:
    void digest(const std::string &path, const CMS_CONTENT_INFO *token) {
        CMS_TST_INFO *decoded = nullptr;
        const uint32_t status = decode_CMS_TST_INFO(token, &decoded);
        const Owned<CMS_TST_INFO, free_CMS_TST_INFO> info(decoded);
        if (status != 0) throw Failure("the token cannot be decoded: " + exact_status_sentence(status));
        const uint32_t digest_id = get_CMS_MESSAGE_IMPRINT_digest(info->messageImprint);
        if (digest_id == 0) throw Failure("the digest of the token is not known");
        digest_ = digest_file(path, digest_id);
    }

    TimestampRequest request_;
    CmsMessage message_;
    const OCTET_STRING *signature_ = nullptr;
    FileDigest digest_;
};

Certificates collect(const TimestampVerifyOptions &options) {
    auto pool = made<Certificates>(new_X509_CERTIFICATES());
    std::vector<std::string> warnings;
    for (const auto *paths : {&options.anchors, &options.pool}) {
        for (const std::string &path : *paths) {
            for (const LoadedCertificate &loaded : collect_certificates(path, warnings)) {
                must(add_X509_CERTIFICATES(pool.get(), loaded.cert.get()));
            }
        }
    }
    return pool;
}

struct Check {
    const char *name;
    uint32_t CMS_TIMESTAMP_REPORT::*status;
};
constexpr Check kChecks[] = {{"token", &CMS_TIMESTAMP_REPORT::infoStatus},
                             {"imprint", &CMS_TIMESTAMP_REPORT::imprintStatus},
                             {"request", &CMS_TIMESTAMP_REPORT::requestStatus},
                             {"signer", &CMS_TIMESTAMP_REPORT::signerStatus}};

void print_report(const Json &document, const CMS_TIMESTAMP_REPORT &report, bool is_proven) {
    print_text(std::cout, document["time_stamp"], 4);
    for (const Check &check : kChecks) {
        const uint32_t status = report.*check.status;
        std::cout << "    " << mark_text(status == 0 ? Mark::kGood : Mark::kFailed) << ' ' << check.name;
        if (status != 0) std::cout << ": " << exact_status_sentence(status);
        std::cout << '\n';
    }
    const Json path = document.value("path", Json::array());
    for (const Json &finding : document.value("findings", Json::array())) {
        const Json &subject = path[finding["certificate"].get<std::size_t>()]["subject"];
        std::cout << "        " << printable(shown_subject(subject)) << ": " << finding_line(finding) << '\n';
    }
    const char *verdict = is_proven            ? "valid"
                          : report.status == 0 ? "the signature holds, the authority is unproven"
                                               : "NOT VALID";
    std::cout << printable(document["source"].get<std::string>()) << ": " << verdict << '\n';
}

}  // namespace

Json describe_timestamp_report(const CMS_TIMESTAMP_REPORT &report) {
    const P7_SIGNER_REPORT *signer = report.signer;
    Json json = Json::object();
    if (report.info != nullptr) json["time_stamp"] = describe_time_stamp(report.info);
    if (signer != nullptr && signer->certificate != nullptr) {
        json["time_stamp"]["signer"] = shown_name(get_X509_subject(signer->certificate));
    }
    for (const Check &check : kChecks) {
        const uint32_t status = report.*check.status;
        Json &described = json["checks"][check.name] = {{"state", status == 0 ? "ok" : "failed"}};
        if (status != 0) described["status"] = exact_status_json(status);
    }
    if (signer != nullptr && signer->path != nullptr) json.update(describe_result(signer->path));
    return json;
}

int run_timestamp_verify(const TimestampVerifyOptions &options) {
    if (options.message.empty() && options.file.empty() && options.request.empty()) {
        throw Failure("--message, --file or --request is required");
    }
    const bool has_anchors = !options.anchors.empty() || options.strict.system_anchors;
    StrictSettings settings(options.strict, {}, options.time);
    const StrictStore store(options.strict, options.anchors, options.pool);
    const Certificates pool = collect(options);
    const CmsMessage token = load_timestamp_token(options.token);
    const Compared compared(options, token.get());
    CMS_TIMESTAMP_SETTINGS wanted = {};
    compared.set(wanted);
    wanted.pool = pool.get();
    wanted.store = has_anchors ? store.get() : nullptr;
    wanted.settings = &settings.get();
    CMS_TIMESTAMP_REPORT *made = nullptr;
    (void)verify_CMS_TIMESTAMP(token.get(), &wanted, &made);
    const TimestampReport report(made);
    if (report == nullptr) throw std::bad_alloc();
    Warner warner;
    warner.tell(store.warnings());
    warner.tell(settings.take_warnings());
    const bool is_proven = report->status == 0 && has_anchors;
    Json document = {
        {"source", source_of(options.token)},
        {"valid", is_proven},
        {"status", exact_status_json(is_proven || report->status != 0 ? report->status : kUnproven)}};
    document.update(describe_timestamp_report(*report));
    if (options.json) {
        print_json(std::cout, document);
    } else {
        print_report(document, *report, is_proven);
    }
    return is_proven ? kGood : kNotValid;
}

}  // namespace tool
