// The verification that one can rely on.
#include "message/verify_signers.hpp"

#include <tlxpki/time.h>

#include "der/list_kinds.hpp"
#include "der/memory.hpp"

using namespace tlx;

namespace {

using OwnedTime = std::unique_ptr<ASN1_TIME, FreeWith<free_ASN1_TIME>>;
using OwnedReports = std::unique_ptr<P7_SIGNER_REPORTS, FreeWith<free_P7_SIGNER_REPORTS>>;

/// Appends the certificates of a list, which goes on owning them. False when memory runs out.
bool join(STACK *pool, const X509_CERTIFICATES *certificates) noexcept {
    for (u32 i = 0; i < get_STACK_count(certificates); ++i) {
        if (push_STACK_value(pool, certificates->values[i]) != 0) return false;
    }
    return true;
}

/// What was signed: the content of the message or that of the caller, of which there has to be one.
u32 find_content(const SignedMembers &members, Bytes given, ContentOctets &content) noexcept {
    const bool in_message = members.signedData != nullptr;
    if (in_message && !content.read(members.signedData->contentInfo)) return 0x4B30003C;
    if (content.present()) return given.data() == nullptr ? 0 : 0x4B30001C;
    if (given.data() == nullptr) return 0x4B30003B;
    content.use(given);
    return 0;
}

const OBJECT_IDENTIFIER *content_type_of(const P7_CONTENT_INFO &info, const SignedMembers &members) noexcept {
    if (members.signedData != nullptr) {
        const P7_CONTENT_INFO *content = members.signedData->contentInfo;
        return content != nullptr ? content->contentType : nullptr;
    }
    const P7_ENCRYPTED_CONTENT_INFO *content = info.content.signedAndEnvelopedData->encryptedContentInfo;
    return content != nullptr ? content->contentType : nullptr;
}

/// Checks every signer and stores the first failure. False when memory runs out.
bool check_all(const SignerMembers &members, SignerChecks &checks, STACK *reports, u32 &status) noexcept {
    for (u32 i = 0; i < get_STACK_count(members.signers); ++i) {
        const void *signer = members.signers->values[i];
        OwnedSignerReport report =
            check_signer(signer != nullptr ? members.view(signer) : SignerView{}, checks);
        if (!report) return false;
        if (status == 0) status = report->status;
        if (push_STACK_value(reports, report.get()) != 0) return false;
        static_cast<void>(report.release());
    }
    return true;
}

/// Verifies all signers. False when memory runs out.
bool verify_all(const SignerTrust &trust, const SignerMembers &members, SignerChecks &checks, STACK *reports,
                u32 &status) noexcept {
    const ASN1_TIME *time = trust.settings.time;
    const Owned<STACK> all(new_STACK());
    if (!all || !join(all.get(), trust.pool) || !join(all.get(), members.certificates)) return false;
    StrictPaths strict;
    SignerPaths compatible;
    checks.pool = all.get();
    checks.time = time;
    checks.strength.profile =
        trust.judges_strength ? static_cast<Profile>(trust.settings.profile) : Profile::any;
    if (trust.judges_strength) checks.strength.least_rsa_bits = trust.settings.least_rsa_bits;
    if (trust.store != nullptr) {
        if (!strict.prepare(all.get(), members.crls, trust.store, trust.settings)) return false;
        if (!strict.add(members.revocation)) return false;
        checks.strict = &strict;
    } else if (trust.compatible_anchors != nullptr) {
        if (!compatible.prepare(all.get(), trust.compatible_anchors, time)) return false;
        checks.compatible = &compatible;
    }
    return checks.certificates.build(all.get()) && check_all(members, checks, reports, status);
}

u32 verify(const P7_CONTENT_INFO *info, Bytes content, const SignerTrust &trust,
           P7_SIGNER_REPORTS **reports) noexcept {
    SignedMembers members;
    if (info == nullptr) return 0x4B300049;
    if (!find_signed_members(info, members)) return 0x4B300048;
    if (get_STACK_count(*members.signerInfos) == 0) return 0x4B30002B;
    ContentOctets octets;
    if (const u32 status = find_content(members, content, octets); status != 0) return status;
    SignerChecks checks(octets.bytes());
    checks.content_type = content_type_of(*info, members);
    return verify_signers(trust, signer_members(members), checks, reports);
}

}  // namespace

SignerMembers tlx::signer_members(const SignedMembers &members) noexcept {
    constexpr auto view = [](const void *signer) {
        return view_of(*static_cast<const P7_SIGNER_INFO *>(signer));
    };
    return {*members.certificates, *members.crls, nullptr, *members.signerInfos, view};
}

u32 tlx::verify_signers(SignerTrust trust, const SignerMembers &members, SignerChecks &checks,
                        P7_SIGNER_REPORTS **reports) noexcept {
    const SignerTrust given = trust;
    if (trust.stamps_count && trust.compatible_anchors == nullptr) checks.stamps = &given;
    const OwnedTime now(trust.settings.time == nullptr ? getCurrentGMTime() : nullptr);
    if (trust.settings.time == nullptr) trust.settings.time = now.get();
    OwnedReports made(new_STACK());
    const MemoryWatch memory;
    u32 status = 0;
    const bool done =
        trust.settings.time != nullptr && made && verify_all(trust, members, checks, made.get(), status);
    checks.stamps = nullptr;
    // What fails for lack of memory is no finding about a signer.
    if (!done || (status != 0 && memory.ran_out())) return 0x4B30003C;
    if (reports != nullptr) {
        free_P7_SIGNER_REPORTS(*reports);
        *reports = made.release();
    }
    return status;
}

uint32_t verify_PKCS7_Signers(const P7_CONTENT_INFO *info, const uint8_t *content, uint32_t length,
                              const X509_CERTIFICATES *pool, const TRUST_ANCHORS *anchors,
                              const ASN1_TIME *time, P7_SIGNER_REPORTS **reports) {
    const Owned<VERIFY_STORE> store(anchors != nullptr ? store_of_anchors(anchors) : nullptr);
    if (anchors != nullptr && !store) return 0x4B30003C;
    return verify(info, {content, length}, {pool, signing_settings(time), store.get(), nullptr}, reports);
}

uint32_t verify_PKCS7_Signers_ex(const P7_CONTENT_INFO *info, const uint8_t *content, uint32_t length,
                                 const X509_CERTIFICATES *pool, const VERIFY_STORE *store,
                                 const VERIFY_SETTINGS *settings, P7_SIGNER_REPORTS **reports) {
    const VERIFY_SETTINGS wanted = settings != nullptr ? *settings : signing_settings(nullptr);
    return verify(info, {content, length},
                  {pool, wanted, store, nullptr, store != nullptr && settings != nullptr}, reports);
}

uint32_t verify_PKCS7_Signers_by_CPV(const P7_CONTENT_INFO *info, const uint8_t *content, uint32_t length,
                                     const X509_CERTIFICATES *pool, const TRUST_ANCHORS *anchors,
                                     const ASN1_TIME *time, P7_SIGNER_REPORTS **reports) {
    return verify(info, {content, length}, {pool, signing_settings(time), nullptr, anchors}, reports);
}

void free_P7_SIGNER_REPORTS(P7_SIGNER_REPORTS *reports) {
    clean_STACK_values(reports,
                       [](void *report) { free_signer_report(static_cast<P7_SIGNER_REPORT *>(report)); });
    free_STACK(reports);
}

uint32_t get_P7_SIGNER_REPORTS_count(const P7_SIGNER_REPORTS *reports) {
    return get_STACK_count(reports);
}

const P7_SIGNER_REPORT *get_P7_SIGNER_REPORTS_child(const P7_SIGNER_REPORTS *reports, int32_t index) {
    return static_cast<const P7_SIGNER_REPORT *>(get_STACK_value(reports, static_cast<u32>(index)));
}
