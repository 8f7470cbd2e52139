#include "verify.hpp"

#include <algorithm>

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

Verifier::Verifier(const VerifyOptions &options, const std::vector<LoadedCertificate> &targets) {
    get_CPV_SETTINGS(&settings_);
    if (!options.explicit_policy) settings_.initial_explicit_policy = 0;
    if (options.max_length > 0) settings_.max_certificatePath_length = options.max_length;
    time_ = time_of_option(options.time);
    settings_.time = time_.get();
    policies_ = parse_policies(options.policies);
    trust(collect_anchors(options.anchors, warnings_));
    load_pool(options, targets);
}

Oids parse_policies(const std::vector<std::string> &texts) {
    if (texts.empty()) return nullptr;
    auto policies = made<Oids>(new_OBJECT_IDENTIFIERS());
    for (const std::string &text : texts) {
        must(add_OBJECT_IDENTIFIERS_child(policies.get(), parse_oid(text).get(), -1));
    }
    return policies;
}

std::vector<LoadedCertificate> collect_anchors(const std::vector<std::string> &paths,
                                               std::vector<std::string> &warnings) {
    std::vector<LoadedCertificate> anchors;
    for (const std::string &path : paths) {
        for (LoadedCertificate &loaded : collect_certificates(path, warnings)) {
            if (is_selfSigned(loaded.cert.get()) != 0) {
                warnings.push_back(loaded.source + ": is not self-issued, so that no path can end with it");
            }
            anchors.push_back(std::move(loaded));
        }
    }
    return anchors;
}

void Verifier::trust(std::vector<LoadedCertificate> anchors) {
    for (LoadedCertificate &loaded : anchors) {
        X509_CERT *cert = loaded.cert.get();
        trusted_.emplace(key_of(get_X509_subject(cert)),
                         Trusted{cert, made<Anchor>(create_TRUST_ANCHOR_from_X509_CERT(cert))});
        loaded_.push_back(std::move(loaded));
    }
}

/// The pool has the anchors, the certificates of its option, and those after the first of a target's file.
void Verifier::load_pool(const VerifyOptions &options, const std::vector<LoadedCertificate> &targets) {
    for (const std::string &path : options.pool) {
        for (LoadedCertificate &loaded : collect_certificates(path, warnings_)) {
            loaded_.push_back(std::move(loaded));
        }
    }
    for (const LoadedCertificate &loaded : loaded_) {
        pool_.push_back(loaded.cert.get());
    }
    for (const LoadedCertificate &target : targets) {
        if (!target.is_first) pool_.push_back(target.cert.get());
    }
    put_lower_first(pool_);
    index_.build(pool_);
}

Verdict Verifier::verify(X509_CERT *target) const {
    Verdict verdict;
    const Chain chain = chain_of(target);
    verdict.path = made<Certificates>(new_X509_CERTIFICATES());
    X509_CERTIFICATES *path = verdict.path.get();
    verdict.status = build_certPath_ex(chain.pool.get(), chain.anchors.get(), target, &path, &settings_);
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
    } else if (count <= chain.issuers.size()) {
        verdict.stopped_at = chain.issuers[count - 1];
    }
    explain(verdict, chain);
    return verdict;
}

/// Follows the issuers, trusted ones before those of the pool. Building from these certificates alone costs
/// the same whatever the size of the pool.
Chain Verifier::chain_of(X509_CERT *target) const {
    Chain chain;
    chain.pool = made<BorrowedPool>(new_STACK());
    chain.anchors = made<BorrowedPool>(new_STACK());
    X509_CERT *current = target;
    while (is_selfSigned(current) != 0 && !chain.goes_round &&
           chain.issuers.size() < TLX_CPV_MAX_CERTIFICATES) {
        X509_CERT *issuer = anchor_above(current);
        const std::size_t place = issuer == nullptr ? index_.issuer_of(current) : kNoPlace;
        if (place != kNoPlace) issuer = pool_[place];
        if (issuer == nullptr) break;
        chain.goes_round = std::ranges::find(chain.issuers, issuer) != chain.issuers.end();
        if (!chain.goes_round) must(push_STACK_value(chain.pool.get(), issuer));
        chain.issuers.push_back(issuer);
        current = issuer;
    }
    const auto [first, last] = trusted_.equal_range(key_of(get_X509_subject(current)));
    for (auto each = first; each != last; ++each) {
        must(push_STACK_value(chain.anchors.get(), each->second.anchor.get()));
    }
    return chain;
}

/// The trusted certificate that issued another; null when there is none.
X509_CERT *Verifier::anchor_above(X509_CERT *cert) const {
    const auto [first, last] = trusted_.equal_range(key_of(get_X509_issuer(cert)));
    const auto found = std::find_if(first, last, [this, cert](const auto &each) {
        return leads_to(cert, each.second.cert, each.second.anchor.get());
    });
    return found == last ? nullptr : found->second.cert;
}

/// Whether an issuer signed a certificate, and building goes from one to the other and ends there.
bool Verifier::leads_to(X509_CERT *cert, X509_CERT *issuer, TRUST_ANCHOR *anchor) const {
    const auto pool = made<BorrowedPool>(new_STACK());
    const auto anchors = made<BorrowedPool>(new_STACK());
    must(push_STACK_value(pool.get(), issuer));
    must(push_STACK_value(anchors.get(), anchor));
    const auto path = made<Certificates>(new_X509_CERTIFICATES());
    X509_CERTIFICATES *list = path.get();
    return build_certPath_ex(pool.get(), anchors.get(), cert, &list, &settings_) == 0 &&
           verify_SIG_X509_CERT(cert, anchor->publicKey) == 0;
}

}  // namespace tool
