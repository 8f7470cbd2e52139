#include "verify.hpp"

#include "failure.hpp"

namespace tool {

namespace {

/// An identifier by dotted text or registered name.
Oid parse_oid(const std::string &text) {
    if (OBJECT_IDENTIFIER *named = get_OBJECT_IDENTIFIER(text.c_str(), 0)) return Oid(named);
    auto oid = made<Oid>(new_OBJECT_IDENTIFIER());
    must(set_ASN1_STRING_value(oid.get(), TLX_TAG_OBJECT_IDENTIFIER, text.data(),
                               static_cast<uint32_t>(text.size())));
    // The encoder accepts more texts; only the round trip proves this one.
    uint8_t *encoded = nullptr;
    const bool encodes = ASN1_STRING_to_binary(oid.get(), &encoded) != 0xFFFFFFFF;
    const Owned<uint8_t, tlx_free> owner(encoded);
    const Oid decoded(encodes ? decodeToBERObjectIdentifier(encoded) : nullptr);
    if (dotted_text(decoded.get()) != text) {
        throw Failure("--policy: \"" + text + "\" is no object identifier");
    }
    return oid;
}

}  // namespace

std::vector<Link> Verdict::links() const {
    std::vector<Link> links;
    if (stopped_at != nullptr) links.push_back({stopped_at, Mark::kFailed});
    for (auto i = static_cast<int32_t>(get_X509_CERTIFICATES_count(path.get())) - 1; i >= 0; --i) {
        const Mark mark = !built || i < failed_at ? Mark::kUnchecked
                          : i == failed_at        ? Mark::kFailed
                                                  : Mark::kGood;
        links.push_back({get_X509_CERTIFICATES_child(path.get(), i), mark});
    }
    return links;
}

Verifier::Verifier(const VerifyOptions &options)
    : pool_(made<Certificates>(new_X509_CERTIFICATES())), anchors_(made<Anchors>(new_TRUST_ANCHORS())) {
    get_CPV_SETTINGS(&settings_);
    if (!options.explicit_policy) settings_.initial_explicit_policy = 0;
    if (options.max_length > 0) settings_.max_certificatePath_length = options.max_length;
    if (!options.time.empty()) {
        time_ = parse_time(options.time);
        if (time_ == nullptr) {
            throw Failure("--at: \"" + options.time +
                          "\" is no time; write it like 2026-01-31 or 2026-01-31T12:00:00Z");
        }
        settings_.time = time_.get();
    }
    load_policies(options.policies);
    load_pool(options);
}

/// The pool is made of the certificates of both options.
void Verifier::load_pool(const VerifyOptions &options) {
    std::vector<LoadedCertificate> pool;
    for (const std::string &path : options.anchors) {
        for (LoadedCertificate &loaded : load_certificates(path)) {
            trust(loaded);
            pool.push_back(std::move(loaded));
        }
    }
    for (const std::string &path : options.pool) {
        for (LoadedCertificate &loaded : load_certificates(path)) {
            pool.push_back(std::move(loaded));
        }
    }
    put_lower_first(pool);
    must(reserve_STACK(pool_.get(), static_cast<uint32_t>(pool.size())));
    for (LoadedCertificate &loaded : pool) {
        must(push_STACK_value(pool_.get(), loaded.cert.release()));
    }
}

void Verifier::trust(const LoadedCertificate &loaded) {
    const auto anchor = made<Anchor>(create_TRUST_ANCHOR_from_X509_CERT(loaded.cert.get()));
    must(add_TRUST_ANCHORS(anchors_.get(), anchor.get()));
    if (is_selfSigned(loaded.cert.get()) != 0) {
        warnings_.push_back(loaded.source + ": is not self-issued, so that no path can end with it");
    }
}

void Verifier::load_policies(const std::vector<std::string> &texts) {
    if (texts.empty()) return;
    policies_ = made<Oids>(new_OBJECT_IDENTIFIERS());
    for (const std::string &text : texts) {
        must(add_OBJECT_IDENTIFIERS_child(policies_.get(), parse_oid(text).get(), -1));
    }
}

Verdict Verifier::verify(const X509_CERT *target, bool explain) const {
    Verdict verdict;
    verdict.path = made<Certificates>(new_X509_CERTIFICATES());
    X509_CERTIFICATES *path = verdict.path.get();
    verdict.status = build_certPath_ex(pool_.get(), anchors_.get(), target, &path, &settings_);
    verdict.built = verdict.status == 0;
    if (verdict.built) {
        // Validation consumes the set.
        const Oids acceptable(dup_OBJECT_IDENTIFIERS(policies_.get()));
        if (policies_ != nullptr && acceptable == nullptr) throw std::bad_alloc();
        node_LIST *tree = nullptr;
        verdict.status = validate_certpath_ex(path, acceptable.get(), &tree, &settings_, &verdict.failed_at);
        verdict.policies.reset(tree);
        if (verdict.is_valid()) verdict.warnings = path_warnings(path);
    } else if (const uint32_t count = get_X509_CERTIFICATES_count(path); count == 0) {
        verdict.stopped_at = target;
    } else if (explain) {
        verdict.stopped_at = issuer_of(get_X509_CERTIFICATES_child(path, static_cast<int32_t>(count) - 1));
    }
    if (explain) verdict.hint = hint_for(verdict);
    return verdict;
}

/// The certificate that building chose as issuer: the first one that, alone as the pool, lets building go on
/// above the certificate.
const X509_CERT *Verifier::issuer_of(const X509_CERT *cert) const {
    CPV_SETTINGS one_step = settings_;
    one_step.max_certificatePath_length = 1;
    const auto candidate = made<Owned<STACK, free_STACK>>(new_STACK());
    for (uint32_t i = 0; i < get_X509_CERTIFICATES_count(pool_.get()); ++i) {
        X509_CERT *issuer = get_X509_CERTIFICATES_child(pool_.get(), static_cast<int32_t>(i));
        remove_STACK_value(candidate.get(), 0);
        must(push_STACK_value(candidate.get(), issuer));
        const auto passed = made<Certificates>(new_X509_CERTIFICATES());
        X509_CERTIFICATES *list = passed.get();
        (void)build_certPath_ex(candidate.get(), anchors_.get(), cert, &list, &one_step);
        if (get_X509_CERTIFICATES_count(list) > 0) return issuer;
    }
    return nullptr;
}

}  // namespace tool
