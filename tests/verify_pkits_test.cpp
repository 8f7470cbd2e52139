// The NIST Public Key Interoperability Test Suite, from a folder that TLX_PKITS names: cases.json,
// certificates, lists.
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <set>

#include "support/allocation.hpp"
#include "support/chain_builder.hpp"
#include "support/x509_files.hpp"

namespace tlx_test {
namespace {

using Json = nlohmann::json;
using Store = Held<free_VERIFY_STORE>;
using Result = Held<free_VERIFY_RESULT>;

std::set<std::string> texts_of(const Json &list) {
    return {list.begin(), list.end()};
}

std::set<std::string> policies_of(const VERIFY_RESULT *result) {
    std::set<std::string> texts;
    for (std::uint32_t i = 0; i < get_VERIFY_RESULT_policy_count(result); ++i) {
        OBJECT_IDENTIFIER *policy = nullptr;
        EXPECT_EQ(get_VERIFY_RESULT_policy(result, i, &policy), 0U);
        texts.insert(octets(String(policy).get()));
    }
    return texts;
}

std::string findings_of(const VERIFY_RESULT *result) {
    std::string text;
    VERIFY_FINDING finding;
    for (std::uint32_t i = 0; get_VERIFY_RESULT_finding(result, i, &finding) == 0; ++i)
        text += finding.rule + (" at " + std::to_string(finding.certificate)) + "; ";
    return text;
}

std::vector<Octets> read_files(const std::string &folder, const Json &names) {
    std::vector<Octets> files;
    for (const std::string name : names) {
        const std::string text = read_text(folder + "/" + name);
        files.emplace_back(text.begin(), text.end());
    }
    return files;
}

/// The first certificate is the anchor, the last the target, and the others are in the store with all lists.
std::uint32_t verify_case(const std::string &folder, const Json &test, Result &result) {
    const Store store(new_VERIFY_STORE());
    const std::vector<Octets> files = read_files(folder, test.at("certs"));
    for (const Octets &list : read_files(folder, test.at("crls"))) {
        const auto size = static_cast<std::uint32_t>(list.size());
        const std::uint32_t status = add_VERIFY_STORE_crl(store.get(), list.data(), size);
        // The signature value of one list is not of whole octets.
        EXPECT_TRUE(status == 0 || (status == 0x55060301 && test.at("number") == "4.4.4"));
    }
    for (std::size_t i = 0; i + 1 < files.size(); ++i) {
        const auto add = i == 0 ? add_VERIFY_STORE_anchor : add_VERIFY_STORE_certificate;
        const auto size = static_cast<std::uint32_t>(files[i].size());
        if (const std::uint32_t status = add(store.get(), files[i].data(), size, 0); status != 0)
            return status;
    }
    std::string dotted;
    for (const std::string policy : test.at("initial_policy_set"))
        dotted += policy + " ";
    const Policies policies = policy_list(dotted);
    const Held<free_ASN1_TIME> time(charToASN1_TIME("2024-05-06,07:08:09"));
    VERIFY_SETTINGS settings = {};
    settings.time = time.get();
    settings.policies = policies.get();
    settings.explicit_policy = test.at("explicit").get<bool>() ? 1 : 0;
    settings.inhibit_mapping = test.at("inhibit_mapping").get<bool>() ? 1 : 0;
    settings.inhibit_any_policy = test.at("inhibit_any").get<bool>() ? 1 : 0;
    settings.revocation = TLX_REVOCATION_PATH;
    const std::string number = test.at("number");
    if (number == "4.1.4" || number == "4.1.5") settings.profile = TLX_PROFILE_ANY;  // DSA
    VERIFY_RESULT *made = nullptr;
    const Octets &target = files.back();
    const std::uint32_t status = verify_CERTIFICATE(
        store.get(), nullptr, target.data(), static_cast<std::uint32_t>(target.size()), &settings, &made);
    result.reset(made);
    return status;
}

TEST(Pkits, Cases) {
    const char *folder = std::getenv("TLX_PKITS");
    if (folder == nullptr) GTEST_SKIP() << "TLX_PKITS names no folder";
    const Json cases = Json::parse(read_text(std::string(folder) + "/cases.json"));
    ASSERT_EQ(cases.size(), 249U);
    for (const Json &test : cases) {
        const LeakCheck leaks;
        SCOPED_TRACE(test.at("number").get<std::string>() + " " + test.at("title").get<std::string>());
        Result result;
        const bool valid = verify_case(folder, test, result) == 0;
        EXPECT_EQ(valid, test.at("valid").get<bool>()) << findings_of(result.get());
        if (!valid || !test.at("valid").get<bool>()) continue;
        EXPECT_EQ(policies_of(result.get()), texts_of(test.at("policies")));
        EXPECT_EQ(get_VERIFY_RESULT_path_count(result.get()), test.at("path").size());
    }
}

}  // namespace
}  // namespace tlx_test
