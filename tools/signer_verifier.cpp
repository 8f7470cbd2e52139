#include "signer_verifier.hpp"

#include "failure.hpp"
#include "strict_report.hpp"
#include "verify.hpp"

namespace tool {

SignerVerifier::SignerVerifier(const VerifyMessageOptions &options)
    : has_anchors_(!options.anchors.empty() || options.strict.system_anchors),
      pool_(made<Certificates>(new_X509_CERTIFICATES())) {
    if (options.rules == kStrict) {
        settings_.emplace(options.strict, std::vector<std::string>(), options.time);
        store_.emplace(options.strict, options.anchors, std::vector<std::string>());
        warnings_ = store_->warnings();
        // A signer may have an anchor's certificate. Reading it has warned.
        std::vector<std::string> again;
        join_pool(options.anchors, again);
    } else {
        time_ = time_of_option(options.time);
        anchors_ = made<Anchors>(new_TRUST_ANCHORS());
        for (const LoadedCertificate &loaded : collect_anchors(options.anchors, warnings_)) {
            const auto anchor = made<Anchor>(create_TRUST_ANCHOR_from_X509_CERT(loaded.cert.get()));
            must(add_TRUST_ANCHORS(anchors_.get(), anchor.get()));
            must(add_X509_CERTIFICATES(pool_.get(), loaded.cert.get()));
        }
    }
    join_pool(options.pool, warnings_);
}

void SignerVerifier::join_pool(const std::vector<std::string> &paths, std::vector<std::string> &warnings) {
    for (const std::string &path : paths) {
        for (const LoadedCertificate &loaded : collect_certificates(path, warnings)) {
            must(add_X509_CERTIFICATES(pool_.get(), loaded.cert.get()));
        }
    }
}

uint32_t SignerVerifier::verify(const P7_CONTENT_INFO *message, Octets content, SignerReports &reports) {
    const auto size = static_cast<uint32_t>(content.size());
    P7_SIGNER_REPORTS *found = nullptr;
    const uint32_t status =
        settings_ ? verify_PKCS7_Signers_ex(message, content.data(), size, pool_.get(),
                                            has_anchors_ ? store_->get() : nullptr, &settings_->get(), &found)
                  : verify_PKCS7_Signers_by_CPV(message, content.data(), size, pool_.get(),
                                                has_anchors_ ? anchors_.get() : nullptr, time_.get(), &found);
    reports.reset(found);
    return status;
}

void SignerVerifier::set(SIGNED_MESSAGE_READER_SETTINGS &settings) const {
    settings.pool = pool_.get();
    settings.store = has_anchors_ ? store_->get() : nullptr;
    settings.settings = &settings_->get();
}

std::vector<std::string> SignerVerifier::take_warnings() {
    std::vector<std::string> warnings = std::exchange(warnings_, {});
    if (!settings_) return warnings;
    for (std::string &warning : settings_->take_warnings()) {
        warnings.push_back(std::move(warning));
    }
    return warnings;
}

std::string SignerVerifier::hint(const VERIFY_RESULT *path) const {
    return path == nullptr ? "" : result_hint(path, settings_->get());
}

}  // namespace tool
