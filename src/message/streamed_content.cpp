#include "message/streamed_content.hpp"

#include "der/list_items.hpp"
#include "der/memory.hpp"
#include "message/signer_scheme.hpp"

namespace tlx {
namespace {

using OwnedAlgorithms = std::unique_ptr<X509_ALGO_IDENTIFIERS, FreeWith<free_X509_ALGO_IDENTIFIERS>>;

// version Version, digestAlgorithms DigestAlgorithmIdentifiers
u32 read_algorithms(Bytes members, OwnedAlgorithms &algorithms) noexcept {
    Cursor cursor(members);
    Element version;
    Element set;
    if (!cursor.next(version) || !cursor.next(set) || set.tag != kSet) return 0x52800048;
    X509_ALGO_IDENTIFIERS *made = nullptr;
    const u32 status = AlgorithmSetMember::decode(set, &made);
    algorithms.reset(made);
    return status;
}

}  // namespace

void SetWatch::update(Bytes octets) noexcept {
    using Event = ElementStream::Event;
    while (may_be_set_) {
        const Event event = elements_.next(octets);
        if (event == Event::need_more) return;
        const bool begins = event == Event::begin;
        const bool is_other = begins && elements_.depth() == 0 && elements_.tag() != kSet;
        if (begins) elements_.stay_closed();
        may_be_set_ = event != Event::broken && !is_other;
    }
}

u32 StreamedContent::start(Bytes members) noexcept {
    OwnedAlgorithms algorithms;
    const MemoryWatch memory;
    if (const u32 status = read_algorithms(members, algorithms); status != 0) {
        return memory.ran_out() ? 0x5280003C : status;
    }
    for (u32 i = 0; i < get_STACK_count(algorithms.get()); ++i) {
        const auto *algorithm = item_at<X509_ALGO_IDENTIFIER>(algorithms.get(), static_cast<i32>(i));
        u32 digest_id = 0;
        if (!find_digest_id(algorithm, digest_id)) return 0x5280003C;
        if (get_DigestLength(digest_id) == 0) continue;
        const RunningDigests::Start started = digests_.start(digest_id);
        if (started == RunningDigests::Start::too_many) return 0x5280001C;
        if (started == RunningDigests::Start::no_memory) return 0x5280003C;
    }
    return 0;
}

bool StreamedContent::update(Bytes octets) noexcept {
    set_.update(octets);
    return digests_.update(octets) && keep(octets) && keyed_.update(octets);
}

bool StreamedContent::keep(Bytes octets) noexcept {
    if (!is_kept_) return true;
    is_kept_ = octets.size() <= most_kept_ - kept_.size();
    if (is_kept_) {
        kept_.append(octets);
        return kept_.ok();
    }
    const bool started = start_keyed() && keyed_.update(kept_.bytes());
    tlx_free(kept_.release());
    return started;
}

/// A digest of KCDSA begins with the key, so that only keys that are known beforehand have one.
bool StreamedContent::start_keyed() noexcept {
    constexpr u32 kMostKeys = 8;
    u32 keys = 0;
    for (u32 i = 0; i < get_STACK_count(pool_) && keys < kMostKeys; ++i) {
        const KCDSA *key = kcdsa_key_of(static_cast<const X509_CERT *>(pool_->values[i]));
        if (key == nullptr) continue;
        if (keyed_.start_all(digests_, key) == RunningDigests::Start::no_memory) return false;
        ++keys;
    }
    return true;
}

bool StreamedContent::finish(SignerChecks &checks) noexcept {
    if (!digests_.finish() || !keyed_.finish()) return false;
    digests_.give_to(checks.digests);
    checks.keyed_digests = &keyed_;
    checks.has_content = is_kept_;
    checks.content = kept_.bytes();
    checks.content_is_set = set_.is_set();
    return true;
}

}  // namespace tlx
