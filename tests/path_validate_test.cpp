// Validating paths: one row for every step that can fail, and for every surprise that passes.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <set>

#include "support/allocation.hpp"
#include "support/chain_builder.hpp"
#include "support/rows.hpp"
#include "support/x509_files.hpp"

namespace tlx_test {
namespace {

const CPV_SETTINGS kDefaults = {nullptr, 0, 255, 3};

/// "good", or the status and where validation stopped: "53100054 at 0".
std::string validate(const X509_CERTIFICATES *given, const CPV_SETTINGS &settings = kDefaults) {
    const LeakCheck leaks;
    const Certificates path(dup_X509_CERTIFICATES(given));
    std::int32_t stopped_at = -2;
    node_LIST *made = nullptr;
    const std::uint32_t status = validate_certpath_ex(path.get(), nullptr, &made, &settings, &stopped_at);
    const Tree tree(made);
    EXPECT_EQ(made != nullptr, status == 0);
    if (status == 0 && stopped_at == -1) return "good";
    return status_text(status) + " at " + std::to_string(stopped_at);
}
std::string validate(const Chain &chain, const CPV_SETTINGS &settings = kDefaults) {
    return validate(make(chain).get(), settings);
}

TEST(Validation, Rows) {
    validate(EditedChain(4, "* key=4; * signer=4").chain);  // sets up each key once
    expect_rows("path_validate.txt", {{"validate", {[](const Row &row) {
                                           const EditedChain edited(row.number(1), row[2]);
                                           return validate(edited.chain, edited.settings());
                                       }}}});
}

TEST(Validation, TakesAThousandCertificates) {
    const Cert root = valid_chain(1)[0].make();
    const Certificates path(new_X509_CERTIFICATES());
    while (get_X509_CERTIFICATES_count(path.get()) < TLX_CPV_MAX_CERTIFICATES)
        ASSERT_EQ(add_X509_CERTIFICATES(path.get(), root.get()), 0U);
    EXPECT_EQ(validate(path.get()), "good");
    ASSERT_EQ(add_X509_CERTIFICATES(path.get(), root.get()), 0U);
    EXPECT_EQ(validate(path.get()), "53070047 at -1");
}

TEST(Validation, RefusesWhatIsNoPath) {
    EXPECT_EQ(validate(static_cast<X509_CERTIFICATES *>(nullptr)), "53070049 at -1");
    EXPECT_EQ(validate(Chain()), "5307002B at -1");
    EXPECT_EQ(validate_certpath(nullptr, nullptr, nullptr), 0x53070049U);

    const Certificates path = make(valid_chain(3));
    push_STACK_value(path.get(), new_X509_CERT());
    EXPECT_EQ(validate(path.get()), "53100049 at 3") << "an empty certificate is not self-issued";
    void *empty = remove_STACK_value(path.get(), 3);
    insert_STACK_value(path.get(), empty, 1);
    EXPECT_EQ(validate(path.get()), "53100054 at 1");
    push_STACK_value(path.get(), nullptr);
    EXPECT_EQ(validate(path.get()), "53100049 at 4") << "no certificate at all";
}

TEST(Validation, EmptiesATreeThatItIsGivenAndKeepsWhatItBuilt) {
    Chain chain = valid_chain(3);
    const Certificates good = make(chain);
    chain[0].signer = 3;
    const Certificates bad = make(chain);
    const LeakCheck leaks;
    const Octets before = encoding_of(good.get(), TLX_ENCODER(X509_CERTIFICATES_to_Seq));
    const Tree tree(new_node_LIST());
    node_LIST *list = tree.get();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(validate_certpath(good.get(), nullptr, &list), 0U);
        EXPECT_EQ(text_of_tree(tree.get()), "0: 2.5.29.32.0; 1: 1.2.3.1; 2: 1.2.3.1");
    }
    EXPECT_EQ(validate_certpath(nullptr, nullptr, &list), 0x53070049U);
    EXPECT_EQ(text_of_tree(tree.get()), "0: 2.5.29.32.0; 1: 1.2.3.1; 2: 1.2.3.1") << "untouched";
    EXPECT_EQ(validate_certpath(bad.get(), nullptr, &list), 0x53100054U);
    EXPECT_EQ(text_of_tree(tree.get()), "0: 2.5.29.32.0; 1: 1.2.3.1");
    EXPECT_EQ(list, tree.get());
    EXPECT_EQ(encoding_of(good.get(), TLX_ENCODER(X509_CERTIFICATES_to_Seq)), before) << "no change";
}

// ---- Settings ----

/// The settings of the process, which set no time.
std::string settings_text() {
    const ASN1_TIME somewhen = {};
    CPV_SETTINGS settings = {&somewhen, 9, 9, 9};
    get_CPV_SETTINGS(&settings);
    EXPECT_EQ(settings.time, nullptr);
    EXPECT_EQ(settings.initial_any_policy_inhibit, get_initial_any_policy_inhibit());
    EXPECT_EQ(settings.initial_explicit_policy, get_initial_explicit_policy());
    EXPECT_EQ(settings.max_certificatePath_length, get_max_certificatePath_length());
    return std::to_string(settings.initial_any_policy_inhibit) + " " +
           std::to_string(settings.initial_explicit_policy) + " " +
           std::to_string(settings.max_certificatePath_length);
}

TEST(Settings, OfTheProcessAreStoredAsStatedAndUsed) {
    EXPECT_EQ(settings_text(), "0 255 3");
    const Certificates path = make(EditedChain(3, "1 -certificatePolicies").chain);
    std::int32_t stopped_at = 7;
    EXPECT_EQ(validate_certpath_ex(path.get(), nullptr, nullptr, nullptr, &stopped_at), 0x5310011CU);
    EXPECT_EQ(stopped_at, 1);
    set_initial_explicit_policy(0);
    EXPECT_EQ(validate_certpath(path.get(), nullptr, nullptr), 0U);
    EXPECT_EQ(validate_certpath_ex(path.get(), nullptr, nullptr, nullptr, nullptr), 0U);
    EXPECT_EQ(validate(path.get(), kDefaults), "5310011C at 1") << "settings of one's own";

    set_initial_any_policy_inhibit(7);
    set_initial_policy_mapping_inhibit(1);
    EXPECT_EQ(get_initial_policy_mapping_inhibit(), 0U) << "mappings are not processed";
    for (const std::int32_t refused : {0, -1})
        EXPECT_EQ(set_max_certificatePath_length(refused), 1U);
    EXPECT_EQ(settings_text(), "7 0 3");
    EXPECT_EQ(set_max_certificatePath_length(1), 0U);
    EXPECT_EQ(settings_text(), "7 0 1");
    get_CPV_SETTINGS(nullptr);

    set_initial_any_policy_inhibit(0);
    set_initial_explicit_policy(255);
    EXPECT_EQ(set_max_certificatePath_length(3), 0U);
}

// ---- Every allocation may fail: the status reports it, nothing leaks, and the caller loses nothing ----

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
    const Certificates model =
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
        const Certificates path(dup_X509_CERTIFICATES(model.get()));
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
