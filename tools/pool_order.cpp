#include <algorithm>
#include <map>
#include <numeric>

#include "issuer_index.hpp"

namespace tool {

namespace {

/// For each certificate the first one whose subject is its issuer; kNoPlace for a self-issued certificate and
/// without an issuer.
std::vector<std::size_t> issuers_of(const std::vector<X509_CERT *> &certificates) {
    std::map<std::string, std::size_t> by_subject;
    for (std::size_t i = 0; i < certificates.size(); ++i) {
        by_subject.emplace(key_of(get_X509_subject(certificates[i])), i);
    }
    std::vector<std::size_t> issuers(certificates.size(), kNoPlace);
    for (std::size_t i = 0; i < certificates.size(); ++i) {
        const auto issuer = by_subject.find(key_of(get_X509_issuer(certificates[i])));
        const bool self_issued = is_selfSigned(certificates[i]) == 0;
        if (!self_issued && issuer != by_subject.end()) issuers[i] = issuer->second;
    }
    return issuers;
}

/// The number of certificates above each. Certificates that issue each other count from the first one met.
std::vector<std::size_t> heights_of(const std::vector<std::size_t> &issuers) {
    std::vector<std::size_t> heights(issuers.size(), kNoPlace);
    std::vector<std::size_t> path;
    for (std::size_t start = 0; start < issuers.size(); ++start) {
        std::size_t at = start;
        for (; at != kNoPlace && heights[at] == kNoPlace; at = issuers[at]) {
            heights[at] = 0;
            path.push_back(at);
        }
        std::size_t height = at == kNoPlace ? 0 : heights[at] + 1;
        for (; !path.empty(); path.pop_back()) {
            heights[path.back()] = height++;
        }
    }
    return heights;
}

}  // namespace

std::string key_of(const X509_NAME *name) {
    uint8_t *der = nullptr;
    const uint32_t size = writeDER_to_Binary(name, TLX_ENCODER(X509_NAME_to_Seq), &der);
    if (size == 0xFFFFFFFF) return "";
    const Owned<uint8_t, tlx_free> owner(der);
    return {reinterpret_cast<const char *>(der), size};
}

void put_lower_first(std::vector<X509_CERT *> &certificates) {
    const std::vector<std::size_t> heights = heights_of(issuers_of(certificates));
    std::vector<std::size_t> order(certificates.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&heights](std::size_t a, std::size_t b) { return heights[a] > heights[b]; });
    std::vector<X509_CERT *> ordered;
    ordered.reserve(certificates.size());
    for (const std::size_t index : order) {
        ordered.push_back(certificates[index]);
    }
    certificates = std::move(ordered);
}

}  // namespace tool
