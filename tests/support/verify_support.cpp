#include "support/verify_support.hpp"

#include <gtest/gtest.h>

#include "support/x509_files.hpp"

namespace tlx_test {

std::uint32_t size_of(const Octets &octets) {
    return static_cast<std::uint32_t>(octets.size());
}

void add(VERIFY_STORE *store, const CertSpec &spec, bool is_anchor) {
    const Octets octets = encode_certificate(spec.make().get());
    const auto add_to = is_anchor ? add_VERIFY_STORE_anchor : add_VERIFY_STORE_certificate;
    EXPECT_EQ(add_to(store, octets.data(), size_of(octets), 0), 0U) << spec.subject;
}

Store store_of(const Chain &chain) {
    Store store(new_VERIFY_STORE());
    for (std::size_t i = 1; i < chain.size(); ++i)
        add(store.get(), chain[i], i + 1 == chain.size());
    if (chain.size() == 1) add(store.get(), chain[0], true);
    return store;
}

std::string text_of(const VERIFY_RESULT *result) {
    std::string text;
    const std::uint32_t count = get_VERIFY_RESULT_path_count(result);
    VERIFY_FINDING finding;
    for (std::uint32_t i = 0; get_VERIFY_RESULT_finding(result, i, &finding) == 0; ++i)
        text += (text.empty() ? "" : ", ") + std::string(finding.rule) + " at " +
                std::to_string(count - 1 - finding.certificate);
    if (text.empty()) text = "valid";
    for (std::uint32_t i = 0; get_VERIFY_RESULT_warning(result, i, &finding) == 0; ++i)
        text += ", warning " + std::string(finding.rule) + " at " +
                std::to_string(count - 1 - finding.certificate);
    return text;
}

}  // namespace tlx_test
