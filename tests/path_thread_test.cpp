// Paths on many threads at once, over shared certificates, while the settings change. ThreadSanitizer checks
// them.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <atomic>
#include <functional>
#include <set>
#include <thread>
#include <vector>

#include "support/chain_builder.hpp"
#include "support/threads.hpp"

namespace tlx_test {
namespace {

constexpr int kRounds = 40;

/// Runs each function repeatedly on a thread of its own, and checks its statuses against the allowed ones.
struct Runner {
    std::function<std::uint32_t()> run;
    std::set<std::uint32_t> allowed;
};
void run_together(const std::vector<Runner> &runners) {
    std::atomic<std::size_t> next = 0;
    const unsigned succeeded = successes_on_threads(static_cast<unsigned>(runners.size()), [&] {
        const Runner &runner = runners[next++];
        for (int round = 0; round < kRounds; ++round)
            if (!runner.allowed.contains(runner.run())) return false;
        return true;
    });
    EXPECT_EQ(succeeded, runners.size());
}

/// Changes settings until its destruction, which restores the defaults.
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

TEST(Threads, ValidateWithTheirOwnAndWithChangingSettings) {
    const Certificates path = make(EditedChain(4, "2 key=4; 1 signer=4; 0 -certificatePolicies").chain);
    const auto validate = [&path](const CPV_SETTINGS *settings) {
        const auto user = policy_list("1.2.3.9 1.2.3.1");
        node_LIST *tree = nullptr;
        const std::uint32_t status = validate_certpath_ex(path.get(), user.get(), &tree, settings, nullptr);
        if (status == 0 && text_of_tree(tree) != "no levels") return 1U;
        free_node_LIST(tree);
        return status;
    };
    static const CPV_SETTINGS required = {nullptr, 0, 1, 3};
    static const CPV_SETTINGS not_required = {nullptr, 1, 0, 1};
    const Changer changer;
    run_together({{[&] { return validate(&required); }, {0x5310011C}},
                  {[&] { return validate(&required); }, {0x5310011C}},
                  {[&] { return validate(&not_required); }, {0}},
                  {[&] { return validate(nullptr); }, {0, 0x5310011C}},
                  {[&] { return validate(nullptr); }, {0, 0x5310011C}}});
}

TEST(Threads, BuildOverOnePoolAndValidateTheResult) {
    const Chain chain = valid_chain(6);
    Chain many = chain;
    for (int i = 0; i < 300; ++i) {
        many.push_back(chain[5]);
        many.back().with("subjectKeyIdentifier", "04:FF").serial = "FF";
    }
    const Certificates small = make(chain);
    const Certificates large = make(many);
    const auto anchors = anchors_of({chain[5]});
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
    run_together({{[&] { return build(small.get(), &longer); }, {0}},
                  {[&] { return build(large.get(), &longer); }, {0}},
                  {[&] { return build(large.get(), nullptr); }, {0, 0x53050047}},
                  {[&] { return build(small.get(), nullptr); }, {0, 0x53050047}}});
}

}  // namespace
}  // namespace tlx_test
