// tlxpki verify: verifies certificates by RFC 5280, or by the rules of validate_certpath().
#include "commands.hpp"
#include "failure.hpp"
#include "path_report.hpp"
#include "status.hpp"
#include "strict_report.hpp"
#include "strict_store.hpp"
#include "target_report.hpp"
#include "verify.hpp"

namespace tool {

namespace {

constexpr uint32_t kNoMemory = 0x5502003C;

/// The certificates of the files of targets.
template <typename Loaded>
std::vector<Loaded> load_targets(const VerifyOptions &options,
                                 std::vector<Loaded> (*load)(const std::string &)) {
    std::vector<Loaded> targets;
    for (const std::string &path : options.targets) {
        for (Loaded &loaded : load(path)) {
            targets.push_back(std::move(loaded));
        }
    }
    return targets;
}

int verify_compatibly(const VerifyOptions &options) {
    const std::vector<LoadedCertificate> targets = load_targets(options, load_certificates);
    const Verifier verifier(options, targets);
    Warner warner;
    warner.tell(verifier.warnings());
    const auto verify = [&](std::size_t at) {
        return report_verdict(targets[at], verifier.verify(targets[at].cert.get()));
    };
    return report_targets(targets.size(), verify, options.json, warner);
}

/// The status, with the sentence of the first finding.
Json meaning_of(uint32_t status, const Json &findings) {
    Json json = status_json(status);
    if (findings.empty()) return json;
    json["reason"] = findings[0]["text"];
    json.erase("detail");
    json.erase("operation");
    return json;
}

TargetReport verify_strictly(const ReceivedCertificate &target, const StrictStore &store,
                             StrictSettings &settings) {
    const Octets octets = target.octets.octets();
    VERIFY_RESULT *made = nullptr;
    const uint32_t status = verify_CERTIFICATE(store.get(), nullptr, octets.data(),
                                               static_cast<uint32_t>(octets.size()), &settings.get(), &made);
    if (status == kNoMemory) throw std::bad_alloc();
    const VerifyResult result(made);
    Json description = describe_result(made);
    Json json = {{"source", target.source},
                 {"subject", description["path"].back()["subject"]},
                 {"valid", status == 0},
                 {"status", meaning_of(status, description["findings"])}};
    const std::string hint = result_hint(made, settings.get());
    if (!hint.empty()) json["hint"] = hint;
    std::vector<std::string> warnings = settings.take_warnings();
    for (std::string &warning : result_warnings(made, description)) {
        warnings.push_back(std::move(warning));
    }
    if (!warnings.empty()) json["warnings"] = warnings;
    json.update(description);
    return {std::move(json), ""};
}

int verify_strictly(const VerifyOptions &options) {
    StrictSettings settings(options.strict, options.policies, options.time);
    const std::vector<ReceivedCertificate> targets = load_targets(options, load_received);
    StrictStore store(options.strict, options.anchors, options.pool);
    for (const ReceivedCertificate &target : targets) {
        if (!target.is_first) store.add(target);
    }
    Warner warner;
    warner.tell(store.warnings());
    const auto verify = [&](std::size_t at) { return verify_strictly(targets[at], store, settings); };
    return report_targets(targets.size(), verify, options.json, warner);
}

}  // namespace

int run_verify(const VerifyOptions &options) {
    if (options.anchors.empty() && !options.strict.system_anchors) {
        throw Failure("--anchor is required; see tlxpki verify --help");
    }
    return options.rules == kCompatible ? verify_compatibly(options) : verify_strictly(options);
}

}  // namespace tool
