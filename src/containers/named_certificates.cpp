// Imports of the certificates that an authority's list names by their digests.
#include <tlxcrypto/digest.h>
#include <tlxpki/objects.h>

#include <algorithm>

#include "containers/signed_trust_list.hpp"
#include "message/content_kinds.hpp"
#include "message/strict_path.hpp"
#include "trust/trust_records.hpp"

using namespace tlx;

namespace {

using OwnedAnchors = std::unique_ptr<TRUST_ANCHORS, FreeWith<free_TRUST_ANCHORS>>;

/// What an import answers.
struct ImportStatuses {
    u32 none_named;
    u32 unknown_digest;
    u32 no_memory;
};

/// The identifiers of a list in order, so that each certificate is found in it in a few steps.
class Identifiers {
  public:
    /// False when memory runs out.
    [[nodiscard]] bool read(const TRUSTED_SUBJECTS *subjects) noexcept {
        const u32 count = get_STACK_count(subjects);
        if (count == 0) return true;
        sorted_.reset(static_cast<Bytes *>(TLX_ALLOCATE_ZEROED(count, sizeof(Bytes))));
        if (!sorted_) return false;
        count_ = count;
        for (u32 i = 0; i < count; ++i) {
            const auto *subject = static_cast<const TRUSTED_CERTIFICATE *>(subjects->values[i]);
            if (subject != nullptr) all()[i] = octets_of(subject->subjectIdentifier);
        }
        std::ranges::sort(all(), is_before);
        return true;
    }
    [[nodiscard]] bool has(Bytes identifier) const noexcept {
        return std::ranges::binary_search(all(), identifier, is_before);
    }

  private:
    [[nodiscard]] std::span<Bytes> all() const noexcept { return {sorted_.get(), count_}; }
    static bool is_before(Bytes a, Bytes b) noexcept { return std::ranges::lexicographical_compare(a, b); }

    OwnedOctets<Bytes> sorted_;
    u32 count_ = 0;
};

/// Appends the certificates of the set that the list in the message names, which go on owning them. 0 or a
/// status.
u32 collect_named(const P7_SIGNED_DATA &data, STACK *named, const ImportStatuses &statuses) noexcept {
    const CERT_TRUST_LIST &list = *data.contentInfo->content.trustList;
    const u32 digest_id = get_DigestID_from_OID(get_X509_ALGO_IDENTIFIER_OID(list.subjectAlgorithm));
    Identifiers identifiers;
    u8 digest[TLX_DIGEST_MAX_LENGTH];
    u32 length = 0;
    if (Digest(digest_id, digest, 0, digest, &length) != 0) return statuses.unknown_digest;
    if (!identifiers.read(list.trustedSubjects)) return statuses.no_memory;
    for (u32 i = 0; i < get_STACK_count(data.certificates); ++i) {
        auto *cert = static_cast<X509_CERT *>(data.certificates->values[i]);
        if (X509_CERT_digest(cert, digest_id, digest) != length) return statuses.no_memory;
        if (identifiers.has({digest, length}) && push_STACK_value(named, cert) != 0) {
            return statuses.no_memory;
        }
    }
    return get_STACK_count(named) != 0 ? 0 : statuses.none_named;
}

/// Verifies an authority's list and copies the certificates that it names. 0 or a status.
u32 take_named(const P7_CONTENT_INFO *info, const X509_CERTIFICATES *authorities,
               const VERIFY_SETTINGS *settings, const ImportStatuses &statuses,
               OwnedCertificates &copies) noexcept {
    u32 status = verify_CTL_of_authority_ex(info, authorities, settings, nullptr);
    if (status != 0) return status;
    const Owned<STACK> named(new_STACK());
    if (!named) return statuses.no_memory;
    status = collect_named(*signed_data_of(info), named.get(), statuses);
    if (status != 0) return status;
    copies.reset(dup_X509_CERTIFICATES(named.get()));
    return copies ? 0 : statuses.no_memory;
}

/// Moves all values of a list to the end of another. False when memory runs out; nothing is moved then.
template <typename List>
bool move_values(List from, STACK *to) noexcept {
    const u32 count = get_STACK_count(from.get());
    if (reserve_STACK(to, get_STACK_count(to) + count) != 0) return false;
    for (u32 i = 0; i < count; ++i) {
        static_cast<void>(push_STACK_value(to, from->values[i]));
    }
    free_STACK(from.release());
    return true;
}

}  // namespace

uint32_t add_TRUST_ANCHORS_from_CTL_of_authority(TRUST_ANCHORS *anchors, const P7_CONTENT_INFO *info,
                                                 const X509_CERTIFICATES *authorities,
                                                 const ASN1_TIME *time) {
    const VERIFY_SETTINGS settings = signing_settings(time);
    return add_TRUST_ANCHORS_from_CTL_of_authority_ex(anchors, info, authorities, &settings);
}

uint32_t add_TRUST_ANCHORS_from_CTL_of_authority_ex(TRUST_ANCHORS *anchors, const P7_CONTENT_INFO *info,
                                                    const X509_CERTIFICATES *authorities,
                                                    const VERIFY_SETTINGS *settings) {
    constexpr ImportStatuses kStatuses = {0x54110047, 0x54110048, 0x5411003C};
    if (anchors == nullptr) return 0x54110049;
    OwnedCertificates certificates;
    const u32 status = take_named(info, authorities, settings, kStatuses, certificates);
    if (status != 0) return status;
    OwnedAnchors made(new_TRUST_ANCHORS());
    for (u32 i = 0; i < get_STACK_count(certificates.get()); ++i) {
        const auto *cert = static_cast<const X509_CERT *>(certificates->values[i]);
        const Owned<TRUST_ANCHOR> anchor(create_TRUST_ANCHOR_from_X509_CERT(cert));
        if (!anchor || add_TRUST_ANCHORS(made.get(), anchor.get()) != 0) return 0x5411003C;
    }
    return made && move_values(std::move(made), anchors) ? 0 : 0x5411003C;
}

uint32_t add_CERTIFICATES_from_CTL_of_authority(X509_CERTIFICATES *pool, const P7_CONTENT_INFO *info,
                                                const X509_CERTIFICATES *authorities, const ASN1_TIME *time) {
    const VERIFY_SETTINGS settings = signing_settings(time);
    return add_CERTIFICATES_from_CTL_of_authority_ex(pool, info, authorities, &settings);
}

uint32_t add_CERTIFICATES_from_CTL_of_authority_ex(X509_CERTIFICATES *pool, const P7_CONTENT_INFO *info,
                                                   const X509_CERTIFICATES *authorities,
                                                   const VERIFY_SETTINGS *settings) {
    constexpr ImportStatuses kStatuses = {0x54120047, 0x54120048, 0x5412003C};
    if (pool == nullptr) return 0x54120049;
    OwnedCertificates certificates;
    const u32 status = take_named(info, authorities, settings, kStatuses, certificates);
    if (status != 0) return status;
    return move_values(std::move(certificates), pool) ? 0 : 0x5412003C;
}
