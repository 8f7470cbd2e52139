// Every allocation may fail: the status reports it, nothing leaks, and the caller loses nothing.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <set>

#include "support/allocation.hpp"
#include "support/chain_builder.hpp"

namespace tlx_test {
namespace {

const CPV_SETTINGS kSettings = {nullptr, 0, 0, 3};

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
    // A new path, or a list of the caller's, which keeps what was appended: "User, CA 1".
    for (const bool own : {true, false}) {
        const unsigned failures = sweep_failing_allocations([&] {
            const Certificates path(own ? nullptr : new_X509_CERTIFICATES());
            if (!own && path == nullptr) return false;
            X509_CERTIFICATES *list = path.get();
            const std::uint32_t status =
                build_certPath_ex(pool.get(), anchors.get(), target.get(), &list, &kSettings);
            tlx_fail_allocation(0);
            const std::string subjects = subjects_of(list);
            EXPECT_TRUE(status == 0 || allowed.contains(status)) << std::hex << status;
            EXPECT_EQ(list == path.get(), !(own && status == 0));
            EXPECT_TRUE(expected.starts_with(subjects)) << subjects;
            EXPECT_EQ(subjects == expected, status == 0);
            if (own) free_X509_CERTIFICATES(list);
            return status == 0;
        });
        EXPECT_GT(failures, 50U);
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
    const Certificates path =
        make(EditedChain(4,
                         "2 policies=1.2.3.1 1.2.3.2; 2 policyConstraints=30{80:01};"
                         "1 certificatePolicies!=30{30{06:2A0301} 30{06:2A0302} 30{06:551D2000}};"
                         "0 policies=1.2.3.1 1.2.3.2; 3 basicConstraints=30{01:FF 02:01}")
                 .chain);
    // A step without memory returns its own status.
    const std::set<std::uint32_t> allowed = {0,          0x5307003C, 1U,         0x46120103,
                                             0x53100054, 0x462D0104, 0x462D003C, 0x5309000E};
    std::set<std::uint32_t> seen;
    for (unsigned n = 1; !seen.contains(0) && n < 100000; ++n) {
        const LeakCheck leaks;
        const auto user = policy_list("1.2.3.9 1.2.3.2");
        const Tree tree(n % 2 == 0 ? new_node_LIST() : nullptr);
        node_LIST *list = tree.get();
        tlx_fail_allocation(n);
        const std::uint32_t status = validate_certpath_ex(path.get(), user.get(), &list, &kSettings, nullptr);
        tlx_fail_allocation(0);
        const Tree made(list == tree.get() ? nullptr : list);
        ASSERT_TRUE(allowed.contains(status)) << n << ": " << std::hex << status;
        ASSERT_EQ(made != nullptr, status == 0 && tree == nullptr) << n;
        ASSERT_EQ(text_of_policies(user.get()), status == 0 ? "" : "1.2.3.9 1.2.3.2") << n;
        if (status == 0) {
            EXPECT_EQ(text_of_tree(list), "0: 2.5.29.32.0; 1: 1.2.3.2; 2: 1.2.3.2!; 3: 1.2.3.2");
            EXPECT_GT(n, 100U);
        }
        seen.insert(status);
    }
    EXPECT_TRUE(seen.contains(0x5307003C) && seen.contains(0));
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
