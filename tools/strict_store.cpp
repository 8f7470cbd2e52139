#include "strict_store.hpp"

#include "status.hpp"
#include "system_anchors.hpp"

namespace tool {

namespace {

constexpr uint32_t kNoMemory = 0x5502003C;

uint32_t size_of(const ReceivedCertificate &certificate) {
    return static_cast<uint32_t>(certificate.octets.octets().size());
}

}  // namespace

StrictStore::StrictStore(const StrictOptions &options, const std::vector<std::string> &anchors,
                         const std::vector<std::string> &pool)
    : store_(made<decltype(store_)>(new_VERIFY_STORE())), accepted_(accepted_faults(options)) {
    for (const std::string &path : anchors) {
        for (const ReceivedCertificate &anchor : collect_received(path, warnings_)) {
            add_anchor(anchor);
        }
    }
    if (options.system_anchors) {
        for (const ReceivedCertificate &anchor : system_anchors(warnings_)) {
            add_anchor(anchor);
        }
    }
    for (const std::string &path : pool) {
        for (const ReceivedCertificate &intermediate : collect_received(path, warnings_)) {
            add(intermediate);
        }
    }
}

void StrictStore::add(const ReceivedCertificate &intermediate) {
    const Octets octets = intermediate.octets.octets();
    take(intermediate,
         add_VERIFY_STORE_certificate(store_.get(), octets.data(), size_of(intermediate), accepted_));
}

void StrictStore::add_anchor(const ReceivedCertificate &anchor) {
    const Octets octets = anchor.octets.octets();
    take(anchor, add_VERIFY_STORE_anchor(store_.get(), octets.data(), size_of(anchor), accepted_));
}

void StrictStore::take(const ReceivedCertificate &certificate, uint32_t status) {
    if (status == kNoMemory) throw std::bad_alloc();
    if (status == 0) return;
    warnings_.push_back(certificate.source + ": is passed over: " + exact_status_sentence(status));
}

}  // namespace tool
