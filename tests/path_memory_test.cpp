// Every allocation may fail: the status reports it, nothing leaks, and the caller loses nothing.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <algorithm>
#include <set>

#include "support/allocation.hpp"
#include "support/chain_builder.hpp"

namespace tlx_test {
namespace {

const CPV_SETTINGS kSettings = {nullptr, 0, 0, 3};

/// "User, CA 1" may be left of a path that ends as "User, CA 1, Root".
bool is_beginning_of(const std::string &part, const std::string &whole) {
    return part.empty() || whole == part || whole.starts_with(part + ", ");
}

void sweep_building(const Chain &chain, std::size_t further, std::set<std::uint32_t> allowed,
                    const std::string &expected) {
    Chain pool_specs(chain.begin() + 1, chain.end());
    for (std::size_t i = 0; i < further; ++i) {
        pool_specs.insert(pool_specs.begin(), chain.back());
        pool_specs.front().with("subjectKeyIdentifier", "04:FF");
        pool_specs.front().subject = "Other " + std::to_string(i);
        pool_specs.front().serial = "FF";
    }
    const Certificates pool = make(pool_specs);
    const auto anchors = anchors_of({chain.back()});
    const auto target = chain.front().make();
    // A new path, or a list of the caller's, which keeps what was appended.
    for (const bool own : {true, false}) {
        bool succeeded = false;
        unsigned n = 0;
        while (!succeeded) {
            const LeakCheck leaks;
            const Certificates path(own ? nullptr : new_X509_CERTIFICATES());
            X509_CERTIFICATES *list = path.get();
            tlx_fail_allocation(++n);
            const std::uint32_t status =
                build_certPath_ex(pool.get(), anchors.get(), target.get(), &list, &kSettings);
            tlx_fail_allocation(0);
            succeeded = status == 0;
            ASSERT_TRUE(succeeded || allowed.contains(status)) << n << ": " << std::hex << status;
            ASSERT_EQ(list == path.get(), !(own && succeeded)) << n;
            ASSERT_TRUE(is_beginning_of(subjects_of(list), expected)) << n << ": " << subjects_of(list);
            ASSERT_EQ(subjects_of(list) == expected, succeeded) << n;
            if (own) free_X509_CERTIFICATES(list);
        }
        EXPECT_GT(n, 50U);
    }
}

TEST(FailingAllocations, WhileBuilding) {
    Chain chain = valid_chain(3);
    chain[0].with({.key_id = "02", .issuer = "CA 1", .serial = "02"});
    // Without memory, the times or the authority key identifier count as unreadable.
    const std::set<std::uint32_t> allowed = {0x5305003C, 0x462D0104, 0x462D003C, 0x53050047};
    sweep_building(chain, 0, allowed, "User, CA 1, Root");
    sweep_building(chain, 260, allowed, "User, CA 1, Root");
}

TEST(FailingAllocations, WhileValidating) {
    const Certificates model =
        make(EditedChain(4,
                         "2 policies=1.2.3.1 1.2.3.2; 2 policyConstraints=30{80:01};"
                         "1 certificatePolicies!=30{30{06:2A0301} 30{06:2A0302} 30{06:551D2000}};"
                         "0 policies=1.2.3.1 1.2.3.2; 3 basicConstraints=30{01:FF 02:01}")
                 .chain);
    const std::string whole = "0: 2.5.29.32.0; 1: 1.2.3.2; 2: 1.2.3.2!; 3: 1.2.3.2";
    std::set<std::uint32_t> seen;
    bool ended = false;
    for (unsigned n = 1; n < 100000 && !ended; ++n) {
        const LeakCheck leaks;
        const Certificates path(dup_X509_CERTIFICATES(model.get()));
        const auto user = policy_list("1.2.3.9 1.2.3.2");
        const Tree tree(n % 2 == 0 ? new_node_LIST() : nullptr);
        node_LIST *list = tree.get();
        std::int32_t stopped_at = -2;
        tlx_fail_allocation(n);
        const std::uint32_t status =
            validate_certpath_ex(path.get(), user.get(), &list, &kSettings, &stopped_at);
        tlx_fail_allocation(0);
        if (status == 0) {
            EXPECT_EQ(text_of_tree(list), whole);
            EXPECT_EQ(text_of_policies(user.get()), "");
            EXPECT_GT(n, 100U);
            if (tree == nullptr) free_node_LIST(list);
            ended = true;
            continue;
        }
        seen.insert(status);
        ASSERT_EQ(list, tree.get()) << n;
        ASSERT_EQ(text_of_policies(user.get()), "1.2.3.9 1.2.3.2") << n;
    }
    EXPECT_TRUE(ended);
    // A step without memory returns its own status.
    const std::set<std::uint32_t> allowed = {0x5307003C, 1U,         0x46120103, 0x53100054,
                                             0x462D0104, 0x462D003C, 0x5309000E};
    EXPECT_TRUE(std::includes(allowed.begin(), allowed.end(), seen.begin(), seen.end()));
    EXPECT_TRUE(seen.contains(0x5307003C));
}

TEST(FailingAllocations, LetNoConstraintGoBy) {
    // Each of these paths has to fail, whichever allocation fails.
    for (const char *edits :
         {"2 basicConstraints=30{01:FF 02:00}", "* -certificatePolicies; 1 policyConstraints=30{80:01}"}) {
        const Certificates path = make(EditedChain(3, edits).chain);
        const std::uint32_t expected =
            validate_certpath_ex(path.get(), nullptr, nullptr, &kSettings, nullptr);
        ASSERT_NE(expected, 0U);
        for (unsigned n = 1; n < 200; ++n) {
            tlx_fail_allocation(n);
            EXPECT_NE(validate_certpath_ex(path.get(), nullptr, nullptr, &kSettings, nullptr), 0U) << n;
            tlx_fail_allocation(0);
        }
    }
}

}  // namespace
}  // namespace tlx_test
