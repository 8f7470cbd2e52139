#include "verify/fetch.hpp"

#include <algorithm>
#include <string_view>

#include "der/buffer.hpp"
#include "verify/distribution_point.hpp"
#include "verify/general_names.hpp"
#include "verify/oid.hpp"
#include "verify/verify_result.hpp"

namespace tlx {
namespace {

constexpr std::size_t kIpv4Length = 4;
/// URLs of one request, at most.
constexpr u32 kMostUrls = 16;

/// URLs as texts that end in a zero octet.
class Urls {
  public:
    void add(const GeneralNameView &name) noexcept {
        if (name.form != NameForm::uri || count_ == kMostUrls) return;
        starts_[count_++] = texts_.size();
        texts_.append(name.value);
        texts_.append(u8{0});
    }
    /// False when there are none and when memory ran out.
    [[nodiscard]] bool finish() noexcept {
        for (u32 i = 0; texts_.ok() && i < count_; ++i) {
            texts_of_[i] = reinterpret_cast<const char *>(texts_.data() + starts_[i]);
        }
        return texts_.ok() && count_ != 0;
    }
    [[nodiscard]] const char *const *texts() const noexcept { return texts_of_; }
    [[nodiscard]] u32 count() const noexcept { return count_; }

  private:
    Buffer texts_;
    std::size_t starts_[kMostUrls] = {};
    const char *texts_of_[kMostUrls] = {};
    u32 count_ = 0;
};

// AuthorityInfoAccessSyntax ::= SEQUENCE OF SEQUENCE {
//   accessMethod OBJECT IDENTIFIER, accessLocation GeneralName }
void add_access(const ExtensionView &extension, std::string_view method, Urls &urls) noexcept {
    StrictCursor list;
    if (!open_whole(extension.value, id::kSequence, list)) return;
    while (!list.at_end()) {
        StrictCursor access;
        Bytes oid;
        GeneralNameView location;
        if (!list.enter(id::kSequence, access) || !access.next(id::kOid, oid)) return;
        if (is_oid_of(oid, method) && next_general_name(access, kIpv4Length, location)) urls.add(location);
    }
}

// CRLDistributionPoints ::= SEQUENCE SIZE (1..MAX) OF DistributionPoint
void add_points(const ExtensionView &extension, Urls &urls) noexcept {
    StrictCursor points;
    PointView point;
    if (!open_whole(extension.value, id::kSequence, points)) return;
    while (!points.at_end() && next_point(points, point)) {
        StrictCursor names(point.name.is_relative ? Bytes() : point.name.contents);
        GeneralNameView name;
        while (!names.at_end() && next_general_name(names, kIpv4Length, name)) {
            urls.add(name);
        }
    }
}

void add_urls(u32 kind, const CertificateView &certificate, Urls &urls) noexcept {
    const ExtensionView &access = certificate.extensions[kAuthorityInfoAccess];
    // id-ad is 1.3.6.1.5.5.7.48: id-ad-ocsp is its first, id-ad-caIssuers its second.
    if (kind == TLX_FETCH_OCSP) add_access(access, "\x2B\x06\x01\x05\x05\x07\x30\x01", urls);
    if (kind == TLX_FETCH_ISSUERS) add_access(access, "\x2B\x06\x01\x05\x05\x07\x30\x02", urls);
    if (kind != TLX_FETCH_CRL) return;
    add_points(certificate.extensions[kCrlDistributionPoints], urls);
    add_points(certificate.extensions[kFreshestCrl], urls);
}

}  // namespace

Fetcher::~Fetcher() {
    free_VERIFY_STORE(fetched_);
}

const Store *Fetcher::store() const noexcept {
    return fetched_ == nullptr ? nullptr : &fetched_->store;
}

bool Fetcher::is_new(u32 kind, const CertificateView &certificate) noexcept {
    const auto is_same = [&](const Asked &asked) noexcept {
        return asked.kind == kind && asked.certificate == &certificate;
    };
    return std::none_of(asked_.begin(), asked_.end(), is_same) && asked_.append({kind, &certificate});
}

bool Fetcher::ask(u32 kind, const CertificateView &certificate, const CertificateView *issuer) noexcept {
    if (fetch_ == nullptr || left_ == 0 || !is_new(kind, certificate)) return false;
    Urls urls;
    add_urls(kind, certificate, urls);
    if (!urls.finish()) return false;
    if (fetched_ == nullptr) fetched_ = new_VERIFY_STORE();
    if (fetched_ == nullptr) return false;
    const Bytes issuer_octets = issuer == nullptr ? Bytes() : issuer->whole;
    const VERIFY_REQUEST request = {kind,
                                    certificate.whole.data(),
                                    static_cast<u32>(certificate.whole.size()),
                                    issuer_octets.empty() ? nullptr : issuer_octets.data(),
                                    static_cast<u32>(issuer_octets.size()),
                                    urls.texts(),
                                    urls.count()};
    const u32 before = fetched_->store.size() + fetched_->store.status().size();
    --left_;
    if (fetch_(context_, &request, fetched_) != 0) left_ = 0;
    return fetched_->store.size() + fetched_->store.status().size() != before;
}

}  // namespace tlx
