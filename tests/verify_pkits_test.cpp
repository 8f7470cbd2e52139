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

/// Invalid only because a certificate is revoked, or because a list or its issuer is not in order.
bool needs_revocation(const Json &test) {
    static const std::set<std::string> others = {"4.5.2", "4.5.5", "4.5.7", "4.7.4", "4.7.5"};
    const int section = test.at("section");
    return !test.at("valid").get<bool>() && (section == 4 || section == 14 || section == 15 ||
                                             others.contains(test.at("number").get<std::string>()));
}

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

/// The first certificate is the anchor, the last the target, and the others are in the store.
std::uint32_t verify_case(const std::string &folder, const Json &test, Result &result) {
    const Store store(new_VERIFY_STORE());
    std::vector<Octets> files;
    for (const std::string name : test.at("certs")) {
        const std::string text = read_text(folder + "/" + name);
        files.emplace_back(text.begin(), text.end());
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
    unsigned waiting = 0;
    const Json cases = Json::parse(read_text(std::string(folder) + "/cases.json"));
    ASSERT_EQ(cases.size(), 249U);
    for (const Json &test : cases) {
        const LeakCheck leaks;
        SCOPED_TRACE(test.at("number").get<std::string>() + " " + test.at("title").get<std::string>());
        Result result;
        const bool valid = verify_case(folder, test, result) == 0;
        if (needs_revocation(test)) {
            EXPECT_TRUE(valid) << "as long as revocation is not consulted";
            ++waiting;
            continue;
        }
        EXPECT_EQ(valid, test.at("valid").get<bool>());
        if (!valid || !test.at("valid").get<bool>()) continue;
        EXPECT_EQ(policies_of(result.get()), texts_of(test.at("policies")));
        EXPECT_EQ(get_VERIFY_RESULT_path_count(result.get()), test.at("path").size());
    }
    RecordProperty("waiting for revocation", static_cast<int>(waiting));
}

}  // namespace
}  // namespace tlx_test
