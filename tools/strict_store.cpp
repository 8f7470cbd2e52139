#include "strict_store.hpp"

#include "failure.hpp"
#include "status.hpp"
#include "system_anchors.hpp"

namespace tool {

namespace {

constexpr uint32_t kNoMemory = 0x5502003C;
constexpr uint32_t kResponderRefuses = 0x55060303;

/// The blocks of a file with this label, or its one element in DER. Throws Failure when there is none.
std::vector<Block> blocks_labelled(const Input &input, const std::string &path, const std::string &label) {
    std::vector<Block> blocks;
    for (const Block &block : input.blocks()) {
        if (!block.label.empty() && block.label != label) continue;
        expect_contents(block);
        blocks.push_back(block);
    }
    if (blocks.empty()) throw Failure(source_of(path) + ": holds no " + label);
    return blocks;
}

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
    for (const std::string &path : options.lists) {
        add_lists(path);
    }
    for (const std::string &path : options.responses) {
        add_responses(path);
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

template <typename Add, typename Refused>
void StrictStore::add_blocks(const std::string &path, const char *label, Add add_to_store, Refused refused) {
    const Input input(path);
    for (const Block &block : blocks_labelled(input, path, label)) {
        const auto size = static_cast<uint32_t>(block.octets.size());
        const uint32_t status = add_to_store(store_.get(), block.octets.data(), size);
        if (status == kNoMemory) throw std::bad_alloc();
        if (status != 0) refused(status, block.source + ": ");
    }
}

void StrictStore::add_lists(const std::string &path) {
    add_blocks(path, "X509 CRL", add_VERIFY_STORE_crl, [](uint32_t status, const std::string &source) {
        throw Failure(source + "is no revocation list: " + exact_status_sentence(status));
    });
}

/// A responder may have answered that it could not.
void StrictStore::add_responses(const std::string &path) {
    add_blocks(path, "OCSP RESPONSE", add_VERIFY_STORE_ocsp,
               [this](uint32_t status, const std::string &source) {
                   const std::string problem = source + exact_status_sentence(status);
                   if (status != kResponderRefuses) throw Failure(problem);
                   warnings_.push_back(problem);
               });
}

void StrictStore::take(const ReceivedCertificate &certificate, uint32_t status) {
    if (status == kNoMemory) throw std::bad_alloc();
    if (status == 0) return;
    warnings_.push_back(certificate.source + ": is passed over: " + exact_status_sentence(status));
}

}  // namespace tool
