#include "verify/status_store.hpp"

#include "verify/name_match.hpp"
#include "verify/store.hpp"

namespace tlx {
namespace {

/// Answers of one response, at most.
constexpr u32 kMostAnswers = 100000;
/// Certificates of one response, at most. Those that follow are ignored.
constexpr u32 kMostCertificates = 16;

/// Counts the answers. False when one of them is none.
bool count_answers(Bytes answers, u32 &count) noexcept {
    StrictCursor in(answers);
    AnswerView view;
    for (count = 0; !in.at_end(); ++count) {
        if (count == kMostAnswers || !next_answer(in, view)) return false;
    }
    return true;
}

/// Adds the certificates of a response. One that cannot be read is of no use, but no fault of the answers.
Rule keep_certificates(ResponseEntry &response) noexcept {
    StrictCursor in(response.view.certificates);
    Element element;
    while (response.certificates.size() < kMostCertificates && in.any(element)) {
        OwnedObject<StoreEntry> entry = make_object<StoreEntry>();
        if (!entry) return Rule::kNoMemory;
        const Rule rule = read_entry(element.whole, 0, *entry);
        if (rule == Rule::kNoMemory) return rule;
        if (rule != Rule::kNone) continue;
        if (!response.certificates.append(entry.get())) return Rule::kNoMemory;
        static_cast<void>(entry.release());
    }
    return Rule::kNone;
}

}  // namespace

KnownSigner::~KnownSigner() {
    Destroy<Buffer>{}(const_cast<Buffer *>(key_info_.load()));
}

bool KnownSigner::is(Bytes key_info) const noexcept {
    const Buffer *known = key_info_.load();
    return known != nullptr && same(known->bytes(), key_info);
}

void KnownSigner::remember(Bytes key_info) const noexcept {
    OwnedObject<Buffer> copy = make_object<Buffer>();
    if (!copy) return;
    copy->append(key_info);
    const Buffer *expected = nullptr;
    if (copy->ok() && key_info_.compare_exchange_strong(expected, copy.get())) {
        static_cast<void>(copy.release());
    }
}

ResponseEntry::~ResponseEntry() {
    for (StoreEntry *certificate : certificates) {
        Destroy<StoreEntry>{}(certificate);
    }
}

StatusStore::~StatusStore() {
    for (ListEntry *list : lists_) {
        Destroy<ListEntry>{}(list);
    }
    for (ResponseEntry *response : responses_) {
        Destroy<ResponseEntry>{}(response);
    }
}

u64 StatusStore::hash_of_serial(Bytes serial) const noexcept {
    SipHash hash(key_);
    hash.add(serial);
    return hash.value();
}

Rule StatusStore::add_list(Bytes octets) noexcept {
    if (octets.empty()) return Rule::kBrokenDer;
    OwnedObject<ListEntry> list = make_object<ListEntry>();
    if (!list) return Rule::kNoMemory;
    const Bytes copy = copy_to(list->octets, octets);
    if (copy.empty()) return Rule::kNoMemory;
    if (const Rule rule = read_crl(copy, list->view); rule != Rule::kNone) return rule;
    if (const Rule rule = list->revoked.read(list->view, key_); rule != Rule::kNone) return rule;
    if (!lists_.append(list.get())) return Rule::kNoMemory;
    ListEntry *kept = list.release();
    return by_issuer_.add(hash_of_name(key_, kept->view.issuer), kept) ? Rule::kNone : Rule::kNoMemory;
}

Rule StatusStore::keep_answers(ResponseEntry &response) noexcept {
    u32 count = 0;
    if (!count_answers(response.view.answers, count)) return Rule::kBadResponse;
    response.answers.reset(static_cast<AnswerEntry *>(TLX_ALLOCATE_ZEROED(count + 1, sizeof(AnswerEntry))));
    if (!response.answers) return Rule::kNoMemory;
    StrictCursor in(response.view.answers);
    for (u32 i = 0; i < count; ++i) {
        auto *answer = new (response.answers.get() + i) AnswerEntry{{}, &response, nullptr};
        if (!next_answer(in, answer->view)) return Rule::kBadResponse;
        if (!by_serial_.add(hash_of_serial(answer->view.serial), answer)) return Rule::kNoMemory;
    }
    return Rule::kNone;
}

Rule StatusStore::add_response(Bytes octets) noexcept {
    if (octets.empty()) return Rule::kBadResponse;
    OwnedObject<ResponseEntry> response = make_object<ResponseEntry>();
    if (!response) return Rule::kNoMemory;
    const Bytes copy = copy_to(response->octets, octets);
    if (copy.empty()) return Rule::kNoMemory;
    if (const Rule rule = read_response(copy, response->view); rule != Rule::kNone) return rule;
    if (const Rule rule = keep_certificates(*response); rule != Rule::kNone) return rule;
    if (!responses_.append(response.get())) return Rule::kNoMemory;
    return keep_answers(*response.release());
}

}  // namespace tlx
