// Paths on many threads at once, over shared certificates, while the settings change. ThreadSanitizer looks
// on.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <algorithm>
#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "support/chain_builder.hpp"

namespace {

using tlx_test::Certificates;
using tlx_test::Chain;

constexpr int kRounds = 40;

/// Runs a function over and over on a thread of its own and keeps the statuses that it gave.
class Runner {
  public:
    template <typename Function>
    explicit Runner(Function function)
        : thread_([this, function] {
              for (int i = 0; i < kRounds; ++i)
                  statuses_.insert(function());
          }) {}
    std::set<std::uint32_t> statuses() {
        thread_.join();
        return statuses_;
    }

  private:
    std::set<std::uint32_t> statuses_;
    std::thread thread_;  // last, so that the set is there when it starts
};

/// Changes settings until it is destroyed, and leaves the defaults behind.
class Changer {
  public:
    Changer()
        : thread_([this] {
              for (std::uint32_t i = 0; !done_; ++i) {
                  set_initial_explicit_policy(i % 2 == 0 ? 0 : 255);
                  set_initial_any_policy_inhibit(i % 2);
                  set_max_certificatePath_length(i % 2 == 0 ? 4 : 3);
                  std::this_thread::yield();
              }
          }) {}
    ~Changer() {
        done_ = true;
        thread_.join();
        set_initial_explicit_policy(255);
        set_initial_any_policy_inhibit(0);
        set_max_certificatePath_length(3);
    }
    Changer(const Changer &) = delete;
    Changer &operator=(const Changer &) = delete;

  private:
    std::atomic<bool> done_ = false;
    std::thread thread_;
};

bool is_subset(const std::set<std::uint32_t> &statuses, const std::set<std::uint32_t> &allowed) {
    return !statuses.empty() &&
           std::includes(allowed.begin(), allowed.end(), statuses.begin(), statuses.end());
}

TEST(Threads, ValidateWithTheirOwnAndWithChangingSettings) {
    Chain chain = tlx_test::valid_chain(4);
    chain[2].key = chain[1].signer = tlx_test::kKcdsaKey;
    chain[0].without(tlx_test::extension::kPolicies);
    const Certificates path = tlx_test::make(chain);
    const auto validate = [&path](const CPV_SETTINGS *settings) {
        const auto user = tlx_test::policy_list({"1.2.3.9", tlx_test::kPolicy});
        node_LIST *tree = nullptr;
        const std::uint32_t status = validate_certpath_ex(path.get(), user.get(), &tree, settings, nullptr);
        if (status == 0 && tlx_test::text_of_tree(tree) != "no levels") return 1U;
        free_node_LIST(tree);
        return status;
    };
    static const CPV_SETTINGS required = {nullptr, 0, 1, 3};
    static const CPV_SETTINGS not_required = {nullptr, 1, 0, 1};
    const Changer changer;
    Runner first([&] { return validate(&required); });
    Runner second([&] { return validate(&required); });
    Runner third([&] { return validate(&not_required); });
    Runner fourth([&] { return validate(nullptr); });
    Runner fifth([&] { return validate(nullptr); });
    EXPECT_EQ(first.statuses(), std::set<std::uint32_t>{0x5310011C});
    EXPECT_EQ(second.statuses(), std::set<std::uint32_t>{0x5310011C});
    EXPECT_EQ(third.statuses(), std::set<std::uint32_t>{0});
    EXPECT_TRUE(is_subset(fourth.statuses(), {0, 0x5310011C}));
    EXPECT_TRUE(is_subset(fifth.statuses(), {0, 0x5310011C}));
}

TEST(Threads, BuildOverOnePoolAndValidateTheResult) {
    const Chain chain = tlx_test::valid_chain(6);
    Chain many = chain;
    for (int i = 0; i < 300; ++i) {
        many.push_back(chain[5]);
        many.back().with(tlx_test::extension::kSubjectKeyId, "04:FF").serial = "FF";
    }
    const Certificates small = tlx_test::make(chain);
    const Certificates large = tlx_test::make(many);
    const auto anchors = tlx_test::anchors_of({chain[5]});
    const auto build = [&](const X509_CERTIFICATES *pool, const CPV_SETTINGS *settings) {
        X509_CERTIFICATES *path = nullptr;
        std::uint32_t status =
            build_certPath_ex(pool, anchors.get(), get_X509_CERTIFICATES_child(pool, 0), &path, settings);
        const Certificates owner(path);
        if (status == 0) status = validate_certpath(path, nullptr, nullptr);
        return status;
    };
    static const CPV_SETTINGS longer = {nullptr, 0, 0, 9};
    const Changer changer;
    Runner first([&] { return build(small.get(), &longer); });
    Runner second([&] { return build(large.get(), &longer); });
    Runner third([&] { return build(large.get(), nullptr); });
    Runner fourth([&] { return build(small.get(), nullptr); });
    EXPECT_EQ(first.statuses(), std::set<std::uint32_t>{0});
    EXPECT_EQ(second.statuses(), std::set<std::uint32_t>{0});
    EXPECT_TRUE(is_subset(third.statuses(), {0, 0x53050047}));
    EXPECT_TRUE(is_subset(fourth.statuses(), {0, 0x53050047}));
}

}  // namespace
